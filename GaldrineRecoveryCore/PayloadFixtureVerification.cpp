// Payload fixtures: a pack segment and a standalone resource chunk, written as package files
// into a scratch directory and opened by the payload readers under the fixture keys.

#include <string>
#include <vector>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrineRecoveryCore/FixtureHex.hpp"
#include "GaldrineRecoveryCore/FixtureJSONFields.hpp"
#include "GaldrineRecoveryCore/FixtureMaterial.hpp"
#include "GaldrineRecoveryCore/FixtureScratchDirectory.hpp"
#include "GaldrineRecoveryCore/FixtureVerification.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupPayloadReader.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;

constexpr std::string_view scratchPrefix = "GaldrineRecoveryPayloadFixture-";

struct Entry {
  std::string name;
  std::string identifierHex;
  std::uint64_t ordinal = 0;
  std::string plaintextDigestHex;
};

struct Pack {
  std::string segmentIdentifierHex;
  std::string segmentHex;
  std::string segmentSHA256Hex;
  std::vector<Entry> entries;
};

struct Standalone {
  std::string name;
  std::string identifierHex;
  std::uint64_t ordinal = 0;
  std::string frameHex;
  std::string frameSHA256Hex;
  std::string plaintextDigestHex;
};

struct RecoveryPayloadFixture {
  std::int64_t fixtureSchemaVersion = 0;
  std::string formatIdentifier;
  std::string packageIdentifierHex;
  std::string libraryDomainIdentifierHex;
  Pack pack;
  Standalone standalone;
};

// The fixture with every hexadecimal field decoded.
struct DecodedEntry {
  std::string_view name;
  Bytes identifier;
  std::uint64_t ordinal = 0;
  Bytes plaintextDigest;
};

struct DecodedPayload {
  Bytes packageIdentifier;
  Bytes libraryDomainIdentifier;
  Bytes segmentIdentifier;
  Bytes segment;
  Bytes segmentSHA256;
  std::vector<DecodedEntry> entries;
  Bytes standaloneIdentifier;
  std::uint64_t standaloneOrdinal = 0;
  Bytes frame;
  Bytes frameSHA256;
  Bytes standalonePlaintextDigest;
};

[[nodiscard]] std::expected<RecoveryPayloadFixture, Error> decodeFixture(ByteView bytes) {
  const auto document = FixtureJSON::parse(bytes);
  if (!document) return std::unexpected(Error::invalidFixture);
  bool faulted = false;
  const FixtureJSONFields fields(*document, faulted);
  const FixtureJSONFields pack = fields.object("pack");
  const FixtureJSONFields standalone = fields.object("standalone");
  RecoveryPayloadFixture fixture{
      fields.signedInteger("fixtureSchemaVersion"),
      fields.text("formatIdentifier"),
      fields.text("packageIdentifierHex"),
      fields.text("libraryDomainIdentifierHex"),
      {pack.text("segmentIdentifierHex"), pack.text("segmentHex"), pack.text("segmentSHA256Hex"), {}},
      {standalone.text("name"), standalone.text("identifierHex"), standalone.unsignedInteger("ordinal"),
       standalone.text("frameHex"), standalone.text("frameSHA256Hex"), standalone.text("plaintextDigestHex")},
  };
  for (const FixtureJSONFields& entry : pack.objects("entries")) {
    fixture.pack.entries.push_back({entry.text("name"), entry.text("identifierHex"), entry.unsignedInteger("ordinal"),
                                    entry.text("plaintextDigestHex")});
  }
  if (faulted) return std::unexpected(Error::invalidFixture);
  return fixture;
}

// decodeAll decodes the hexadecimal fields in document order; the first malformed one is
// invalidHex.
[[nodiscard]] std::expected<DecodedPayload, Error> decodeAll(const RecoveryPayloadFixture& fixture) {
  DecodedPayload decoded;
  const auto decodeInto = [](const std::string& text, Bytes& bytes) -> bool {
    auto field = FixtureHex::decode(text);
    if (field) bytes = std::move(*field);
    return field.has_value();
  };
  bool valid = decodeInto(fixture.packageIdentifierHex, decoded.packageIdentifier) &&
               decodeInto(fixture.libraryDomainIdentifierHex, decoded.libraryDomainIdentifier) &&
               decodeInto(fixture.pack.segmentIdentifierHex, decoded.segmentIdentifier) &&
               decodeInto(fixture.pack.segmentHex, decoded.segment) &&
               decodeInto(fixture.pack.segmentSHA256Hex, decoded.segmentSHA256);
  for (const Entry& entry : fixture.pack.entries) {
    DecodedEntry& target = decoded.entries.emplace_back();
    target.name = entry.name;
    target.ordinal = entry.ordinal;
    valid = valid && decodeInto(entry.identifierHex, target.identifier) &&
            decodeInto(entry.plaintextDigestHex, target.plaintextDigest);
  }
  decoded.standaloneOrdinal = fixture.standalone.ordinal;
  valid = valid && decodeInto(fixture.standalone.identifierHex, decoded.standaloneIdentifier) &&
          decodeInto(fixture.standalone.frameHex, decoded.frame) &&
          decodeInto(fixture.standalone.frameSHA256Hex, decoded.frameSHA256) &&
          decodeInto(fixture.standalone.plaintextDigestHex, decoded.standalonePlaintextDigest);
  if (!valid) return std::unexpected(Error::invalidHex);
  return decoded;
}

// The segment's descriptor agrees with the fixture: its identifier, and each entry's
// identifier and ordinal in stored order.
[[nodiscard]] bool describesFixtureEntries(const GaldrineBackupPackSegmentDescriptorV1& descriptor,
                                           const DecodedPayload& payload) {
  if (descriptor.identifier != payload.segmentIdentifier || descriptor.entries.size() != payload.entries.size())
    return false;
  for (std::size_t index = 0; index < payload.entries.size(); ++index) {
    if (descriptor.entries[index].identifier != payload.entries[index].identifier ||
        descriptor.entries[index].ordinal != payload.entries[index].ordinal)
      return false;
  }
  return true;
}

// opensAsExpected: the plaintext is the expected one, and its digest the fixture's.
[[nodiscard]] bool opensAsExpected(const std::expected<Bytes, GaldrineBackupPayloadV1Error>& plaintext,
                                   const Bytes& expected, const Bytes& expectedDigest) {
  return plaintext && *plaintext == expected &&
         GaldrineByteOrder::equal(GaldrinePlatformSHA256::digest(*plaintext), expectedDigest);
}

[[nodiscard]] std::expected<void, Error> verifyPackSegment(const std::filesystem::path& url, const DecodedPayload& payload) {
  Bytes key = FixtureMaterial::keyFromSeed(FixtureMaterial::packSegmentKeySeed);
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(key); }};
  const auto descriptor =
      GaldrineBackupPayloadReader::inspectPackSegment(url, payload.packageIdentifier, payload.libraryDomainIdentifier, key);
  if (!descriptor || !describesFixtureEntries(*descriptor, payload)) return std::unexpected(Error::invalidFixture);
  for (const DecodedEntry& entry : payload.entries) {
    const auto expected = FixtureMaterial::payloadEntryPlaintext(entry.name);
    if (!expected) return std::unexpected(Error::invalidFixture);
    const auto plaintext = GaldrineBackupPayloadReader::openPackEntry(entry.identifier, url, payload.packageIdentifier,
                                                                      payload.libraryDomainIdentifier, key);
    if (!opensAsExpected(plaintext, *expected, entry.plaintextDigest)) return std::unexpected(Error::invalidFixture);
  }
  return {};
}

[[nodiscard]] std::expected<void, Error> verifyStandaloneChunk(const std::filesystem::path& url,
                                                               const DecodedPayload& payload) {
  const Bytes expected = GaldrineByteText::bytes(FixtureMaterial::standaloneChunkPlaintext);
  const auto plaintextSHA256 = GaldrineFixedBytes::digest(payload.standalonePlaintextDigest);
  const auto frameSHA256 = GaldrineFixedBytes::digest(payload.frameSHA256);
  if (!plaintextSHA256 || !frameSHA256) return std::unexpected(Error::invalidFixture);
  const GaldrineBackupResourceChunkDescriptorV1 descriptor{payload.standaloneIdentifier, payload.standaloneOrdinal,
                                                           payload.frame.size(),         expected.size(),
                                                           *plaintextSHA256,             *frameSHA256};
  Bytes key = FixtureMaterial::keyFromSeed(FixtureMaterial::standaloneChunkKeySeed);
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(key); }};
  const auto plaintext = GaldrineBackupPayloadReader::openResourceChunk(url, descriptor, payload.packageIdentifier,
                                                                        payload.libraryDomainIdentifier, key);
  if (!opensAsExpected(plaintext, expected, payload.standalonePlaintextDigest)) return std::unexpected(Error::invalidFixture);
  return {};
}

// openAsPackageFiles writes both payload files under their package names and opens them.
[[nodiscard]] std::expected<void, Error> openAsPackageFiles(const DecodedPayload& payload) {
  const auto scratch = FixtureScratchDirectory::create(scratchPrefix);
  if (!scratch) return std::unexpected(scratch.error());
  const auto segmentName = GaldrineBackupPayloadV1::packSegmentFileName(payload.segmentIdentifier);
  const auto chunkName = GaldrineBackupPayloadV1::resourceChunkFileName(payload.standaloneIdentifier);
  if (!segmentName || !chunkName) return std::unexpected(Error::invalidFixture);
  const auto segmentURL = scratch->write(*segmentName, payload.segment);
  if (!segmentURL) return std::unexpected(segmentURL.error());
  const auto chunkURL = scratch->write(*chunkName, payload.frame);
  if (!chunkURL) return std::unexpected(chunkURL.error());
  if (auto verified = verifyPackSegment(*segmentURL, payload); !verified) return verified;
  return verifyStandaloneChunk(*chunkURL, payload);
}

}  // namespace

namespace FixtureVerification {

Count verifyPayload(ByteView document) {
  const auto fixture = decodeFixture(document);
  if (!fixture) return std::unexpected(fixture.error());
  if (fixture->fixtureSchemaVersion != GaldrineRecoveryFixtureVerifier::fixtureSchemaVersion ||
      fixture->formatIdentifier != GaldrineBackupFormatV1::canonicalFormatIdentifier ||
      fixture->standalone.name != FixtureMaterial::standaloneChunkName)
    return std::unexpected(Error::invalidFixture);
  const auto payload = decodeAll(*fixture);
  if (!payload) return std::unexpected(payload.error());
  if (!GaldrineByteOrder::equal(payload->segmentSHA256, GaldrinePlatformSHA256::digest(payload->segment)) ||
      !GaldrineByteOrder::equal(payload->frameSHA256, GaldrinePlatformSHA256::digest(payload->frame)))
    return std::unexpected(Error::invalidFixture);
  if (auto opened = openAsPackageFiles(*payload); !opened) return std::unexpected(opened.error());
  return static_cast<std::int64_t>(payload->entries.size()) + 1;
}

}  // namespace FixtureVerification
