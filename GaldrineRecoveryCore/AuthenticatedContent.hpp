#pragma once
// AuthenticatedContent is one commit authenticated down to its manifest: the commit with its
// frame's reference, its snapshot, the payload files it requires, and its records if the
// operation keeps them.

#include <memory>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupCommitV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupSnapshotV1.hpp"
#include "GaldrineRecoveryCore/PayloadExpectation.hpp"

struct AuthenticatedContent {
  GaldrineAuthenticatedBackupCommitV1 authenticatedCommit;
  GaldrineBackupSnapshotV1 snapshot;
  std::shared_ptr<const PayloadExpectationMap> payloadExpectations;
  std::shared_ptr<std::vector<GaldrineBackupManifestRecordV1>> retainedRecords;  // null unless records are kept
};
