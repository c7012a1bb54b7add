// The golden fixture: three vectors sealed under the golden key seeds, one of them a recovery
// envelope frame bound to the package header.

#include <string>

#include "envelope/PortableKeyEnvelopeBindingV1.hpp"
#include "envelope/PortableKeyEnvelopeMetadataV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "fixtureproducer/FixtureProducerBytes.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "fixtures/FixtureMaterial.hpp"
#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = FixtureProducerError;
using AuthenticatedData = format::BackupAuthenticatedDataV1;
namespace Fixed = FixtureProducerBytes;

// GoldenVector is what one vector is made of before it is sealed.
struct GoldenVector {
  std::string_view name;
  format::BackupAADDomainV1 domain;
  std::uint64_t ordinal;
  std::int64_t maximumPlaintextByteCount;
  std::string_view keySeed;
  Bytes plaintext;
};

constexpr std::uint64_t envelopeGeneration = 1;

// recoveryEnvelopeBinding binds the envelope vector as a real recovery key envelope of the
// package would be bound: to the header, a key slot, and the digest of its HKDF parameters.
[[nodiscard]] std::expected<AuthenticatedData::EnvelopeBinding, Error> recoveryEnvelopeBinding(
    const FixturePackage& package, ByteView artifactIdentifier) {
  const Bytes keySlotIdentifier = Fixed::identifier("golden/recovery-envelope/key-slot");
  const auto metadata = envelope::PortableKeyEnvelopeMetadataV1::make(
      envelope::PortableKeyFactorV1::recoveryKey, envelope::PortableKeyDerivationV1::hkdfSHA256,
      Fixed::labelled("golden/recovery-envelope/salt", envelope::PortableKeyEnvelopeV1::derivationSaltByteCount), 0, 0,
      artifactIdentifier, keySlotIdentifier, envelopeGeneration);
  if (!metadata) return std::unexpected(Error::materialRefused);
  const auto kdfParameterDigest = envelope::PortableKeyEnvelopeBindingV1::kdfParameterDigest(*metadata);
  if (!kdfParameterDigest) return std::unexpected(Error::materialRefused);
  auto binding = AuthenticatedData::EnvelopeBinding::make(Fixed::digestOf(package.headerBytes), keySlotIdentifier,
                                                          *kdfParameterDigest);
  if (!binding) return std::unexpected(Error::materialRefused);
  return std::move(*binding);
}

[[nodiscard]] FixtureProducers::Document vectorDocument(const GoldenVector& vector, const FixturePackage& package) {
  const std::string label = "golden/" + std::string(vector.name);
  const Bytes artifactIdentifier = Fixed::identifier(label + "/artifact");
  std::optional<AuthenticatedData::EnvelopeBinding> binding;
  if (vector.domain == format::BackupAADDomainV1::bpmkRecoveryEnvelope) {
    auto made = recoveryEnvelopeBinding(package, artifactIdentifier);
    if (!made) return std::unexpected(made.error());
    binding = std::move(*made);
  }
  const auto data = AuthenticatedData::make(vector.domain, package.packageIdentifier, package.libraryDomainIdentifier,
                                            artifactIdentifier, vector.ordinal, binding);
  if (!data) return std::unexpected(Error::materialRefused);
  const auto encodedData = data->encoded();
  if (!encodedData) return std::unexpected(Error::materialRefused);
  Bytes key = fixtures::FixtureMaterial::keyFromSeed(vector.keySeed);
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(key); }};
  const auto frame =
      format::AESGCMFrameV1::seal(vector.plaintext, key, *encodedData, vector.maximumPlaintextByteCount,
                                  format::AESGCMFrameV1::NonceSource::fixed(Fixed::nonce(label + "/nonce")));
  if (!frame) return std::unexpected(Error::materialRefused);

  nlohmann::json document = {
      {"name", vector.name},
      {"domain", rawValue(vector.domain)},
      {"artifactIdentifierHex", FixtureProducers::hex(artifactIdentifier)},
      {"ordinal", vector.ordinal},
      {"maximumPlaintextByteCount", vector.maximumPlaintextByteCount},
      {"aadHex", FixtureProducers::hex(*encodedData)},
      {"frameHex", FixtureProducers::hex(*frame)},
      {"plaintextDigestHex", FixtureProducers::hex(Fixed::digestOf(vector.plaintext))},
  };
  if (binding) {
    document["envelopeBinding"] = {{"headerDigestHex", FixtureProducers::hex(binding->headerDigest())},
                                   {"keySlotIdentifierHex", FixtureProducers::hex(binding->keySlotIdentifier())},
                                   {"kdfParameterDigestHex", FixtureProducers::hex(binding->kdfParameterDigest())}};
  }
  return document;
}

}  // namespace

namespace FixtureProducers {

Document goldenFixture(const FixturePackage& package) {
  const GoldenVector vectors[] = {
      {fixtures::FixtureMaterial::resourceChunkLabel, format::BackupAADDomainV1::resourceChunk, 2,
       static_cast<std::int64_t>(format::BackupFormatV1::maximumStandaloneChunkPlaintextByteCount),
       fixtures::FixtureMaterial::resourceChunkKeySeed,
       ByteText::bytes(fixtures::FixtureMaterial::resourceChunkPlaintext)},
      {fixtures::FixtureMaterial::packEntryLabel, format::BackupAADDomainV1::packEntry, 1,
       static_cast<std::int64_t>(format::BackupFormatV1::maximumPackedResourcePlaintextByteCount),
       fixtures::FixtureMaterial::packEntryKeySeed, ByteText::bytes(fixtures::FixtureMaterial::packEntryPlaintext)},
      {fixtures::FixtureMaterial::recoveryEnvelopeLabel, format::BackupAADDomainV1::bpmkRecoveryEnvelope,
       envelopeGeneration, static_cast<std::int64_t>(envelope::PortableKeyEnvelopeV1::keyByteCount),
       fixtures::FixtureMaterial::recoveryEnvelopeKeySeed,
       fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::recoveryEnvelopePlaintextSeed)},
  };
  nlohmann::json documents = nlohmann::json::array();
  for (const GoldenVector& vector : vectors) {
    auto document = vectorDocument(vector, package);
    if (!document) return std::unexpected(document.error());
    documents.push_back(std::move(*document));
  }
  return nlohmann::json{
      {"fixtureSchemaVersion", fixtures::RecoveryFixtureVerifier::fixtureSchemaVersion},
      {"formatIdentifier", format::BackupFormatV1::canonicalFormatIdentifier},
      {"packageIdentifierHex", hex(package.packageIdentifier)},
      {"libraryDomainIdentifierHex", hex(package.libraryDomainIdentifier)},
      {"headerHex", hex(package.headerBytes)},
      {"vectors", std::move(documents)},
  };
}

}  // namespace FixtureProducers

}  // namespace galdrine::fixtureproducer
