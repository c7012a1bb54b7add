#pragma once
// GaldrineBackupPayloadLayoutV1 decides how the writer lays resources out over payload files
// and records over manifest sections. The defaults are the format's ceilings: a resource of at
// most 16 MiB is packed, up to 32 entries and 64 MiB to a segment; a larger one is cut into
// 16 MiB chunks, one file each; a section holds up to 4,096 records. Smaller values serve tests,
// which can so make many segments, chunks and sections out of a few bytes.

#include <cstdint>
#include <expected>

#include "GaldrineBackupWriter/GaldrineBackupWriterV1Error.hpp"
#include "GaldrineCore/GaldrineBackupFormatV1.hpp"

struct GaldrineBackupPayloadLayoutV1 {
  std::uint64_t maximumPackedResourceByteCount = GaldrineBackupFormatV1::maximumPackedResourcePlaintextByteCount;
  std::uint64_t maximumSegmentPlaintextByteCount = GaldrineBackupFormatV1::maximumSegmentPlaintextByteCount;
  std::uint64_t maximumSegmentEntryCount = GaldrineBackupFormatV1::maximumSegmentResourceCount;
  std::uint64_t chunkPlaintextByteCount = GaldrineBackupFormatV1::maximumStandaloneChunkPlaintextByteCount;
  std::uint64_t maximumSectionRecordCount = GaldrineBackupFormatV1::maximumManifestSectionRecordCount;

  // validate requires every value within the format's ceiling, chunks and section records of at
  // least 1, and a segment that can hold the largest packed resource alone (invalidLayout).
  [[nodiscard]] std::expected<void, GaldrineBackupWriterV1Error> validate() const {
    const bool withinCeilings =
        maximumPackedResourceByteCount <= GaldrineBackupFormatV1::maximumPackedResourcePlaintextByteCount &&
        maximumSegmentPlaintextByteCount <= GaldrineBackupFormatV1::maximumSegmentPlaintextByteCount &&
        maximumSegmentEntryCount <= GaldrineBackupFormatV1::maximumSegmentResourceCount &&
        chunkPlaintextByteCount <= GaldrineBackupFormatV1::maximumStandaloneChunkPlaintextByteCount &&
        maximumSectionRecordCount <= GaldrineBackupFormatV1::maximumManifestSectionRecordCount;
    const bool usable = maximumSegmentEntryCount >= 1 && chunkPlaintextByteCount >= 1 && maximumSectionRecordCount >= 1 &&
                        maximumSegmentPlaintextByteCount >= maximumPackedResourceByteCount;
    if (!withinCeilings || !usable) return std::unexpected(GaldrineBackupWriterV1Error::invalidLayout);
    return {};
  }
};
