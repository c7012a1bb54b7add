#pragma once
// FixtureProducer makes the project's compatibility fixtures: one fixture of each kind
// the verifier knows and an index of them. It builds every object with the project's own
// records and sealing operations, with fixed identifiers, salts and nonces derived from fixed
// labels, so every run gives the same files byte for byte. Each nonce is used once under
// its key. Credentials and keys it needs are synthetic, made from fixed texts.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <vector>

#include "fixtures/FixtureKind.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::fixtureproducer {

// FixtureProducerError is why a fixture set, or one fixture of it, was not produced.
enum class FixtureProducerError : std::uint8_t {
  materialRefused,  // a record, seal or encoding of the project refused the fixture material
  outputFailed,     // the directory or a file could not be created and written
};

// ProducedFixtureFile is one file of a set: its name in the set's directory and bytes.
struct ProducedFixtureFile {
  std::string name;
  Bytes bytes;

  friend bool operator==(const ProducedFixtureFile&, const ProducedFixtureFile&) = default;
};

namespace FixtureProducer {

inline constexpr std::string_view indexFileName = "index.json";

// fixtureFile gives the one fixture of `kind` of the set, under its file name.
[[nodiscard]] std::expected<ProducedFixtureFile, FixtureProducerError> fixtureFile(fixtures::FixtureKind kind);

// fixtureFiles gives the files of a set in memory: the fixtures in the order of their kinds,
// then the index. A refusal of any material is materialRefused.
[[nodiscard]] std::expected<std::vector<ProducedFixtureFile>, FixtureProducerError> fixtureFiles();

// produce creates the directory `directory`, which must not exist yet, and writes the files of
// fixtureFiles into it, each created new. A failure may leave the directory with some files.
[[nodiscard]] std::expected<void, FixtureProducerError> produce(const std::filesystem::path& directory);

}  // namespace FixtureProducer

}  // namespace galdrine::fixtureproducer
