#pragma once
// GaldrineBackupPayloadReader is the engine's one door to payload bytes: each operation
// forwards to the frame or payload container operation of the same name and passes its failure
// on unchanged. Keys arrive as views the caller owns and wipes; nothing here keeps a copy.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <variant>

#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"
#include "GaldrineCore/GaldrineCBORError.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPackSegmentDescriptorV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupResourceChunkDescriptorV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

// Opening a frame fails in encoding its authenticated data (which a valid record does not
// cause) or in the frame itself.
using GaldrineBackupPayloadReaderOpenFailure = std::variant<GaldrineCBORError, GaldrineAESGCMFrameV1Error>;

namespace GaldrineBackupPayloadReader {

// open encodes `authenticatedData` to its canonical bytes, and only if that succeeds opens
// `frame` under `key` with the plaintext limit (GaldrineAESGCMFrameV1::open).
[[nodiscard]] std::expected<Bytes, GaldrineBackupPayloadReaderOpenFailure> open(
    ByteView frame, ByteView key, const GaldrineBackupAuthenticatedDataV1& authenticatedData,
    std::int64_t maximumPlaintextByteCount);

// The container operations of GaldrineBackupPayloadV1, with their checks and failures.
[[nodiscard]] std::expected<GaldrineBackupPackSegmentDescriptorV1, GaldrineBackupPayloadV1Error> inspectPackSegment(
    const std::filesystem::path& url, ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView segmentKey);
[[nodiscard]] std::expected<Bytes, GaldrineBackupPayloadV1Error> openPackEntry(
    ByteView identifier, const std::filesystem::path& url, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentKey);
[[nodiscard]] std::expected<Bytes, GaldrineBackupPayloadV1Error> openResourceChunk(
    const std::filesystem::path& url, const GaldrineBackupResourceChunkDescriptorV1& descriptor,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView resourceKey);

}  // namespace GaldrineBackupPayloadReader
