#pragma once
// BackupPayloadLayout decides how the writer lays resources out over payload files
// and records over manifest sections. The defaults are the format's ceilings: a resource of at
// most 16 MiB is packed, up to 32 entries and 64 MiB to a segment; a larger one is cut into
// 16 MiB chunks, one file each; a section holds up to 4,096 records. Smaller values serve tests,
// which can so make many segments, chunks and sections out of a few bytes.

#include <cstdint>
#include <expected>

#include "format/header/BackupFormatV1.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

struct BackupPayloadLayout {
  std::uint64_t maximumPackedResourceByteCount = format::BackupFormatV1::maximumPackedResourcePlaintextByteCount;
  std::uint64_t maximumSegmentPlaintextByteCount = format::BackupFormatV1::maximumSegmentPlaintextByteCount;
  std::uint64_t maximumSegmentEntryCount = format::BackupFormatV1::maximumSegmentResourceCount;
  std::uint64_t chunkPlaintextByteCount = format::BackupFormatV1::maximumStandaloneChunkPlaintextByteCount;
  std::uint64_t maximumSectionRecordCount = format::BackupFormatV1::maximumManifestSectionRecordCount;

  // validate requires every value within the format's ceiling, chunks and section records of at
  // least 1, and a segment that can hold the largest packed resource alone (invalidLayout).
  [[nodiscard]] std::expected<void, BackupWriterError> validate() const {
    const bool withinCeilings =
        maximumPackedResourceByteCount <= format::BackupFormatV1::maximumPackedResourcePlaintextByteCount &&
        maximumSegmentPlaintextByteCount <= format::BackupFormatV1::maximumSegmentPlaintextByteCount &&
        maximumSegmentEntryCount <= format::BackupFormatV1::maximumSegmentResourceCount &&
        chunkPlaintextByteCount <= format::BackupFormatV1::maximumStandaloneChunkPlaintextByteCount &&
        maximumSectionRecordCount <= format::BackupFormatV1::maximumManifestSectionRecordCount;
    const bool usable = maximumSegmentEntryCount >= 1 && chunkPlaintextByteCount >= 1 &&
                        maximumSectionRecordCount >= 1 &&
                        maximumSegmentPlaintextByteCount >= maximumPackedResourceByteCount;
    if (!withinCeilings || !usable) return std::unexpected(BackupWriterError::invalidLayout);
    return {};
  }
};

}  // namespace galdrine::writer
