#pragma once
// ResourceOutcome is how the recovery of one resource ended: the digest of the file it left,
// or the issues that kept it from being written. A resource counts as recovered only when it
// has a digest and no issue.

#include <optional>
#include <unordered_map>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierHasherV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrineRecoveryCore/ResourceIssue.hpp"

namespace GaldrineRecoveryExporterV1 {

struct ResourceOutcome {
  std::optional<GaldrineSHA256Digest> recoveredSHA256;
  std::vector<ResourceIssue> issues;

  [[nodiscard]] bool isRecovered() const { return recoveredSHA256.has_value() && issues.empty(); }

  friend bool operator==(const ResourceOutcome&, const ResourceOutcome&) = default;
};

// ResourceOutcomes holds the outcome of each resource of an export by resource identifier.
using ResourceOutcomes = std::unordered_map<GaldrineBackupIdentifierV1, ResourceOutcome, GaldrineBackupIdentifierHasherV1>;

}  // namespace GaldrineRecoveryExporterV1
