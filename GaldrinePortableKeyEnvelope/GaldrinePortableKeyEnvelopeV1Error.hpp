#pragma once
// GaldrinePortableKeyEnvelopeV1Error is why a portable envelope could not be sealed, read or
// opened. Cases stand in the order of the envelope's contract; only randomGenerationFailed
// (the random source's status) and invalidFieldType (the map key) carry a payload. A wrong
// credential and a tampered envelope both read as authenticationFailed.

#include <cstdint>

struct GaldrinePortableKeyEnvelopeV1Error {
  enum class Code : std::uint8_t {
    randomGenerationFailed,  // payload: status
    invalidFieldType,        // payload: key
    invalidBackupPackageMasterKeyByteCount,
    invalidRecoveryKeyByteCount,
    invalidCredential,
    invalidLibraryDomainIdentifier,
    invalidArtifactIdentifier,
    invalidKeySlotIdentifier,
    invalidSaltByteCount,
    invalidNonceByteCount,
    malformedEnvelope,
    invalidFieldSet,
    unsupportedSchema,
    unsupportedVersion,
    unsupportedAlgorithm,
    unsupportedFactor,
    unexpectedFactor,
    unsupportedDerivation,
    invalidDerivationProfile,
    contextMismatch,
    authenticationFailed,
  };

  Code code;
  std::int32_t status = 0;  // zero for every case but randomGenerationFailed
  std::uint64_t key = 0;    // zero for every case but invalidFieldType

  static constexpr GaldrinePortableKeyEnvelopeV1Error randomGenerationFailed(std::int32_t status) {
    return {.code = Code::randomGenerationFailed, .status = status};
  }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidFieldType(std::uint64_t key) {
    return {.code = Code::invalidFieldType, .key = key};
  }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidBackupPackageMasterKeyByteCount() { return {Code::invalidBackupPackageMasterKeyByteCount}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidRecoveryKeyByteCount() { return {Code::invalidRecoveryKeyByteCount}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidCredential() { return {Code::invalidCredential}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidLibraryDomainIdentifier() { return {Code::invalidLibraryDomainIdentifier}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidArtifactIdentifier() { return {Code::invalidArtifactIdentifier}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidKeySlotIdentifier() { return {Code::invalidKeySlotIdentifier}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidSaltByteCount() { return {Code::invalidSaltByteCount}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidNonceByteCount() { return {Code::invalidNonceByteCount}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error malformedEnvelope() { return {Code::malformedEnvelope}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidFieldSet() { return {Code::invalidFieldSet}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error unsupportedSchema() { return {Code::unsupportedSchema}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error unsupportedVersion() { return {Code::unsupportedVersion}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error unsupportedAlgorithm() { return {Code::unsupportedAlgorithm}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error unsupportedFactor() { return {Code::unsupportedFactor}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error unexpectedFactor() { return {Code::unexpectedFactor}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error unsupportedDerivation() { return {Code::unsupportedDerivation}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error invalidDerivationProfile() { return {Code::invalidDerivationProfile}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error contextMismatch() { return {Code::contextMismatch}; }
  static constexpr GaldrinePortableKeyEnvelopeV1Error authenticationFailed() { return {Code::authenticationFailed}; }

  friend constexpr bool operator==(const GaldrinePortableKeyEnvelopeV1Error&, const GaldrinePortableKeyEnvelopeV1Error&) = default;
};
