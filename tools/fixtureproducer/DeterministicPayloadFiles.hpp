#pragma once
// DeterministicPayloadFiles lays out the two payload files of a package in memory, exactly as
// the payload writers lay them out on disk, but with the caller's nonces instead of fresh
// random ones, so that a fixture holding them is reproducible. The payload readers are what
// prove the layout: every fixture made from these bytes is opened by them.

#include <cstdint>
#include <expected>
#include <span>

#include "fixtureproducer/FixtureProducer.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::fixtureproducer {

// DeterministicPackEntry is one resource of a pack segment and the nonce of its frame.
struct DeterministicPackEntry {
  Bytes identifier;
  Bytes plaintext;
  Bytes nonce;
};

namespace DeterministicPayloadFiles {

// packSegment gives the bytes of a segment file: the 48-byte header, each entry's prefix and
// frame in ordinal order, and the sealed index, under `segmentKey`.
[[nodiscard]] std::expected<Bytes, FixtureProducerError> packSegment(const FixturePackage& package,
                                                                     ByteView segmentIdentifier, ByteView segmentKey,
                                                                     std::span<const DeterministicPackEntry> entries,
                                                                     ByteView indexNonce);

// resourceChunk gives the bytes of a chunk file: one frame sealed with `ordinal`.
[[nodiscard]] std::expected<Bytes, FixtureProducerError> resourceChunk(const FixturePackage& package,
                                                                       ByteView chunkIdentifier, std::uint64_t ordinal,
                                                                       ByteView resourceKey, ByteView plaintext,
                                                                       ByteView nonce);

}  // namespace DeterministicPayloadFiles

}  // namespace galdrine::fixtureproducer
