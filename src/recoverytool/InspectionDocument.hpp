#pragma once
// InspectionDocument is what inspect prints. It names snapshots only by selection code:
// no package, commit or snapshot identifier and no path stands in it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recoverytool/BranchDocument.hpp"
#include "recoverytool/RecoveryToolInspection.hpp"
#include "recoverytool/SnapshotDocument.hpp"

namespace galdrine::recoverytool {

struct InspectionDocument {
  static constexpr std::string_view inspectionSchemaIdentifier = "com.galdrine.recovery.cli-inspection.v1";

  std::string schemaIdentifier;
  std::string formatIdentifier;
  std::uint64_t formatVersion = 0;
  std::string unlockedFactor;
  std::string branchDisposition;
  std::optional<std::string> canonicalTipSelectionCode;  // only for canonicalised branches
  std::int64_t authenticatedCommitCount = 0;
  std::int64_t authenticatedHeadCount = 0;
  std::uint64_t maximumWriterEpoch = 0;
  std::vector<BranchDocument> preservedBranches;  // ascending by tip commit identifier
  std::vector<SnapshotDocument> snapshots;        // ascending by commit identifier

  // from builds the document of an inspection. Snapshots and branches are ordered by their
  // identifiers, not by the codes shown, so the order is the package's and not the hash's.
  [[nodiscard]] static InspectionDocument from(const RecoveryToolInspection& inspection);

  friend bool operator==(const InspectionDocument&, const InspectionDocument&) = default;
};

}  // namespace galdrine::recoverytool
