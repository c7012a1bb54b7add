#pragma once
// RecoveryToolSnapshot is one authenticated snapshot as the command line sees it: its
// commit, its place in the graph, its record counts and its payload evidence.

#include <cstdint>

#include "platform/Bytes.hpp"
#include "recoverytool/RecoveryToolPayloadEvidence.hpp"

namespace galdrine::recoverytool {

struct RecoveryToolSnapshot {
  Bytes commitIdentifier;
  std::int64_t createdAtUTCMilliseconds = 0;
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool isRetainedTip = false;
  std::uint64_t itemCount = 0;
  std::uint64_t resourceCount = 0;
  std::uint64_t folderCount = 0;
  std::uint64_t albumCount = 0;
  std::uint64_t membershipCount = 0;
  std::uint64_t tombstoneCount = 0;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  RecoveryToolPayloadEvidence payloadFileEvidence;

  friend bool operator==(const RecoveryToolSnapshot&, const RecoveryToolSnapshot&) = default;
};

}  // namespace galdrine::recoverytool
