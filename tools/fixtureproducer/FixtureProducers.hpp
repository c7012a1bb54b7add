#pragma once
// FixtureProducers build the JSON document of each fixture kind for one synthetic package.
// Every document is a pure function of the fixture material the verifier holds too
// (FixtureMaterial, whose key seeds give the keys): fixed labels give its identifiers, salts
// and nonces, and nothing is drawn from a random source or a clock.

#include <nlohmann/json.hpp>

#include <cstdint>
#include <expected>

#include "fixtureproducer/FixtureProducer.hpp"
#include "format/sealing/BackupAADDomainV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::fixtureproducer {

// FixturePackage is the one package every fixture of a set speaks of.
struct FixturePackage {
  Bytes packageIdentifier;
  Bytes libraryDomainIdentifier;
  Bytes headerBytes;  // the encoded format header of the package
};

namespace FixtureProducers {

using Document = std::expected<nlohmann::json, FixtureProducerError>;

// package gives the set's package: fixed identifiers and the header the format writes for them.
[[nodiscard]] std::expected<FixturePackage, FixtureProducerError> package();

[[nodiscard]] Document goldenFixture(const FixturePackage& package);
[[nodiscard]] Document keyEnvelopeSetFixture(const FixturePackage& package);
[[nodiscard]] Document payloadFixture(const FixturePackage& package);
[[nodiscard]] Document graphFixture(const FixturePackage& package);

// sealedFrame seals `plaintext` under `key` with the authenticated data of a payload or graph
// object that carries no envelope binding, with the caller's nonce.
[[nodiscard]] std::expected<Bytes, FixtureProducerError> sealedFrame(
    ByteView plaintext, ByteView key, format::BackupAADDomainV1 domain, const FixturePackage& package,
    ByteView artifactIdentifier, std::uint64_t ordinal, std::int64_t maximumPlaintextByteCount, ByteView nonce);

// hex is the lower-case hexadecimal text of `bytes`, as every fixture field ending in "Hex".
[[nodiscard]] inline std::string hex(ByteView bytes) { return ByteText::lowerHex(bytes); }

}  // namespace FixtureProducers

}  // namespace galdrine::fixtureproducer
