#pragma once
// SnapshotDocument is one snapshot of the inspection document, named by its selection code.

#include <cstdint>
#include <string>

#include "recoverytool/CountsDocument.hpp"
#include "recoverytool/PayloadEvidenceDocument.hpp"

namespace galdrine::recoverytool {

struct SnapshotDocument {
  std::string selectionCode;
  std::int64_t createdAtUTCMilliseconds = 0;
  std::uint64_t writerEpoch = 0;
  std::uint64_t generation = 0;
  bool retainedTip = false;
  CountsDocument counts;
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  PayloadEvidenceDocument payloadFileEvidence;

  friend bool operator==(const SnapshotDocument&, const SnapshotDocument&) = default;
};

}  // namespace galdrine::recoverytool
