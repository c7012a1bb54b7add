#pragma once
// BackupAuthenticatedDataV1Error is why authenticated data or its envelope binding
// could not be built. Cases stand in the order the checks run.

#include <cstdint>

namespace galdrine::format {

enum class BackupAuthenticatedDataV1Error : std::uint8_t {
  invalidPackageIdentifier,
  invalidLibraryDomainIdentifier,
  invalidArtifactIdentifier,
  invalidHeaderDigest,
  invalidKeySlotIdentifier,
  invalidKDFParameterDigest,
  envelopeBindingRequired,
  envelopeBindingNotAllowed,
};

}  // namespace galdrine::format
