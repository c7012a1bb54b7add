#pragma once
// BackupPayloadReader is the engine's one door to payload bytes: each operation
// forwards to the frame or payload container operation of the same name and passes its failure
// on unchanged. Keys arrive as views the caller owns and wipes; nothing here keeps a copy.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <variant>

#include "format/cbor/CBORError.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::reader {

// Opening a frame fails in encoding its authenticated data (which a valid record does not
// cause) or in the frame itself.
using BackupPayloadReaderOpenFailure = std::variant<format::CBORError, format::AESGCMFrameV1Error>;

namespace BackupPayloadReader {

// open encodes `authenticatedData` to its canonical bytes, and only if that succeeds opens
// `frame` under `key` with the plaintext limit (AESGCMFrameV1::open).
[[nodiscard]] std::expected<Bytes, BackupPayloadReaderOpenFailure> open(
    ByteView frame, ByteView key, const format::BackupAuthenticatedDataV1& authenticatedData,
    std::int64_t maximumPlaintextByteCount);

// The container operations of BackupPayloadV1, with their checks and failures.
[[nodiscard]] std::expected<format::BackupPackSegmentDescriptorV1, format::BackupPayloadV1Error> inspectPackSegment(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentKey);
[[nodiscard]] std::expected<Bytes, format::BackupPayloadV1Error> openPackEntry(ByteView identifier,
                                                                               const std::filesystem::path& path,
                                                                               ByteView packageIdentifier,
                                                                               ByteView libraryDomainIdentifier,
                                                                               ByteView segmentKey);
[[nodiscard]] std::expected<Bytes, format::BackupPayloadV1Error> openResourceChunk(
    const std::filesystem::path& path, const format::BackupResourceChunkDescriptorV1& descriptor,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView resourceKey);

}  // namespace BackupPayloadReader

}  // namespace galdrine::reader
