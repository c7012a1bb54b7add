// The field rules of each record kind, one table per kind: a valid record, then one row per
// fault with the exact error, rows with two faults pinning which check comes first. Every
// record a row accepts must also survive its canonical form unchanged.

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "support/ManifestTestRecords.hpp"

namespace galdrine::format {

using namespace testsupport::ManifestTestRecords;

namespace {

namespace Codec = BackupManifestRecordCodecV1;

template <typename Record>
struct RuleCase {
  std::string name;
  std::function<void(typename Record::Fields&)> change;
  std::optional<Error> expected;  // nothing: the record is valid
};

template <typename Record>
void expectRules(const typename Record::Fields& valid, const std::vector<RuleCase<Record>>& cases) {
  for (const auto& rule : cases) {
    auto fields = valid;
    rule.change(fields);
    const auto record = Record::make(fields);
    if (rule.expected) {
      ASSERT_FALSE(record.has_value()) << rule.name;
      EXPECT_EQ(record.error(), *rule.expected) << rule.name;
      continue;
    }
    ASSERT_TRUE(record.has_value()) << rule.name;
    const BackupManifestRecordV1 general(*record);
    const auto blob = Codec::recordBlob(general);
    ASSERT_TRUE(blob.has_value()) << rule.name;
    EXPECT_EQ(Codec::decodeRecord(general.kind(), blob->canonicalRecord()), general) << rule.name;
  }
}

const std::string kLongText(1025, 'n');
const Bytes kInvalidUTF8{0xC3, 0x28};
std::string_view invalidUTF8() { return ByteText::text(kInvalidUTF8); }
std::string_view textOfByteCount(std::size_t byteCount) { return std::string_view(kLongText).substr(0, byteCount); }
std::uint64_t bitsOf(double seconds) { return std::bit_cast<std::uint64_t>(seconds); }

using Item = BackupMediaItemRecordV1;
using Part = BackupPayloadPartRecordV1;
using Resource = BackupMediaResourceRecordV1;
using Folder = BackupAlbumFolderRecordV1;
using Album = BackupAlbumRecordV1;
using Source = BackupMediaSourceTypeV1;

}  // namespace

TEST(BackupManifestRecordRules, PayloadKey) {
  expectRules<BackupPayloadKeyRecordV1>(
      payloadKeyFields(1, BackupPayloadKeyScopeV1::pack, 2),
      {
          {"15-byte identifier", [](auto& f) { f.identifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"17-byte bound identifier", [](auto& f) { f.boundIdentifier = bytesOf(1, 17); }, Error::invalidIdentifier},
          {"identifier before frame", [](auto& f) { f.boundIdentifier = bytesOf(1, 15); f.wrappedKeyFrame = {}; }, Error::invalidIdentifier},
          {"empty frame", [](auto& f) { f.wrappedKeyFrame = {}; }, Error::invalidKey},
          {"4,097-byte frame", [](auto& f) { f.wrappedKeyFrame = bytesOf(1, 4097); }, Error::invalidKey},
          {"4,096-byte frame", [](auto& f) { f.wrappedKeyFrame = bytesOf(1, 4096); }, std::nullopt},
      });
}

TEST(BackupManifestRecordRules, Item) {
  expectRules<Item>(
      itemFields(1, identifiers({2, 3})),
      {
          {"15-byte identifier", [](auto& f) { f.identifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"identifier before name", [](auto& f) { f.identifier = bytesOf(1, 15); f.originalFilename = ""; }, Error::invalidIdentifier},
          {"empty name from photos", [](auto& f) { f.originalFilename = ""; }, Error::invalidValue},
          {"empty name from files", [](auto& f) { f.originalFilename = ""; f.sourceType = Source::files; }, Error::invalidValue},
          {"empty name from the private camera", [](auto& f) { f.originalFilename = ""; f.sourceType = Source::privateCamera; }, std::nullopt},
          {"empty name from the share extension", [](auto& f) { f.originalFilename = ""; f.sourceType = Source::shareExtension; }, std::nullopt},
          {"1,024-byte name", [](auto& f) { f.originalFilename = textOfByteCount(1024); }, std::nullopt},
          {"1,025-byte name", [](auto& f) { f.originalFilename = textOfByteCount(1025); }, Error::invalidValue},
          {"name not UTF-8", [](auto& f) { f.originalFilename = invalidUTF8(); }, Error::invalidValue},
          {"zone 64,800", [](auto& f) { f.displayTimeZoneSeconds = 64800; }, std::nullopt},
          {"zone -64,800", [](auto& f) { f.displayTimeZoneSeconds = -64800; }, std::nullopt},
          {"zone 64,801", [](auto& f) { f.displayTimeZoneSeconds = 64801; }, Error::invalidValue},
          {"zone -64,801", [](auto& f) { f.displayTimeZoneSeconds = -64801; }, Error::invalidValue},
          {"no zone", [](auto& f) { f.displayTimeZoneSeconds = std::nullopt; }, std::nullopt},
          {"trashed with a date", [](auto& f) { f.lifecycle = BackupMediaLifecycleV1::trash; f.trashDateUTCMilliseconds = -1; }, std::nullopt},
          {"trashed without a date", [](auto& f) { f.lifecycle = BackupMediaLifecycleV1::trash; }, Error::invalidValue},
          {"active with a trash date", [](auto& f) { f.trashDateUTCMilliseconds = 0; }, Error::invalidValue},
          {"no resources", [](auto& f) { f.resourceIdentifiers = {}; }, Error::invalidValue},
          {"8 resources", [](auto& f) { f.resourceIdentifiers = identifiers({1, 2, 3, 4, 5, 6, 7, 8}); }, std::nullopt},
          {"9 resources", [](auto& f) { f.resourceIdentifiers = identifiers({1, 2, 3, 4, 5, 6, 7, 8, 9}); }, Error::invalidValue},
          {"resources descending", [](auto& f) { f.resourceIdentifiers = identifiers({3, 2}); }, Error::invalidValue},
          {"a resource twice", [](auto& f) { f.resourceIdentifiers = identifiers({2, 2}); }, Error::invalidValue},
          {"15-byte resource identifier", [](auto& f) { f.resourceIdentifiers = viewsOf({bytesOf(2, 15)}); }, Error::invalidValue},
          {"prefix sorts first", [](auto& f) { f.resourceIdentifiers = viewsOf({bytesOf(2, 16), bytesOf(2, 17)}); }, Error::invalidValue},
      });
}

TEST(BackupManifestRecordRules, Part) {
  constexpr std::uint64_t frameLimit = 16777216;
  const auto valid = packPartFields(1, 0, 1000, 2);
  const std::vector<RuleCase<Part>> cases{
      {"15-byte artifact", [](auto& f) { f.artifactIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
      {"artifact before digest", [](auto& f) { f.artifactIdentifier = bytesOf(1, 15); f.plaintextSHA256 = bytesOf(1, 31); }, Error::invalidIdentifier},
      {"31-byte plaintext digest", [](auto& f) { f.plaintextSHA256 = bytesOf(1, 31); }, Error::invalidDigest},
      {"33-byte file digest", [](auto& f) { f.artifactFileSHA256 = bytesOf(1, 33); }, Error::invalidDigest},
      {"digest before size", [](auto& f) { f.artifactFileSHA256 = bytesOf(1, 33); f.plaintextByteCount = 0; }, Error::invalidDigest},
      {"empty part", [](auto& f) { f.plaintextByteCount = 0; }, Error::invalidResourceLayout},
      {"a frame's worth", [](auto& f) { f.plaintextByteCount = frameLimit; }, std::nullopt},
      {"one byte over a frame", [](auto& f) { f.plaintextByteCount = frameLimit + 1; }, Error::invalidResourceLayout},
      {"empty file", [](auto& f) { f.artifactFileByteCount = 0; }, Error::invalidResourceLayout},
  };
  for (const auto& rule : cases) {
    auto fields = valid;
    rule.change(fields);
    const auto part = Part::make(fields);
    EXPECT_EQ(errorOf(part), rule.expected) << rule.name;
  }
}

TEST(BackupManifestRecordRules, ResourceFields) {
  expectRules<Resource>(
      packedResourceFields(1, 2, 3, 4, 0),
      {
          {"15-byte identifier", [](auto& f) { f.identifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"15-byte item", [](auto& f) { f.itemIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"15-byte key", [](auto& f) { f.payloadKeyIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"identifier before digest", [](auto& f) { f.payloadKeyIdentifier = bytesOf(1, 15); f.plaintextSHA256 = {}; }, Error::invalidIdentifier},
          {"31-byte digest", [](auto& f) { f.plaintextSHA256 = bytesOf(1, 31); }, Error::invalidDigest},
          {"digest before type", [](auto& f) { f.plaintextSHA256 = bytesOf(1, 31); f.originalUTI = ""; }, Error::invalidDigest},
          {"empty type", [](auto& f) { f.originalUTI = ""; }, Error::invalidValue},
          {"255-byte type", [](auto& f) { f.originalUTI = textOfByteCount(255); }, std::nullopt},
          {"256-byte type", [](auto& f) { f.originalUTI = textOfByteCount(256); }, Error::invalidValue},
          {"type not UTF-8", [](auto& f) { f.originalUTI = invalidUTF8(); }, Error::invalidValue},
          {"empty resource", [](auto& f) { f.plaintextByteCount = 0; }, Error::invalidValue},
          {"over 2^36 bytes", [](auto& f) { f.plaintextByteCount = (std::uint64_t{1} << 36) + 1; }, Error::invalidValue},
          {"width without height", [](auto& f) { f.pixelHeight = std::nullopt; }, Error::invalidValue},
          {"height without width", [](auto& f) { f.pixelWidth = std::nullopt; }, Error::invalidValue},
          {"no pixels", [](auto& f) { f.pixelWidth = f.pixelHeight = std::nullopt; }, std::nullopt},
          {"zero width", [](auto& f) { f.pixelWidth = 0; }, Error::invalidValue},
          {"2^31 - 1 high", [](auto& f) { f.pixelHeight = 2147483647; }, std::nullopt},
          {"2^31 high", [](auto& f) { f.pixelHeight = 2147483648; }, Error::invalidValue},
          {"zero duration", [](auto& f) { f.durationIEEE754Bits = bitsOf(0.0); }, std::nullopt},
          {"negative zero duration", [](auto& f) { f.durationIEEE754Bits = bitsOf(-0.0); }, std::nullopt},
          {"negative duration", [](auto& f) { f.durationIEEE754Bits = bitsOf(-0.001); }, Error::invalidValue},
          {"not a number", [](auto& f) { f.durationIEEE754Bits = bitsOf(std::numeric_limits<double>::quiet_NaN()); }, Error::invalidValue},
          {"infinite duration", [](auto& f) { f.durationIEEE754Bits = bitsOf(std::numeric_limits<double>::infinity()); }, Error::invalidValue},
          {"value before layout", [](auto& f) { f.originalUTI = ""; f.parts = {}; }, Error::invalidValue},
      });
}

TEST(BackupManifestRecordRules, ResourceLayout) {
  const auto part = [](Part::Fields fields) { return made(Part::make(fields)); };
  const auto withParts = [](std::vector<Part> parts) { return [parts](auto& f) { f.parts = partsOf(parts); }; };
  auto secondChunkInFirstsFile = chunkPartFields(11, 1, 1000, 1000);
  secondChunkInFirstsFile.artifactIdentifier = identifier(10);
  auto chunkOutOfPlace = chunkPartFields(11, 1, 1000, 1000);
  chunkOutOfPlace.artifactOrdinal = 0;
  auto packAtOrdinal31 = packPartFields(4, 31, 1000, 1);
  auto packAtOrdinal32 = packPartFields(4, 32, 1000, 1);
  auto packOfOtherDigest = packPartFields(4, 0, 1000, 9);
  auto packAtOffset1 = packPartFields(4, 0, 1000, 1);
  packAtOffset1.plaintextOffset = 1;
  auto secondPack = packPartFields(4, 1, 1000, 1);
  secondPack.ordinal = 1;
  secondPack.plaintextOffset = 1000;

  auto twoChunks = chunkedResourceFields(1, 2, 3, 10, 2, 1000);
  expectRules<Resource>(
      twoChunks,
      {
          {"no parts", withParts({}), Error::invalidResourceLayout},
          {"ordinals 0, 0", withParts({part(chunkPartFields(10, 0, 0, 1000)), part(chunkPartFields(11, 0, 1000, 1000))}), Error::invalidResourceLayout},
          {"one chunk file twice", withParts({part(chunkPartFields(10, 0, 0, 1000)), part(secondChunkInFirstsFile)}), Error::invalidResourceLayout},
          {"chunk's place is not its ordinal", withParts({part(chunkPartFields(10, 0, 0, 1000)), part(chunkOutOfPlace)}), Error::invalidResourceLayout},
          {"a gap", withParts({part(chunkPartFields(10, 0, 0, 1000)), part(chunkPartFields(11, 1, 1001, 999))}), Error::invalidResourceLayout},
          {"short of the size", [](auto& f) { f.plaintextByteCount = 2001; }, Error::invalidResourceLayout},
          {"chunk then pack", withParts({part(chunkPartFields(10, 0, 0, 1000)), part(secondPack)}), Error::invalidResourceLayout},
      });
  expectRules<Resource>(
      packedResourceFields(1, 2, 3, 4, 0),
      {
          {"pack place 31", withParts({part(packAtOrdinal31)}), std::nullopt},
          {"pack place 32", withParts({part(packAtOrdinal32)}), Error::invalidResourceLayout},
          {"pack with another digest", withParts({part(packOfOtherDigest)}), Error::invalidResourceLayout},
          {"pack at offset 1", withParts({part(packAtOffset1)}), Error::invalidResourceLayout},
          {"two parts in a pack", [&](auto& f) { f.plaintextByteCount = 2000; withParts({part(packPartFields(4, 0, 1000, 1)), part(secondPack)})(f); }, Error::invalidResourceLayout},
      });
}

// The largest resource: 4,096 chunks of a frame's worth is exactly 2^36 bytes; one part more
// breaks the part count.
TEST(BackupManifestRecordRules, LargestChunkedResourceFitsTheRecordLimits) {
  constexpr std::uint64_t frame = 16777216;
  const auto largest = Resource::make(chunkedResourceFields(1, 2, 3, 100, 4096, frame));
  ASSERT_TRUE(largest.has_value());
  const auto blob = Codec::recordBlob(*largest);
  ASSERT_TRUE(blob.has_value());
  EXPECT_EQ(Codec::decodeRecord(BackupManifestSectionKindV1::resource, blob->canonicalRecord()),
            BackupManifestRecordV1(*largest));

  auto tooMany = chunkedResourceFields(1, 2, 3, 100, 4097, 1);
  EXPECT_EQ(errorOf(Resource::make(tooMany)), Error::invalidResourceLayout);
}

TEST(BackupManifestRecordRules, FolderAndAlbum) {
  const std::vector<std::pair<std::string, std::string_view>> badNames{
      {"empty", ""}, {"blanks and line breaks", " \t\n\r "}, {"ideographic space", "\u3000"}, {"513 bytes", textOfByteCount(513)},
      {"not UTF-8", invalidUTF8()}};
  for (const auto& [name, text] : badNames) {
    auto folder = folderFields(1, 2);
    folder.name = text;
    EXPECT_EQ(errorOf(Folder::make(folder)), Error::invalidValue) << name;
    auto album = albumFields(1, 2, 3);
    album.name = text;
    EXPECT_EQ(errorOf(Album::make(album)), Error::invalidText) << name;
  }
  expectRules<Folder>(folderFields(1, 2),
                      {
                          {"512-byte name", [](auto& f) { f.name = textOfByteCount(512); }, std::nullopt},
                          {"15-byte identifier", [](auto& f) { f.identifier = bytesOf(1, 15); }, Error::invalidIdentifier},
                          {"15-byte parent", [](auto& f) { f.parentFolderIdentifier = bytesOf(2, 15); }, Error::invalidIdentifier},
                          {"parent before name", [](auto& f) { f.parentFolderIdentifier = bytesOf(2, 15); f.name = ""; }, Error::invalidIdentifier},
                          {"its own parent", [](auto& f) { f.parentFolderIdentifier = identifier(1); }, Error::invalidValue},
                          {"no parent", [](auto& f) { f.parentFolderIdentifier = std::nullopt; }, std::nullopt},
                      });
  expectRules<Album>(albumFields(1, 2, 3),
                     {
                         {"15-byte cover", [](auto& f) { f.coverItemIdentifier = bytesOf(3, 15); }, Error::invalidIdentifier},
                         {"cover before name", [](auto& f) { f.coverItemIdentifier = bytesOf(3, 15); f.name = ""; }, Error::invalidIdentifier},
                         {"15-byte folder", [](auto& f) { f.parentFolderIdentifier = bytesOf(2, 15); }, Error::invalidIdentifier},
                         {"no folder, no cover", [](auto& f) { f.parentFolderIdentifier = f.coverItemIdentifier = std::nullopt; }, std::nullopt},
                     });
}

TEST(BackupManifestRecordRules, MembershipAndTombstone) {
  expectRules<BackupAlbumMembershipRecordV1>(
      membershipFields(1, 2),
      {
          {"15-byte album", [](auto& f) { f.albumIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"17-byte item", [](auto& f) { f.itemIdentifier = bytesOf(1, 17); }, Error::invalidIdentifier},
          {"extreme values", [](auto& f) { f.manualPosition = std::numeric_limits<std::int64_t>::min(); f.addedAtUTCMilliseconds = std::numeric_limits<std::int64_t>::max(); }, std::nullopt},
      });
  expectRules<BackupTombstoneRecordV1>(
      tombstoneFields(1, identifiers({2})),
      {
          {"15-byte item", [](auto& f) { f.itemIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
          {"no resources", [](auto& f) { f.resourceIdentifiers = {}; }, std::nullopt},
          {"8 resources", [](auto& f) { f.resourceIdentifiers = identifiers({1, 2, 3, 4, 5, 6, 7, 8}); }, std::nullopt},
          {"9 resources", [](auto& f) { f.resourceIdentifiers = identifiers({1, 2, 3, 4, 5, 6, 7, 8, 9}); }, Error::invalidValue},
          {"resources descending", [](auto& f) { f.resourceIdentifiers = identifiers({5, 4}); }, Error::invalidValue},
      });
}

}  // namespace galdrine::format
