#pragma once
// BackupPackContainerHeaderV1 is the 48 bytes at the start of a pack segment file,
// integers big-endian: magic "GALDPK01" (8), format version 1 (2), reserved 0 (2), segment
// identifier (16), entry count (4), entry area byte count (8), index frame byte count (8).
// Only the last four vary; the segment identifier is 16 bytes by its type.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "format/payload/BackupPayloadV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

struct BackupPackContainerHeaderV1 {
  static constexpr std::size_t encodedByteCount = 48;

  std::array<std::uint8_t, 16> segmentIdentifier{};
  std::uint32_t entryCount = 0;
  std::uint64_t entryAreaByteCount = 0;
  std::uint64_t indexFrameByteCount = 0;

  [[nodiscard]] std::array<std::uint8_t, encodedByteCount> encoded() const;

  // decode reads exactly 48 bytes (anything else is invalidArtifact); a wrong magic, a version
  // other than 1 or a reserved field other than 0 is unsupportedContainer. The counts are not
  // judged here: that is validate's work.
  [[nodiscard]] static std::expected<BackupPackContainerHeaderV1, BackupPayloadV1Error> decode(ByteView bytes);

  // validate checks the counts against each other and against the file's length: an entry
  // count of 1 to 32, a non-empty entry area, an index frame of 1 to 66,560 bytes, and
  // 48 + entry area + index frame equal to `fileByteCount`, without overflow. Else
  // invalidArtifact.
  [[nodiscard]] std::expected<void, BackupPayloadV1Error> validate(std::uint64_t fileByteCount) const;

  friend bool operator==(const BackupPackContainerHeaderV1&, const BackupPackContainerHeaderV1&) = default;
};

}  // namespace galdrine::format
