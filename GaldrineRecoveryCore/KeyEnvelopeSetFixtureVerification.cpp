// Key envelope set fixtures: an encoded set, its digest, and the two active entries it must
// hold. No envelope is opened; the fixture proves the set's structure and binding.

#include <string>
#include <vector>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1.hpp"
#include "GaldrineRecoveryCore/FixtureHex.hpp"
#include "GaldrineRecoveryCore/FixtureJSONFields.hpp"
#include "GaldrineRecoveryCore/FixtureVerification.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;

struct Entry {
  std::string factor;
  std::string artifactIdentifierHex;
  std::string keySlotIdentifierHex;
  std::uint64_t generation = 0;
};

struct RecoveryKeyEnvelopeSetFixture {
  std::int64_t fixtureSchemaVersion = 0;
  std::string formatIdentifier;
  std::string packageIdentifierHex;
  std::string libraryDomainIdentifierHex;
  std::string registryHex;
  std::string registrySHA256Hex;
  std::vector<Entry> activeEntries;
};

// The four hexadecimal fields of the fixture itself, decoded.
struct DecodedFields {
  Bytes packageIdentifier;
  Bytes libraryDomainIdentifier;
  Bytes registry;
  Bytes registrySHA256;
};

constexpr std::size_t activeEntryCount = 2;

[[nodiscard]] std::expected<RecoveryKeyEnvelopeSetFixture, Error> decodeFixture(ByteView bytes) {
  const auto document = FixtureJSON::parse(bytes);
  if (!document) return std::unexpected(Error::invalidFixture);
  bool faulted = false;
  const FixtureJSONFields fields(*document, faulted);
  RecoveryKeyEnvelopeSetFixture fixture{fields.signedInteger("fixtureSchemaVersion"),
                                        fields.text("formatIdentifier"),
                                        fields.text("packageIdentifierHex"),
                                        fields.text("libraryDomainIdentifierHex"),
                                        fields.text("registryHex"),
                                        fields.text("registrySHA256Hex"),
                                        {}};
  for (const FixtureJSONFields& entry : fields.objects("activeEntries")) {
    fixture.activeEntries.push_back({entry.text("factor"), entry.text("artifactIdentifierHex"),
                                     entry.text("keySlotIdentifierHex"), entry.unsignedInteger("generation")});
  }
  if (faulted) return std::unexpected(Error::invalidFixture);
  return fixture;
}

[[nodiscard]] std::expected<DecodedFields, Error> decodeHexFields(const RecoveryKeyEnvelopeSetFixture& fixture) {
  DecodedFields decoded;
  for (auto [text, bytes] : {std::pair{&fixture.packageIdentifierHex, &decoded.packageIdentifier},
                             std::pair{&fixture.libraryDomainIdentifierHex, &decoded.libraryDomainIdentifier},
                             std::pair{&fixture.registryHex, &decoded.registry},
                             std::pair{&fixture.registrySHA256Hex, &decoded.registrySHA256}}) {
    auto field = FixtureHex::decode(*text);
    if (!field) return std::unexpected(field.error());
    *bytes = std::move(*field);
  }
  return decoded;
}

[[nodiscard]] bool hasOneEntryOfEachFactor(const std::vector<Entry>& entries) {
  return entries.size() == activeEntryCount && entries[0].factor != entries[1].factor;
}

// decodedRegistry decodes the set, which must encode back to exactly the registry's bytes.
[[nodiscard]] std::expected<GaldrineBackupKeyEnvelopeSetV1, Error> decodedRegistry(ByteView registry) {
  auto set = GaldrineBackupKeyEnvelopeSetV1::decode(registry);
  if (!set) return std::unexpected(Error::invalidFixture);
  const auto reencoded = set->encoded();
  if (!reencoded || !GaldrineByteOrder::equal(*reencoded, registry)) return std::unexpected(Error::invalidFixture);
  return std::move(*set);
}

[[nodiscard]] std::expected<void, Error> verifyEntry(const Entry& entry, const GaldrineBackupKeyEnvelopeSetV1& set) {
  const auto factor = fromRawValue<GaldrinePortableKeyFactorV1>(entry.factor);
  if (!factor) return std::unexpected(Error::invalidFixture);
  const auto active = set.activeEntry(*factor);
  if (!active) return std::unexpected(Error::invalidFixture);
  const auto artifactIdentifier = FixtureHex::decode(entry.artifactIdentifierHex);
  if (!artifactIdentifier) return std::unexpected(artifactIdentifier.error());
  const auto keySlotIdentifier = FixtureHex::decode(entry.keySlotIdentifierHex);
  if (!keySlotIdentifier) return std::unexpected(keySlotIdentifier.error());
  const GaldrinePortableKeyEnvelopeMetadataV1& metadata = active->metadata();
  if (metadata.artifactIdentifier() != *artifactIdentifier || metadata.keySlotIdentifier() != *keySlotIdentifier ||
      metadata.generation() != entry.generation)
    return std::unexpected(Error::invalidFixture);
  return {};
}

}  // namespace

namespace FixtureVerification {

Count verifyKeyEnvelopeSet(ByteView document) {
  const auto fixture = decodeFixture(document);
  if (!fixture) return std::unexpected(fixture.error());
  const auto decoded = decodeHexFields(*fixture);
  if (!decoded) return std::unexpected(decoded.error());
  if (fixture->fixtureSchemaVersion != GaldrineRecoveryFixtureVerifier::fixtureSchemaVersion ||
      fixture->formatIdentifier != GaldrineBackupFormatV1::canonicalFormatIdentifier ||
      !hasOneEntryOfEachFactor(fixture->activeEntries))
    return std::unexpected(Error::invalidFixture);
  if (!GaldrineByteOrder::equal(decoded->registrySHA256, GaldrinePlatformSHA256::digest(decoded->registry)))
    return std::unexpected(Error::invalidFixture);

  const auto set = decodedRegistry(decoded->registry);
  if (!set) return std::unexpected(set.error());
  if (set->packageIdentifier() != decoded->packageIdentifier ||
      set->libraryDomainIdentifier() != decoded->libraryDomainIdentifier ||
      set->activeEntries().size() != fixture->activeEntries.size())
    return std::unexpected(Error::invalidFixture);
  for (const Entry& entry : fixture->activeEntries) {
    if (auto verified = verifyEntry(entry, *set); !verified) return std::unexpected(verified.error());
  }
  return static_cast<std::int64_t>(fixture->activeEntries.size());
}

}  // namespace FixtureVerification
