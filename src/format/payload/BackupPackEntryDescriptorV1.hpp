#pragma once
// BackupPackEntryDescriptorV1 describes one entry of a pack segment, as its index
// lists it: the entry's identifier (that of the resource it holds) and ordinal (its position),
// where its frame starts in the file (past the entry's prefix), the frame's length and digest,
// and the plaintext's length and digest.

#include <cstdint>

#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

struct BackupPackEntryDescriptorV1 {
  Bytes identifier;
  std::uint64_t ordinal = 0;
  std::uint64_t frameOffset = 0;
  std::uint64_t frameByteCount = 0;
  std::uint64_t plaintextByteCount = 0;
  platform::SHA256Digest plaintextSHA256{};
  platform::SHA256Digest frameSHA256{};

  friend bool operator==(const BackupPackEntryDescriptorV1&,
                         const BackupPackEntryDescriptorV1&) = default;
};

}  // namespace galdrine::format
