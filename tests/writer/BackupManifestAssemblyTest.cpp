#include <gtest/gtest.h>

#include "writer/BackupManifestAssembly.hpp"
#include "support/TemporaryDirectory.hpp"
#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using Kind = format::BackupManifestSectionKindV1;

[[nodiscard]] Identifier numbered(std::uint32_t number, std::uint8_t tag) {
  Identifier identifier{tag};
  for (std::size_t byte = 0; byte < 4; ++byte) identifier[12 + byte] = static_cast<std::uint8_t>(number >> (8 * (3 - byte)));
  return identifier;
}

// A resource of 4,096 one-byte chunks has the largest record a resource can have: about
// 450 KB, so that a section fills its 8 MiB long before its 4,096 records.
[[nodiscard]] Record widestResource(std::uint32_t number) {
  std::vector<format::BackupPayloadPartRecordV1> parts;
  const platform::SHA256Digest digest{};
  for (std::uint32_t ordinal = 0; ordinal < 4096; ++ordinal) {
    parts.push_back(*format::BackupPayloadPartRecordV1::make({ordinal, ordinal, 1, digest,
                                                              format::BackupPayloadContainerKindV1::chunk,
                                                              numbered(number * 4096 + ordinal, 0xC0), ordinal, 1, digest}));
  }
  const Identifier identifier = numbered(number, 0x20);
  const Identifier item = numbered(number, 0x10);
  const Identifier key = numbered(number, 0x30);
  return *format::BackupMediaResourceRecordV1::make({identifier, item, format::BackupMediaResourceRoleV1::primary,
                                                     "public.jpeg", 4096, std::nullopt, std::nullopt, std::nullopt,
                                                     digest, key, parts});
}

TEST(BackupManifestAssembly, SectionsCloseAtTheirRecordCountOrBeforeTheirByteLimit) {
  std::vector<Record> records;
  for (std::uint32_t number = 0; number < 5000; ++number) {
    records.emplace_back(*format::BackupTombstoneRecordV1::make({numbered(number, 0x70), 0, {}}));
  }
  for (std::uint32_t number = 0; number < 40; ++number) records.push_back(widestResource(number));
  std::ranges::stable_sort(records, [](const Record& left, const Record& right) {
    return left.kind() != right.kind() ? left.kind() < right.kind() : ByteOrder::precedes(left.sortKey(), right.sortKey());
  });
  std::uint8_t drawn = 0;
  const auto sections = BackupManifestAssembly::sections(
      records, Identifier{0xAA}, Identifier{0xBB}, BackupPayloadLayout{},
      [&] { return std::expected<Identifier, Error>(Identifier{0x5E, ++drawn}); });
  ASSERT_TRUE(sections);

  std::vector<Record> gathered;
  std::size_t resourceSections = 0;
  std::vector<std::size_t> tombstoneCounts;
  for (std::size_t ordinal = 0; ordinal < sections->size(); ++ordinal) {
    const auto& section = (*sections)[ordinal];
    EXPECT_EQ(section.ordinal(), ordinal);
    EXPECT_TRUE(format::BackupGraphV1::manifestSectionFitsPlaintextLimit(section));
    resourceSections += section.kind() == Kind::resource;
    if (section.kind() == Kind::tombstone) tombstoneCounts.push_back(section.records().size());
    auto decoded = format::BackupManifestRecordCodecV1::records(section);
    ASSERT_TRUE(decoded);
    std::ranges::move(*decoded, std::back_inserter(gathered));
  }
  EXPECT_EQ(gathered, records);
  EXPECT_GE(resourceSections, 2u);
  EXPECT_EQ(tombstoneCounts, (std::vector<std::size_t>{4096, 904}));
  EXPECT_EQ(sections->front().kind(), Kind::resource);
  // Byte-limited sections are full: one more record would not have fitted under the estimate.
  EXPECT_GT((*sections)[0].encodedByteCount() + 450000, format::BackupFormatV1::maximumManifestSectionPlaintextByteCount);

  // Two records of one kind with one sort key cannot share a section.
  std::vector<Record> repeated{records.back(), records.back()};
  EXPECT_EQ(BackupManifestAssembly::sections(repeated, Identifier{0xAA}, Identifier{0xBB}, {},
                                                       [] { return std::expected<Identifier, Error>(Identifier{}); })
                .error(),
            Failure(format::BackupGraphV1Error::invalidRecordSet));
}

TEST(BackupManifestAssembly, AManifestOfManyTombstonesIsWrittenInSeveralSections) {
  const testsupport::TemporaryDirectory directory;
  BackupWriterSettings defaults = settings();
  defaults.layout = {};
  auto writer = Writer::create(directory / "Library.galdrine", {std::nullopt, ByteView(kRecoveryKey)}, defaults);
  ASSERT_TRUE(writer);
  BackupLibrarySnapshot library;
  for (std::uint32_t number = 0; number < 4097; ++number) library.tombstones.push_back({numbered(number, 0x70), 5, {}});
  const auto written = writer->writeCommit(library);
  ASSERT_TRUE(written);
  EXPECT_EQ(written->sectionFiles.size(), 2u);
  EXPECT_EQ(written->summary.counts.tombstoneCount(), 4097u);
  EXPECT_EQ(written->summary.encryptedPayloadByteCount, 0u);
  expectSoundManifest(*writer, written->commit.commit());
}

}  // namespace

}  // namespace galdrine::writer
