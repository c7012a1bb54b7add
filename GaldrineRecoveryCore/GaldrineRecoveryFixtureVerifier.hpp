#pragma once
// GaldrineRecoveryFixtureVerifier proves that this build still reads the format. A fixture is
// a JSON document holding real encrypted material, made by the project's fixture producer, and
// the results it must give; the verifier repeats the whole decoding and decryption and
// compares. The keys that open a fixture's frames are built here from fixed seeds
// (FixtureMaterial), so a fixture needs no user secret and proves compatibility, not access.
//
// Every file is bounded before it is read, read without following a symbolic link, and decoded
// with unknown keys ignored. The verifier holds no state; the scratch directories of payload
// and graph fixtures live for one call and are removed on every way out. A failure ends the
// operation with one case and nothing partial: no count is given for a run that failed.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <string_view>

#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationError.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationResult.hpp"

namespace GaldrineRecoveryFixtureVerifier {

inline constexpr std::string_view indexSchemaIdentifier = "com.galdrine.recovery-fixture-index.v1";
inline constexpr std::int64_t indexSchemaVersion = 1;
inline constexpr std::int64_t fixtureSchemaVersion = 1;
inline constexpr std::size_t minimumIndexFixtureCount = 1;
inline constexpr std::size_t maximumIndexFixtureCount = 256;

// Bounds of every read, in bytes.
inline constexpr std::size_t maximumIndexByteCount = 65536;
inline constexpr std::size_t maximumPrototypeFixtureByteCount = 65536;
inline constexpr std::size_t maximumFixtureByteCount = 1048576;        // golden, key envelope set, payload
inline constexpr std::size_t maximumGraphFixtureByteCount = 2097152;
inline constexpr std::size_t maximumDigestPassByteCount = 2097152;

// verifyFixtureIndex reads the index at `url` (at most 65,536 bytes; a read or decoding
// failure, a schema or version other than this one's, fewer than 1 or more than 256 fixtures,
// or a repeated identifier or relative path is invalidIndex). Then, for each fixture in stored
// order: its identifier and file name (invalidFixturePath); its digest, which must be 64
// lower-case hexadecimal digits equal to the SHA-256 of the file (invalidFixture); and the
// verification of its kind, whose count is added to productionVectorCount. A prototype header
// fixture must decode and carry the draft magic and version 0, and adds nothing. Files are
// only ever read from the directory of the standardised index location.
[[nodiscard]] std::expected<GaldrineRecoveryFixtureVerificationResult, GaldrineRecoveryFixtureVerificationError>
verifyFixtureIndex(const std::filesystem::path& url);

// verifyGoldenFixture checks a golden fixture's header and opens its three vectors, named
// "resource-chunk", "pack-entry" and "recovery-envelope", each under the key of its name, its
// own domain, ordinal and plaintext limit; it gives the number of vectors, 3.
[[nodiscard]] std::expected<std::int64_t, GaldrineRecoveryFixtureVerificationError> verifyGoldenFixture(
    const std::filesystem::path& url);

// verifyKeyEnvelopeSetFixture decodes an encoded key envelope set and holds it to the fixture's
// identifiers and its two active entries, without opening an envelope; it gives 2.
[[nodiscard]] std::expected<std::int64_t, GaldrineRecoveryFixtureVerificationError> verifyKeyEnvelopeSetFixture(
    const std::filesystem::path& url);

// verifyPayloadFixture opens every entry of a pack segment and a standalone resource chunk as
// package files; it gives the number of pack entries plus 1.
[[nodiscard]] std::expected<std::int64_t, GaldrineRecoveryFixtureVerificationError> verifyPayloadFixture(
    const std::filesystem::path& url);

// verifyGraphFixture walks a whole synthetic backup from its head down to the recovered
// payloads; it gives the number of recovered resources.
[[nodiscard]] std::expected<std::int64_t, GaldrineRecoveryFixtureVerificationError> verifyGraphFixture(
    const std::filesystem::path& url);

}  // namespace GaldrineRecoveryFixtureVerifier
