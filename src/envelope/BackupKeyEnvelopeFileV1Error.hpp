#pragma once
// BackupKeyEnvelopeFileV1Error is why key-envelopes.cbor could not be read or replaced.
// Cases stand in the order of the file's contract. publicationFailed promises that the current
// file is as it was; publicationOutcomeUnknown promises nothing, and the caller must read the
// file again.

#include <cstdint>

namespace galdrine::envelope {

enum class BackupKeyEnvelopeFileV1Error : std::uint8_t {
  envelopeFileMissing,
  invalidEnvelopeFile,
  packageBindingMismatch,
  invalidExpectedDigest,
  staleCurrentFile,
  publicationFailed,
  publicationOutcomeUnknown,
};

}  // namespace galdrine::envelope
