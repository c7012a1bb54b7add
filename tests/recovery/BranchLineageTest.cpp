// Walking a retained tip back to its root, and refusing a walk that cannot end well.

#include "recovery/inspection/BranchLineage.hpp"

#include <gtest/gtest.h>

#include <optional>

#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recovery {

namespace {

using Preflight = RecoverySnapshotPreflight;

[[nodiscard]] Bytes identifier(std::uint8_t seed) { return Bytes(16, seed); }

[[nodiscard]] format::BackupArtifactReferenceV1 referenceTo(std::uint8_t seed) {
  return *format::BackupArtifactReferenceV1::make(identifier(seed), 100, Bytes(32, seed), 50, Bytes(32, seed));
}

[[nodiscard]] Preflight preflight(std::uint8_t seed) {
  return {identifier(seed), identifier(0x70), 1700000000000, 1, 0, false, *format::BackupManifestCountsV1::make(0, 0, 0, 0, 0, 0, 0),
          0, 0, {}};
}

// Graph holds commits by seed, each naming the parent seed it is given.
struct Graph {
  std::map<Bytes, AuthenticatedContent> contents;
  std::map<Bytes, Preflight> preflights;

  Graph& add(std::uint8_t seed, std::optional<std::uint8_t> parentSeed, bool withPreflight = true) {
    const auto commit = format::BackupCommitV1::make(
        identifier(seed), Bytes(16, 0x11), parentSeed ? std::optional(referenceTo(*parentSeed)) : std::nullopt,
        referenceTo(0x70), identifier(0x71), identifier(0x72), 1, parentSeed ? 1 : 0, 1700000000000, Bytes(32, 0x73), {});
    const auto snapshot = format::BackupSnapshotV1::make(identifier(0x70), Bytes(16, 0x11), 1700000000000, referenceTo(0x71),
                                                         Bytes(32, 1), Bytes(32, 0x73), preflight(0).counts, 0, 0);
    const auto authenticated = format::AuthenticatedBackupCommit::make(referenceTo(seed), *commit);
    EXPECT_TRUE(snapshot && authenticated);
    contents.emplace(identifier(seed), AuthenticatedContent{*authenticated, *snapshot, nullptr, nullptr});
    if (withPreflight) preflights.emplace(identifier(seed), preflight(seed));
    return *this;
  }
  [[nodiscard]] std::expected<std::vector<Preflight>, RecoveryPackageInspectorError> lineage(std::uint8_t tip) const {
    return branchLineage(identifier(tip), contents, preflights);
  }
};

TEST(BranchLineageTest, WalksFromTheTipToTheRootAndRefusesAnyOtherEnd) {
  constexpr auto integrityFailure = std::unexpected(RecoveryPackageInspectorError::integrityFailure);
  Graph graph;
  graph.add(1, std::nullopt).add(2, 1).add(3, 2).add(4, 1);
  EXPECT_EQ(graph.lineage(3), (std::vector{preflight(3), preflight(2), preflight(1)}));
  EXPECT_EQ(graph.lineage(1), std::vector{preflight(1)});
  EXPECT_EQ(graph.lineage(9), integrityFailure);                                             // no such tip
  EXPECT_EQ(Graph().add(2, 1).lineage(2), integrityFailure);                                 // no parent content
  EXPECT_EQ(Graph().add(1, std::nullopt, false).add(2, 1).lineage(2), integrityFailure);     // no preflight
  EXPECT_EQ(Graph().add(1, 3).add(2, 1).add(3, 2).lineage(3), integrityFailure);             // a cycle
}

}  // namespace

}  // namespace galdrine::recovery
