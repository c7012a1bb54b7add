#pragma once
// BackupKeyEnvelopeSetV1Error is why a key envelope set, or one of its entries, was
// refused. Cases stand in the order of the set's contract; invalidFieldType carries the map
// key, missingActiveEnvelope and multipleActiveEnvelopes the factor at fault.

#include <cstdint>
#include <variant>

#include "envelope/PortableKeyEnvelopeV1Error.hpp"
#include "envelope/PortableKeyFactorV1.hpp"

namespace galdrine::envelope {

struct BackupKeyEnvelopeSetV1Error {
  enum class Code : std::uint8_t {
    invalidFieldType,         // payload: key
    missingActiveEnvelope,    // payload: factor
    multipleActiveEnvelopes,  // payload: factor
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
  PortableKeyFactorV1 factor = PortableKeyFactorV1::backupPassphrase;

  static constexpr BackupKeyEnvelopeSetV1Error invalidFieldType(std::uint64_t key) {
    return {.code = Code::invalidFieldType, .key = key};
  }
  static constexpr BackupKeyEnvelopeSetV1Error missingActiveEnvelope(PortableKeyFactorV1 factor) {
    return {.code = Code::missingActiveEnvelope, .factor = factor};
  }
  static constexpr BackupKeyEnvelopeSetV1Error multipleActiveEnvelopes(PortableKeyFactorV1 factor) {
    return {.code = Code::multipleActiveEnvelopes, .factor = factor};
  }
  static constexpr BackupKeyEnvelopeSetV1Error invalidPackageIdentifier() { return {Code::invalidPackageIdentifier}; }
  static constexpr BackupKeyEnvelopeSetV1Error invalidLibraryDomainIdentifier() {
    return {Code::invalidLibraryDomainIdentifier};
  }
  static constexpr BackupKeyEnvelopeSetV1Error invalidEntryCount() { return {Code::invalidEntryCount}; }
  static constexpr BackupKeyEnvelopeSetV1Error envelopeTooLarge() { return {Code::envelopeTooLarge}; }
  static constexpr BackupKeyEnvelopeSetV1Error malformedSet() { return {Code::malformedSet}; }
  static constexpr BackupKeyEnvelopeSetV1Error invalidFieldSet() { return {Code::invalidFieldSet}; }
  static constexpr BackupKeyEnvelopeSetV1Error unsupportedSchema() { return {Code::unsupportedSchema}; }
  static constexpr BackupKeyEnvelopeSetV1Error unsupportedVersion() { return {Code::unsupportedVersion}; }
  static constexpr BackupKeyEnvelopeSetV1Error unsupportedFormat() { return {Code::unsupportedFormat}; }
  static constexpr BackupKeyEnvelopeSetV1Error duplicateArtifactIdentifier() {
    return {Code::duplicateArtifactIdentifier};
  }
  static constexpr BackupKeyEnvelopeSetV1Error duplicateGeneration() { return {Code::duplicateGeneration}; }
  static constexpr BackupKeyEnvelopeSetV1Error mixedKeySlots() { return {Code::mixedKeySlots}; }
  static constexpr BackupKeyEnvelopeSetV1Error sharedKeySlot() { return {Code::sharedKeySlot}; }
  static constexpr BackupKeyEnvelopeSetV1Error nonCanonicalEncoding() { return {Code::nonCanonicalEncoding}; }

  friend constexpr bool operator==(const BackupKeyEnvelopeSetV1Error&, const BackupKeyEnvelopeSetV1Error&) = default;
};

// Making an entry or decoding a set fails with the set's own case, or with the envelope's
// error as reading the envelope gave it.
using BackupKeyEnvelopeSetV1Failure = std::variant<BackupKeyEnvelopeSetV1Error, PortableKeyEnvelopeV1Error>;

}  // namespace galdrine::envelope
