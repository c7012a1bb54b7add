#pragma once
// BackupResourceChunkDescriptorV1 names one resource chunk file and authenticates its
// bytes. A reader builds it from a resource's part record: identifier from the part's
// artifact identifier, ordinal from its artifact ordinal, frame byte count and digest from the
// artifact file's, plaintext byte count and digest from the part's own. The ordinal is part of
// the chunk's authenticated data, so a chunk read with another ordinal does not open.

#include <cstdint>

#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

struct BackupResourceChunkDescriptorV1 {
  Bytes identifier;
  std::uint64_t ordinal = 0;
  std::uint64_t frameByteCount = 0;
  std::uint64_t plaintextByteCount = 0;
  platform::SHA256Digest plaintextSHA256{};
  platform::SHA256Digest frameSHA256{};

  friend bool operator==(const BackupResourceChunkDescriptorV1&,
                         const BackupResourceChunkDescriptorV1&) = default;
};

}  // namespace galdrine::format
