#pragma once
// GaldrineRecoverySnapshotPreflightV1 is one authenticated commit as the user sees it: its
// place in the history, what its snapshot holds, and the state of the payload files it needs.

#include <cstdint>

#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCountsV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPayloadFileEvidenceV1.hpp"

struct GaldrineRecoverySnapshotPreflightV1 {
  Bytes commitIdentifier;
  Bytes snapshotIdentifier;
  std::int64_t createdAtUTCMilliseconds = 0;  // the commit's own signed value
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool isRetainedTip = false;
  GaldrineBackupManifestCountsV1 counts;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  GaldrineRecoveryPayloadFileEvidenceV1 payloadFileEvidence;

  friend bool operator==(const GaldrineRecoverySnapshotPreflightV1&, const GaldrineRecoverySnapshotPreflightV1&) = default;
};
