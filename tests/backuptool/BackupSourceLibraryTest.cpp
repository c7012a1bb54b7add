#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "backuptool/BackupSourceLibrary.hpp"
#include "backuptool/BackupSourceScan.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::backuptool {

namespace {

namespace fs = std::filesystem;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::writeFile;
using Kind = format::BackupMediaKindV1;
using Identifier = format::BackupIdentifierV1;

const Bytes kKey(32, 0x5A);

BackupSourceIdentities identities(ByteView key = kKey) {
  auto made = BackupSourceIdentities::make(key);
  EXPECT_TRUE(made.has_value());
  return std::move(*made);
}

writer::BackupLibrarySnapshot arranged(const fs::path& root, ByteView key = kKey) {
  const auto source = BackupSourceScan::scan(root);
  EXPECT_TRUE(source.has_value());
  auto library = BackupSourceLibrary::arrange(*source, identities(key));
  EXPECT_TRUE(library.has_value());
  return std::move(*library);
}

// Describes where each item stands: "<album path> : <name> <kind>", the album path made of the
// folder names above the album and its own name.
std::vector<std::string> placements(const writer::BackupLibrarySnapshot& library) {
  std::map<Identifier, std::string> folderPaths;
  for (const auto& folder : library.folders) {  // parents stand before their children
    folderPaths[folder.identifier] =
        (folder.parentFolderIdentifier ? folderPaths[*folder.parentFolderIdentifier] + "/" : "") + folder.name;
  }
  std::map<Identifier, std::string> albumPaths;
  for (const auto& album : library.albums) {
    albumPaths[album.identifier] =
        (album.parentFolderIdentifier ? folderPaths[*album.parentFolderIdentifier] + "/" : "") + album.name;
  }
  std::vector<std::string> described;
  for (const auto& item : library.items) {
    std::string album = "-";
    for (const auto& membership : library.memberships) {
      if (membership.itemIdentifier == item.identifier) album = albumPaths[membership.albumIdentifier];
    }
    const char* kind = item.kind == Kind::photo ? "photo" : item.kind == Kind::video ? "video" : "live";
    described.push_back(album + " : " + item.originalFilename + " " + kind + " " + std::to_string(item.resources.size()));
  }
  std::ranges::sort(described);
  return described;
}

TEST(BackupSourceLibrary, DirectoriesBecomeAlbumsAndFoldersAndStemsPairIntoLivePhotos) {
  testsupport::TemporaryDirectory temporary;
  const fs::path root = temporary / "source";
  for (const char* directory : {"", "Beach", "Trips", "Trips/Paris", "Trips/Empty", "Trips/Empty/Deeper", "Mixed",
                                "Nothing", "Only", "Only/Inner"}) {
    makeDirectory(root / directory);
  }
  for (const char* file : {"top.jpg", "Beach/IMG_1.jpg", "Beach/IMG_1.mov", "Beach/IMG_2.mov", "Trips/map.png",
                           "Trips/Paris/a.jpg", "Mixed/x.jpg", "Mixed/x.png", "Mixed/x.mov", "Only/Inner/deep.png"}) {
    writeFile(root / file, std::string("content of ") + file);
  }
  const auto library = arranged(root);
  EXPECT_EQ(placements(library), (std::vector<std::string>{
                                     "- : top.jpg photo 1",
                                     "Beach : IMG_1.jpg live 2",
                                     "Beach : IMG_2.mov video 1",
                                     "Mixed : x.jpg photo 1",  // two images of one stem: nothing pairs
                                     "Mixed : x.mov video 1",
                                     "Mixed : x.png photo 1",
                                     "Only/Inner : deep.png photo 1",
                                     "Trips/Paris : a.jpg photo 1",
                                     "Trips/Trips : map.png photo 1",
                                 }));
  EXPECT_EQ(library.folders.size(), 2u);  // Trips and Only; empty directories make nothing
  EXPECT_EQ(library.albums.size(), 5u);
  const auto live = std::ranges::find(library.items, Kind::livePhoto, &writer::BackupItemDescription::kind);
  ASSERT_NE(live, library.items.end());
  EXPECT_EQ(live->resources[0].role, format::BackupMediaResourceRoleV1::primary);
  EXPECT_EQ(live->resources[0].uniformTypeIdentifier, "public.jpeg");
  EXPECT_EQ(live->resources[1].role, format::BackupMediaResourceRoleV1::pairedVideo);
  EXPECT_EQ(live->resources[1].uniformTypeIdentifier, "com.apple.quicktime-movie");
}

// Identifiers follow the path and the package: the same tree gives the same identifiers under
// one key, so unchanged files keep their payloads, and unrelated ones under another key.
TEST(BackupSourceLibrary, IdentifiersFollowThePathUnderThePackagesKey) {
  testsupport::TemporaryDirectory temporary;
  const fs::path root = temporary / "source";
  makeDirectory(root);
  makeDirectory(root / "a");
  writeFile(root / "a" / "x.jpg", "one");
  const auto first = arranged(root);
  writeFile(root / "a" / "w.jpg", "two");
  writeFile(root / "a" / "x.jpg", "changed");
  const auto second = arranged(root);
  const auto otherKey = arranged(root, Bytes(32, 0x5B));

  const auto itemNamed = [](const writer::BackupLibrarySnapshot& library, std::string_view name) {
    return *std::ranges::find(library.items, name, &writer::BackupItemDescription::originalFilename);
  };
  const auto x1 = itemNamed(first, "x.jpg");
  const auto x2 = itemNamed(second, "x.jpg");
  EXPECT_EQ(x1.identifier, x2.identifier);
  EXPECT_EQ(x1.resources[0].identifier, x2.resources[0].identifier);
  EXPECT_EQ(first.albums[0].identifier, second.albums[0].identifier);
  EXPECT_NE(itemNamed(second, "w.jpg").identifier, x2.identifier);
  EXPECT_NE(x1.identifier, x1.resources[0].identifier);  // one path, two kinds
  EXPECT_NE(itemNamed(otherKey, "x.jpg").identifier, x2.identifier);
  EXPECT_NE(otherKey.albums[0].identifier, second.albums[0].identifier);
  EXPECT_FALSE(BackupSourceIdentities::make(Bytes(31, 0)).has_value());
}

}  // namespace

}  // namespace galdrine::backuptool
