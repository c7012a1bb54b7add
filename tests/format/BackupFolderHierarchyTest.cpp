// The folder check must give one verdict whatever order the folders are visited in: a memo
// of sound folders without their depths would let a deep folder pass when its ancestors were
// settled first.

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "format/manifest/BackupFolderHierarchy.hpp"
#include "support/ManifestTestRecords.hpp"

namespace galdrine::format {

using namespace testsupport::ManifestTestRecords;

namespace {

using Folder = BackupAlbumFolderRecordV1;
using Parents = std::vector<std::pair<std::uint64_t, std::optional<std::uint64_t>>>;  // folder, parent

Parents chain(std::uint64_t first, std::size_t length, std::optional<std::uint64_t> root) {
  Parents parents;
  for (std::size_t index = 0; index < length; ++index) {
    parents.emplace_back(first + index, index == 0 ? root : std::optional(first + index - 1));
  }
  return parents;
}

Parents joined(Parents left, const Parents& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

std::optional<Error> verdictInOrder(const Parents& parents, const std::vector<std::size_t>& order) {
  BackupFolderSet folders;
  for (const std::size_t index : order) {
    auto folder = made(Folder::make(folderFields(parents[index].first, parents[index].second)));
    EXPECT_TRUE(folders.enter(folder.identifier(), std::move(folder)));
  }
  return errorOf(BackupFolderHierarchy::validateFolders(folders));
}

// visitOrders: as given, reversed, every rotation, and many shuffles.
std::vector<std::vector<std::size_t>> visitOrders(std::size_t count) {
  std::vector<std::size_t> given(count);
  std::iota(given.begin(), given.end(), std::size_t{0});
  std::vector<std::vector<std::size_t>> orders{given, {given.rbegin(), given.rend()}};
  for (std::size_t shift = 1; shift < count; ++shift) {
    orders.push_back(given);
    std::ranges::rotate(orders.back(), orders.back().begin() + static_cast<std::ptrdiff_t>(shift));
  }
  std::mt19937 random(20240611);
  for (int shuffle = 0; shuffle < 300; ++shuffle) {
    orders.push_back(given);
    std::ranges::shuffle(orders.back(), random);
  }
  return orders;
}

}  // namespace

TEST(BackupFolderHierarchy, GivesOneVerdictInEveryVisitOrder) {
  struct ForestCase {
    std::string name;
    Parents parents;
    std::optional<Error> expected;
  };
  const std::vector<ForestCase> cases{
      {"a chain of 16", chain(1, 16, std::nullopt), std::nullopt},
      {"a chain of 17", chain(1, 17, std::nullopt), Error::invalidRelationship},
      {"a trunk of 10 with branches of 6 and 6", joined(joined(chain(1, 10, std::nullopt), chain(11, 6, 10)), chain(21, 6, 10)), std::nullopt},
      {"a trunk of 10 with branches of 6 and 7", joined(joined(chain(1, 10, std::nullopt), chain(11, 6, 10)), chain(21, 7, 10)), Error::invalidRelationship},
      {"a deep branch off a sound one", joined(chain(1, 16, std::nullopt), chain(31, 1, 16)), Error::invalidRelationship},
      {"two folders naming each other", {{1, 2}, {2, 1}}, Error::invalidRelationship},
      {"a cycle of 20", joined(chain(1, 19, 20), chain(20, 1, 19)), Error::invalidRelationship},
      {"a chain into a cycle", joined(chain(1, 3, std::nullopt), {{4, 5}, {5, 4}, {6, 4}}), Error::invalidRelationship},
      {"a missing parent", joined(chain(1, 5, std::nullopt), chain(6, 3, 99)), Error::missingReference},
      {"one root", chain(1, 1, std::nullopt), std::nullopt},
  };
  for (const auto& row : cases) {
    for (const auto& order : visitOrders(row.parents.size())) {
      ASSERT_EQ(verdictInOrder(row.parents, order), row.expected) << row.name;
    }
  }
}

}  // namespace galdrine::format
