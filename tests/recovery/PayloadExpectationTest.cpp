// What manifests promise about payload files: container ceilings and one promise per file.

#include "recovery/inspection/PayloadExpectation.hpp"

#include <gtest/gtest.h>

#include "support/ManifestTestRecords.hpp"
#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recovery {

namespace {

using namespace testsupport::ManifestTestRecords;
constexpr auto integrityFailure = std::unexpected(RecoveryPackageInspectorError::integrityFailure);

// resourceIn gives resource `resource` whose one part lies in the file `artifact` of
// `fileByteCount` bytes, a pack segment or a chunk.
[[nodiscard]] format::BackupManifestRecordV1 resourceIn(bool packed, std::uint64_t resource, std::uint64_t artifact,
                                                        std::uint64_t fileByteCount) {
  auto part = packed ? packPartFields(artifact, 0, 1000, resource) : chunkPartFields(artifact, 0, 0, 1000);
  part.artifactFileByteCount = fileByteCount;
  auto fields = packed ? packedResourceFields(resource, 1, 2, artifact, 0)
                       : chunkedResourceFields(resource, 1, 2, artifact, 1, 1000);
  fields.parts = partsOf({made(format::BackupPayloadPartRecordV1::make(part))});
  return made(format::BackupMediaResourceRecordV1::make(fields));
}

[[nodiscard]] std::expected<PayloadExpectationMap, RecoveryPackageInspectorError> collected(
    std::vector<format::BackupManifestRecordV1> records) {
  return PayloadExpectations::collect(records);
}

TEST(PayloadExpectationTest, EachContainerHasItsOwnInclusiveCeiling) {
  EXPECT_TRUE(collected({resourceIn(false, 10, 20, 16'908'288)}));
  EXPECT_EQ(collected({resourceIn(false, 10, 20, 16'908'289)}), integrityFailure);
  EXPECT_TRUE(collected({resourceIn(true, 10, 20, 67'305'472)}));
  EXPECT_EQ(collected({resourceIn(true, 10, 20, 67'305'473)}), integrityFailure);
  EXPECT_TRUE(collected({resourceIn(true, 10, 20, 1)}));
}

TEST(PayloadExpectationTest, OneFileMustBePromisedAlikeWithinAManifestAndAcrossManifests) {
  const auto shared = collected({made(format::BackupMediaItemRecordV1::make(itemFields(1, identifiers({10})))),
                                 resourceIn(true, 10, 30, 5000), resourceIn(true, 11, 30, 5000)});
  ASSERT_TRUE(shared.has_value());
  const auto bytes = [](ByteView view) { return Bytes(view.begin(), view.end()); };
  EXPECT_EQ(*shared, (PayloadExpectationMap{{bytes(identifier(30)),
                                             {format::BackupPayloadContainerKindV1::pack, 5000, bytes(digest(30))}}}));
  EXPECT_EQ(collected({resourceIn(true, 10, 30, 5000), resourceIn(true, 11, 30, 5001)}), integrityFailure);

  PayloadExpectationMap global;
  EXPECT_TRUE(
      PayloadExpectations::merge(global, *collected({resourceIn(true, 10, 30, 5000), resourceIn(false, 11, 40, 900)})));
  EXPECT_TRUE(PayloadExpectations::merge(global, *collected({resourceIn(true, 12, 30, 5000)})));
  EXPECT_EQ(global.size(), 2u);
  EXPECT_EQ(PayloadExpectations::merge(global, *collected({resourceIn(true, 13, 30, 5001)})), integrityFailure);
  EXPECT_EQ(PayloadExpectations::merge(global, *collected({resourceIn(false, 14, 30, 5000)})), integrityFailure);
}

}  // namespace

}  // namespace galdrine::recovery
