#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "BackupGraphTestRecords.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupGraphV1Error;
using Kind = BackupManifestSectionKindV1;
using Sections = std::vector<BackupManifestSectionReferenceV1>;

TEST(BackupGraphSectionSet, RefusesEachBrokenRuleAsTheRuleNames) {
  const auto itemCounts = [](std::uint64_t payloadKeys, std::uint64_t items) { return counts(payloadKeys, items); };
  const struct {
    std::string_view name;
    Sections sections;
    BackupManifestCountsV1 counts;
    std::optional<Error> expected;
  } cases[] = {
      {"no sections and no records", {}, itemCounts(0, 0), std::nullopt},
      {"no sections but a record", {}, itemCounts(0, 1), Error::invalidSectionSet},
      {"the sample set", rootSections(), itemCounts(3, 1), std::nullopt},
      {"ordinals not from 0", {sectionReference(1, Kind::item, 1, 1, 1)}, itemCounts(0, 1), Error::invalidSectionSet},
      {"ordinals skipping one",
       {sectionReference(0, Kind::item, 1, 1, 1), sectionReference(2, Kind::item, 1, 2, 2)},
       itemCounts(0, 2),
       Error::invalidSectionSet},
      {"one artifact twice",
       {sectionReference(0, Kind::item, 1, 1, 1, 7), sectionReference(1, Kind::item, 1, 2, 2, 7)},
       itemCounts(0, 2),
       Error::invalidSectionSet},
      {"kind decreasing",
       {sectionReference(0, Kind::item, 1, 1, 1), sectionReference(1, Kind::payloadKey, 1, 2, 2)},
       itemCounts(1, 1),
       Error::invalidSectionSet},
      {"touching sort keys in one kind",
       {sectionReference(0, Kind::item, 1, 1, 2), sectionReference(1, Kind::item, 1, 2, 3)},
       itemCounts(0, 2),
       Error::invalidSectionSet},
      {"touching sort keys across kinds",
       {sectionReference(0, Kind::payloadKey, 1, 1, 2), sectionReference(1, Kind::item, 1, 2, 3)},
       itemCounts(1, 1),
       std::nullopt},
      {"order before counts",
       {sectionReference(0, Kind::item, 1, 1, 2), sectionReference(1, Kind::item, 1, 2, 3)},
       itemCounts(5, 5),
       Error::invalidSectionSet},
      {"a kind's count differs", rootSections(), itemCounts(3, 2), Error::invalidSectionSet},
      {"records of an absent kind", rootSections(), take(BackupManifestCountsV1::make(3, 1, 0, 0, 0, 0, 1)),
       Error::invalidSectionSet},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(std::string(testCase.name));
    const auto result = BackupGraphV1::validateSectionSet(testCase.sections, testCase.counts);
    if (testCase.expected) {
      ASSERT_FALSE(result.has_value());
      EXPECT_EQ(result.error(), *testCase.expected);
    } else {
      EXPECT_TRUE(result.has_value());
    }
  }
}

TEST(BackupGraphSectionSet, AtMost4096Sections) {
  Sections sections;
  // Sort keys of two bytes keep 4,096 sections of one kind in strict order.
  for (std::uint64_t ordinal = 0; ordinal < 4096; ++ordinal) {
    const auto artifact = take(BackupArtifactReferenceV1::make(identifier(static_cast<std::uint32_t>(ordinal)), 9,
                                                                      digest(1), 8, digest(2)));
    const Bytes key{static_cast<std::uint8_t>(ordinal >> 8), static_cast<std::uint8_t>(ordinal)};
    sections.push_back(take(BackupManifestSectionReferenceV1::make(
        artifact, ordinal, Kind::item, BackupManifestCompressionV1::none, 1, key, key, 8, digest(2))));
  }
  EXPECT_TRUE(BackupGraphV1::validateSectionSet(sections, counts(0, 4096)).has_value());
  const auto digest = BackupGraphV1::sectionSetDigest(sections);
  ASSERT_TRUE(digest.has_value());
  sections.push_back(sections.back());
  EXPECT_EQ(BackupGraphV1::validateSectionSet(sections, counts(0, 4097)).error(), Error::invalidSectionSet);
}

TEST(BackupGraphSectionSet, DigestCoversTheCanonicalArrayInOrder) {
  const auto empty = platform::SHA256::digest(Bytes{0x80});
  EXPECT_EQ(take(BackupGraphV1::sectionSetDigest({})), Bytes(empty.begin(), empty.end()));
  Sections sections = rootSections();
  Bytes array{0x83};
  for (const auto& section : sections) {
    const Bytes item = encode(section.cborValue());
    array.insert(array.end(), item.begin(), item.end());
  }
  const auto whole = platform::SHA256::digest(array);
  EXPECT_EQ(take(BackupGraphV1::sectionSetDigest(sections)), Bytes(whole.begin(), whole.end()));
  std::swap(sections[0], sections[1]);
  EXPECT_NE(take(BackupGraphV1::sectionSetDigest(sections)), Bytes(whole.begin(), whole.end()));
}

}  // namespace

}  // namespace galdrine::format
