#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeMetadataV1.hpp"

#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2idParameters.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"

namespace {

using Error = GaldrinePortableKeyEnvelopeV1Error;
using Factor = GaldrinePortableKeyFactorV1;
using Derivation = GaldrinePortableKeyDerivationV1;

[[nodiscard]] bool isIdentifier(ByteView bytes) {
  return std::cmp_equal(bytes.size(), GaldrineBackupFormatV1::artifactIdentifierByteCount);
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
             GaldrineArgon2idParameters::make(operationsLimit, memoryLimitBytes).has_value();
  }
  std::unreachable();
}

}  // namespace

std::expected<GaldrinePortableKeyEnvelopeMetadataV1, Error> GaldrinePortableKeyEnvelopeMetadataV1::make(
    Factor factor, Derivation derivation, ByteView derivationSalt, std::uint64_t operationsLimit,
    std::int64_t memoryLimitBytes, ByteView artifactIdentifier, ByteView keySlotIdentifier, std::uint64_t generation) {
  if (derivationSalt.size() != GaldrinePortableKeyEnvelopeV1::derivationSaltByteCount) return std::unexpected(Error::invalidSaltByteCount());
  if (!isIdentifier(artifactIdentifier)) return std::unexpected(Error::invalidArtifactIdentifier());
  if (!isIdentifier(keySlotIdentifier)) return std::unexpected(Error::invalidKeySlotIdentifier());
  if (!isPaired(factor, derivation, operationsLimit, memoryLimitBytes))
    return std::unexpected(Error::invalidDerivationProfile());

  GaldrinePortableKeyEnvelopeMetadataV1 metadata;
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
