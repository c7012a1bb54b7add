#include "envelope/PortableKeyEnvelopeMetadataV1.hpp"

#include <utility>

#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "kdf/Argon2idParameters.hpp"

namespace galdrine::envelope {

namespace {

using Error = PortableKeyEnvelopeV1Error;
using Factor = PortableKeyFactorV1;
using Derivation = PortableKeyDerivationV1;

[[nodiscard]] bool isIdentifier(ByteView bytes) {
  return std::cmp_equal(bytes.size(), format::BackupFormatV1::artifactIdentifierByteCount);
}

// isPaired: the recovery key is stretched by nothing, so it carries no cost; the passphrase
// always carries a cost within this system's Argon2id bounds.
[[nodiscard]] bool isPaired(Factor factor, Derivation derivation, std::uint64_t operationsLimit,
                            std::int64_t memoryLimitBytes) {
  switch (factor) {
    case Factor::recoveryKey:
      return derivation == Derivation::hkdfSHA256 && operationsLimit == 0 && memoryLimitBytes == 0;
    case Factor::backupPassphrase:
      return derivation == Derivation::argon2idV13 &&
             kdf::Argon2idParameters::make(operationsLimit, memoryLimitBytes).has_value();
  }
  std::unreachable();
}

}  // namespace

std::expected<PortableKeyEnvelopeMetadataV1, Error> PortableKeyEnvelopeMetadataV1::make(
    Factor factor, Derivation derivation, ByteView derivationSalt, std::uint64_t operationsLimit,
    std::int64_t memoryLimitBytes, ByteView artifactIdentifier, ByteView keySlotIdentifier, std::uint64_t generation) {
  if (derivationSalt.size() != PortableKeyEnvelopeV1::derivationSaltByteCount)
    return std::unexpected(Error::invalidSaltByteCount());
  if (!isIdentifier(artifactIdentifier)) return std::unexpected(Error::invalidArtifactIdentifier());
  if (!isIdentifier(keySlotIdentifier)) return std::unexpected(Error::invalidKeySlotIdentifier());
  if (!isPaired(factor, derivation, operationsLimit, memoryLimitBytes))
    return std::unexpected(Error::invalidDerivationProfile());

  PortableKeyEnvelopeMetadataV1 metadata;
  metadata.factor_ = factor;
  metadata.derivation_ = derivation;
  metadata.derivationSalt_.assign(derivationSalt.begin(), derivationSalt.end());
  metadata.operationsLimit_ = operationsLimit;
  metadata.memoryLimitBytes_ = memoryLimitBytes;
  metadata.artifactIdentifier_.assign(artifactIdentifier.begin(), artifactIdentifier.end());
  metadata.keySlotIdentifier_.assign(keySlotIdentifier.begin(), keySlotIdentifier.end());
  metadata.generation_ = generation;
  return metadata;
}

}  // namespace galdrine::envelope
