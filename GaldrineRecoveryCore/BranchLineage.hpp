#pragma once
// branchLineage walks one retained tip back to its root through the parents of authenticated
// commits and gives their preflights, tip first. The walk is iterative and remembers every
// commit it visited, so a cycle fails instead of looping.

#include <expected>
#include <map>
#include <vector>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/AuthenticatedContent.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1Error.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoverySnapshotPreflightV1.hpp"

// A commit visited twice, or one without a content or a preflight, is integrityFailure.
[[nodiscard]] std::expected<std::vector<GaldrineRecoverySnapshotPreflightV1>, GaldrineRecoveryPackageInspectorV1Error>
branchLineage(const Bytes& tipCommitIdentifier, const std::map<Bytes, AuthenticatedContent>& contents,
              const std::map<Bytes, GaldrineRecoverySnapshotPreflightV1>& preflightsByCommit);
