#pragma once
// GaldrineRecoveryAuthenticatedSnapshotV1 is one commit authenticated down to its records: the
// commit with the reference of the frame it was opened from, its snapshot, and every record of
// its manifest, in section order. It is what an export plans from.

#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupCommitV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupSnapshotV1.hpp"

struct GaldrineRecoveryAuthenticatedSnapshotV1 {
  GaldrineAuthenticatedBackupCommitV1 authenticatedCommit;
  GaldrineBackupSnapshotV1 snapshot;
  std::vector<GaldrineBackupManifestRecordV1> records;

  friend bool operator==(const GaldrineRecoveryAuthenticatedSnapshotV1&, const GaldrineRecoveryAuthenticatedSnapshotV1&) = default;
};
