#pragma once
// BackupPackSegmentDescriptorV1 is what a pack segment holds, as its authenticated
// index says and its prefixes confirm: the segment identifier, the byte counts of the entry
// area and of the index frame, the index frame's digest, the sum of the entries' plaintext
// byte counts, and the entries in ordinal order.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "format/payload/BackupPackEntryDescriptorV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

struct BackupPackSegmentDescriptorV1 {
  Bytes identifier;
  std::uint64_t entryAreaByteCount = 0;
  std::uint64_t indexFrameByteCount = 0;
  platform::SHA256Digest indexFrameSHA256{};
  std::uint64_t totalPlaintextByteCount = 0;
  std::vector<BackupPackEntryDescriptorV1> entries;

  // entry gives the entry whose identifier equals `entryIdentifier`, or nothing. Identifiers of a
  // segment are pairwise different, so there is at most one.
  [[nodiscard]] const BackupPackEntryDescriptorV1* entry(ByteView entryIdentifier) const {
    const auto found = std::ranges::find_if(
        entries, [&](const auto& candidate) { return ByteOrder::equal(candidate.identifier, entryIdentifier); });
    return found == entries.end() ? nullptr : &*found;
  }

  friend bool operator==(const BackupPackSegmentDescriptorV1&,
                         const BackupPackSegmentDescriptorV1&) = default;
};

}  // namespace galdrine::format
