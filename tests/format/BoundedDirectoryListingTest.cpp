#include "format/package/BoundedDirectoryListing.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

using Error = BoundedDirectoryListingError;
using Names = std::vector<std::string>;
using testsupport::FileFixtures::writeFile;

}  // namespace

// Exactly the bound passes and one more name fails, also far past the 256 names reserved up front.
TEST(BoundedDirectoryListing, ListsWithinTheBoundAndRefusesBadNames) {
  const auto numbered = [](int count) {
    Names names;
    for (int index = 0; index < count; ++index) names.push_back(std::to_string(1000 + index));  // in sorted order
    return names;
  };
  const struct {
    const char* name;
    Names entries;
    std::int64_t maximumCount;
    std::vector<std::string_view> prefixes;
    std::expected<Names, Error> expected;
  } cases[] = {
      {"empty directory, bound 0", {}, 0, {""}, Names{}},
      {"one file, bound 0", {"a"}, 0, {""}, std::unexpected(Error::limitExceeded(0))},
      {"hidden names count", {".hidden", "a"}, 1, {""}, std::unexpected(Error::limitExceeded(1))},
      {"300 names, bound 300", numbered(300), 300, {""}, numbered(300)},
      {"300 names, bound 299", numbered(300), 299, {""}, std::unexpected(Error::limitExceeded(299))},
      {"unmatched names do not count", {"a1", "b1", "b2"}, 1, {"a"}, Names{"a1"}},
      {"any of several prefixes", {"a1", "b1", "c1"}, 2, {"a", "b"}, Names{"a1", "b1"}},
      {"a name matching two prefixes counts once", {"ab", "c"}, 1, {"a", "ab"}, Names{"ab"}},
      {"negative bound", {"a"}, -1, {""}, std::unexpected(Error::invalidMaximumCount())},
      {"invalid UTF-8 although no prefix matches", {"\xff"}, 5, {"a"}, std::unexpected(Error::invalidEntryName())},
      {"non-ASCII UTF-8 is kept", {"\xc3\xa9t\xc3\xa9"}, 1, {"\xc3\xa9"}, Names{"\xc3\xa9t\xc3\xa9"}},
  };
  for (const auto& row : cases) {
    testsupport::TemporaryDirectory directory;
    for (const std::string& name : row.entries) writeFile(directory / name, "");
    const std::size_t before = testsupport::openDescriptorCount();
    auto listing = BoundedDirectoryListing::names(directory.path(), row.maximumCount, row.prefixes);
    if (listing) std::ranges::sort(*listing);
    EXPECT_EQ(listing, row.expected) << row.name;
    EXPECT_EQ(testsupport::openDescriptorCount(), before) << row.name;
  }
}

TEST(BoundedDirectoryListing, RefusesWhatIsNoRealDirectory) {
  testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::makeDirectory(directory / "real");
  writeFile(directory / "file", "x");
  testsupport::FileFixtures::makeSymbolicLink(directory / "real", directory / "link");
  for (const char* name : {"missing", "file", "link"}) {
    EXPECT_EQ(BoundedDirectoryListing::names(directory / name, 12), std::unexpected(Error::directoryUnavailable()))
        << name;
  }
  // The bound is checked before the directory is touched.
  EXPECT_EQ(BoundedDirectoryListing::names(directory / "missing", -1), std::unexpected(Error::invalidMaximumCount()));
}

}  // namespace galdrine::format
