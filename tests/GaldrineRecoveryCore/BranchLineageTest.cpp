// Walking a retained tip back to its root.

#include "GaldrineRecoveryCore/BranchLineage.hpp"

#include <gtest/gtest.h>

#include <optional>

#include "GaldrineRecoveryCore/RecoveryTestPackages.hpp"

namespace {

using RecoveryTestPackages::identifier;
using Error = GaldrineRecoveryPackageInspectorV1Error;
using Reference = GaldrineBackupArtifactReferenceV1;
using Preflight = GaldrineRecoverySnapshotPreflightV1;

[[nodiscard]] Reference referenceTo(std::uint8_t seed) {
  const auto made = Reference::make(identifier(seed), 100, Bytes(32, seed), 50, Bytes(32, seed));
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] GaldrineBackupManifestCountsV1 noCounts() { return *GaldrineBackupManifestCountsV1::make(0, 0, 0, 0, 0, 0, 0); }

// content gives commit `seed` with parent `parentSeed`, if any.
[[nodiscard]] AuthenticatedContent content(std::uint8_t seed, std::optional<std::uint8_t> parentSeed) {
  const auto commit = GaldrineBackupCommitV1::make(
      identifier(seed), Bytes(16, 0x11), parentSeed ? std::optional(referenceTo(*parentSeed)) : std::nullopt,
      referenceTo(0x70), identifier(0x71), identifier(0x72), 1, parentSeed ? 1 : 0, 1700000000000, Bytes(32, 0x73), {});
  const auto snapshot = GaldrineBackupSnapshotV1::make(identifier(0x70), Bytes(16, 0x11), 1700000000000, referenceTo(0x71),
                                                       Bytes(32, 1), Bytes(32, 0x73), noCounts(), 0, 0);
  EXPECT_TRUE(commit && snapshot);
  const auto authenticated = GaldrineAuthenticatedBackupCommitV1::make(referenceTo(seed), *commit);
  EXPECT_TRUE(authenticated.has_value());
  return {*authenticated, *snapshot, nullptr, nullptr};
}

[[nodiscard]] Preflight preflight(std::uint8_t seed) {
  return {identifier(seed), identifier(0x70), 1700000000000, 1, 0, false, noCounts(), 0, 0, {}};
}

struct Graph {
  std::map<Bytes, AuthenticatedContent> contents;
  std::map<Bytes, Preflight> preflights;

  void add(std::uint8_t seed, std::optional<std::uint8_t> parentSeed, bool withPreflight = true) {
    contents.emplace(identifier(seed), content(seed, parentSeed));
    if (withPreflight) preflights.emplace(identifier(seed), preflight(seed));
  }
  [[nodiscard]] std::expected<std::vector<Preflight>, Error> lineage(std::uint8_t tipSeed) const {
    return branchLineage(identifier(tipSeed), contents, preflights);
  }
};

TEST(BranchLineageTest, WalksFromTheTipToTheRoot) {
  Graph graph;
  graph.add(1, std::nullopt);
  graph.add(2, 1);
  graph.add(3, 2);
  graph.add(4, 1);
  const auto lineage = graph.lineage(3);
  ASSERT_TRUE(lineage.has_value());
  EXPECT_EQ(*lineage, (std::vector{preflight(3), preflight(2), preflight(1)}));
  EXPECT_EQ(*graph.lineage(1), std::vector{preflight(1)});
}

TEST(BranchLineageTest, AMissingLinkOrACycleIsAnIntegrityFailure) {
  Graph missingParent;
  missingParent.add(2, 1);
  EXPECT_EQ(missingParent.lineage(2).error(), Error::integrityFailure);

  Graph missingPreflight;
  missingPreflight.add(1, std::nullopt, false);
  missingPreflight.add(2, 1);
  EXPECT_EQ(missingPreflight.lineage(2).error(), Error::integrityFailure);

  Graph missingTip;
  missingTip.add(1, std::nullopt);
  EXPECT_EQ(missingTip.lineage(9).error(), Error::integrityFailure);

  Graph cycle;
  cycle.add(1, 3);
  cycle.add(2, 1);
  cycle.add(3, 2);
  EXPECT_EQ(cycle.lineage(3).error(), Error::integrityFailure);
}

}  // namespace
