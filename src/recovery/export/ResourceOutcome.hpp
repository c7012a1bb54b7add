#pragma once
// ResourceOutcome is how the recovery of one resource ended: the digest of the file it left,
// or the issues that kept it from being written. A resource counts as recovered only when it
// has a digest and no issue.

#include <optional>
#include <unordered_map>
#include <vector>

#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "platform/SHA256.hpp"
#include "recovery/export/ResourceIssue.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

struct ResourceOutcome {
  std::optional<platform::SHA256Digest> recoveredSHA256;
  std::vector<ResourceIssue> issues;

  [[nodiscard]] bool isRecovered() const { return recoveredSHA256.has_value() && issues.empty(); }

  friend bool operator==(const ResourceOutcome&, const ResourceOutcome&) = default;
};

// ResourceOutcomes holds the outcome of each resource of an export by resource identifier.
using ResourceOutcomes = std::unordered_map<format::BackupIdentifierV1, ResourceOutcome, format::BackupIdentifierHasher>;

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
