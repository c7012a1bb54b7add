#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/time.h>

#include <filesystem>
#include <string>
#include <vector>

#include "backuptool/BackupSourceScan.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::backuptool {

namespace {

namespace fs = std::filesystem;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::writeFile;

std::vector<std::string> relativePaths(const BackupSource& source) {
  std::vector<std::string> paths;
  for (const auto& directory : source.directories) {
    for (const auto& file : directory.files) paths.push_back(file.relativePath + " " + file.uniformTypeIdentifier);
  }
  return paths;
}

// One tree with each kind of entry: what is taken, what is skipped and counted, what is
// ignored without counting.
TEST(BackupSourceScan, TakesMediaAndCountsWhatItLeavesOut) {
  testsupport::TemporaryDirectory temporary;
  const fs::path root = temporary / "source";
  makeDirectory(root);
  writeFile(root / "a.JPG", "jpeg");
  writeFile(root / "b.mov", "movie");
  writeFile(root / "notes.txt", "text");           // skipped: not media
  writeFile(root / "empty.png", "");               // skipped: empty
  writeFile(root / "noextension", "x");            // skipped: no type
  writeFile(root / "bad\xff.jpg", "x");            // skipped: not UTF-8
  writeFile(root / ".hidden.jpg", "x");            // ignored
  makeDirectory(root / ".cache");                  // ignored with what it holds
  writeFile(root / ".cache" / "c.jpg", "x");
  testsupport::FileFixtures::makeSymbolicLink(root / "a.JPG", root / "link.jpg");  // skipped: a link
  ASSERT_EQ(::mkfifo((root / "pipe.jpg").c_str(), 0600), 0);                   // skipped: no regular file
  makeDirectory(root / "   ");                      // skipped: blank name, with its content
  writeFile(root / "   " / "d.jpg", "x");
  makeDirectory(root / "Été");
  writeFile(root / "Été" / "e.heic", "heic");
  makeDirectory(root / "Été" / "Leer");

  struct timeval times[2] = {{1700000000, 250000}, {1700000000, 250000}};
  ASSERT_EQ(::utimes((root / "a.JPG").c_str(), times), 0);

  const auto source = BackupSourceScan::scan(root);
  ASSERT_TRUE(source.has_value());
  EXPECT_EQ(relativePaths(*source),
            (std::vector<std::string>{"a.JPG public.jpeg", "b.mov com.apple.quicktime-movie", "Été/e.heic public.heic"}));
  EXPECT_EQ(source->skippedEntryCount, 7u);
  ASSERT_EQ(source->directories.size(), 3u);  // the source, Été and Été/Leer
  EXPECT_EQ(source->directories[1].relativePath, "Été");
  EXPECT_EQ(source->directories[2].relativePath, "Été/Leer");
  EXPECT_EQ(source->directories[2].depth, 2u);
  const BackupSourceFile& first = source->directories[0].files[0];
  EXPECT_EQ(first.modifiedAtUTCMilliseconds, 1700000000250);
  EXPECT_EQ(first.byteCount, 4u);
  EXPECT_FALSE(first.isMovie);
  EXPECT_TRUE(source->directories[0].files[1].isMovie);
  EXPECT_EQ(first.path, root / "a.JPG");
}

TEST(BackupSourceScan, NestingIsBoundedByTheDeepestFolderChain) {
  testsupport::TemporaryDirectory temporary;
  fs::path deepest = temporary.path();
  for (std::size_t depth = 1; depth <= BackupSourceScan::maximumDirectoryDepth; ++depth) {
    deepest /= "d";
    makeDirectory(deepest);
  }
  writeFile(deepest / "deep.jpg", "x");
  const auto source = BackupSourceScan::scan(temporary.path());
  ASSERT_TRUE(source.has_value());
  EXPECT_EQ(source->fileCount(), 1u);
  makeDirectory(deepest / "one-too-deep");
  EXPECT_EQ(BackupSourceScan::scan(temporary.path()), std::unexpected(BackupSourceScanError::tooLarge));
}

TEST(BackupSourceScan, TheSourceMustBeADirectoryAndMayBeReachedThroughALink) {
  testsupport::TemporaryDirectory temporary;
  makeDirectory(temporary / "real");
  writeFile(temporary / "real" / "a.png", "png");
  writeFile(temporary / "file.jpg", "jpeg");
  testsupport::FileFixtures::makeSymbolicLink(temporary / "real", temporary / "named");
  EXPECT_EQ(BackupSourceScan::scan(temporary / "missing"), std::unexpected(BackupSourceScanError::unavailable));
  EXPECT_EQ(BackupSourceScan::scan(temporary / "file.jpg"), std::unexpected(BackupSourceScanError::unavailable));
  const auto throughLink = BackupSourceScan::scan(temporary / "named");
  ASSERT_TRUE(throughLink.has_value());
  EXPECT_EQ(throughLink->fileCount(), 1u);
}

}  // namespace

}  // namespace galdrine::backuptool
