#pragma once
// GraphFixtureContent is the small library a graph fixture backs up: a photo packed into a
// pack segment and a video in a standalone chunk, each an item with its resource and payload
// key, plus one folder, album, membership and tombstone, so that every kind of manifest record
// occurs once or more. The payload keys are fixed, wrapped under the fixture's master key with
// fixed nonces.

#include <expected>
#include <vector>

#include "fixtureproducer/FixtureProducer.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::fixtureproducer {

struct GraphFixtureResource {
  Bytes identifier;
  Bytes plaintext;
};

struct GraphFixtureContent {
  Bytes segmentIdentifier;
  Bytes segment;
  Bytes chunkIdentifier;
  Bytes chunkFrame;
  std::vector<format::BackupManifestRecordV1> records;
  std::vector<GraphFixtureResource> resources;
};

// Every record and artifact of the graph fixture is dated at this instant (2026-01-01, UTC).
inline constexpr std::int64_t graphFixtureCreatedAtUTCMilliseconds = 1767225600000;

// graphFixtureContent makes the payload files and the manifest records of the fixture's
// library under `bpmk`; any refusal is materialRefused.
[[nodiscard]] std::expected<GraphFixtureContent, FixtureProducerError> graphFixtureContent(
    const FixturePackage& package, ByteView bpmk);

}  // namespace galdrine::fixtureproducer
