#include "writer/BackupManifestAssembly.hpp"

#include <gtest/gtest.h>

#include "format/graph/BackupGraphV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;

[[nodiscard]] Identifier numbered(std::uint32_t number, std::uint8_t tag) {
  Identifier identifier{tag};
  for (std::size_t byte = 0; byte < 4; ++byte)
    identifier[12 + byte] = static_cast<std::uint8_t>(number >> (8 * (3 - byte)));
  return identifier;
}

// A resource of 4,096 one-byte chunks has the largest record a resource can have: about
// 450 KB, so that a section fills its 8 MiB long before its 4,096 records.
[[nodiscard]] Record widestResource(std::uint32_t number) {
  std::vector<format::BackupPayloadPartRecordV1> parts;
  const platform::SHA256Digest digest{};
  for (std::uint32_t ordinal = 0; ordinal < 4096; ++ordinal) {
    parts.push_back(*format::BackupPayloadPartRecordV1::make(
        {ordinal, ordinal, 1, digest, format::BackupPayloadContainerKindV1::chunk,
         numbered(number * 4096 + ordinal, 0xC0), ordinal, 1, digest}));
  }
  return *format::BackupMediaResourceRecordV1::make(
      {numbered(number, 0x20), numbered(number, 0x10), format::BackupMediaResourceRoleV1::primary, "public.jpeg", 4096,
       std::nullopt, std::nullopt, std::nullopt, digest, numbered(number, 0x30), parts});
}

TEST(BackupManifestAssembly, SectionsCloseAtTheirRecordCountOrBeforeTheirByteLimit) {
  std::vector<Record> records;
  for (std::uint32_t number = 0; number < 5000; ++number) {
    records.emplace_back(*format::BackupTombstoneRecordV1::make({numbered(number, 0x70), 0, {}}));
  }
  for (std::uint32_t number = 0; number < 40; ++number) records.push_back(widestResource(number));
  std::ranges::stable_sort(records, [](const Record& left, const Record& right) {
    return left.kind() != right.kind() ? left.kind() < right.kind()
                                       : ByteOrder::precedes(left.sortKey(), right.sortKey());
  });
  const auto nextIdentifier = [] { return std::expected<Identifier, Error>(Identifier{}); };
  const auto sections = BackupManifestAssembly::sections(records, {0xAA}, {0xBB}, {}, nextIdentifier);
  ASSERT_TRUE(sections);
  std::vector<Record> gathered;
  std::vector<std::size_t> sizes;  // records of each section
  for (std::size_t ordinal = 0; ordinal < sections->size(); ++ordinal) {
    const auto& section = (*sections)[ordinal];
    EXPECT_EQ(section.ordinal(), ordinal);
    EXPECT_TRUE(format::BackupGraphV1::manifestSectionFitsPlaintextLimit(section));
    sizes.push_back(section.records().size());
    auto decoded = format::BackupManifestRecordCodecV1::records(section);
    ASSERT_TRUE(decoded);
    std::ranges::move(*decoded, std::back_inserter(gathered));
  }
  EXPECT_EQ(gathered, records);
  // The resources fill two sections by bytes; the tombstones one of 4,096 records and the rest.
  EXPECT_EQ(sizes, (std::vector<std::size_t>{sizes[0], 40 - sizes[0], 4096, 904}));
  // A byte-limited section is full: one more record would not have fitted under the estimate.
  EXPECT_GT((*sections)[0].encodedByteCount() + 450000,
            format::BackupFormatV1::maximumManifestSectionPlaintextByteCount);

  // Two records of one kind with one sort key cannot share a section.
  const std::vector<Record> repeated{records.back(), records.back()};
  EXPECT_EQ(BackupManifestAssembly::sections(repeated, {0xAA}, {0xBB}, {}, nextIdentifier).error(),
            Failure(format::BackupGraphV1Error::invalidRecordSet));
}

}  // namespace

}  // namespace galdrine::writer
