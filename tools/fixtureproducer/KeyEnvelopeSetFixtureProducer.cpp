// The key envelope set fixture: a set of two real envelopes, one per factor, each holding the
// graph fixture's master key, sealed as the envelope operations seal but with fixed salts and
// nonces. The credentials are synthetic and belong to the producer alone: the verifier opens
// no envelope of this kind.

#include <string>
#include <vector>

#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "envelope/PortableKeyEnvelopeBindingV1.hpp"
#include "envelope/PortableKeyEnvelopeEncodingV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "fixtureproducer/FixtureProducerBytes.hpp"
#include "fixtureproducer/FixtureProducerCredentials.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "fixtures/FixtureMaterial.hpp"
#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "kdf/Argon2id.hpp"
#include "kdf/Argon2idParameters.hpp"
#include "platform/HKDF.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = FixtureProducerError;
using Metadata = envelope::PortableKeyEnvelopeMetadataV1;
using Factor = envelope::PortableKeyFactorV1;
namespace Fixed = FixtureProducerBytes;

// metadataFor gives the public part of the factor's envelope: the factor's own derivation,
// fixed salt, artifact and key slot, generation 1, and for the passphrase the lowest cost.
[[nodiscard]] std::expected<Metadata, Error> metadataFor(Factor factor) {
  const std::string label = "key-envelopes/" + std::string(rawValue(factor));
  const bool passphrase = factor == Factor::backupPassphrase;
  auto metadata = Metadata::make(
      factor,
      passphrase ? envelope::PortableKeyDerivationV1::argon2idV13 : envelope::PortableKeyDerivationV1::hkdfSHA256,
      Fixed::labelled(label + "/salt", envelope::PortableKeyEnvelopeV1::derivationSaltByteCount),
      passphrase ? kdf::Argon2idParameters::minimumOperationsLimit : 0,
      passphrase ? kdf::Argon2idParameters::minimumMemoryLimitBytes : 0, Fixed::identifier(label + "/artifact"),
      Fixed::identifier(label + "/key-slot"), 1);
  if (!metadata) return std::unexpected(Error::materialRefused);
  return std::move(*metadata);
}

// derivedKey derives the factor's key from the producer's credential exactly as opening the
// envelope will: Argon2id over the passphrase bytes, or HKDF-SHA-256 over the recovery key.
// The caller wipes it.
[[nodiscard]] std::expected<Bytes, Error> derivedKey(const Metadata& metadata,
                                                     const envelope::PortableKeyEnvelopeContextV1& context) {
  if (metadata.factor() == Factor::backupPassphrase) {
    const auto parameters = kdf::Argon2idParameters::make(metadata.operationsLimit(), metadata.memoryLimitBytes());
    if (!parameters) return std::unexpected(Error::materialRefused);
    auto key = kdf::Argon2id::deriveKey(ByteText::view(FixtureProducerCredentials::backupPassphrase),
                                        metadata.derivationSalt(), *parameters);
    if (!key) return std::unexpected(Error::materialRefused);
    return std::move(*key);
  }
  const auto info = envelope::PortableKeyEnvelopeBindingV1::recoveryKeyDerivationInfo(metadata, context);
  if (!info) return std::unexpected(Error::materialRefused);
  Bytes recoveryKey = FixtureProducerCredentials::recoveryKey();
  ScopeGuard wipeRecoveryKey{[&] { platform::SecureMemory::wipe(recoveryKey); }};
  Bytes key(envelope::PortableKeyEnvelopeV1::keyByteCount);
  if (!platform::HKDF::deriveSHA256(recoveryKey, metadata.derivationSalt(), *info, key))
    return std::unexpected(Error::materialRefused);
  return key;
}

[[nodiscard]] std::expected<envelope::BackupKeyEnvelopeEntryV1, Error> envelopeEntry(Factor factor,
                                                                                     const FixturePackage& package) {
  const auto metadata = metadataFor(factor);
  if (!metadata) return std::unexpected(metadata.error());
  const auto header = format::BackupFormatHeaderV1::make(package.packageIdentifier);
  if (!header) return std::unexpected(Error::materialRefused);
  const auto context = envelope::PortableKeyEnvelopeContextV1::make(
      *header, package.libraryDomainIdentifier, metadata->artifactIdentifier(), metadata->keySlotIdentifier(),
      metadata->generation());
  if (!context) return std::unexpected(Error::materialRefused);
  const auto data = envelope::PortableKeyEnvelopeBindingV1::authenticatedData(*metadata, *context);
  if (!data) return std::unexpected(Error::materialRefused);
  auto key = derivedKey(*metadata, *context);
  if (!key) return std::unexpected(key.error());
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*key); }};
  Bytes bpmk = fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::graphBPMKSeed);
  ScopeGuard wipeBPMK{[&] { platform::SecureMemory::wipe(bpmk); }};
  const auto frame = format::AESGCMFrameV1::seal(
      bpmk, *key, *data, static_cast<std::int64_t>(envelope::PortableKeyEnvelopeV1::keyByteCount),
      format::AESGCMFrameV1::NonceSource::fixed(
          Fixed::nonce("key-envelopes/" + std::string(rawValue(factor)) + "/nonce")));
  if (!frame) return std::unexpected(Error::materialRefused);
  const auto envelope = envelope::PortableKeyEnvelopeEncodingV1::encode(*metadata, *frame);
  if (!envelope) return std::unexpected(Error::materialRefused);
  auto entry = envelope::BackupKeyEnvelopeEntryV1::make(*envelope, true);
  if (!entry) return std::unexpected(Error::materialRefused);
  return std::move(*entry);
}

[[nodiscard]] nlohmann::json activeEntryDocument(const envelope::BackupKeyEnvelopeEntryV1& entry) {
  const Metadata& metadata = entry.metadata();
  return {{"factor", rawValue(metadata.factor())},
          {"artifactIdentifierHex", FixtureProducers::hex(metadata.artifactIdentifier())},
          {"keySlotIdentifierHex", FixtureProducers::hex(metadata.keySlotIdentifier())},
          {"generation", metadata.generation()}};
}

}  // namespace

namespace FixtureProducers {

Document keyEnvelopeSetFixture(const FixturePackage& package) {
  std::vector<envelope::BackupKeyEnvelopeEntryV1> entries;
  for (const Factor factor : allCases<Factor>) {
    auto entry = envelopeEntry(factor, package);
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  const auto set = envelope::BackupKeyEnvelopeSetV1::make(package.packageIdentifier, package.libraryDomainIdentifier,
                                                          std::move(entries));
  if (!set) return std::unexpected(Error::materialRefused);
  const auto registry = set->encoded();
  if (!registry) return std::unexpected(Error::materialRefused);
  nlohmann::json activeEntries = nlohmann::json::array();
  for (const auto& entry : set->activeEntries()) activeEntries.push_back(activeEntryDocument(entry));
  return nlohmann::json{
      {"fixtureSchemaVersion", fixtures::RecoveryFixtureVerifier::fixtureSchemaVersion},
      {"formatIdentifier", format::BackupFormatV1::canonicalFormatIdentifier},
      {"packageIdentifierHex", hex(package.packageIdentifier)},
      {"libraryDomainIdentifierHex", hex(package.libraryDomainIdentifier)},
      {"registryHex", hex(*registry)},
      {"registrySHA256Hex", hex(Fixed::digestOf(*registry))},
      {"activeEntries", std::move(activeEntries)},
  };
}

}  // namespace FixtureProducers

}  // namespace galdrine::fixtureproducer
