#pragma once
// BackupManifestSemanticSummary is what a manifest that passed the semantic checks
// turned out to hold. The caller compares it with what the root, the snapshot and the commit
// committed to.

#include <cstdint>

#include "format/graph/BackupManifestCountsV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

struct BackupManifestSemanticSummary {
  BackupManifestCountsV1 counts;        // records read, by kind
  std::uint64_t logicalPlaintextByteCount;      // sum of all resources' plaintext sizes
  std::uint64_t encryptedPayloadByteCount;      // sum of the required payload files' sizes, each once
  Bytes requiredPayloadSetSHA256;               // 32 bytes: the digest of the required payload files

  friend bool operator==(const BackupManifestSemanticSummary&, const BackupManifestSemanticSummary&) = default;
};

}  // namespace galdrine::format
