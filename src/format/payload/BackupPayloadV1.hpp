#pragma once
// BackupPayloadV1 writes, inspects and opens the two payload files of a package.
//
// A pack segment ("<32 hex digits>.pack") holds up to 32 small resources under one segment
// key: a 48-byte header (BackupPackContainerHeaderV1), for each entry in ordinal order
// a 32-byte prefix (identifier, ordinal, frame byte count) and the entry's sealed frame, and
// last the sealed frame of the pack index, which lists every entry. A resource chunk
// ("<32 hex digits>.chunk") is nothing but one sealed frame of one piece of a large resource,
// under that resource's key. Every frame is sealed with the payload key, never with the bpmk,
// and with authenticated data that binds it to the package, the library domain, its
// identifier and its ordinal.
//
// Keys, identifiers and plaintexts arrive as views the caller owns; nothing here keeps a copy
// of a key, and no file stays open between calls. Readers bound every read before it happens
// and fail with one fixed case; writers stage, synchronise, read back, and publish without
// replacing, and a failed writer leaves no staging file behind.

#include <algorithm>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "format/header/BackupFormatV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

// BackupPayloadFaultPoint names the places where a payload writer can be stopped on
// purpose, in the order in which a writer passes them. Only a caller's fault hook stops a
// write at one of them; the ordinary writers never do.
enum class BackupPayloadFaultPoint : std::uint8_t {
  afterStagingCreation,
  afterPayloadWrite,
  afterIndexWrite,  // pack segments only
  afterStagingSync,
  afterStagingVerification,
  afterFinalRename,
};

// BackupPayloadV1Error is why a pack segment or a resource chunk could not be written,
// inspected or opened. Cases stand in the order of the payload contract; only injectedFault
// carries a payload, the fault point at which a hook stopped the write. Damaged and tampered
// files read alike: no path, offset or lower reason travels with a case.
struct BackupPayloadV1Error {
  enum class Code : std::uint8_t {
    injectedFault,  // payload: the fault point
    invalidIdentifier,
    invalidKey,
    invalidEntrySet,
    plaintextLimitExceeded,
    segmentLimitExceeded,
    invalidArtifactName,
    invalidParentDirectory,
    destinationAlreadyExists,
    invalidArtifact,
    unsupportedContainer,
    malformedIndex,
    verificationFailed,
    entryNotFound,
  };

  Code code;
  std::optional<BackupPayloadFaultPoint> faultPoint = std::nullopt;  // only for injectedFault

  static constexpr BackupPayloadV1Error injectedFault(BackupPayloadFaultPoint point) {
    return {Code::injectedFault, point};
  }
  static constexpr BackupPayloadV1Error invalidIdentifier() { return {Code::invalidIdentifier}; }
  static constexpr BackupPayloadV1Error invalidKey() { return {Code::invalidKey}; }
  static constexpr BackupPayloadV1Error invalidEntrySet() { return {Code::invalidEntrySet}; }
  static constexpr BackupPayloadV1Error plaintextLimitExceeded() { return {Code::plaintextLimitExceeded}; }
  static constexpr BackupPayloadV1Error segmentLimitExceeded() { return {Code::segmentLimitExceeded}; }
  static constexpr BackupPayloadV1Error invalidArtifactName() { return {Code::invalidArtifactName}; }
  static constexpr BackupPayloadV1Error invalidParentDirectory() { return {Code::invalidParentDirectory}; }
  static constexpr BackupPayloadV1Error destinationAlreadyExists() { return {Code::destinationAlreadyExists}; }
  static constexpr BackupPayloadV1Error invalidArtifact() { return {Code::invalidArtifact}; }
  static constexpr BackupPayloadV1Error unsupportedContainer() { return {Code::unsupportedContainer}; }
  static constexpr BackupPayloadV1Error malformedIndex() { return {Code::malformedIndex}; }
  static constexpr BackupPayloadV1Error verificationFailed() { return {Code::verificationFailed}; }
  static constexpr BackupPayloadV1Error entryNotFound() { return {Code::entryNotFound}; }

  friend constexpr bool operator==(const BackupPayloadV1Error&, const BackupPayloadV1Error&) = default;
};

// A writer fails with its own case, or with the errno of a file call that failed (creating,
// writing, seeking, synchronising or closing the staging file, or moving it). A failure of the
// random source while sealing is reported as EIO.
using BackupPayloadV1Failure = std::variant<BackupPayloadV1Error, platform::FileError>;

// A fault hook is asked at each fault point a writer passes; returning true stops the write
// there with injectedFault(point).
using BackupPayloadFaultHook = std::function<bool(BackupPayloadFaultPoint)>;

// BackupPackEntryInput is one resource to be packed: the identifier its entry will
// carry (the resource's own identifier) and its plaintext. The writer only reads it; wiping
// the plaintext afterwards is the holder's business.
struct BackupPackEntryInput {
  Bytes identifier;
  Bytes plaintext;

  friend bool operator==(const BackupPackEntryInput&, const BackupPackEntryInput&) = default;
};

// BackupPackEntryDescriptorV1 describes one entry of a pack segment, as its index
// lists it: the entry's identifier (that of the resource it holds) and ordinal (its position),
// where its frame starts in the file (past the entry's prefix), the frame's length and digest,
// and the plaintext's length and digest.
struct BackupPackEntryDescriptorV1 {
  Bytes identifier;
  std::uint64_t ordinal = 0;
  std::uint64_t frameOffset = 0;
  std::uint64_t frameByteCount = 0;
  std::uint64_t plaintextByteCount = 0;
  platform::SHA256Digest plaintextSHA256{};
  platform::SHA256Digest frameSHA256{};

  friend bool operator==(const BackupPackEntryDescriptorV1&, const BackupPackEntryDescriptorV1&) = default;
};

// BackupPackSegmentDescriptorV1 is what a pack segment holds, as its authenticated
// index says and its prefixes confirm: the segment identifier, the byte counts of the entry
// area and of the index frame, the index frame's digest, the sum of the entries' plaintext
// byte counts, and the entries in ordinal order.
struct BackupPackSegmentDescriptorV1 {
  Bytes identifier;
  std::uint64_t entryAreaByteCount = 0;
  std::uint64_t indexFrameByteCount = 0;
  platform::SHA256Digest indexFrameSHA256{};
  std::uint64_t totalPlaintextByteCount = 0;
  std::vector<BackupPackEntryDescriptorV1> entries;

  // entry gives the entry whose identifier equals `entryIdentifier`, or nothing. Identifiers of a
  // segment are pairwise different, so there is at most one.
  [[nodiscard]] const BackupPackEntryDescriptorV1* entry(ByteView entryIdentifier) const {
    const auto found = std::ranges::find_if(
        entries, [&](const auto& candidate) { return ByteOrder::equal(candidate.identifier, entryIdentifier); });
    return found == entries.end() ? nullptr : &*found;
  }

  friend bool operator==(const BackupPackSegmentDescriptorV1&, const BackupPackSegmentDescriptorV1&) = default;
};

// BackupResourceChunkDescriptorV1 names one resource chunk file and authenticates its
// bytes. A reader builds it from a resource's part record: identifier from the part's
// artifact identifier, ordinal from its artifact ordinal, frame byte count and digest from the
// artifact file's, plaintext byte count and digest from the part's own. The ordinal is part of
// the chunk's authenticated data, so a chunk read with another ordinal does not open.
struct BackupResourceChunkDescriptorV1 {
  Bytes identifier;
  std::uint64_t ordinal = 0;
  std::uint64_t frameByteCount = 0;
  std::uint64_t plaintextByteCount = 0;
  platform::SHA256Digest plaintextSHA256{};
  platform::SHA256Digest frameSHA256{};

  friend bool operator==(const BackupResourceChunkDescriptorV1&, const BackupResourceChunkDescriptorV1&) = default;
};

namespace BackupPayloadV1 {

inline constexpr std::size_t keyByteCount = 32;
inline constexpr std::size_t identifierByteCount = 16;
inline constexpr std::uint64_t entryPrefixByteCount = 32;
// A staging file is named "<final name>.<lower-case UUID>.partial"; it is never part of a package.
inline constexpr std::string_view stagingNameSuffix = ".partial";
// A sealed frame adds at most 1,024 bytes of structure to its plaintext.
inline constexpr std::uint64_t maximumFrameOverheadByteCount = 1024;
inline constexpr std::uint64_t maximumEntryFrameByteCount =
    BackupFormatV1::maximumPackedResourcePlaintextByteCount + maximumFrameOverheadByteCount;
inline constexpr std::uint64_t maximumChunkFrameByteCount =
    BackupFormatV1::maximumStandaloneChunkPlaintextByteCount + maximumFrameOverheadByteCount;
inline constexpr std::uint64_t maximumIndexFrameByteCount =
    BackupFormatV1::maximumPackIndexPlaintextByteCount + maximumFrameOverheadByteCount;
inline constexpr std::uint64_t maximumSegmentFileByteCount =
    48 + BackupFormatV1::maximumSegmentPlaintextByteCount +
    BackupFormatV1::maximumSegmentResourceCount * (entryPrefixByteCount + maximumFrameOverheadByteCount) +
    maximumIndexFrameByteCount;
static_assert(maximumSegmentFileByteCount == 67209264);

// packSegmentFileName and resourceChunkFileName give 32 lower-case hexadecimal digits, a
// point, and "pack" or "chunk". An identifier that is not 16 bytes is invalidIdentifier.
[[nodiscard]] std::expected<std::string, BackupPayloadV1Error> packSegmentFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, BackupPayloadV1Error> resourceChunkFileName(ByteView identifier);

// generateRandomKey gives a fresh 32-byte payload key from the system's secure random source,
// which the caller owns and wipes; a failed source gives its non-zero status and no key.
[[nodiscard]] std::expected<Bytes, std::int32_t> generateRandomKey();

// writePackSegment seals `entries` (ordinals being their positions) into a new segment file
// at `path` and gives the descriptor that inspection of the published file yields. Checks, in
// this order: a 32-byte key (invalidKey) and 16-byte package and library domain identifiers
// (invalidIdentifier); a 16-byte segment identifier and 1 to 32 entries with 16-byte, pairwise
// different identifiers (invalidEntrySet); each plaintext at most 16 MiB
// (plaintextLimitExceeded) and all together at most 64 MiB (segmentLimitExceeded); the last
// path component equal to packSegmentFileName(segmentIdentifier) (invalidArtifactName); the
// parent an existing directory and no symbolic link (invalidParentDirectory). None of these
// creates anything. The file is then written under a staging name beside the destination
// ("<final name>.<lower-case UUID>.partial"), synchronised with its directory, inspected and
// every entry opened and compared (verificationFailed), and moved to `path` only if nothing
// stands there (destinationAlreadyExists); the directory is synchronised again and the final
// file inspected and compared once more (verificationFailed, the published file then stays).
// A directory synchronisation that fails is invalidParentDirectory. On every failure before
// the move the staging file is removed, and no final file exists.
[[nodiscard]] std::expected<BackupPackSegmentDescriptorV1, BackupPayloadV1Failure> writePackSegment(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentIdentifier, ByteView segmentKey, std::span<const BackupPackEntryInput> entries);

// This form asks `faultHook` at afterStagingCreation, afterPayloadWrite, afterIndexWrite,
// afterStagingSync, afterStagingVerification and afterFinalRename, in this order. A stop before
// the move leaves nothing; a stop at afterFinalRename leaves the published file.
[[nodiscard]] std::expected<BackupPackSegmentDescriptorV1, BackupPayloadV1Failure> writePackSegment(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentIdentifier, ByteView segmentKey, std::span<const BackupPackEntryInput> entries,
    const BackupPayloadFaultHook& faultHook);

// inspectPackSegment checks everything of a segment file but its entry frames, in this order:
// the key and identifiers as for writing; a last path component of the form
// "<32 lower-case hex digits>.pack", or that name with a staging suffix (invalidArtifactName);
// a regular file reached without following a symbolic link, of at most 67,209,264 bytes by
// its open descriptor (invalidArtifact); the header's magic, version and reserved field
// (unsupportedContainer); its counts against the file's length (invalidArtifact); its segment
// identifier equal to the one the name spells (invalidArtifactName); the index frame, which
// must open under the key (verificationFailed); the index's structure and agreement with the
// header (malformedIndex); each entry's prefix against the index (malformedIndex). A read that
// comes up short is invalidArtifact.
[[nodiscard]] std::expected<BackupPackSegmentDescriptorV1, BackupPayloadV1Error> inspectPackSegment(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentKey);

// openPackEntry inspects the segment, finds the entry `identifier` (entryNotFound), reads its
// frame with one positioned read (invalidArtifact if short), and gives its plaintext when the
// frame's digest, the frame's opening, and the plaintext's length and digest all agree with
// the index (else verificationFailed).
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openPackEntry(ByteView identifier,
                                                                       const std::filesystem::path& path,
                                                                       ByteView packageIdentifier,
                                                                       ByteView libraryDomainIdentifier,
                                                                       ByteView segmentKey);

// verifyPackSegment inspects the segment once and opens every entry as openPackEntry does, one
// at a time; it gives the descriptor only if all of them open.
[[nodiscard]] std::expected<BackupPackSegmentDescriptorV1, BackupPayloadV1Error> verifyPackSegment(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentKey);

// writeResourceChunk seals `plaintext` as the chunk `chunkIdentifier` with `ordinal` in its
// authenticated data and publishes it at `path` as writePackSegment publishes a segment. Checks,
// in this order: key and identifiers as for a segment; a 16-byte chunk identifier
// (invalidIdentifier); a plaintext of 1 byte to 16 MiB (plaintextLimitExceeded); the last
// path component equal to resourceChunkFileName(chunkIdentifier) (invalidArtifactName); the
// parent directory (invalidParentDirectory). The staging file is read back with
// openResourceChunk before the move, and the final file after it (verificationFailed).
[[nodiscard]] std::expected<BackupResourceChunkDescriptorV1, BackupPayloadV1Failure> writeResourceChunk(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView chunkIdentifier, std::uint64_t ordinal, ByteView resourceKey, ByteView plaintext);

// This form asks `faultHook` at afterStagingCreation, afterPayloadWrite, afterStagingSync,
// afterStagingVerification and afterFinalRename (a chunk has no index), in this order.
[[nodiscard]] std::expected<BackupResourceChunkDescriptorV1, BackupPayloadV1Failure> writeResourceChunk(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView chunkIdentifier, std::uint64_t ordinal, ByteView resourceKey, ByteView plaintext,
    const BackupPayloadFaultHook& faultHook);

// openResourceChunk gives a chunk's plaintext. Checks, in this order: key and identifiers; a
// frame byte count of at most 16,778,240 and a plaintext byte count of at most 16 MiB in the
// descriptor (invalidArtifact); a 16-byte descriptor identifier (invalidIdentifier); the last
// path component equal to resourceChunkFileName of it, or that name with a staging suffix
// (invalidArtifactName); a regular file, no symbolic link, of at most the frame byte count,
// from which exactly that many bytes are read (invalidArtifact); the frame's digest, its
// opening with the descriptor's ordinal, and the plaintext's length and digest
// (verificationFailed). The frame is read once, into one buffer, and decrypted once.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openResourceChunk(
    const std::filesystem::path& path, const BackupResourceChunkDescriptorV1& descriptor, ByteView packageIdentifier,
    ByteView libraryDomainIdentifier, ByteView resourceKey);

}  // namespace BackupPayloadV1

}  // namespace galdrine::format
