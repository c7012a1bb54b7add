#pragma once
// AuthenticatedContent is one commit authenticated down to its manifest: the commit with its
// frame's reference, its snapshot, the payload files it requires, and its records if the
// operation keeps them.

#include <memory>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"

namespace galdrine::recovery {

struct AuthenticatedContent {
  format::AuthenticatedBackupCommit authenticatedCommit;
  format::BackupSnapshotV1 snapshot;
  std::shared_ptr<const PayloadExpectationMap> payloadExpectations;
  std::shared_ptr<std::vector<format::BackupManifestRecordV1>> retainedRecords;  // null unless records are kept
};

}  // namespace galdrine::recovery
