#pragma once
// GaldrineBackupAuthenticatedDataV1Error is why authenticated data or its envelope binding
// could not be built. Cases stand in the order the checks run.

#include <cstdint>

enum class GaldrineBackupAuthenticatedDataV1Error : std::uint8_t {
  invalidPackageIdentifier,
  invalidLibraryDomainIdentifier,
  invalidArtifactIdentifier,
  invalidHeaderDigest,
  invalidKeySlotIdentifier,
  invalidKDFParameterDigest,
  envelopeBindingRequired,
  envelopeBindingNotAllowed,
};
