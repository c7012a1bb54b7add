#pragma once
// GaldrineBackupPackEntryDescriptorV1 describes one entry of a pack segment, as its index
// lists it: the entry's identifier (that of the resource it holds) and ordinal (its position),
// where its frame starts in the file (past the entry's prefix), the frame's length and digest,
// and the plaintext's length and digest.

#include <cstdint>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

struct GaldrineBackupPackEntryDescriptorV1 {
  Bytes identifier;
  std::uint64_t ordinal = 0;
  std::uint64_t frameOffset = 0;
  std::uint64_t frameByteCount = 0;
  std::uint64_t plaintextByteCount = 0;
  GaldrineSHA256Digest plaintextSHA256{};
  GaldrineSHA256Digest frameSHA256{};

  friend bool operator==(const GaldrineBackupPackEntryDescriptorV1&,
                         const GaldrineBackupPackEntryDescriptorV1&) = default;
};
