#pragma once
// BackupPayloadV1Detail holds the steps that the payload writers and readers share:
// the common check of key and domains, the names a payload file may carry, the authenticated
// data of payload frames, the checks around one frame, and reading a segment or a chunk through
// a directory descriptor, which is how a writer reads back its own staging and final files.
// It is no interface of its own: callers go through BackupPayloadV1.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string_view>

#include "format/sealing/BackupAADDomainV1.hpp"
#include "format/payload/BackupPackSegmentDescriptorV1.hpp"
#include "format/payload/BackupPayloadFileV1.hpp"
#include "format/payload/BackupPayloadV1Error.hpp"
#include "format/payload/BackupResourceChunkDescriptorV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

namespace BackupPayloadV1Detail {

// KeyScope is the key of one segment or resource and the place its frames belong to.
struct KeyScope {
  ByteView packageIdentifier;
  ByteView libraryDomainIdentifier;
  ByteView key;
};

// validateKeyAndDomains: a 32-byte key (invalidKey), then 16-byte package and library domain
// identifiers (invalidIdentifier).
[[nodiscard]] std::expected<void, BackupPayloadV1Error> validateKeyAndDomains(const KeyScope& scope);

// identifierSpelledBy gives the identifier that a payload file name spells, "<32 lower-case
// hex digits>.<extension>" or that name followed by ".<lower-case UUID>.partial", and nothing
// for any other name.
[[nodiscard]] std::optional<Bytes> identifierSpelledBy(std::string_view name, std::string_view extension);

// authenticatedData encodes the data a payload frame is sealed under. It fails only for an
// artifact identifier that is not 16 bytes (invalidIdentifier); the scope was checked before.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> authenticatedData(BackupAADDomainV1 domain,
                                                                                   const KeyScope& scope,
                                                                                   ByteView artifactIdentifier,
                                                                                   std::uint64_t ordinal);

// FrameExpectation is what an authenticated reference says of a frame and its plaintext.
struct FrameExpectation {
  const platform::SHA256Digest& frameSHA256;
  std::uint64_t plaintextByteCount;
  const platform::SHA256Digest& plaintextSHA256;
};

// openExpectedFrame compares the digest of a frame read with readHashed, opens the frame under
// `plaintextLimit`, and checks the plaintext's length and digest. Every mismatch and a failed
// opening is verificationFailed; a plaintext that fails its checks is wiped before it is dropped.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openExpectedFrame(
    const BackupPayloadFileV1::HashedRead& frame, ByteView key, ByteView authenticatedData,
    std::uint64_t plaintextLimit, const FrameExpectation& expectation);

// InspectedPackSegment is a segment file still open, with what its inspection proved.
struct InspectedPackSegment {
  BackupPayloadFileV1 file;
  BackupPackSegmentDescriptorV1 descriptor;
};

// inspectPackSegmentAt is inspectPackSegment for `name` under `directory` (AT_FDCWD and a path
// for the public form); the name check looks at the last component of `name`.
[[nodiscard]] std::expected<InspectedPackSegment, BackupPayloadV1Error> inspectPackSegmentAt(
    int directory, const std::filesystem::path& name, const KeyScope& scope);

// openInspectedEntry reads and opens one entry of an inspected segment: one positioned read of
// its frame, then openExpectedFrame against the index.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openInspectedEntry(
    const InspectedPackSegment& segment, const BackupPackEntryDescriptorV1& entry, const KeyScope& scope);

// openResourceChunkAt is openResourceChunk for `name` under `directory`.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openResourceChunkAt(
    int directory, const std::filesystem::path& name, const BackupResourceChunkDescriptorV1& descriptor,
    const KeyScope& scope);

}  // namespace BackupPayloadV1Detail

}  // namespace galdrine::format
