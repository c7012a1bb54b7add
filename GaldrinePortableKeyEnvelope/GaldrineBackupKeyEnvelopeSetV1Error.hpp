#pragma once
// GaldrineBackupKeyEnvelopeSetV1Error is why a key envelope set, or one of its entries, was
// refused. Cases stand in the order of the set's contract; invalidFieldType carries the map
// key, missingActiveEnvelope and multipleActiveEnvelopes the factor at fault.

#include <cstdint>

#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyFactorV1.hpp"

struct GaldrineBackupKeyEnvelopeSetV1Error {
  enum class Code : std::uint8_t {
    invalidFieldType,          // payload: key
    missingActiveEnvelope,     // payload: factor
    multipleActiveEnvelopes,   // payload: factor
    invalidPackageIdentifier,
    invalidLibraryDomainIdentifier,
    invalidEntryCount,
    envelopeTooLarge,
    malformedSet,
    invalidFieldSet,
    unsupportedSchema,
    unsupportedVersion,
    unsupportedFormat,
    duplicateArtifactIdentifier,
    duplicateGeneration,
    mixedKeySlots,
    sharedKeySlot,
    nonCanonicalEncoding,
  };

  Code code;
  std::uint64_t key = 0;  // zero for every case but invalidFieldType
  // backupPassphrase for every case but the two that name a factor
  GaldrinePortableKeyFactorV1 factor = GaldrinePortableKeyFactorV1::backupPassphrase;

  static constexpr GaldrineBackupKeyEnvelopeSetV1Error invalidFieldType(std::uint64_t key) { return {.code = Code::invalidFieldType, .key = key}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error missingActiveEnvelope(GaldrinePortableKeyFactorV1 factor) {
    return {.code = Code::missingActiveEnvelope, .factor = factor};
  }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error multipleActiveEnvelopes(GaldrinePortableKeyFactorV1 factor) {
    return {.code = Code::multipleActiveEnvelopes, .factor = factor};
  }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error invalidPackageIdentifier() { return {Code::invalidPackageIdentifier}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error invalidLibraryDomainIdentifier() { return {Code::invalidLibraryDomainIdentifier}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error invalidEntryCount() { return {Code::invalidEntryCount}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error envelopeTooLarge() { return {Code::envelopeTooLarge}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error malformedSet() { return {Code::malformedSet}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error invalidFieldSet() { return {Code::invalidFieldSet}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error unsupportedSchema() { return {Code::unsupportedSchema}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error unsupportedVersion() { return {Code::unsupportedVersion}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error unsupportedFormat() { return {Code::unsupportedFormat}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error duplicateArtifactIdentifier() { return {Code::duplicateArtifactIdentifier}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error duplicateGeneration() { return {Code::duplicateGeneration}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error mixedKeySlots() { return {Code::mixedKeySlots}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error sharedKeySlot() { return {Code::sharedKeySlot}; }
  static constexpr GaldrineBackupKeyEnvelopeSetV1Error nonCanonicalEncoding() { return {Code::nonCanonicalEncoding}; }

  friend constexpr bool operator==(const GaldrineBackupKeyEnvelopeSetV1Error&, const GaldrineBackupKeyEnvelopeSetV1Error&) = default;
};
