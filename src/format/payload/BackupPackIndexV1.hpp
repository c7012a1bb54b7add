#pragma once
// BackupPackIndexV1 is the plaintext of a pack segment's index frame: the CBOR map
// {0: schema, 1: segment identifier, 2: entry count, 3: entry area byte count, 4: total
// plaintext byte count, 5: entries}, each entry the array [identifier, ordinal, frameOffset,
// frameByteCount, plaintextByteCount, plaintextSHA256, frameSHA256].

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "format/cbor/CBORError.hpp"
#include "format/cbor/CBORLimits.hpp"
#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

namespace BackupPackIndexV1 {

inline constexpr CBORLimits limits{65536, 32, 128, 32, 512, 4};

struct Contents {
  std::uint64_t totalPlaintextByteCount = 0;
  std::vector<BackupPackEntryDescriptorV1> entries;
};

// encoded gives the index of a segment with `header` and `contents`; a codec failure (which a
// segment within its limits cannot cause) is passed on.
[[nodiscard]] std::expected<Bytes, CBORError> encoded(const BackupPackContainerHeaderV1& header,
                                                      const Contents& contents);

// decode reads an authenticated index and holds it to `header`. Every fault is malformedIndex:
// a codec failure under `limits`; not a map of exactly the keys 0 to 5; another schema; a
// segment identifier, entry count or entry area byte count that differs from the header's; a
// total above 64 MiB; as many entries as the header counts, each an array of 7 items of the
// listed kinds, with a 16-byte identifier, its position as ordinal, a frame of at most
// 16,778,240 bytes, a plaintext of at most 16 MiB and 32-byte digests; pairwise different
// identifiers; plaintext counts that sum to the total. Frame offsets are judged against the
// prefixes, not here.
[[nodiscard]] std::expected<Contents, BackupPayloadV1Error> decode(ByteView plaintext,
                                                                   const BackupPackContainerHeaderV1& header);

}  // namespace BackupPackIndexV1

}  // namespace galdrine::format
