#pragma once
// GaldrineBackupPackSegmentDescriptorV1 is what a pack segment holds, as its authenticated
// index says and its prefixes confirm: the segment identifier, the byte counts of the entry
// area and of the index frame, the index frame's digest, the sum of the entries' plaintext
// byte counts, and the entries in ordinal order.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupPackEntryDescriptorV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

struct GaldrineBackupPackSegmentDescriptorV1 {
  Bytes identifier;
  std::uint64_t entryAreaByteCount = 0;
  std::uint64_t indexFrameByteCount = 0;
  GaldrineSHA256Digest indexFrameSHA256{};
  std::uint64_t totalPlaintextByteCount = 0;
  std::vector<GaldrineBackupPackEntryDescriptorV1> entries;

  // entry gives the entry whose identifier equals `identifier`, or nothing. Identifiers of a
  // segment are pairwise different, so there is at most one.
  [[nodiscard]] const GaldrineBackupPackEntryDescriptorV1* entry(ByteView identifier) const {
    const auto found = std::ranges::find_if(
        entries, [&](const auto& candidate) { return GaldrineByteOrder::equal(candidate.identifier, identifier); });
    return found == entries.end() ? nullptr : &*found;
  }

  friend bool operator==(const GaldrineBackupPackSegmentDescriptorV1&,
                         const GaldrineBackupPackSegmentDescriptorV1&) = default;
};
