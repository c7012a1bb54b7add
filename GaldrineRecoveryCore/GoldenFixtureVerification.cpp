// Golden fixtures: a format header and three sealed vectors, each opened under the key of its
// name with the authenticated data it describes.

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"
#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrineRecoveryCore/FixtureHex.hpp"
#include "GaldrineRecoveryCore/FixtureJSONFields.hpp"
#include "GaldrineRecoveryCore/FixtureMaterial.hpp"
#include "GaldrineRecoveryCore/FixtureVerification.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupHeaderValidator.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupPayloadReader.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;
using AuthenticatedData = GaldrineBackupAuthenticatedDataV1;

struct EnvelopeBinding {
  std::string headerDigestHex;
  std::string keySlotIdentifierHex;
  std::string kdfParameterDigestHex;
};

struct Vector {
  std::string name;
  std::string domain;
  std::string artifactIdentifierHex;
  std::uint64_t ordinal = 0;
  std::int64_t maximumPlaintextByteCount = 0;
  std::string aadHex;
  std::string frameHex;
  std::string plaintextDigestHex;
  std::optional<EnvelopeBinding> envelopeBinding;
};

struct RecoveryGoldenFixture {
  std::int64_t fixtureSchemaVersion = 0;
  std::string formatIdentifier;
  std::string packageIdentifierHex;
  std::string libraryDomainIdentifierHex;
  std::string headerHex;
  std::vector<Vector> vectors;
};

[[nodiscard]] Vector decodeVector(const FixtureJSONFields& fields) {
  Vector vector{fields.text("name"),
                fields.text("domain"),
                fields.text("artifactIdentifierHex"),
                fields.unsignedInteger("ordinal"),
                fields.signedInteger("maximumPlaintextByteCount"),
                fields.text("aadHex"),
                fields.text("frameHex"),
                fields.text("plaintextDigestHex"),
                std::nullopt};
  if (const auto binding = fields.optionalObject("envelopeBinding")) {
    vector.envelopeBinding = EnvelopeBinding{binding->text("headerDigestHex"), binding->text("keySlotIdentifierHex"),
                                             binding->text("kdfParameterDigestHex")};
  }
  return vector;
}

[[nodiscard]] std::expected<RecoveryGoldenFixture, Error> decodeFixture(ByteView bytes) {
  const auto document = FixtureJSON::parse(bytes);
  if (!document) return std::unexpected(Error::invalidFixture);
  bool faulted = false;
  const FixtureJSONFields fields(*document, faulted);
  RecoveryGoldenFixture fixture{fields.signedInteger("fixtureSchemaVersion"), fields.text("formatIdentifier"),
                                fields.text("packageIdentifierHex"), fields.text("libraryDomainIdentifierHex"),
                                fields.text("headerHex"), {}};
  for (const FixtureJSONFields& vector : fields.objects("vectors")) fixture.vectors.push_back(decodeVector(vector));
  if (faulted) return std::unexpected(Error::invalidFixture);
  return fixture;
}

// hasTheThreeLabels: exactly three vectors, named by the three labels, none twice.
[[nodiscard]] bool hasTheThreeLabels(const std::vector<Vector>& vectors) {
  static constexpr std::array labels{FixtureMaterial::resourceChunkLabel, FixtureMaterial::packEntryLabel,
                                     FixtureMaterial::recoveryEnvelopeLabel};
  if (vectors.size() != labels.size()) return false;
  std::set<std::string_view> names;
  for (const Vector& vector : vectors) names.insert(vector.name);
  return std::ranges::equal(names, std::set<std::string_view>(labels.begin(), labels.end()));
}

// verifiedHeader decodes the header, which must encode back to its own bytes and carry the
// fixture's package identifier, and gives its bytes.
[[nodiscard]] std::expected<Bytes, Error> verifiedHeader(const RecoveryGoldenFixture& fixture) {
  auto headerBytes = FixtureHex::decode(fixture.headerHex);
  if (!headerBytes) return std::unexpected(headerBytes.error());
  const auto header = GaldrineBackupHeaderValidator::validate(*headerBytes);
  if (!header) return std::unexpected(Error::invalidFixture);
  const auto reencoded = header->encoded();
  if (!reencoded || *reencoded != *headerBytes) return std::unexpected(Error::invalidFixture);
  const auto packageIdentifier = FixtureHex::decode(fixture.packageIdentifierHex);
  if (!packageIdentifier) return std::unexpected(packageIdentifier.error());
  if (header->packageIdentifier() != *packageIdentifier) return std::unexpected(Error::invalidFixture);
  return std::move(*headerBytes);
}

// verifyRecoveryEnvelopeBinding: the envelope vector is bound to exactly this header.
[[nodiscard]] std::expected<void, Error> verifyRecoveryEnvelopeBinding(const RecoveryGoldenFixture& fixture,
                                                                       ByteView headerBytes) {
  const auto vector = std::ranges::find(fixture.vectors, FixtureMaterial::recoveryEnvelopeLabel, &Vector::name);
  if (vector == fixture.vectors.end() || !vector->envelopeBinding) return std::unexpected(Error::invalidFixture);
  const auto headerDigest = FixtureHex::decode(vector->envelopeBinding->headerDigestHex);
  if (!headerDigest) return std::unexpected(headerDigest.error());
  if (!GaldrineByteOrder::equal(*headerDigest, GaldrinePlatformSHA256::digest(headerBytes)))
    return std::unexpected(Error::invalidFixture);
  return {};
}

[[nodiscard]] std::expected<std::optional<AuthenticatedData::EnvelopeBinding>, Error> makeEnvelopeBinding(
    const std::optional<EnvelopeBinding>& binding) {
  if (!binding) return std::nullopt;
  const auto headerDigest = FixtureHex::decode(binding->headerDigestHex);
  if (!headerDigest) return std::unexpected(headerDigest.error());
  const auto keySlotIdentifier = FixtureHex::decode(binding->keySlotIdentifierHex);
  if (!keySlotIdentifier) return std::unexpected(keySlotIdentifier.error());
  const auto kdfParameterDigest = FixtureHex::decode(binding->kdfParameterDigestHex);
  if (!kdfParameterDigest) return std::unexpected(kdfParameterDigest.error());
  auto made = AuthenticatedData::EnvelopeBinding::make(*headerDigest, *keySlotIdentifier, *kdfParameterDigest);
  if (!made) return std::unexpected(Error::invalidFixture);
  return std::move(*made);
}

// makeAuthenticatedData builds the vector's authenticated data from its own domain, ordinal and
// binding and the fixture's identifiers; a domain this build does not know is invalidFixture.
[[nodiscard]] std::expected<AuthenticatedData, Error> makeAuthenticatedData(const Vector& vector,
                                                                           const RecoveryGoldenFixture& fixture) {
  const auto domain = fromRawValue<GaldrineBackupAADDomainV1>(vector.domain);
  if (!domain) return std::unexpected(Error::invalidFixture);
  const auto packageIdentifier = FixtureHex::decode(fixture.packageIdentifierHex);
  if (!packageIdentifier) return std::unexpected(packageIdentifier.error());
  const auto libraryDomainIdentifier = FixtureHex::decode(fixture.libraryDomainIdentifierHex);
  if (!libraryDomainIdentifier) return std::unexpected(libraryDomainIdentifier.error());
  const auto artifactIdentifier = FixtureHex::decode(vector.artifactIdentifierHex);
  if (!artifactIdentifier) return std::unexpected(artifactIdentifier.error());
  const auto binding = makeEnvelopeBinding(vector.envelopeBinding);
  if (!binding) return std::unexpected(binding.error());
  auto data = AuthenticatedData::make(*domain, *packageIdentifier, *libraryDomainIdentifier, *artifactIdentifier,
                                      vector.ordinal, *binding);
  if (!data) return std::unexpected(Error::invalidFixture);
  return std::move(*data);
}

[[nodiscard]] std::expected<void, Error> verifyVector(const Vector& vector, const RecoveryGoldenFixture& fixture) {
  const auto data = makeAuthenticatedData(vector, fixture);
  if (!data) return std::unexpected(data.error());
  const auto encodedData = data->encoded();
  const auto expectedData = FixtureHex::decode(vector.aadHex);
  if (!expectedData) return std::unexpected(expectedData.error());
  if (!encodedData || *encodedData != *expectedData) return std::unexpected(Error::invalidFixture);

  auto material = FixtureMaterial::expectedMaterial(vector.name);
  if (!material) return std::unexpected(Error::invalidFixture);
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(material->key); }};
  const auto plaintextDigest = FixtureHex::decode(vector.plaintextDigestHex);
  if (!plaintextDigest) return std::unexpected(plaintextDigest.error());
  if (!GaldrineByteOrder::equal(*plaintextDigest, GaldrinePlatformSHA256::digest(material->plaintext)))
    return std::unexpected(Error::invalidFixture);

  const auto frame = FixtureHex::decode(vector.frameHex);
  if (!frame) return std::unexpected(frame.error());
  const auto plaintext = GaldrineBackupPayloadReader::open(*frame, material->key, *data, vector.maximumPlaintextByteCount);
  if (!plaintext || *plaintext != material->plaintext) return std::unexpected(Error::invalidFixture);
  return {};
}

}  // namespace

namespace FixtureVerification {

Count verifyGolden(ByteView document) {
  const auto fixture = decodeFixture(document);
  if (!fixture) return std::unexpected(fixture.error());
  if (fixture->fixtureSchemaVersion != GaldrineRecoveryFixtureVerifier::fixtureSchemaVersion ||
      fixture->formatIdentifier != GaldrineBackupFormatV1::canonicalFormatIdentifier)
    return std::unexpected(Error::invalidFixture);
  if (!hasTheThreeLabels(fixture->vectors)) return std::unexpected(Error::invalidFixture);
  const auto headerBytes = verifiedHeader(*fixture);
  if (!headerBytes) return std::unexpected(headerBytes.error());
  if (auto bound = verifyRecoveryEnvelopeBinding(*fixture, *headerBytes); !bound) return std::unexpected(bound.error());
  for (const Vector& vector : fixture->vectors) {
    if (auto verified = verifyVector(vector, *fixture); !verified) return std::unexpected(verified.error());
  }
  return static_cast<std::int64_t>(fixture->vectors.size());
}

}  // namespace FixtureVerification
