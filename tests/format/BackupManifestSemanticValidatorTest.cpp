// The manifest checked as a whole: a small library that passes, then one row per fault with
// the exact error, rows with two faults pinning the order of the steps, and the totals; and the
// folder check's verdict in every visit order.

#include "format/manifest/BackupManifestSemanticValidator.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "format/manifest/BackupFolderHierarchy.hpp"
#include "support/ManifestTestRecords.hpp"

namespace galdrine::format {

using namespace testsupport::ManifestTestRecords;

namespace {

namespace Codec = BackupManifestRecordCodecV1;
using Kind = BackupManifestSectionKindV1;
using Record = BackupManifestRecordV1;
using Scope = BackupPayloadKeyScopeV1;
using Role = BackupMediaResourceRoleV1;

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
  return made(
      Codec::wrapPayloadKey(bytesOf(key, 32), identifier(key), scope, identifier(bound), package, kDomain, masterKey));
}

// A photo in pack 400, a live photo beside it, a video in two chunks, two folders, an album
// with two members, and the tombstone of a deleted item.
Library smallLibrary() {
  auto livePhoto = itemFields(202, identifiers({302, 303}));
  livePhoto.kind = BackupMediaKindV1::livePhoto;
  auto video = itemFields(203, identifiers({304}));
  video.kind = BackupMediaKindV1::video;
  auto pairedVideo = packedResourceFields(303, 202, 100, 400, 2);
  pairedVideo.role = Role::pairedVideo;
  return {.keys = {wrappedKey(100, Scope::pack, 400), wrappedKey(101, Scope::resource, 304)},
          .items = {itemFields(201, identifiers({301})), livePhoto, video},
          .resources = {packedResourceFields(301, 201, 100, 400, 0), packedResourceFields(302, 202, 100, 400, 1),
                        pairedVideo, chunkedResourceFields(304, 203, 101, 500, 2, 5000)},
          .folders = {folderFields(600, std::nullopt), folderFields(601, 600)},
          .albums = {albumFields(700, 601, 201)},
          .memberships = {membershipFields(700, 201), membershipFields(700, 202)},
          .tombstones = {tombstoneFields(209, identifiers({309}))}};
}

template <typename Typed, typename Fields>
void appendMade(std::vector<Record>& records, const std::vector<Fields>& all) {
  for (const auto& fields : all) records.push_back(made(Typed::make(fields)));
}

// sectionsOf makes one section of each kind that has records, in the order of the kinds.
std::vector<BackupManifestSectionV1> sectionsOf(const Library& library) {
  std::array<std::vector<Record>, 7> byKind;
  byKind[0].assign(library.keys.begin(), library.keys.end());
  appendMade<BackupMediaItemRecordV1>(byKind[1], library.items);
  appendMade<BackupMediaResourceRecordV1>(byKind[2], library.resources);
  appendMade<BackupAlbumFolderRecordV1>(byKind[3], library.folders);
  appendMade<BackupAlbumRecordV1>(byKind[4], library.albums);
  appendMade<BackupAlbumMembershipRecordV1>(byKind[5], library.memberships);
  appendMade<BackupTombstoneRecordV1>(byKind[6], library.tombstones);
  std::vector<BackupManifestSectionV1> sections;
  for (std::size_t kind = 0; kind < byKind.size(); ++kind) {
    if (byKind[kind].empty()) continue;
    sections.push_back(made(Codec::makeSection(identifier(800 + sections.size()), identifier(900), kDomain,
                                               sections.size(), static_cast<Kind>(kind), byKind[kind])));
  }
  return sections;
}

std::expected<BackupManifestSemanticSummary, Error> validated(const Library& library) {
  return BackupManifestSemanticValidator::validateAndSummarize(sectionsOf(library), kPackage, kDomain, kMasterKey);
}

}  // namespace

TEST(BackupManifestSemanticValidator, RefusesEachFaultWithItsErrorInTheOrderOfTheSteps) {
  const struct {
    std::string name;
    std::function<void(Library&)> change;
    Error expected;
  } cases[] = {
      {"key wrapped under another master key",
       [](Library& l) { l.keys[0] = wrappedKey(100, Scope::pack, 400, kPackage, bytesOf(1, 32)); },
       Error::verificationFailed},
      {"folders naming each other", [](Library& l) { l.folders[0] = folderFields(600, 601); },
       Error::invalidRelationship},
      {"album in a missing folder", [](Library& l) { l.albums[0] = albumFields(700, 602, 201); },
       Error::missingReference},
      {"member of a missing album", [](Library& l) { l.memberships.push_back(membershipFields(701, 201)); },
       Error::missingReference},
      {"tombstone of a live item", [](Library& l) { l.tombstones.push_back(tombstoneFields(201, {})); },
       Error::conflictingReference},
      {"resource of a missing item", [](Library& l) { l.resources[0].itemIdentifier = identifier(209); },
       Error::missingReference},
      {"resource with a missing key", [](Library& l) { l.resources[0].payloadKeyIdentifier = identifier(109); },
       Error::missingReference},
      {"pack key bound to another pack", [](Library& l) { l.keys[0] = wrappedKey(100, Scope::pack, 401); },
       Error::invalidRelationship},
      {"resource key of another resource", [](Library& l) { l.keys[1] = wrappedKey(101, Scope::resource, 303); },
       Error::invalidRelationship},
      {"two resources in one place",
       [](Library& l) {
         l.resources[2] = packedResourceFields(303, 202, 100, 400, 1);
         l.resources[2].role = Role::pairedVideo;
       },
       Error::conflictingReference},
      {"one pack, two file digests",
       [](Library& l) {
         auto part = packPartFields(400, 2, 1000, 303);
         part.artifactFileSHA256 = digest(401);
         l.resources[2].parts = partsOf({made(BackupPayloadPartRecordV1::make(part))});
       },
       Error::conflictingReference},
      {"one pack, two keys",
       [](Library& l) {
         l.keys.push_back(wrappedKey(102, Scope::pack, 400));
         l.resources[2].payloadKeyIdentifier = identifier(102);
       },
       Error::conflictingReference},
      {"unused key", [](Library& l) { l.keys.push_back(wrappedKey(102, Scope::pack, 401)); },
       Error::invalidRelationship},
      {"item lists another item's resource",
       [](Library& l) {
         l.items[0].resourceIdentifiers = identifiers({301, 304});
       },
       Error::missingReference},
      {"item without a primary", [](Library& l) { l.resources[0].role = Role::original; }, Error::invalidRelationship},
      {"photo with a paired video", [](Library& l) { l.items[1].kind = BackupMediaKindV1::photo; },
       Error::invalidRelationship},
      // Two faults: the earlier step decides.
      {"unwrapping before folders",
       [](Library& l) {
         l.keys[0] = wrappedKey(100, Scope::pack, 400, identifier(1));
         l.folders[0] = folderFields(600, 601);
       },
       Error::verificationFailed},
      {"folders before resources",
       [](Library& l) {
         l.folders[0] = folderFields(600, 601);
         l.resources[0].payloadKeyIdentifier = identifier(109);
       },
       Error::invalidRelationship},
      {"tombstones before resources",
       [](Library& l) {
         l.tombstones.push_back(tombstoneFields(201, {}));
         l.resources[0].itemIdentifier = identifier(209);
       },
       Error::conflictingReference},
      {"unused keys before items",
       [](Library& l) {
         l.keys.push_back(wrappedKey(102, Scope::pack, 401));
         l.items[0].resourceIdentifiers = identifiers({301, 309});
       },
       Error::invalidRelationship},
  };
  for (const auto& row : cases) {
    Library library = smallLibrary();
    row.change(library);
    EXPECT_EQ(errorOf(validated(library)), row.expected) << row.name;
  }
}

// The arguments come first; then a record read twice stops the reading before any key is
// unwrapped (the key below would fail later).
TEST(BackupManifestSemanticValidator, ChecksArgumentsThenReadsEveryRecordOnce) {
  Library library = smallLibrary();
  const auto validate = [&](const std::vector<BackupManifestSectionV1>& sections, ByteView package, ByteView domain,
                            ByteView masterKey) {
    return errorOf(BackupManifestSemanticValidator::validateAndSummarize(sections, package, domain, masterKey));
  };
  auto sections = sectionsOf(library);
  EXPECT_EQ(validate(sections, bytesOf(1, 15), kDomain, bytesOf(1, 31)), Error::invalidIdentifier);
  EXPECT_EQ(validate(sections, kPackage, bytesOf(1, 17), kMasterKey), Error::invalidIdentifier);
  EXPECT_EQ(validate(sections, kPackage, kDomain, bytesOf(1, 31)), Error::invalidKey);
  EXPECT_EQ(validate(sections, kPackage, identifier(1), kMasterKey),
            Error::verificationFailed);  // keys are bound to it
  library.keys[0] = wrappedKey(100, Scope::pack, 400, identifier(1));
  sections = sectionsOf(library);
  const Record again = made(BackupMediaItemRecordV1::make(library.items[2]));
  sections.push_back(
      made(Codec::makeSection(identifier(899), identifier(900), kDomain, sections.size(), Kind::item, {&again, 1})));
  EXPECT_EQ(validate(sections, kPackage, kDomain, kMasterKey), Error::duplicateRecord);
}

// The required payload files' sizes add up without overflow (arithmeticOverflow) to at most
// 2^40 (invalidValue).
TEST(BackupManifestSemanticValidator, BoundsTheEncryptedTotal) {
  const auto packs = [&](std::vector<std::uint64_t> fileByteCounts) {
    Library library;
    for (std::uint64_t pack = 0; pack < fileByteCounts.size(); ++pack) {
      auto part = packPartFields(pack, 0, 1000, 300 + pack);
      part.artifactFileByteCount = fileByteCounts[pack];
      auto resource = packedResourceFields(300 + pack, 200 + pack, 100 + pack, pack, 0);
      resource.parts = partsOf({made(BackupPayloadPartRecordV1::make(part))});
      library.keys.push_back(wrappedKey(100 + pack, Scope::pack, pack));
      library.items.push_back(itemFields(200 + pack, identifiers({300 + pack})));
      library.resources.push_back(resource);
    }
    return errorOf(validated(library));
  };
  EXPECT_EQ(packs({(std::uint64_t{1} << 40) - 1, 1}), std::nullopt);
  EXPECT_EQ(packs({(std::uint64_t{1} << 40), 1}), Error::invalidValue);
  EXPECT_EQ(packs({std::uint64_t{1} << 63, std::uint64_t{1} << 63}), Error::arithmeticOverflow);
}

// The folder check must give one verdict whatever order the folders are visited in: a memo of
// sound folders without their depths would let a deep folder pass when its ancestors were
// settled first.
TEST(BackupFolderHierarchy, GivesOneVerdictInEveryVisitOrder) {
  using Parents = std::vector<std::pair<std::uint64_t, std::optional<std::uint64_t>>>;  // folder, parent
  const auto chain = [](std::uint64_t first, std::size_t length, std::optional<std::uint64_t> root,
                        Parents parents = {}) {
    for (std::size_t index = 0; index < length; ++index)
      parents.emplace_back(first + index, index == 0 ? root : std::optional(first + index - 1));
    return parents;
  };
  const struct {
    std::string name;
    Parents parents;
    std::optional<Error> expected;
  } cases[] = {
      {"a chain of 16", chain(1, 16, std::nullopt), std::nullopt},
      {"a chain of 17", chain(1, 17, std::nullopt), Error::invalidRelationship},
      {"a trunk of 10 with branches of 6 and 7", chain(21, 7, 10, chain(11, 6, 10, chain(1, 10, std::nullopt))),
       Error::invalidRelationship},
      {"a deep branch off a sound one", chain(31, 1, 16, chain(1, 16, std::nullopt)), Error::invalidRelationship},
      {"a cycle of 20", chain(20, 1, 19, chain(1, 19, 20)), Error::invalidRelationship},
      {"a chain into a cycle", chain(6, 1, 4, chain(5, 1, 4, chain(4, 1, 5, chain(1, 3, std::nullopt)))),
       Error::invalidRelationship},
      {"a missing parent", chain(6, 3, 99, chain(1, 5, std::nullopt)), Error::missingReference},
  };
  std::mt19937 random(20240611);
  for (const auto& row : cases) {
    std::vector<std::size_t> order(row.parents.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    for (int visit = 0; visit < 300; ++visit) {  // as given, then reversed, then shuffled
      if (visit == 1) std::ranges::reverse(order);
      if (visit > 1) std::ranges::shuffle(order, random);
      BackupFolderSet folders;
      for (const std::size_t index : order) {
        auto folder =
            made(BackupAlbumFolderRecordV1::make(folderFields(row.parents[index].first, row.parents[index].second)));
        ASSERT_TRUE(folders.enter(folder.identifier(), std::move(folder)));
      }
      ASSERT_EQ(errorOf(BackupFolderHierarchy::validateFolders(folders)), row.expected) << row.name;
    }
  }
}

}  // namespace galdrine::format
