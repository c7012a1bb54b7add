#pragma once
// GaldrineFixtureProducer makes the project's compatibility fixtures: one fixture of each kind
// the verifier knows and an index of them. It builds every object with the project's own
// records and sealing operations, with fixed identifiers, salts and nonces derived from fixed
// labels, so the same seeds give the same files byte for byte. Each nonce is used once under
// its key. Credentials and keys it needs are synthetic, made from fixed texts.

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

#include "GaldrineFixtureProducer/GaldrineFixtureProducerError.hpp"
#include "GaldrineFixtureProducer/GaldrineFixtureProducerSeeds.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/FixtureKind.hpp"

// GaldrineProducedFixtureFile is one file of a set: its name in the set's directory and bytes.
struct GaldrineProducedFixtureFile {
  std::string name;
  Bytes bytes;

  friend bool operator==(const GaldrineProducedFixtureFile&, const GaldrineProducedFixtureFile&) = default;
};

namespace GaldrineFixtureProducer {

inline constexpr std::string_view indexFileName = "index.json";

// fixtureFile gives the one fixture of `kind` in a set made with `seeds`, under its file name.
[[nodiscard]] std::expected<GaldrineProducedFixtureFile, GaldrineFixtureProducerError> fixtureFile(
    FixtureKind kind, const GaldrineFixtureProducerSeeds& seeds);

// fixtureFiles gives the files of a set in memory: the fixtures in the order of their kinds,
// then the index. A refusal of any material is materialRefused.
[[nodiscard]] std::expected<std::vector<GaldrineProducedFixtureFile>, GaldrineFixtureProducerError> fixtureFiles(
    const GaldrineFixtureProducerSeeds& seeds);

// produce creates the directory `directory`, which must not exist yet, and writes the files of
// fixtureFiles into it, each created new. A failure may leave the directory with some files.
[[nodiscard]] std::expected<void, GaldrineFixtureProducerError> produce(const std::filesystem::path& directory,
                                                                        const GaldrineFixtureProducerSeeds& seeds);

}  // namespace GaldrineFixtureProducer
