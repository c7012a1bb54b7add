#pragma once
// BackupPayloadPlan decides, before anything is written, where every resource of a
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

#include "format/manifest/BackupPayloadKeyRecordV1.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "writer/BackupLibrarySnapshot.hpp"
#include "writer/BackupPayloadLayout.hpp"
#include "writer/BackupReusablePayloads.hpp"
#include "writer/BackupWriterFailure.hpp"
#include "writer/BackupWriterSources.hpp"

namespace galdrine::writer {

struct BackupPlannedResource {
  const BackupItemDescription* item = nullptr;
  const BackupResourceDescription* description = nullptr;
  std::uint64_t plaintextByteCount = 0;
  std::optional<BackupStoredResource> reused;
  format::BackupIdentifierV1 payloadKeyIdentifier{};
  platform::SHA256Digest plaintextSHA256{};
  std::vector<format::BackupPayloadPartRecordV1> parts;
};

struct BackupPlannedSegment {
  format::BackupIdentifierV1 identifier{};
  Bytes key;
  std::vector<std::size_t> resources;  // positions in the plan's resources, in entry order
};

struct BackupPlannedChunkedResource {
  std::size_t resource = 0;  // position in the plan's resources
  Bytes key;
  std::vector<format::BackupIdentifierV1> chunkIdentifiers;  // in part order
};

// Where payload keys are wrapped: the package, the library domain and the master key.
struct BackupKeyScope {
  ByteView packageIdentifier;
  ByteView libraryDomainIdentifier;
  ByteView bpmk;
};

struct BackupPayloadPlan {
  std::vector<BackupPlannedResource> resources;  // in library order
  std::vector<BackupPlannedSegment> segments;
  std::vector<BackupPlannedChunkedResource> chunkedResources;
  std::vector<format::BackupPayloadKeyRecordV1> newKeyRecords;

  BackupPayloadPlan() = default;
  BackupPayloadPlan(BackupPayloadPlan&&) = default;
  BackupPayloadPlan& operator=(BackupPayloadPlan&&) = default;
  BackupPayloadPlan(const BackupPayloadPlan&) = delete;
  BackupPayloadPlan& operator=(const BackupPayloadPlan&) = delete;
  ~BackupPayloadPlan();

  // make plans `library`. In this order, for each resource: its content is opened for its
  // length (contentUnavailable); when a stored resource of that identifier and length exists,
  // the content is read once for its SHA-256 and the stored payload kept if one matches
  // (contentChanged for a source that does not give its length); an empty content is the
  // record's invalidValue. Then a chunked resource may need at most 4,096 parts
  // (resourceTooLarge). Last, identifiers and keys are drawn (randomSourceFailed) and the keys
  // wrapped (the record codec's errors).
  [[nodiscard]] static std::expected<BackupPayloadPlan, BackupWriterFailure> make(
      const BackupLibrarySnapshot& library, const BackupReusablePayloads& reusable, const BackupPayloadLayout& layout,
      const BackupWriterSources& sources, const BackupKeyScope& scope);
};

}  // namespace galdrine::writer
