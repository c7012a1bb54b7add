// The payload fixture: a pack segment of two entries under the pack segment seed's key, and a
// standalone resource chunk under the standalone seed's key.

#include <array>
#include <string>

#include "fixtureproducer/DeterministicPayloadFiles.hpp"
#include "fixtureproducer/FixtureProducerBytes.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "fixtures/FixtureMaterial.hpp"
#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = FixtureProducerError;
namespace Fixed = FixtureProducerBytes;

constexpr std::array<std::string_view, 2> entryNames{fixtures::FixtureMaterial::packEntryZeroName,
                                                     fixtures::FixtureMaterial::packEntryOneName};
constexpr std::uint64_t standaloneOrdinal = 0;

[[nodiscard]] DeterministicPackEntry packEntry(std::string_view name) {
  const std::string label = "payload/" + std::string(name);
  return {Fixed::identifier(label), fixtures::FixtureMaterial::payloadEntryPlaintext(name).value_or(Bytes{}),
          Fixed::nonce(label + "/nonce")};
}

[[nodiscard]] FixtureProducers::Document packDocument(const FixturePackage& package) {
  const Bytes segmentIdentifier = Fixed::identifier("payload/pack-segment");
  const std::array entries{packEntry(entryNames[0]), packEntry(entryNames[1])};
  Bytes key = fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::packSegmentKeySeed);
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(key); }};
  const auto segment = DeterministicPayloadFiles::packSegment(package, segmentIdentifier, key, entries,
                                                              Fixed::nonce("payload/pack-segment/index-nonce"));
  if (!segment) return std::unexpected(segment.error());
  nlohmann::json entryDocuments = nlohmann::json::array();
  for (std::size_t ordinal = 0; ordinal < entries.size(); ++ordinal) {
    entryDocuments.push_back(
        {{"name", entryNames[ordinal]},
         {"identifierHex", FixtureProducers::hex(entries[ordinal].identifier)},
         {"ordinal", ordinal},
         {"plaintextDigestHex", FixtureProducers::hex(Fixed::digestOf(entries[ordinal].plaintext))}});
  }
  return nlohmann::json{{"segmentIdentifierHex", FixtureProducers::hex(segmentIdentifier)},
                        {"segmentHex", FixtureProducers::hex(*segment)},
                        {"segmentSHA256Hex", FixtureProducers::hex(Fixed::digestOf(*segment))},
                        {"entries", std::move(entryDocuments)}};
}

[[nodiscard]] FixtureProducers::Document standaloneDocument(const FixturePackage& package) {
  const Bytes identifier = Fixed::identifier("payload/standalone-chunk");
  const Bytes plaintext = ByteText::bytes(fixtures::FixtureMaterial::standaloneChunkPlaintext);
  Bytes key = fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::standaloneChunkKeySeed);
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(key); }};
  const auto frame = DeterministicPayloadFiles::resourceChunk(package, identifier, standaloneOrdinal, key, plaintext,
                                                              Fixed::nonce("payload/standalone-chunk/nonce"));
  if (!frame) return std::unexpected(frame.error());
  return nlohmann::json{{"name", fixtures::FixtureMaterial::standaloneChunkName},
                        {"identifierHex", FixtureProducers::hex(identifier)},
                        {"ordinal", standaloneOrdinal},
                        {"frameHex", FixtureProducers::hex(*frame)},
                        {"frameSHA256Hex", FixtureProducers::hex(Fixed::digestOf(*frame))},
                        {"plaintextDigestHex", FixtureProducers::hex(Fixed::digestOf(plaintext))}};
}

}  // namespace

namespace FixtureProducers {

Document payloadFixture(const FixturePackage& package) {
  auto pack = packDocument(package);
  if (!pack) return std::unexpected(pack.error());
  auto standalone = standaloneDocument(package);
  if (!standalone) return std::unexpected(standalone.error());
  return nlohmann::json{
      {"fixtureSchemaVersion", fixtures::RecoveryFixtureVerifier::fixtureSchemaVersion},
      {"formatIdentifier", format::BackupFormatV1::canonicalFormatIdentifier},
      {"packageIdentifierHex", hex(package.packageIdentifier)},
      {"libraryDomainIdentifierHex", hex(package.libraryDomainIdentifier)},
      {"pack", std::move(*pack)},
      {"standalone", std::move(*standalone)},
  };
}

}  // namespace FixtureProducers

}  // namespace galdrine::fixtureproducer
