#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "BackupGraphTestRecords.hpp"
#include "format/graph/BackupCommitGraph.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupCommitGraphError;
using Reference = BackupArtifactReferenceV1;
using Commit = AuthenticatedBackupCommit;
using Head = AuthenticatedBackupHead;
using Tip = BackupCommitGraphTip;
using AccessState = BackupCommitGraphAccessState;
using Scan = BackupCommitGraphScan;

// The reference of commit n as its frame was seen.
Reference commitReference(std::uint32_t number, std::uint8_t frameDigest = 0xA1) {
  return take(Reference::make(identifier(number), 1000 + number, digest(frameDigest), 500 + number, digest(0xB1)));
}

struct CommitShape {
  std::uint32_t number;
  std::optional<std::uint32_t> parent;
  std::uint64_t epoch = 0;
  std::uint64_t generation = 0;
  std::vector<std::uint32_t> tips = {};
};

Commit makeCommit(const CommitShape& shape) {
  std::optional<Reference> parent;
  if (shape.parent) parent = commitReference(*shape.parent);
  std::vector<Reference> tips;
  for (const std::uint32_t tip : shape.tips) tips.push_back(commitReference(tip));
  auto commit = take(BackupCommitV1::make(identifier(shape.number), kLibrary, parent, reference(0xFFFF), kManifest,
                                                  kManifest, shape.epoch, shape.generation, 0, digest(9), tips));
  return take(Commit::make(commitReference(shape.number), std::move(commit)));
}

std::vector<Commit> makeCommits(const std::vector<CommitShape>& shapes) {
  std::vector<Commit> commits;
  for (const auto& shape : shapes) commits.push_back(makeCommit(shape));
  return commits;
}

Head makeHead(std::uint32_t number, Reference commit) {
  auto head = take(BackupHeadV1::make(identifier(number, 0x40), kLibrary, std::move(commit), 0));
  return take(Head::make(take(Reference::make(identifier(number, 0x40), 90, digest(3), 80, digest(4))), std::move(head)));
}

std::vector<Head> headsOn(const std::vector<std::uint32_t>& commitNumbers) {
  std::vector<Head> heads;
  for (std::size_t index = 0; index < commitNumbers.size(); ++index) {
    heads.push_back(makeHead(static_cast<std::uint32_t>(index), commitReference(commitNumbers[index])));
  }
  return heads;
}

Tip tipOf(const CommitShape& shape) { return Tip(makeCommit(shape)); }

Scan expectedScan(AccessState state, std::vector<Tip> tips, const std::vector<CommitShape>& all, std::uint64_t epoch) {
  Scan scan{std::move(state), std::move(tips), {}, epoch};
  for (const auto& shape : all) scan.validCommitIdentifiers.insert(identifier(shape.number));
  return scan;
}

void expectScan(const std::vector<CommitShape>& shapes, const std::vector<std::uint32_t>& headCommits, const Scan& expected) {
  const auto scan = BackupCommitGraph::scan(makeCommits(shapes), headsOn(headCommits));
  ASSERT_TRUE(scan.has_value()) << static_cast<int>(scan.error());
  EXPECT_EQ(*scan, expected);
}

Error scanError(const std::vector<Commit>& commits, const std::vector<Head>& heads) {
  const auto scan = BackupCommitGraph::scan(commits, heads);
  EXPECT_FALSE(scan.has_value());
  return scan ? Error::duplicateIdentifier : scan.error();
}

// A root 1 with two branches 2 and 3 of epoch 0.
const CommitShape kRoot{1, std::nullopt};
const CommitShape kLeft{2, 1, 0, 1};
const CommitShape kRight{3, 1, 0, 1};

TEST(BackupCommitGraph, NothingIsWritableWithoutATip) {
  expectScan({}, {}, expectedScan(AccessState::writable(std::nullopt), {}, {}, 0));
  const std::vector<CommitShape> shapes{kRoot, {2, 1, 4, 1}};
  expectScan(shapes, {}, expectedScan(AccessState::writable(std::nullopt), {}, shapes, 4));
}

TEST(BackupCommitGraph, SingleBranchHasItsLastReachedCommitAsTip) {
  const std::vector<CommitShape> shapes{kRoot, kLeft, {4, 2, 0, 2}, {5, 4, 0, 3}};
  const Tip tip = tipOf(shapes[2]);
  // Two heads on one commit and one on its ancestor give one tip; commit 5 is reached by none.
  expectScan(shapes, {4, 2, 4}, expectedScan(AccessState::writable(tip), {tip}, shapes, 0));
}

TEST(BackupCommitGraph, TwoRootsWithHeadsAreAFork) {
  const std::vector<CommitShape> shapes{{9, std::nullopt}, kRoot};
  const std::vector<Tip> tips{tipOf(kRoot), tipOf(shapes[0])};
  expectScan(shapes, {9, 1}, expectedScan(AccessState::readOnlyFork(tips), tips, shapes, 0));
}

TEST(BackupCommitGraph, ACommitThatAcknowledgesTheOtherTipHealsTheFork) {
  const CommitShape healing{4, 2, 1, 1, {3}};
  const std::vector<CommitShape> shapes{kRoot, kLeft, kRight, healing};
  expectScan({kRoot, kLeft, kRight}, {2, 3},
             expectedScan(AccessState::readOnlyFork({tipOf(kLeft), tipOf(kRight)}), {tipOf(kLeft), tipOf(kRight)},
                          {kRoot, kLeft, kRight}, 0));
  const std::vector<Tip> tips{tipOf(kRight), tipOf(healing)};
  expectScan(shapes, {3, 4}, expectedScan(AccessState::writable(tipOf(healing)), tips, shapes, 1));
}

TEST(BackupCommitGraph, OfThreeTipsOnlyOneAcknowledgingBothSettles) {
  const CommitShape third{5, 1, 0, 1};
  for (const bool acknowledgesBoth : {true, false}) {
    const CommitShape healing{4, 2, 1, 1, acknowledgesBoth ? std::vector<std::uint32_t>{3, 5} : std::vector<std::uint32_t>{5}};
    const std::vector<CommitShape> shapes{kRoot, kLeft, kRight, healing, third};
    const std::vector<Tip> tips{tipOf(kRight), tipOf(healing), tipOf(third)};
    const AccessState state = acknowledgesBoth ? AccessState::writable(tipOf(healing)) : AccessState::readOnlyFork(tips);
    expectScan(shapes, {5, 4, 3}, expectedScan(state, tips, shapes, 1));
  }
}

TEST(BackupCommitGraph, MutualAcknowledgementStaysAFork) {
  // Lineage never lets two tips name each other (each needs the other's epoch below its own),
  // so the decision is shown on its own.
  const std::vector<Tip> tips{tipOf({2, 1, 1, 1, {3}}), tipOf({3, 1, 1, 1, {2}})};
  EXPECT_EQ(AccessState::decide(tips), AccessState::readOnlyFork(tips));
  const std::vector<Tip> oneSettles{tipOf({2, 1, 1, 1, {3}}), tipOf({3, 1, 1, 1, {}})};
  EXPECT_EQ(AccessState::decide(oneSettles), AccessState::writable(oneSettles.front()));
}

TEST(BackupCommitGraph, AWriterTakesOverWithAHigherEpoch) {
  const std::vector<CommitShape> shapes{kRoot, kLeft, {4, 2, 5, 1}, {6, 4, 5, 2}};
  const Tip tip = tipOf(shapes[3]);
  expectScan(shapes, {6}, expectedScan(AccessState::writable(tip), {tip}, shapes, 5));
}

TEST(BackupCommitGraph, LineageFaultsAreRefused) {
  const struct {
    std::string_view name;
    std::vector<CommitShape> shapes;
  } cases[] = {
      // In each the last commit breaks one rule, and the others are sound.
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
  for (const auto& testCase : cases) {
    SCOPED_TRACE(std::string(testCase.name));
    EXPECT_EQ(scanError(makeCommits(testCase.shapes), {}), Error::invalidLineage);
    const auto sound = makeCommits({testCase.shapes.begin(), testCase.shapes.end() - 1});
    EXPECT_TRUE(BackupCommitGraph::scan(sound, {}).has_value());
  }
}

TEST(BackupCommitGraph, RepeatsAreDroppedWhenEqualAndRefusedOtherwise) {
  const std::vector<CommitShape> shapes{kRoot, kLeft};
  auto commits = makeCommits({kRoot, kLeft, kLeft});
  auto heads = headsOn({2});
  heads.push_back(heads.front());
  const auto scan = BackupCommitGraph::scan(commits, heads);
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(*scan, expectedScan(AccessState::writable(tipOf(kLeft)), {tipOf(kLeft)}, shapes, 0));

  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft, {2, 1, 3, 1}}), {}), Error::duplicateIdentifier);
  const auto otherReference = take(Commit::make(commitReference(2, 0xA2), makeCommit(kLeft).commit()));
  EXPECT_EQ(scanError({makeCommit(kRoot), makeCommit(kLeft), otherReference}, {}), Error::duplicateIdentifier);
  // Heads are indexed after commits, and both before any reference is looked up.
  std::vector<Head> differingHeads{makeHead(0, commitReference(1)), makeHead(0, commitReference(2))};
  EXPECT_EQ(scanError(makeCommits(shapes), differingHeads), Error::duplicateIdentifier);
  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft, {2, 1, 3, 1}}), headsOn({77})), Error::duplicateIdentifier);
}

TEST(BackupCommitGraph, EveryReferenceMustBindTheFrameSeen) {
  const auto commits = makeCommits({kRoot, kLeft});
  EXPECT_EQ(scanError(commits, headsOn({9})), Error::missingReference);
  EXPECT_EQ(scanError(commits, {makeHead(0, commitReference(2, 0xA2))}), Error::missingReference);
  EXPECT_EQ(scanError(makeCommits({{2, 1, 0, 1}}), {}), Error::missingReference);
  EXPECT_EQ(scanError(makeCommits({kRoot, kLeft, {3, 1, 1, 1, {8}}}), {}), Error::missingReference);
  // The parent's frame was seen with another digest than its child names.
  EXPECT_EQ(scanError({take(Commit::make(commitReference(1, 0xA2), makeCommit(kRoot).commit())), makeCommit(kLeft)}, {}),
            Error::missingReference);
}

TEST(BackupCommitGraph, ARingIsCyclicEvenBesideSoundCommits) {
  const std::vector<CommitShape> ring{{5, 6, 0, 1}, {6, 5, 0, 1}};
  EXPECT_EQ(scanError(makeCommits(ring), {}), Error::cyclicGraph);
  auto withSoundOnes = makeCommits({kRoot, kLeft, {5, 6, 0, 1}, {6, 5, 0, 1}, {7, std::nullopt, 0, 0, {2}}});
  EXPECT_EQ(scanError(withSoundOnes, headsOn({2})), Error::cyclicGraph);
}

TEST(BackupCommitGraph, AuthenticatedRecordsBindTheirReference) {
  EXPECT_EQ(Commit::make(commitReference(3), makeCommit(kLeft).commit()).error(), Error::invalidAuthenticatedRecord);
  const auto head = makeHead(0, commitReference(1));
  EXPECT_EQ(Head::make(commitReference(3), head.head()).error(), Error::invalidAuthenticatedRecord);
}

std::vector<Commit> chainOf(std::uint32_t length) {
  std::vector<Commit> commits;
  commits.reserve(length);
  commits.push_back(makeCommit({0, std::nullopt}));
  for (std::uint32_t number = 1; number < length; ++number) commits.push_back(makeCommit({number, number - 1, 0, number}));
  return commits;
}

TEST(BackupCommitGraph, AChainOf20000CommitsScansWithoutDeepRecursion) {
  const auto commits = chainOf(20'000);
  const auto scan = BackupCommitGraph::scan(commits, headsOn({19'999, 0}));
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(scan->retainedTips, std::vector<Tip>{Tip(commits.back())});
  EXPECT_EQ(scan->accessState, AccessState::writable(Tip(commits.back())));
  EXPECT_EQ(scan->validCommitIdentifiers.size(), 20'000u);

  const auto tooMany = chainOf(20'001);
  EXPECT_EQ(scanError(tooMany, {}), Error::recordLimitExceeded);
  const std::vector<Head> heads(20'001, makeHead(0, commitReference(9)));
  EXPECT_EQ(scanError({}, heads), Error::recordLimitExceeded);
}

}  // namespace

}  // namespace galdrine::format
