// The key envelope set fixture: a set of two real envelopes, one per factor, each holding the
// graph fixture's master key, sealed as the envelope operations seal but with fixed salts and
// nonces. The credentials are synthetic and belong to the producer alone: the verifier opens
// no envelope of this kind.

#include <string>
#include <vector>

#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2id.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2idParameters.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrineFixtureProducer/FixtureProducerBytes.hpp"
#include "GaldrineFixtureProducer/FixtureProducers.hpp"
#include "GaldrineFixtureProducer/GaldrineFixtureProducerCredentials.hpp"
#include "GaldrinePlatform/GaldrinePlatformHKDF.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeBindingV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeEncodingV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"
#include "GaldrineRecoveryCore/FixtureMaterial.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

namespace {

using Error = GaldrineFixtureProducerError;
using Metadata = GaldrinePortableKeyEnvelopeMetadataV1;
using Factor = GaldrinePortableKeyFactorV1;
namespace Fixed = FixtureProducerBytes;

// metadataFor gives the public part of the factor's envelope: the factor's own derivation,
// fixed salt, artifact and key slot, generation 1, and for the passphrase the lowest cost.
[[nodiscard]] std::expected<Metadata, Error> metadataFor(Factor factor) {
  const std::string label = "key-envelopes/" + std::string(rawValue(factor));
  const bool passphrase = factor == Factor::backupPassphrase;
  auto metadata = Metadata::make(
      factor, passphrase ? GaldrinePortableKeyDerivationV1::argon2idV13 : GaldrinePortableKeyDerivationV1::hkdfSHA256,
      Fixed::labelled(label + "/salt", GaldrinePortableKeyEnvelopeV1::derivationSaltByteCount),
      passphrase ? GaldrineArgon2idParameters::minimumOperationsLimit : 0,
      passphrase ? GaldrineArgon2idParameters::minimumMemoryLimitBytes : 0, Fixed::identifier(label + "/artifact"),
      Fixed::identifier(label + "/key-slot"), 1);
  if (!metadata) return std::unexpected(Error::materialRefused);
  return std::move(*metadata);
}

// derivedKey derives the factor's key from the producer's credential exactly as opening the
// envelope will: Argon2id over the passphrase bytes, or HKDF-SHA-256 over the recovery key.
// The caller wipes it.
[[nodiscard]] std::expected<Bytes, Error> derivedKey(const Metadata& metadata,
                                                     const GaldrinePortableKeyEnvelopeContextV1& context) {
  if (metadata.factor() == Factor::backupPassphrase) {
    const auto parameters = GaldrineArgon2idParameters::make(metadata.operationsLimit(), metadata.memoryLimitBytes());
    if (!parameters) return std::unexpected(Error::materialRefused);
    auto key = GaldrineArgon2id::deriveKey(GaldrineByteText::view(GaldrineFixtureProducerCredentials::backupPassphrase),
                                           metadata.derivationSalt(), *parameters);
    if (!key) return std::unexpected(Error::materialRefused);
    return std::move(*key);
  }
  const auto info = GaldrinePortableKeyEnvelopeBindingV1::recoveryKeyDerivationInfo(metadata, context);
  if (!info) return std::unexpected(Error::materialRefused);
  Bytes recoveryKey = GaldrineFixtureProducerCredentials::recoveryKey();
  GaldrineScopeGuard wipeRecoveryKey{[&] { GaldrineSecureMemory::wipe(recoveryKey); }};
  Bytes key(GaldrinePortableKeyEnvelopeV1::keyByteCount);
  if (!GaldrinePlatformHKDF::deriveSHA256(recoveryKey, metadata.derivationSalt(), *info, key))
    return std::unexpected(Error::materialRefused);
  return key;
}

[[nodiscard]] std::expected<GaldrineBackupKeyEnvelopeEntryV1, Error> envelopeEntry(
    Factor factor, const FixturePackage& package, const GaldrineFixtureProducerSeeds& seeds) {
  const auto metadata = metadataFor(factor);
  if (!metadata) return std::unexpected(metadata.error());
  const auto header = GaldrineBackupFormatHeaderV1::make(package.packageIdentifier);
  if (!header) return std::unexpected(Error::materialRefused);
  const auto context = GaldrinePortableKeyEnvelopeContextV1::make(*header, package.libraryDomainIdentifier,
                                                                  metadata->artifactIdentifier(),
                                                                  metadata->keySlotIdentifier(), metadata->generation());
  if (!context) return std::unexpected(Error::materialRefused);
  const auto data = GaldrinePortableKeyEnvelopeBindingV1::authenticatedData(*metadata, *context);
  if (!data) return std::unexpected(Error::materialRefused);
  auto key = derivedKey(*metadata, *context);
  if (!key) return std::unexpected(key.error());
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(*key); }};
  Bytes bpmk = FixtureMaterial::keyFromSeed(seeds.graphBPMKSeed);
  GaldrineScopeGuard wipeBPMK{[&] { GaldrineSecureMemory::wipe(bpmk); }};
  const auto frame = GaldrineAESGCMFrameV1::sealDeterministicFixture(
      bpmk, *key, *data, static_cast<std::int64_t>(GaldrinePortableKeyEnvelopeV1::keyByteCount),
      Fixed::nonce("key-envelopes/" + std::string(rawValue(factor)) + "/nonce"));
  if (!frame) return std::unexpected(Error::materialRefused);
  const auto envelope = GaldrinePortableKeyEnvelopeEncodingV1::encode(*metadata, *frame);
  if (!envelope) return std::unexpected(Error::materialRefused);
  auto entry = GaldrineBackupKeyEnvelopeEntryV1::make(*envelope, true);
  if (!entry) return std::unexpected(Error::materialRefused);
  return std::move(*entry);
}

[[nodiscard]] nlohmann::json activeEntryDocument(const GaldrineBackupKeyEnvelopeEntryV1& entry) {
  const Metadata& metadata = entry.metadata();
  return {{"factor", rawValue(metadata.factor())},
          {"artifactIdentifierHex", FixtureProducers::hex(metadata.artifactIdentifier())},
          {"keySlotIdentifierHex", FixtureProducers::hex(metadata.keySlotIdentifier())},
          {"generation", metadata.generation()}};
}

}  // namespace

namespace FixtureProducers {

Document keyEnvelopeSetFixture(const GaldrineFixtureProducerSeeds& seeds, const FixturePackage& package) {
  std::vector<GaldrineBackupKeyEnvelopeEntryV1> entries;
  for (const Factor factor : allCases<Factor>) {
    auto entry = envelopeEntry(factor, package, seeds);
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  const auto set = GaldrineBackupKeyEnvelopeSetV1::make(package.packageIdentifier, package.libraryDomainIdentifier,
                                                        std::move(entries));
  if (!set) return std::unexpected(Error::materialRefused);
  const auto registry = set->encoded();
  if (!registry) return std::unexpected(Error::materialRefused);
  nlohmann::json activeEntries = nlohmann::json::array();
  for (const auto& entry : set->activeEntries()) activeEntries.push_back(activeEntryDocument(entry));
  return nlohmann::json{
      {"fixtureSchemaVersion", GaldrineRecoveryFixtureVerifier::fixtureSchemaVersion},
      {"formatIdentifier", GaldrineBackupFormatV1::canonicalFormatIdentifier},
      {"packageIdentifierHex", hex(package.packageIdentifier)},
      {"libraryDomainIdentifierHex", hex(package.libraryDomainIdentifier)},
      {"registryHex", hex(*registry)},
      {"registrySHA256Hex", hex(Fixed::digestOf(*registry))},
      {"activeEntries", std::move(activeEntries)},
  };
}

}  // namespace FixtureProducers
