// The manifest checked as a whole: a small library that passes, then one row per fault with
// the exact error, rows with two faults pinning the order of the steps, the totals and the
// required payload set digest.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"
#include "support/ManifestTestRecords.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

using namespace testsupport::ManifestTestRecords;

namespace {

namespace Codec = BackupManifestRecordCodecV1;
using Kind = BackupManifestSectionKindV1;
using Record = BackupManifestRecordV1;
using Scope = BackupPayloadKeyScopeV1;
using Role = BackupMediaResourceRoleV1;
using Summary = BackupManifestSemanticSummary;

const ByteView kPackage = bytesOf(0xAA00, 16);
const ByteView kDomain = bytesOf(0xAA01, 16);
const ByteView kMasterKey = bytesOf(0xAA02, 32);

// Numbers of the small library: keys 100+, items 200+, resources 300+, packs 400+, chunks
// 500+, folders 600+, albums 700+.
struct Library {
  std::vector<BackupPayloadKeyRecordV1> keys;
  std::vector<BackupMediaItemRecordV1::Fields> items;
  std::vector<BackupMediaResourceRecordV1::Fields> resources;
  std::vector<BackupAlbumFolderRecordV1::Fields> folders;
  std::vector<BackupAlbumRecordV1::Fields> albums;
  std::vector<BackupAlbumMembershipRecordV1::Fields> memberships;
  std::vector<BackupTombstoneRecordV1::Fields> tombstones;
};

BackupPayloadKeyRecordV1 wrappedKey(std::uint64_t key, Scope scope, std::uint64_t bound, ByteView package = kPackage,
                                            ByteView masterKey = kMasterKey) {
  return made(Codec::wrapPayloadKey(bytesOf(key, 32), identifier(key), scope, identifier(bound), package, kDomain, masterKey));
}

BackupMediaResourceRecordV1::Fields withRole(BackupMediaResourceRecordV1::Fields fields, Role role) {
  fields.role = role;
  return fields;
}

// A photo in pack 400, a live photo beside it, a video in two chunks, two folders, an album
// with two members, and the tombstone of a deleted item.
Library smallLibrary() {
  auto livePhoto = itemFields(202, identifiers({302, 303}));
  livePhoto.kind = BackupMediaKindV1::livePhoto;
  auto video = itemFields(203, identifiers({304}));
  video.kind = BackupMediaKindV1::video;
  return {
      .keys = {wrappedKey(100, Scope::pack, 400), wrappedKey(101, Scope::resource, 304)},
      .items = {itemFields(201, identifiers({301})), livePhoto, video},
      .resources = {packedResourceFields(301, 201, 100, 400, 0), packedResourceFields(302, 202, 100, 400, 1),
                    withRole(packedResourceFields(303, 202, 100, 400, 2), Role::pairedVideo),
                    chunkedResourceFields(304, 203, 101, 500, 2, 5000)},
      .folders = {folderFields(600, std::nullopt), folderFields(601, 600)},
      .albums = {albumFields(700, 601, 201)},
      .memberships = {membershipFields(700, 201), membershipFields(700, 202)},
      .tombstones = {tombstoneFields(209, identifiers({309}))},
  };
}

template <typename TypedRecord, typename Fields>
void appendMade(std::vector<Record>& records, const std::vector<Fields>& fields) {
  for (const auto& each : fields) records.push_back(made(TypedRecord::make(each)));
}

// sectionsOf makes one section of each kind that has records, in the order of the kinds.
std::vector<BackupManifestSectionV1> sectionsOf(const Library& library) {
  std::array<std::vector<Record>, 7> byKind;
  for (const auto& key : library.keys) byKind[0].push_back(key);
  appendMade<BackupMediaItemRecordV1>(byKind[1], library.items);
  appendMade<BackupMediaResourceRecordV1>(byKind[2], library.resources);
  appendMade<BackupAlbumFolderRecordV1>(byKind[3], library.folders);
  appendMade<BackupAlbumRecordV1>(byKind[4], library.albums);
  appendMade<BackupAlbumMembershipRecordV1>(byKind[5], library.memberships);
  appendMade<BackupTombstoneRecordV1>(byKind[6], library.tombstones);
  std::vector<BackupManifestSectionV1> sections;
  for (std::size_t kind = 0; kind < byKind.size(); ++kind) {
    if (byKind[kind].empty()) continue;
    auto section = Codec::makeSection(identifier(800 + sections.size()), identifier(900), kDomain, sections.size(),
                                      static_cast<Kind>(kind), byKind[kind]);
    EXPECT_TRUE(section.has_value()) << kind;
    if (section) sections.push_back(std::move(*section));
  }
  return sections;
}

std::expected<Summary, Error> validated(const Library& library) {
  return BackupManifestSemanticValidator::validateAndSummarize(sectionsOf(library), kPackage, kDomain, kMasterKey);
}

void updateBigEndian(platform::SHA256::Hasher& hasher, std::uint64_t value) {
  Bytes bytes(8);
  for (std::size_t index = 0; index < 8; ++index) bytes[index] = static_cast<std::uint8_t>(value >> (56 - 8 * index));
  hasher.update(bytes);
}

struct ExpectedArtifact {
  std::uint64_t identifier;
  std::uint64_t container;
  std::uint64_t fileByteCount;
  std::uint64_t fileDigest;
  std::uint64_t key;
};

// The digest written out by hand, artifacts given in ascending identifier order.
Bytes requiredPayloadSetDigest(const std::vector<ExpectedArtifact>& artifacts) {
  platform::SHA256::Hasher hasher;
  hasher.update(ByteText::view("galdrine/backup/required-payload-set/v1"));
  hasher.update(Bytes{0});
  updateBigEndian(hasher, artifacts.size());
  for (const auto& artifact : artifacts) {
    hasher.update(identifier(artifact.identifier));
    updateBigEndian(hasher, artifact.container);
    updateBigEndian(hasher, artifact.fileByteCount);
    hasher.update(digest(artifact.fileDigest));
    hasher.update(identifier(artifact.key));
  }
  const auto digest = hasher.finalize();
  return Bytes(digest.begin(), digest.end());
}

BackupManifestCountsV1 counts(std::uint64_t keys, std::uint64_t items, std::uint64_t resources, std::uint64_t folders,
                                      std::uint64_t albums, std::uint64_t memberships, std::uint64_t tombstones) {
  return made(BackupManifestCountsV1::make(keys, items, resources, folders, albums, memberships, tombstones));
}

}  // namespace

TEST(BackupManifestSemanticValidator, SummarisesAnEmptyManifest) {
  const auto summary = BackupManifestSemanticValidator::validateAndSummarize({}, kPackage, kDomain, kMasterKey);
  ASSERT_TRUE(summary.has_value());
  EXPECT_EQ(*summary, (Summary{counts(0, 0, 0, 0, 0, 0, 0), 0, 0, requiredPayloadSetDigest({})}));
}

TEST(BackupManifestSemanticValidator, SummarisesTheSmallLibrary) {
  const auto summary = validated(smallLibrary());
  ASSERT_TRUE(summary.has_value());
  EXPECT_EQ(summary->counts, counts(2, 3, 4, 2, 1, 2, 1));
  EXPECT_EQ(summary->logicalPlaintextByteCount, 3 * 1000 + 2 * 5000u);
  EXPECT_EQ(summary->encryptedPayloadByteCount, 100000 + 2 * 5064u);  // the pack once, for three resources
  EXPECT_EQ(summary->requiredPayloadSetSHA256,
            requiredPayloadSetDigest({{400, 0, 100000, 400, 100}, {500, 1, 5064, 500, 101}, {501, 1, 5064, 501, 101}}));
}

TEST(BackupManifestSemanticValidator, CountsASharedPackOnce) {
  Library onePhoto = smallLibrary();
  onePhoto.items.erase(onePhoto.items.begin() + 1);
  onePhoto.resources.erase(onePhoto.resources.begin() + 1, onePhoto.resources.begin() + 3);
  onePhoto.memberships.pop_back();
  const auto all = validated(smallLibrary());
  const auto fewer = validated(onePhoto);
  ASSERT_TRUE(all.has_value());
  ASSERT_TRUE(fewer.has_value());
  EXPECT_EQ(fewer->encryptedPayloadByteCount, all->encryptedPayloadByteCount);
  EXPECT_EQ(fewer->requiredPayloadSetSHA256, all->requiredPayloadSetSHA256);
}

TEST(BackupManifestSemanticValidator, RefusesEachFaultWithItsError) {
  struct FaultCase {
    std::string name;
    std::function<void(Library&)> change;
    Error expected;
  };
  const std::vector<FaultCase> cases{
      {"key wrapped under another master key", [](Library& l) { l.keys[0] = wrappedKey(100, Scope::pack, 400, kPackage, bytesOf(1, 32)); }, Error::verificationFailed},
      {"key wrapped for another package", [](Library& l) { l.keys[0] = wrappedKey(100, Scope::pack, 400, identifier(1)); }, Error::verificationFailed},
      {"folder in a missing folder", [](Library& l) { l.folders[0] = folderFields(600, 602); }, Error::missingReference},
      {"folders naming each other", [](Library& l) { l.folders[0] = folderFields(600, 601); }, Error::invalidRelationship},
      {"album in a missing folder", [](Library& l) { l.albums[0] = albumFields(700, 602, 201); }, Error::missingReference},
      {"album with a missing cover", [](Library& l) { l.albums[0] = albumFields(700, 601, 209); }, Error::missingReference},
      {"member of a missing album", [](Library& l) { l.memberships.push_back(membershipFields(701, 201)); }, Error::missingReference},
      {"missing member", [](Library& l) { l.memberships.push_back(membershipFields(700, 209)); }, Error::missingReference},
      {"tombstone of a live item", [](Library& l) { l.tombstones.push_back(tombstoneFields(201, {})); }, Error::conflictingReference},
      {"tombstone of a live resource", [](Library& l) { l.tombstones[0] = tombstoneFields(209, identifiers({301})); }, Error::conflictingReference},
      {"resource of a missing item", [](Library& l) { l.resources[0].itemIdentifier = identifier(209); }, Error::missingReference},
      {"resource with a missing key", [](Library& l) { l.resources[0].payloadKeyIdentifier = identifier(109); }, Error::missingReference},
      {"pack key bound to another pack", [](Library& l) { l.keys[0] = wrappedKey(100, Scope::pack, 401); }, Error::invalidRelationship},
      {"pack key for chunks", [](Library& l) { l.resources[3].payloadKeyIdentifier = identifier(100); }, Error::invalidRelationship},
      {"resource key for a pack", [](Library& l) { l.keys[0] = wrappedKey(100, Scope::resource, 400); }, Error::invalidRelationship},
      {"resource key of another resource", [](Library& l) { l.keys[1] = wrappedKey(101, Scope::resource, 303); }, Error::invalidRelationship},
      {"two resources in one place", [](Library& l) { l.resources[2] = withRole(packedResourceFields(303, 202, 100, 400, 1), Role::pairedVideo); }, Error::conflictingReference},
      {"one pack, two file digests", [](Library& l) {
         auto part = packPartFields(400, 2, 1000, 303);
         part.artifactFileSHA256 = digest(401);
         l.resources[2].parts = partsOf({made(BackupPayloadPartRecordV1::make(part))});
       }, Error::conflictingReference},
      {"one pack, two keys", [](Library& l) {
         l.keys.push_back(wrappedKey(102, Scope::pack, 400));
         l.resources[2].payloadKeyIdentifier = identifier(102);
       }, Error::conflictingReference},
      {"unused key", [](Library& l) { l.keys.push_back(wrappedKey(102, Scope::pack, 401)); }, Error::invalidRelationship},
      {"item lists another item's resource", [](Library& l) { l.items[0].resourceIdentifiers = identifiers({301, 304}); }, Error::missingReference},
      {"item lists a missing resource", [](Library& l) { l.items[0].resourceIdentifiers = identifiers({301, 309}); }, Error::missingReference},
      {"resource its item does not list", [](Library& l) { l.items[1].resourceIdentifiers = identifiers({302}); }, Error::missingReference},
      {"item without a primary", [](Library& l) { l.resources[0].role = Role::original; }, Error::invalidRelationship},
      {"live photo with two primaries", [](Library& l) { l.resources[2].role = Role::primary; }, Error::invalidRelationship},
      {"live photo without its video", [](Library& l) { l.resources[2].role = Role::rendered; }, Error::invalidRelationship},
      {"photo with a paired video", [](Library& l) { l.items[1].kind = BackupMediaKindV1::photo; }, Error::invalidRelationship},
      {"video with a paired video", [](Library& l) { l.resources[3].role = Role::pairedVideo; }, Error::invalidRelationship},
      // Two faults: the earlier step decides.
      {"unwrapping before folders", [](Library& l) {
         l.keys[0] = wrappedKey(100, Scope::pack, 400, identifier(1));
         l.folders[0] = folderFields(600, 601);
       }, Error::verificationFailed},
      {"folders before resources", [](Library& l) {
         l.folders[0] = folderFields(600, 601);
         l.resources[0].payloadKeyIdentifier = identifier(109);
       }, Error::invalidRelationship},
      {"tombstones before resources", [](Library& l) {
         l.tombstones.push_back(tombstoneFields(201, {}));
         l.resources[0].itemIdentifier = identifier(209);
       }, Error::conflictingReference},
      {"unused keys before items", [](Library& l) {
         l.keys.push_back(wrappedKey(102, Scope::pack, 401));
         l.items[0].resourceIdentifiers = identifiers({301, 309});
       }, Error::invalidRelationship},
  };
  for (const auto& row : cases) {
    Library library = smallLibrary();
    row.change(library);
    EXPECT_EQ(errorOf(validated(library)), row.expected) << row.name;
  }
}

TEST(BackupManifestSemanticValidator, ChecksItsArgumentsFirst) {
  const auto sections = sectionsOf(smallLibrary());
  const auto validate = [&](ByteView package, ByteView domain, ByteView masterKey) {
    return errorOf(BackupManifestSemanticValidator::validateAndSummarize(sections, package, domain, masterKey));
  };
  EXPECT_EQ(validate(bytesOf(1, 15), kDomain, kMasterKey), Error::invalidIdentifier);
  EXPECT_EQ(validate(kPackage, bytesOf(1, 17), kMasterKey), Error::invalidIdentifier);
  EXPECT_EQ(validate(kPackage, kDomain, bytesOf(1, 31)), Error::invalidKey);
  EXPECT_EQ(validate(bytesOf(1, 15), kDomain, bytesOf(1, 31)), Error::invalidIdentifier);
  EXPECT_EQ(validate(kPackage, identifier(1), kMasterKey), Error::verificationFailed);  // the keys are bound to the domain
}

// A record repeated in a second section of its kind, and a section whose records fail to
// decode, stop the reading before any key is unwrapped.
TEST(BackupManifestSemanticValidator, RefusesRecordsReadTwice) {
  Library library = smallLibrary();
  library.keys[0] = wrappedKey(100, Scope::pack, 400, identifier(1));  // would fail later
  auto sections = sectionsOf(library);
  const Record again = made(BackupMediaItemRecordV1::make(library.items[2]));
  sections.push_back(made(Codec::makeSection(identifier(899), identifier(900), kDomain, sections.size(), Kind::item, {&again, 1})));
  EXPECT_EQ(errorOf(BackupManifestSemanticValidator::validateAndSummarize(sections, kPackage, kDomain, kMasterKey)),
            Error::duplicateRecord);
}

TEST(BackupManifestSemanticValidator, AllowsSixteenFoldersInAChainButNotSeventeen) {
  for (const std::size_t chainLength : {16u, 17u}) {
    Library library = smallLibrary();
    library.folders = {folderFields(600, std::nullopt)};
    for (std::uint64_t folder = 601; folder < 600 + chainLength; ++folder) library.folders.push_back(folderFields(folder, folder - 1));
    library.albums[0] = albumFields(700, 600 + chainLength - 1, 201);
    EXPECT_EQ(errorOf(validated(library)), chainLength == 16 ? std::nullopt : std::optional(Error::invalidRelationship));
  }
}

TEST(BackupManifestSemanticValidator, BoundsBothTotals) {
  constexpr std::uint64_t frame = 16777216;  // 4,096 parts of this are the largest resource, 2^36 bytes
  for (const std::uint64_t resourceCount : {16u, 17u}) {
    Library library;
    for (std::uint64_t index = 0; index < resourceCount; ++index) {
      library.keys.push_back(wrappedKey(100 + index, Scope::resource, 300 + index));
      library.items.push_back(itemFields(200 + index, identifiers({300 + index})));
      auto resource = chunkedResourceFields(300 + index, 200 + index, 100 + index, 10000 + index * 4096, 4096, frame);
      std::vector<BackupPayloadPartRecordV1> parts;
      for (const auto& part : resource.parts) {  // tiny files, so that only the logical total is large
        auto fields = chunkPartFields(10000 + index * 4096 + part.ordinal(), part.ordinal(), part.plaintextOffset(), frame);
        fields.artifactFileByteCount = 1;
        parts.push_back(made(BackupPayloadPartRecordV1::make(fields)));
      }
      resource.parts = partsOf(std::move(parts));
      library.resources.push_back(resource);
    }
    const auto summary = validated(library);
    if (resourceCount == 16) {
      ASSERT_TRUE(summary.has_value());
      EXPECT_EQ(summary->logicalPlaintextByteCount, std::uint64_t{1} << 40);
    } else {
      EXPECT_EQ(errorOf(summary), Error::invalidValue);
    }
  }

  const auto packOfFileByteCount = [](std::uint64_t pack, std::uint64_t fileByteCount) {
    auto part = packPartFields(pack, 0, 1000, 300 + pack);
    part.artifactFileByteCount = fileByteCount;
    auto resource = packedResourceFields(300 + pack, 200 + pack, 100 + pack, pack, 0);
    resource.parts = partsOf({made(BackupPayloadPartRecordV1::make(part))});
    return resource;
  };
  const auto packs = [&](std::vector<std::uint64_t> fileByteCounts) {
    Library library;
    for (std::uint64_t pack = 0; pack < fileByteCounts.size(); ++pack) {
      library.keys.push_back(wrappedKey(100 + pack, Scope::pack, pack));
      library.items.push_back(itemFields(200 + pack, identifiers({300 + pack})));
      library.resources.push_back(packOfFileByteCount(pack, fileByteCounts[pack]));
    }
    return errorOf(validated(library));
  };
  EXPECT_EQ(packs({(std::uint64_t{1} << 40) - 1, 1}), std::nullopt);
  EXPECT_EQ(packs({(std::uint64_t{1} << 40), 1}), Error::invalidValue);
  EXPECT_EQ(packs({std::uint64_t{1} << 63, std::uint64_t{1} << 63}), Error::arithmeticOverflow);
}

}  // namespace galdrine::format
