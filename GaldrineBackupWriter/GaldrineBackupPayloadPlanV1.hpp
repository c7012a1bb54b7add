#pragma once
// GaldrineBackupPayloadPlanV1 decides, before anything is written, where every resource of a
// library snapshot will lie: kept from an earlier commit, packed into a segment, or cut into
// chunks. New segments and chunked resources get their identifiers and a fresh payload key
// each, wrapped under the package master key into the key records the manifest will carry.
// Until the payloads are written, a new resource's digest and part records hold stand-in values
// of the right shape, so the manifest can already be checked as a whole.
//
// Packing follows the library's order: a segment takes resources until the next one would pass
// the layout's byte or entry limit. A resource larger than the packed limit gets one chunk per
// `chunkPlaintextByteCount` bytes, the last one shorter. The plan owns the payload keys and
// wipes them when it goes away.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <vector>

#include "GaldrineBackupWriter/GaldrineBackupLibrarySnapshotV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupPayloadLayoutV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupReusablePayloadsV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterSourcesV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterV1Failure.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadPartRecordV1.hpp"

struct GaldrineBackupPlannedResourceV1 {
  const GaldrineBackupItemDescriptionV1* item = nullptr;
  const GaldrineBackupResourceDescriptionV1* description = nullptr;
  std::uint64_t plaintextByteCount = 0;
  std::optional<GaldrineBackupStoredResourceV1> reused;
  GaldrineBackupIdentifierV1 payloadKeyIdentifier{};
  GaldrineSHA256Digest plaintextSHA256{};
  std::vector<GaldrineBackupPayloadPartRecordV1> parts;
};

struct GaldrineBackupPlannedSegmentV1 {
  GaldrineBackupIdentifierV1 identifier{};
  Bytes key;
  std::vector<std::size_t> resources;  // positions in the plan's resources, in entry order
};

struct GaldrineBackupPlannedChunkedResourceV1 {
  std::size_t resource = 0;  // position in the plan's resources
  Bytes key;
  std::vector<GaldrineBackupIdentifierV1> chunkIdentifiers;  // in part order
};

// Where payload keys are wrapped: the package, the library domain and the master key.
struct GaldrineBackupKeyScopeV1 {
  ByteView packageIdentifier;
  ByteView libraryDomainIdentifier;
  ByteView bpmk;
};

struct GaldrineBackupPayloadPlanV1 {
  std::vector<GaldrineBackupPlannedResourceV1> resources;  // in library order
  std::vector<GaldrineBackupPlannedSegmentV1> segments;
  std::vector<GaldrineBackupPlannedChunkedResourceV1> chunkedResources;
  std::vector<GaldrineBackupPayloadKeyRecordV1> newKeyRecords;

  GaldrineBackupPayloadPlanV1() = default;
  GaldrineBackupPayloadPlanV1(GaldrineBackupPayloadPlanV1&&) = default;
  GaldrineBackupPayloadPlanV1& operator=(GaldrineBackupPayloadPlanV1&&) = default;
  GaldrineBackupPayloadPlanV1(const GaldrineBackupPayloadPlanV1&) = delete;
  GaldrineBackupPayloadPlanV1& operator=(const GaldrineBackupPayloadPlanV1&) = delete;
  ~GaldrineBackupPayloadPlanV1();

  // make plans `library`. In this order, for each resource: retained content must find a
  // stored resource (unknownRetainedResource); other content is opened for its length
  // (contentUnavailable), and when a stored resource of that identifier and length exists the
  // content is read once for its SHA-256 and kept if a stored one matches (contentChanged for a
  // source that does not give its length). Then a chunked resource may need at most 4,096
  // parts (resourceTooLarge). Last, identifiers and keys are drawn (randomSourceFailed) and the
  // keys wrapped (the record codec's errors).
  [[nodiscard]] static std::expected<GaldrineBackupPayloadPlanV1, GaldrineBackupWriterV1Failure> make(
      const GaldrineBackupLibrarySnapshotV1& library, const GaldrineBackupReusablePayloadsV1& reusable,
      const GaldrineBackupPayloadLayoutV1& layout, const GaldrineBackupWriterSourcesV1& sources,
      const GaldrineBackupKeyScopeV1& scope);
};
