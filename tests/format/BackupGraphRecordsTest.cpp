#include <gtest/gtest.h>

#include <string_view>

#include "BackupGraphTestRecords.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupGraphV1Error;
using Kind = BackupManifestSectionKindV1;
using Compression = BackupManifestCompressionV1;

template <typename Record>
void expectRoundTrip(const Record& record) {
  const Bytes encoded = take(record.encoded());
  const auto decoded = Record::decode(encoded);
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(*decoded, record);
  EXPECT_EQ(take(decoded->encoded()), encoded);
}

TEST(BackupGraphRecords, EveryRecordRoundTripsByteForByte) {
  expectRoundTrip(head());
  expectRoundTrip(commit());
  expectRoundTrip(snapshot());
  expectRoundTrip(root());
  expectRoundTrip(section());
  const auto rootCommit = take(BackupCommitV1::make(identifier(1), kLibrary, std::nullopt, reference(2), kManifest,
                                                            kManifest, 0, 0, 0, digest(1), {}));
  expectRoundTrip(rootCommit);
  EXPECT_TRUE(fieldOf(owned(take(rootCommit.encoded())), 3).isNull());
}

TEST(BackupGraphRecords, NegativeTimestampIsACBORNegativeInteger) {
  const Value form = owned(take(head(-1).encoded()));
  EXPECT_EQ(fieldOf(form, 4), Value::negative(0));
  EXPECT_EQ(take(BackupHeadV1::decode(encode(form))).createdAtUTCMilliseconds(), -1);
}

TEST(BackupGraphRecords, ReferencesAndCountsCheckTheirFieldsInOrder) {
  using Reference = BackupArtifactReferenceV1;
  EXPECT_EQ(Reference::make(filled(15, 1), 0, digest(1), 1, digest(1)).error(), Error::invalidIdentifier);
  EXPECT_EQ(Reference::make(identifier(1), 1, digest(1), 0, filled(31, 1)).error(), Error::invalidReference);
  EXPECT_EQ(Reference::make(identifier(1), 1, digest(1), 1, filled(33, 1)).error(), Error::invalidDigest);
  EXPECT_TRUE(BackupManifestCountsV1::make(0, 0, 0, 0, 0, 0, 2'000'000).has_value());
  EXPECT_EQ(BackupManifestCountsV1::make(0, 0, 0, 0, 0, 0, 2'000'001).error(), Error::invalidCount);
  EXPECT_EQ(BackupManifestRecordBlobV1::make(filled(33, 1), Bytes{1}).error(), Error::invalidRecordSet);
  EXPECT_EQ(BackupManifestRecordBlobV1::make(Bytes{1}, Bytes{}).error(), Error::invalidRecordSet);
  EXPECT_TRUE(BackupManifestRecordBlobV1::make(filled(32, 1), filled(1'048'576, 1)).has_value());
  EXPECT_EQ(BackupManifestRecordBlobV1::make(Bytes{1}, filled(1'048'577, 1)).error(), Error::invalidRecordSet);
}

TEST(BackupGraphRecords, CommitAcknowledgesAtMost256TipsInStrictOrder) {
  const auto makeWith = [](std::vector<BackupArtifactReferenceV1> tips) {
    return BackupCommitV1::make(identifier(0xFFFF), kLibrary, reference(0xFFFE), reference(1), kManifest, kManifest,
                                        1, 1, 0, digest(1), std::move(tips));
  };
  std::vector<BackupArtifactReferenceV1> tips;
  for (std::uint32_t number = 0; number < 256; ++number) tips.push_back(reference(number));
  const auto full = makeWith(tips);
  ASSERT_TRUE(full.has_value());
  expectRoundTrip(*full);
  tips.push_back(reference(300));
  EXPECT_EQ(makeWith(tips).error(), Error::invalidReference);
  EXPECT_EQ(makeWith({reference(3), reference(3)}).error(), Error::invalidReference);
  EXPECT_EQ(makeWith({reference(4), reference(3)}).error(), Error::invalidReference);
  EXPECT_EQ(makeWith({reference(0xFFFF)}).error(), Error::invalidReference);
}

TEST(BackupGraphRecords, SectionsNeedOneTo4096OrderedRecords) {
  const auto makeWith = [](std::uint64_t ordinal, std::vector<BackupManifestRecordBlobV1> records,
                           Compression compression = Compression::none) {
    return BackupManifestSectionV1::make(identifier(1), kManifest, kLibrary, ordinal, Kind::album, compression,
                                                 std::move(records));
  };
  EXPECT_EQ(makeWith(0, {}).error(), Error::invalidRecordSet);
  EXPECT_EQ(makeWith(4096, {blob(1)}).error(), Error::invalidRecordSet);
  EXPECT_EQ(makeWith(4095, {blob(2), blob(2)}).error(), Error::invalidRecordSet);
  EXPECT_EQ(makeWith(0, {blob(1)}, Compression::zstd).error(), Error::unsupportedCompression);
  std::vector<BackupManifestRecordBlobV1> records;
  for (std::uint32_t number = 0; number < 4097; ++number) {
    records.push_back(take(BackupManifestRecordBlobV1::make(identifier(number), Bytes{1})));
  }
  EXPECT_EQ(makeWith(0, records).error(), Error::invalidRecordSet);
  records.pop_back();
  const auto full = makeWith(4095, records);
  ASSERT_TRUE(full.has_value());
  expectRoundTrip(*full);
}

TEST(BackupGraphRecords, EncodedByteCountPredictsTheEncodingAndTheFit) {
  // Seven records of 1 MiB and an eighth sized to end exactly at the 8 MiB limit, then one
  // byte more. The eighth record's length head takes 5 bytes at that size, 1 at size 1.
  const std::uint64_t limit = 8'388'608;
  const auto sectionWithLast = [](std::size_t lastByteCount) {
    std::vector<BackupManifestRecordBlobV1> records;
    for (std::uint8_t key = 1; key <= 7; ++key) records.push_back(blob(key, 1'048'576));
    records.push_back(blob(8, lastByteCount));
    return section(0, Kind::item, std::move(records));
  };
  const std::size_t exact = static_cast<std::size_t>(limit - sectionWithLast(1).encodedByteCount() - 3);
  ASSERT_EQ(sectionWithLast(exact).encodedByteCount(), limit);
  for (const std::size_t byteCount : {exact, exact + 1}) {
    const auto candidate = sectionWithLast(byteCount);
    const auto encoded = candidate.encoded();
    const bool fits = BackupGraphV1::manifestSectionFitsPlaintextLimit(candidate);
    EXPECT_EQ(fits, byteCount == exact);
    EXPECT_EQ(encoded.has_value(), fits);
    if (encoded) {
      EXPECT_EQ(encoded->size(), candidate.encodedByteCount());
    } else {
      EXPECT_EQ(encoded.error(), Error::malformedArtifact);
      EXPECT_EQ(BackupGraphV1::sealManifestSection(candidate, kPackage, kKey).error(), Error::malformedArtifact);
    }
  }
  EXPECT_EQ(take(section().encoded()).size(), section().encodedByteCount());
}

TEST(BackupGraphRecords, FileNamesAreLowerHexWithTheKindsExtension) {
  const Bytes name = {0x00, 0x01, 0xAB, 0xCD, 0xEF, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0x80, 0x90, 0xA0, 0xFF};
  EXPECT_EQ(take(BackupGraphV1::headFileName(name)), "0001abcdef102030405060708090a0ff.head");
  EXPECT_EQ(take(BackupGraphV1::commitFileName(name)), "0001abcdef102030405060708090a0ff.commit");
  EXPECT_EQ(take(BackupGraphV1::snapshotFileName(name)), "0001abcdef102030405060708090a0ff.snapshot");
  EXPECT_EQ(take(BackupGraphV1::manifestFileName(name)), "0001abcdef102030405060708090a0ff.manifest");
  EXPECT_EQ(BackupGraphV1::headFileName(filled(15, 0)).error(), Error::invalidIdentifier);
  EXPECT_EQ(BackupGraphV1::manifestFileName(filled(17, 0)).error(), Error::invalidIdentifier);
}

}  // namespace

}  // namespace galdrine::format
