#pragma once
// BackupPayloadV1Detail is what the payload writers (BackupPayloadV1Writing.cpp) take from the
// readers (BackupPayloadV1.cpp): the common check of key and domains, the authenticated data of
// payload frames, and reading a segment or a chunk through a directory descriptor, which is how
// a writer reads back its own staging and final files. It is no interface of its own: callers
// go through BackupPayloadV1.

#include <cstdint>
#include <expected>
#include <filesystem>

#include "format/payload/BackupPayloadFile.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "format/sealing/BackupAADDomainV1.hpp"
#include "platform/Bytes.hpp"

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

// authenticatedData encodes the data a payload frame is sealed under. It fails only for an
// artifact identifier that is not 16 bytes (invalidIdentifier); the scope was checked before.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> authenticatedData(BackupAADDomainV1 domain,
                                                                           const KeyScope& scope,
                                                                           ByteView artifactIdentifier,
                                                                           std::uint64_t ordinal);

// InspectedPackSegment is a segment file still open, with what its inspection proved.
struct InspectedPackSegment {
  BackupPayloadFile file;
  BackupPackSegmentDescriptorV1 descriptor;
};

// inspectPackSegmentAt is inspectPackSegment for `name` under `directory` (AT_FDCWD and a path
// for the public form); the name check looks at the last component of `name`.
[[nodiscard]] std::expected<InspectedPackSegment, BackupPayloadV1Error> inspectPackSegmentAt(
    int directory, const std::filesystem::path& name, const KeyScope& scope);

// openInspectedEntry reads and opens one entry of an inspected segment: one positioned read of
// its frame, whose digest, opening, plaintext length and plaintext digest must agree with the
// index (else verificationFailed).
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openInspectedEntry(const InspectedPackSegment& segment,
                                                                            const BackupPackEntryDescriptorV1& entry,
                                                                            const KeyScope& scope);

// openResourceChunkAt is openResourceChunk for `name` under `directory`.
[[nodiscard]] std::expected<Bytes, BackupPayloadV1Error> openResourceChunkAt(
    int directory, const std::filesystem::path& name, const BackupResourceChunkDescriptorV1& descriptor,
    const KeyScope& scope);

}  // namespace BackupPayloadV1Detail

}  // namespace galdrine::format
