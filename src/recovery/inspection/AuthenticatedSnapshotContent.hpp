#pragma once
// AuthenticatedSnapshotContent is what authenticating one snapshot proved, kept in the
// snapshot cache so that other commits of the same snapshot need no second read: the
// snapshot's reference as the first commit named it, the snapshot, its payload expectations,
// and its records if the operation keeps them. The expectations and records are shared with
// the contents built from them rather than copied.

#include <map>
#include <memory>
#include <vector>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"

namespace galdrine::recovery {

struct AuthenticatedSnapshotContent {
  format::BackupArtifactReferenceV1 reference;
  format::BackupSnapshotV1 snapshot;
  std::shared_ptr<const PayloadExpectationMap> payloadExpectations;
  std::shared_ptr<std::vector<format::BackupManifestRecordV1>> retainedRecords;  // null unless records are kept
};

// SnapshotCache holds the authenticated snapshots of one operation by snapshot identifier.
using SnapshotCache = std::map<Bytes, AuthenticatedSnapshotContent>;

}  // namespace galdrine::recovery
