#pragma once
// RecoveryAuthenticatedSnapshot is one commit authenticated down to its records: the
// commit with the reference of the frame it was opened from, its snapshot, and every record of
// its manifest, in section order. It is what an export plans from.

#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"

namespace galdrine::recovery {

struct RecoveryAuthenticatedSnapshot {
  format::AuthenticatedBackupCommit authenticatedCommit;
  format::BackupSnapshotV1 snapshot;
  std::vector<format::BackupManifestRecordV1> records;

  friend bool operator==(const RecoveryAuthenticatedSnapshot&, const RecoveryAuthenticatedSnapshot&) = default;
};

}  // namespace galdrine::recovery
