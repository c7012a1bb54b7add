#pragma once
// RecoverySnapshotPreflight is one authenticated commit as the user sees it: its
// place in the history, what its snapshot holds, and the state of the payload files it needs.

#include <cstdint>

#include "format/graph/BackupManifestCountsV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryPayloadFileEvidenceV1.hpp"

namespace galdrine::recovery {

struct RecoverySnapshotPreflight {
  Bytes commitIdentifier;
  Bytes snapshotIdentifier;
  std::int64_t createdAtUTCMilliseconds = 0;  // the commit's own signed value
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool isRetainedTip = false;
  format::BackupManifestCountsV1 counts;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  RecoveryPayloadFileEvidenceV1 payloadFileEvidence;

  friend bool operator==(const RecoverySnapshotPreflight&, const RecoverySnapshotPreflight&) = default;
};

}  // namespace galdrine::recovery
