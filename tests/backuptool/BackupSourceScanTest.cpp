#include "backuptool/BackupSourceScan.hpp"

#include <sys/stat.h>
#include <sys/time.h>

#include <gtest/gtest.h>

#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::backuptool {

namespace {

namespace fs = std::filesystem;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::writeFile;

// One tree with each kind of entry: what is taken, what is skipped and counted, what is
// ignored without counting.
TEST(BackupSourceScan, TakesMediaAndCountsWhatItLeavesOut) {
  testsupport::TemporaryDirectory temporary;
  const fs::path root = temporary / "source";
  for (const char* directory : {"", ".cache", "   ", "Été", "Été/Leer"}) makeDirectory(root / directory);
  for (const char* file : {"a.JPG", "b.mov", "notes.txt", "noextension", "bad\xff.jpg", ".hidden.jpg", ".cache/c.jpg",
                           "   /d.jpg", "Été/e.heic"}) {
    writeFile(root / file, std::string("content of ") + file);
  }
  writeFile(root / "empty.png", "");
  testsupport::FileFixtures::makeSymbolicLink(root / "a.JPG", root / "link.jpg");
  ASSERT_EQ(::mkfifo((root / "pipe.jpg").c_str(), 0600), 0);
  struct timeval times[2] = {{1700000000, 250000}, {1700000000, 250000}};
  ASSERT_EQ(::utimes((root / "a.JPG").c_str(), times), 0);

  const auto source = BackupSourceScan::scan(root);
  ASSERT_TRUE(source.has_value());
  std::vector<std::string> taken;
  for (const auto& directory : source->directories) {
    for (const auto& file : directory.files) taken.push_back(file.relativePath + " " + file.uniformTypeIdentifier);
  }
  EXPECT_EQ(taken, (std::vector<std::string>{"a.JPG public.jpeg", "b.mov com.apple.quicktime-movie",
                                             "Été/e.heic public.heic"}));
  // Skipped: a text, an empty file, no extension, a name not UTF-8, a link, a pipe, a blank directory.
  EXPECT_EQ(source->skippedEntryCount, 7u);
  ASSERT_EQ(source->directories.size(), 3u);  // the source, Été and Été/Leer
  EXPECT_EQ(source->directories[2].relativePath, "Été/Leer");
  EXPECT_EQ(source->directories[2].depth, 2u);
  const BackupSourceFile& first = source->directories[0].files[0];
  EXPECT_EQ(first, (BackupSourceFile{"a.JPG", "a.JPG", root / "a.JPG", "public.jpeg", false, 16, 1700000000250}));
  EXPECT_TRUE(source->directories[0].files[1].isMovie);
}

TEST(BackupSourceScan, RefusesWhatCannotBeAScan) {
  testsupport::TemporaryDirectory temporary;
  fs::path deepest = temporary / "deep";
  makeDirectory(deepest);
  for (std::size_t depth = 1; depth <= BackupSourceScan::maximumDirectoryDepth; ++depth) makeDirectory(deepest /= "d");
  writeFile(deepest / "deep.jpg", "x");
  ASSERT_TRUE(BackupSourceScan::scan(temporary / "deep").has_value());
  makeDirectory(deepest / "one-too-deep");
  EXPECT_EQ(BackupSourceScan::scan(temporary / "deep"), std::unexpected(BackupSourceScanError::tooLarge));

  // The source itself may be reached through a link the user named; it must be a directory.
  makeDirectory(temporary / "real");
  writeFile(temporary / "real" / "a.png", "png");
  testsupport::FileFixtures::makeSymbolicLink(temporary / "real", temporary / "named");
  const auto throughLink = BackupSourceScan::scan(temporary / "named");
  ASSERT_TRUE(throughLink.has_value());
  EXPECT_EQ(throughLink->fileCount(), 1u);
  EXPECT_EQ(BackupSourceScan::scan(temporary / "missing"), std::unexpected(BackupSourceScanError::unavailable));
  EXPECT_EQ(BackupSourceScan::scan(temporary / "real" / "a.png"), std::unexpected(BackupSourceScanError::unavailable));
}

}  // namespace

}  // namespace galdrine::backuptool
