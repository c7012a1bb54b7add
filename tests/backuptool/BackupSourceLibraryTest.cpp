#include "backuptool/BackupSourceLibrary.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "backuptool/BackupSourceScan.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::backuptool {

namespace {

namespace fs = std::filesystem;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::writeFile;
using Identifier = format::BackupIdentifierV1;
using Library = writer::BackupLibrarySnapshot;

[[nodiscard]] Library arranged(const fs::path& root, ByteView key = Bytes(32, 0x5A)) {
  const auto source = BackupSourceScan::scan(root);
  const auto identities = BackupSourceIdentities::make(key);
  if (!source || !identities) return {};
  return BackupSourceLibrary::arrange(*source, *identities).value_or(Library{});
}

// placements describes each item as "<folders>/<album> : <name> <kind> <resource count>".
[[nodiscard]] std::vector<std::string> placements(const Library& library) {
  std::map<Identifier, std::string> paths;  // folders stand before what they hold
  for (const auto& folder : library.folders) {
    paths[folder.identifier] =
        (folder.parentFolderIdentifier ? paths[*folder.parentFolderIdentifier] + "/" : "") + folder.name;
  }
  for (const auto& album : library.albums) {
    paths[album.identifier] =
        (album.parentFolderIdentifier ? paths[*album.parentFolderIdentifier] + "/" : "") + album.name;
  }
  std::vector<std::string> described;
  for (const auto& item : library.items) {
    const auto membership =
        std::ranges::find(library.memberships, item.identifier, &writer::BackupMembershipDescription::itemIdentifier);
    const std::string album = membership == library.memberships.end() ? "-" : paths[membership->albumIdentifier];
    const char* kinds[] = {"photo", "video", "live"};
    described.push_back(album + " : " + item.originalFilename + " " + kinds[static_cast<std::size_t>(item.kind)] + " " +
                        std::to_string(item.resources.size()));
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
  const Library library = arranged(root);
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
  const auto live =
      std::ranges::find(library.items, format::BackupMediaKindV1::livePhoto, &writer::BackupItemDescription::kind);
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
  const Library first = arranged(root);
  writeFile(root / "a" / "w.jpg", "two");
  writeFile(root / "a" / "x.jpg", "changed");
  const Library second = arranged(root);
  const Library otherKey = arranged(root, Bytes(32, 0x5B));
  ASSERT_TRUE(first.items.size() == 1 && second.items.size() == 2 && otherKey.items.size() == 2);
  const auto& x = second.items[1];  // w.jpg comes first
  EXPECT_EQ(std::tuple(first.items[0].identifier, first.items[0].resources[0].identifier, first.albums[0].identifier),
            std::tuple(x.identifier, x.resources[0].identifier, second.albums[0].identifier));
  EXPECT_NE(second.items[0].identifier, x.identifier);
  EXPECT_NE(x.identifier, x.resources[0].identifier);  // one path, two kinds
  EXPECT_NE(otherKey.items[1].identifier, x.identifier);
  EXPECT_NE(otherKey.albums[0].identifier, second.albums[0].identifier);
  EXPECT_EQ(BackupSourceIdentities::make(Bytes(31, 0)).error(), BackupSourceIdentitiesError::invalidKey);
}

}  // namespace

}  // namespace galdrine::backuptool
