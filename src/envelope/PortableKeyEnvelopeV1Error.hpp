#pragma once
// PortableKeyEnvelopeV1Error is why a portable envelope could not be sealed, read or
// opened. Cases stand in the order of the envelope's contract; only randomGenerationFailed
// (the random source's status) and invalidFieldType (the map key) carry a payload. A wrong
// credential and a tampered envelope both read as authenticationFailed.

#include <cstdint>

namespace galdrine::envelope {

struct PortableKeyEnvelopeV1Error {
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

  static constexpr PortableKeyEnvelopeV1Error randomGenerationFailed(std::int32_t status) {
    return {.code = Code::randomGenerationFailed, .status = status};
  }
  static constexpr PortableKeyEnvelopeV1Error invalidFieldType(std::uint64_t key) {
    return {.code = Code::invalidFieldType, .key = key};
  }
  static constexpr PortableKeyEnvelopeV1Error invalidBackupPackageMasterKeyByteCount() {
    return {Code::invalidBackupPackageMasterKeyByteCount};
  }
  static constexpr PortableKeyEnvelopeV1Error invalidRecoveryKeyByteCount() {
    return {Code::invalidRecoveryKeyByteCount};
  }
  static constexpr PortableKeyEnvelopeV1Error invalidCredential() { return {Code::invalidCredential}; }
  static constexpr PortableKeyEnvelopeV1Error invalidLibraryDomainIdentifier() {
    return {Code::invalidLibraryDomainIdentifier};
  }
  static constexpr PortableKeyEnvelopeV1Error invalidArtifactIdentifier() { return {Code::invalidArtifactIdentifier}; }
  static constexpr PortableKeyEnvelopeV1Error invalidKeySlotIdentifier() { return {Code::invalidKeySlotIdentifier}; }
  static constexpr PortableKeyEnvelopeV1Error invalidSaltByteCount() { return {Code::invalidSaltByteCount}; }
  static constexpr PortableKeyEnvelopeV1Error invalidNonceByteCount() { return {Code::invalidNonceByteCount}; }
  static constexpr PortableKeyEnvelopeV1Error malformedEnvelope() { return {Code::malformedEnvelope}; }
  static constexpr PortableKeyEnvelopeV1Error invalidFieldSet() { return {Code::invalidFieldSet}; }
  static constexpr PortableKeyEnvelopeV1Error unsupportedSchema() { return {Code::unsupportedSchema}; }
  static constexpr PortableKeyEnvelopeV1Error unsupportedVersion() { return {Code::unsupportedVersion}; }
  static constexpr PortableKeyEnvelopeV1Error unsupportedAlgorithm() { return {Code::unsupportedAlgorithm}; }
  static constexpr PortableKeyEnvelopeV1Error unsupportedFactor() { return {Code::unsupportedFactor}; }
  static constexpr PortableKeyEnvelopeV1Error unexpectedFactor() { return {Code::unexpectedFactor}; }
  static constexpr PortableKeyEnvelopeV1Error unsupportedDerivation() { return {Code::unsupportedDerivation}; }
  static constexpr PortableKeyEnvelopeV1Error invalidDerivationProfile() { return {Code::invalidDerivationProfile}; }
  static constexpr PortableKeyEnvelopeV1Error contextMismatch() { return {Code::contextMismatch}; }
  static constexpr PortableKeyEnvelopeV1Error authenticationFailed() { return {Code::authenticationFailed}; }

  friend constexpr bool operator==(const PortableKeyEnvelopeV1Error&, const PortableKeyEnvelopeV1Error&) = default;
};

}  // namespace galdrine::envelope
