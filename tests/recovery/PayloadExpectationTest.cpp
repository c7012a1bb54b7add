// What manifests promise about payload files: container ceilings and one promise per file.

#include "recovery/inspection/PayloadExpectation.hpp"

#include <gtest/gtest.h>

#include <optional>

#include "support/ManifestTestRecords.hpp"
#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recovery {

namespace {

using namespace testsupport::ManifestTestRecords;
using InspectorError = RecoveryPackageInspectorError;
using Container = format::BackupPayloadContainerKindV1;

[[nodiscard]] format::BackupManifestRecordV1 chunkedResource(std::uint64_t resource, std::uint64_t chunk,
                                                              std::uint64_t fileByteCount) {
  auto part = chunkPartFields(chunk, 0, 0, 1000);
  part.artifactFileByteCount = fileByteCount;
  auto fields = chunkedResourceFields(resource, 1, 2, chunk, 1, 1000);
  fields.parts = partsOf({made(format::BackupPayloadPartRecordV1::make(part))});
  return made(format::BackupMediaResourceRecordV1::make(fields));
}

[[nodiscard]] format::BackupManifestRecordV1 packedResource(std::uint64_t resource, std::uint64_t pack,
                                                             std::uint64_t fileByteCount) {
  auto part = packPartFields(pack, 0, 1000, resource);
  part.artifactFileByteCount = fileByteCount;
  auto fields = packedResourceFields(resource, 1, 2, pack, 0);
  fields.parts = partsOf({made(format::BackupPayloadPartRecordV1::make(part))});
  return made(format::BackupMediaResourceRecordV1::make(fields));
}

[[nodiscard]] std::optional<InspectorError> errorOf(const std::vector<format::BackupManifestRecordV1>& records) {
  const auto collected = PayloadExpectations::collect(records);
  if (collected) return std::nullopt;
  return collected.error();
}

TEST(PayloadExpectationTest, EachContainerHasItsOwnInclusiveCeiling) {
  EXPECT_EQ(errorOf({chunkedResource(10, 20, 16'908'288)}), std::nullopt);
  EXPECT_EQ(errorOf({chunkedResource(10, 20, 16'908'289)}), InspectorError::integrityFailure);
  EXPECT_EQ(errorOf({packedResource(10, 20, 67'305'472)}), std::nullopt);
  EXPECT_EQ(errorOf({packedResource(10, 20, 67'305'473)}), InspectorError::integrityFailure);
  EXPECT_EQ(errorOf({packedResource(10, 20, 1)}), std::nullopt);
}

TEST(PayloadExpectationTest, OneFileNamedTwiceMustBePromisedAlike) {
  const auto item = made(format::BackupMediaItemRecordV1::make(itemFields(1, identifiers({10}))));
  const std::vector<format::BackupManifestRecordV1> records{item, packedResource(10, 30, 5000), packedResource(11, 30, 5000)};
  const auto collected = PayloadExpectations::collect(records);
  ASSERT_TRUE(collected.has_value());
  ASSERT_EQ(collected->size(), 1u);
  const auto& expectation = collected->begin()->second;
  EXPECT_EQ(expectation.container, Container::pack);
  EXPECT_EQ(expectation.byteCount, 5000u);
  EXPECT_EQ(expectation.sha256, Bytes(digest(30).begin(), digest(30).end()));
  EXPECT_EQ(errorOf({packedResource(10, 30, 5000), packedResource(11, 30, 5001)}), InspectorError::integrityFailure);
}

TEST(PayloadExpectationTest, MergingTwoManifestsRefusesAFilePromisedTwoWays) {
  PayloadExpectationMap global;
  const auto first = PayloadExpectations::collect(std::vector{packedResource(10, 30, 5000), chunkedResource(11, 40, 900)});
  const auto same = PayloadExpectations::collect(std::vector{packedResource(12, 30, 5000)});
  const auto longer = PayloadExpectations::collect(std::vector{packedResource(13, 30, 5001)});
  const auto otherKind = PayloadExpectations::collect(std::vector{chunkedResource(14, 30, 5000)});
  ASSERT_TRUE(first && same && longer && otherKind);
  EXPECT_TRUE(PayloadExpectations::merge(global, *first).has_value());
  EXPECT_TRUE(PayloadExpectations::merge(global, *same).has_value());
  EXPECT_EQ(global.size(), 2u);
  EXPECT_EQ(PayloadExpectations::merge(global, *longer).error(), InspectorError::integrityFailure);
  EXPECT_EQ(PayloadExpectations::merge(global, *otherKind).error(), InspectorError::integrityFailure);
}

}  // namespace

}  // namespace galdrine::recovery
