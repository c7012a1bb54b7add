#pragma once
// GaldrineBackupResourceChunkDescriptorV1 names one resource chunk file and authenticates its
// bytes. A reader builds it from a resource's part record: identifier from the part's
// artifact identifier, ordinal from its artifact ordinal, frame byte count and digest from the
// artifact file's, plaintext byte count and digest from the part's own. The ordinal is part of
// the chunk's authenticated data, so a chunk read with another ordinal does not open.

#include <cstdint>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

struct GaldrineBackupResourceChunkDescriptorV1 {
  Bytes identifier;
  std::uint64_t ordinal = 0;
  std::uint64_t frameByteCount = 0;
  std::uint64_t plaintextByteCount = 0;
  GaldrineSHA256Digest plaintextSHA256{};
  GaldrineSHA256Digest frameSHA256{};

  friend bool operator==(const GaldrineBackupResourceChunkDescriptorV1&,
                         const GaldrineBackupResourceChunkDescriptorV1&) = default;
};
