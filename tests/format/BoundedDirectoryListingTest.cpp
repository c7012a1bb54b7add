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
using Listing = std::expected<Names, Error>;

[[nodiscard]] Listing sorted(Listing listing) {
  if (listing) std::ranges::sort(*listing);
  return listing;
}

void fill(const testsupport::TemporaryDirectory& directory, const Names& names) {
  for (const std::string& name : names) testsupport::FileFixtures::writeFile(directory / name, "");
}

struct ListingCase {
  const char* name;
  Names entries;
  std::int64_t maximumCount;
  std::vector<std::string_view> prefixes;
  Listing expected;
};

const ListingCase listingCases[] = {
    {"empty directory, bound 0", {}, 0, {""}, Names{}},
    {"one file, bound 0", {"a"}, 0, {""}, std::unexpected(Error::limitExceeded(0))},
    {"hidden names count", {".hidden", "a"}, 1, {""}, std::unexpected(Error::limitExceeded(1))},
    {"unmatched names do not count", {"a1", "b1", "b2"}, 1, {"a"}, Names{"a1"}},
    {"any of several prefixes", {"a1", "b1", "c1"}, 2, {"a", "b"}, Names{"a1", "b1"}},
    {"a name matching two prefixes counts once", {"ab", "c"}, 1, {"a", "ab"}, Names{"ab"}},
    {"no prefixes match nothing", {"a", "b"}, 0, {}, Names{}},
    {"negative bound", {"a"}, -1, {""}, std::unexpected(Error::invalidMaximumCount())},
    {"invalid UTF-8 although no prefix matches", {"\xff"}, 5, {"a"}, std::unexpected(Error::invalidEntryName())},
    {"overlong UTF-8 comes before the bound", {"a\xc0\x80"}, 0, {"a"}, std::unexpected(Error::invalidEntryName())},
    {"a surrogate is no UTF-8", {"a\xed\xa0\x80"}, 1, {""}, std::unexpected(Error::invalidEntryName())},
    {"non-ASCII UTF-8 is kept", {"\xc3\xa9t\xc3\xa9"}, 1, {"\xc3\xa9"}, Names{"\xc3\xa9t\xc3\xa9"}},
};

TEST(BoundedDirectoryListing, ListsWithinTheBoundAndRefusesBadNames) {
  for (const ListingCase& row : listingCases) {
    testsupport::TemporaryDirectory directory;
    fill(directory, row.entries);
    const std::size_t before = testsupport::openDescriptorCount();
    EXPECT_EQ(sorted(BoundedDirectoryListing::names(directory.path(), row.maximumCount, row.prefixes)),
              row.expected)
        << row.name;
    EXPECT_EQ(testsupport::openDescriptorCount(), before) << row.name;
  }
}

TEST(BoundedDirectoryListing, PassesExactlyWhenTheEntriesFitTheBound) {
  for (std::size_t fileCount = 0; fileCount <= 5; ++fileCount) {
    testsupport::TemporaryDirectory directory;
    for (std::size_t index = 0; index < fileCount; ++index) testsupport::FileFixtures::writeFile(directory / std::to_string(index), "");
    for (std::int64_t bound = 0; bound <= 6; ++bound) {
      const auto listing = BoundedDirectoryListing::names(directory.path(), bound);
      if (static_cast<std::int64_t>(fileCount) <= bound) {
        EXPECT_TRUE(listing.has_value() && listing->size() == fileCount) << fileCount << " " << bound;
      } else {
        EXPECT_EQ(listing, std::unexpected(Error::limitExceeded(bound))) << fileCount << " " << bound;
      }
    }
  }
}

TEST(BoundedDirectoryListing, AHugeDirectoryFailsOnePastTheBound) {
  testsupport::TemporaryDirectory directory;
  for (int index = 0; index < 2000; ++index) testsupport::FileFixtures::writeFile(directory / std::to_string(index), "");
  EXPECT_EQ(BoundedDirectoryListing::names(directory.path(), 10), std::unexpected(Error::limitExceeded(10)));
  const auto everything = BoundedDirectoryListing::names(directory.path(), 2000);
  EXPECT_TRUE(everything.has_value() && everything->size() == 2000);
}

TEST(BoundedDirectoryListing, RefusesWhatIsNoRealDirectory) {
  testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::makeDirectory(directory / "real");
  testsupport::FileFixtures::writeFile(directory / "file", "x");
  testsupport::FileFixtures::makeSymbolicLink(directory / "real", directory / "link");
  const std::size_t before = testsupport::openDescriptorCount();
  for (const char* name : {"missing", "file", "link"}) {
    EXPECT_EQ(BoundedDirectoryListing::names(directory / name, 12), std::unexpected(Error::directoryUnavailable()))
        << name;
  }
  // The bound is checked before the directory is touched.
  EXPECT_EQ(BoundedDirectoryListing::names(directory / "missing", -1), std::unexpected(Error::invalidMaximumCount()));
  {
    testsupport::FileFixtures::ExhaustedDescriptors exhausted;
    EXPECT_EQ(BoundedDirectoryListing::names(directory / "real", 12), std::unexpected(Error::directoryUnavailable()));
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

}  // namespace

}  // namespace galdrine::format
