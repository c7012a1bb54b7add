#include "format/graph/BackupCommitGraph.hpp"

#include <gtest/gtest.h>

#include "BackupGraphTestRecords.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupCommitGraphError;
using Commit = AuthenticatedBackupCommit;
using Head = AuthenticatedBackupHead;
using Tip = BackupCommitGraphTip;
using AccessState = BackupCommitGraphAccessState;

// The reference of commit n as its frame was seen.
Reference commitReference(std::uint32_t number, std::uint8_t frameDigest = 0xA1) {
  return made(Reference::make(identifier(number), 1000 + number, digest(frameDigest), 500 + number, digest(0xB1)));
}

// Commit `number` on `parent` (none for a root), in `epoch` at `generation`, acknowledging `tips`.
struct Shape {
  std::uint32_t number;
  std::optional<std::uint32_t> parent;
  std::uint64_t epoch = 0, generation = 0;
  std::vector<std::uint32_t> tips = {};
};

Commit makeCommit(const Shape& shape) {
  const auto parent = shape.parent ? std::optional(commitReference(*shape.parent)) : std::nullopt;
  std::vector<Reference> tips;
  for (const std::uint32_t tip : shape.tips) tips.push_back(commitReference(tip));
  auto commit = made(BackupCommitV1::make(identifier(shape.number), kLibrary, parent, reference(0xFFFF), kManifest,
                                          kManifest, shape.epoch, shape.generation, 0, digest(9), tips));
  return made(Commit::make(commitReference(shape.number), std::move(commit)));
}

std::vector<Commit> makeCommits(const std::vector<Shape>& shapes) {
  std::vector<Commit> commits;
  for (const Shape& shape : shapes) commits.push_back(makeCommit(shape));
  return commits;
}

Head makeHead(std::uint32_t number, Reference commit) {
  auto head = made(BackupHeadV1::make(identifier(number, 0x40), kLibrary, std::move(commit), 0));
  return made(
      Head::make(made(Reference::make(identifier(number, 0x40), 90, digest(3), 80, digest(4))), std::move(head)));
}

std::vector<Head> headsOn(const std::vector<std::uint32_t>& commitNumbers) {
  std::vector<Head> heads;
  for (std::size_t index = 0; index < commitNumbers.size(); ++index)
    heads.push_back(makeHead(static_cast<std::uint32_t>(index), commitReference(commitNumbers[index])));
  return heads;
}

std::optional<Error> scanError(const std::vector<Commit>& commits, const std::vector<Head>& heads) {
  return errorOf(BackupCommitGraph::scan(commits, heads));
}

// A root 1 with two branches 2 and 3 of epoch 0.
const Shape kRoot{1, std::nullopt};
const Shape kLeft{2, 1, 0, 1};
const Shape kRight{3, 1, 0, 1};

TEST(BackupCommitGraph, DecidesTipsAndAccessFromContentAlone) {
  const Shape healing{4, 2, 1, 1, {3}};
  const Shape third{5, 1, 0, 1};
  const Shape healsOnlyThird{4, 2, 1, 1, {5}};
  const Shape healsBoth{4, 2, 1, 1, {3, 5}};
  // tips ascending; settled is the canonical tip of a writable package, else a fork.
  const struct {
    std::string_view name;
    std::vector<Shape> shapes;
    std::vector<std::uint32_t> headCommits, tips;
    std::optional<std::uint32_t> settled;
    std::uint64_t epoch;
  } cases[] = {
      {"nothing at all", {}, {}, {}, std::nullopt, 0},
      {"commits without heads", {kRoot, {2, 1, 4, 1}}, {}, {}, std::nullopt, 4},
      // Two heads on one commit and one on its ancestor give one tip; commit 5 is reached by none.
      {"one branch", {kRoot, kLeft, {4, 2, 0, 2}, {5, 4, 0, 3}}, {4, 2, 4}, {4}, 4, 0},
      {"two roots", {{9, std::nullopt}, kRoot}, {9, 1}, {1, 9}, std::nullopt, 0},
      {"two branches", {kRoot, kLeft, kRight}, {2, 3}, {2, 3}, std::nullopt, 0},
      {"a commit that acknowledges the other tip", {kRoot, kLeft, kRight, healing}, {3, 4}, {3, 4}, 4, 1},
      {"one of three tips acknowledges both", {kRoot, kLeft, kRight, healsBoth, third}, {5, 4, 3}, {3, 4, 5}, 4, 1},
      {"one of three tips acknowledges one",
       {kRoot, kLeft, kRight, healsOnlyThird, third},
       {5, 4, 3},
       {3, 4, 5},
       std::nullopt,
       1},
      {"a writer takes over with a higher epoch", {kRoot, kLeft, {4, 2, 5, 1}, {6, 4, 5, 2}}, {6}, {6}, 6, 5},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.name));
    const auto commits = makeCommits(row.shapes);
    const auto tipOf = [&](std::uint32_t number) {
      return Tip(*std::ranges::find_if(commits,
                                       [&](const Commit& c) { return c.commit().identifier() == identifier(number); }));
    };
    BackupCommitGraphScan expected{AccessState::writable(std::nullopt), {}, {}, row.epoch};
    for (const std::uint32_t tip : row.tips) expected.retainedTips.push_back(tipOf(tip));
    for (const auto& shape : row.shapes) expected.validCommitIdentifiers.insert(identifier(shape.number));
    if (row.settled) expected.accessState = AccessState::writable(tipOf(*row.settled));
    if (!row.tips.empty() && !row.settled) expected.accessState = AccessState::readOnlyFork(expected.retainedTips);
    const auto scan = BackupCommitGraph::scan(commits, headsOn(row.headCommits));
    ASSERT_TRUE(scan.has_value()) << static_cast<int>(scan.error());
    EXPECT_EQ(*scan, expected);
  }
}

TEST(BackupCommitGraph, LineageFaultsAreRefused) {
  // In each row the last commit breaks one rule; the others are sound.
  const struct {
    std::string_view name;
    std::vector<Shape> shapes;
  } cases[] = {
      {"a root with acknowledged tips", {{9, std::nullopt}, {1, std::nullopt, 0, 0, {9}}}},
      {"a generation skipped", {kRoot, {2, 1, 0, 2}}},
      {"same epoch, other tips", {kRoot, kLeft, kRight, {4, 2, 1, 1, {3}}, {5, 4, 1, 2}}},
      {"a new epoch at generation 2", {kRoot, {2, 1, 1, 2}}},
      {"a lower epoch", {{1, std::nullopt, 5, 0}, {2, 1, 4, 1}}},
      {"a new epoch drops an acknowledged tip", {kRoot, kLeft, kRight, {4, 2, 1, 1, {3}}, {5, 4, 2, 1}}},
      {"a tip of the same epoch", {kRoot, {2, 1, 1, 1}, kRight, {4, 3, 1, 1, {2}}}},
      {"the parent acknowledged", {kRoot, kLeft, {3, 2, 1, 1, {2}}}},
      {"an ancestor of the parent acknowledged", {kRoot, kLeft, {3, 2, 1, 1, {1}}}},
      {"a descendant of the parent acknowledged", {kRoot, kLeft, {3, 1, 1, 1, {2}}}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.name));
    EXPECT_EQ(scanError(makeCommits(row.shapes), {}), Error::invalidLineage);
    EXPECT_EQ(scanError(makeCommits({row.shapes.begin(), row.shapes.end() - 1}), {}), std::nullopt);
  }
}

TEST(BackupCommitGraph, RepeatsAreDroppedWhenEqualAndRefusedOtherwise) {
  auto heads = headsOn({2});
  heads.push_back(heads.front());
  const auto scan = BackupCommitGraph::scan(makeCommits({kRoot, kLeft, kLeft}), heads);
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(*scan, *BackupCommitGraph::scan(makeCommits({kRoot, kLeft}), headsOn({2})));

  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft, {2, 1, 3, 1}}), {}), Error::duplicateIdentifier);
  const auto otherReference = made(Commit::make(commitReference(2, 0xA2), makeCommit(kLeft).commit()));
  EXPECT_EQ(scanError({makeCommit(kRoot), makeCommit(kLeft), otherReference}, {}), Error::duplicateIdentifier);
  // Heads are indexed after commits, and both before any reference is looked up.
  const std::vector<Head> differingHeads{makeHead(0, commitReference(1)), makeHead(0, commitReference(2))};
  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft}), differingHeads), Error::duplicateIdentifier);
  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft, {2, 1, 3, 1}}), headsOn({77})), Error::duplicateIdentifier);
}

TEST(BackupCommitGraph, EveryReferenceMustBindTheFrameSeen) {
  const auto commits = makeCommits({kRoot, kLeft});
  EXPECT_EQ(scanError(commits, headsOn({9})), Error::missingReference);
  EXPECT_EQ(scanError(commits, {makeHead(0, commitReference(2, 0xA2))}), Error::missingReference);
  EXPECT_EQ(scanError(makeCommits({{2, 1, 0, 1}}), {}), Error::missingReference);
  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft, {3, 1, 1, 1, {8}}}), {}), Error::missingReference);
  // The parent's frame was seen with another digest than its child names.
  EXPECT_EQ(
      scanError({made(Commit::make(commitReference(1, 0xA2), makeCommit(kRoot).commit())), makeCommit(kLeft)}, {}),
      Error::missingReference);
}

// A ring has no root and is never reached, also beside sound commits; an authenticated record
// must bear the identifier of the reference it came with.
TEST(BackupCommitGraph, RingsAndForeignReferencesAreRefused) {
  EXPECT_EQ(scanError(makeCommits({{5, 6, 0, 1}, {6, 5, 0, 1}}), {}), Error::cyclicGraph);
  const auto withSoundOnes = makeCommits({kRoot, kLeft, {5, 6, 0, 1}, {6, 5, 0, 1}, {7, std::nullopt, 0, 0, {2}}});
  EXPECT_EQ(scanError(withSoundOnes, headsOn({2})), Error::cyclicGraph);
  EXPECT_EQ(errorOf(Commit::make(commitReference(3), makeCommit(kLeft).commit())), Error::invalidAuthenticatedRecord);
  EXPECT_EQ(errorOf(Head::make(commitReference(3), makeHead(0, commitReference(1)).head())),
            Error::invalidAuthenticatedRecord);
}

TEST(BackupCommitGraph, AChainOf20000CommitsScansWithoutDeepRecursion) {
  std::vector<Commit> commits{makeCommit({0, std::nullopt})};
  for (std::uint32_t number = 1; number <= 20'000; ++number)
    commits.push_back(makeCommit({number, number - 1, 0, number}));
  EXPECT_EQ(scanError(commits, {}), Error::recordLimitExceeded);
  EXPECT_EQ(scanError({}, std::vector<Head>(20'001, makeHead(0, commitReference(9)))), Error::recordLimitExceeded);
  commits.pop_back();
  const auto scan = BackupCommitGraph::scan(commits, headsOn({19'999, 0}));
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(scan->retainedTips, std::vector<Tip>{Tip(commits.back())});
  EXPECT_EQ(scan->accessState, AccessState::writable(Tip(commits.back())));
  EXPECT_EQ(scan->validCommitIdentifiers.size(), 20'000u);
}

}  // namespace

}  // namespace galdrine::format
