#include "writer/BackupPayloadPlan.hpp"

#include <algorithm>

#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/manifest/BackupMediaResourceRecordV1.hpp"
#include "platform/SHA256.hpp"
#include "platform/SecureMemory.hpp"
#include "writer/BackupContentSource.hpp"

namespace galdrine::writer {

namespace {

using Error = BackupWriterError;
using Failure = BackupWriterFailure;
using Plan = BackupPayloadPlan;
using Planned = BackupPlannedResource;
using Container = format::BackupPayloadContainerKindV1;

constexpr std::size_t hashingPieceByteCount = 4 * 1024 * 1024;

[[nodiscard]] std::expected<platform::SHA256Digest, Error> contentDigest(BackupContentReader& reader) {
  platform::SHA256::Hasher hasher;
  Bytes piece(static_cast<std::size_t>(std::min<std::uint64_t>(hashingPieceByteCount, reader.byteCount())));
  while (reader.position() < reader.byteCount()) {
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), reader.byteCount() - reader.position()));
    const std::span<std::uint8_t> into(piece.data(), count);
    if (auto done = reader.read(into); !done) return std::unexpected(done.error());
    hasher.update(into);
  }
  if (auto done = reader.finish(); !done) return std::unexpected(done.error());
  return hasher.finalize();
}

// storedMatch gives the stored resource that `description`'s content equals, or nothing.
[[nodiscard]] std::expected<std::optional<BackupStoredResource>, Failure> storedMatch(
    const BackupResourceDescription& description, std::uint64_t byteCount,
    std::span<const BackupStoredResource> candidates) {
  const auto sameLength = [&](const BackupStoredResource& stored) {
    return stored.resource->plaintextByteCount() == byteCount;
  };
  if (std::ranges::none_of(candidates, sameLength)) return std::optional<BackupStoredResource>();
  auto reader = BackupContentReader::open(description.content);
  if (!reader) return backupWriterFailure(reader.error());
  const auto digest = contentDigest(*reader);
  if (!digest) return backupWriterFailure(digest.error());
  for (const auto& stored : candidates) {
    if (sameLength(stored) && stored.resource->plaintextSHA256() == *digest) return std::optional(stored);
  }
  return std::optional<BackupStoredResource>();
}

[[nodiscard]] std::expected<Planned, Failure> planResource(const BackupItemDescription& item,
                                                           const BackupResourceDescription& description,
                                                           const BackupReusablePayloads& reusable) {
  Planned planned{&item, &description, 0, std::nullopt, {}, {}, {}};
  const auto reader = BackupContentReader::open(description.content);
  if (!reader) return backupWriterFailure(reader.error());
  auto match = storedMatch(description, reader->byteCount(), reusable.candidates(description.identifier));
  if (!match) return std::unexpected(match.error());
  // An empty resource is refused as its record would refuse it, before a part is made of it.
  if (reader->byteCount() == 0) return backupWriterFailure(format::BackupManifestRecordV1Error::invalidValue);
  planned.plaintextByteCount = reader->byteCount();
  planned.reused = *match;
  if (planned.reused) {
    planned.plaintextByteCount = planned.reused->resource->plaintextByteCount();
    planned.payloadKeyIdentifier = planned.reused->resource->payloadKeyIdentifier();
    planned.plaintextSHA256 = planned.reused->resource->plaintextSHA256();
    planned.parts = planned.reused->resource->parts();
  }
  return planned;
}

// assignContainers puts every new resource into a segment or among the chunked resources.
[[nodiscard]] std::expected<void, Failure> assignContainers(Plan& plan, const BackupPayloadLayout& layout) {
  std::uint64_t segmentByteCount = 0;
  for (std::size_t position = 0; position < plan.resources.size(); ++position) {
    const Planned& resource = plan.resources[position];
    if (resource.reused) continue;
    if (resource.plaintextByteCount > layout.maximumPackedResourceByteCount) {
      const std::uint64_t chunkCount =
          (resource.plaintextByteCount + layout.chunkPlaintextByteCount - 1) / layout.chunkPlaintextByteCount;
      if (chunkCount > format::BackupMediaResourceRecordV1::maximumPartCount)
        return backupWriterFailure(Error::resourceTooLarge);
      plan.chunkedResources.push_back({position, {}, std::vector<format::BackupIdentifierV1>(chunkCount)});
      continue;
    }
    const bool full = plan.segments.empty() ||
                      plan.segments.back().resources.size() >= layout.maximumSegmentEntryCount ||
                      segmentByteCount + resource.plaintextByteCount > layout.maximumSegmentPlaintextByteCount;
    if (full) {
      plan.segments.emplace_back();
      segmentByteCount = 0;
    }
    plan.segments.back().resources.push_back(position);
    segmentByteCount += resource.plaintextByteCount;
  }
  return {};
}

// keyed draws a key and its identifier and wraps it for `boundIdentifier`.
[[nodiscard]] std::expected<void, Failure> keyed(Plan& plan, Bytes& key, format::BackupIdentifierV1& keyIdentifier,
                                                 format::BackupPayloadKeyScopeV1 scope, ByteView boundIdentifier,
                                                 const BackupWriterSources& sources, const BackupKeyScope& keyScope) {
  auto identifier = sources.identifier();
  if (!identifier) return backupWriterFailure(identifier.error());
  auto drawn = sources.key();
  if (!drawn) return backupWriterFailure(drawn.error());
  key = std::move(*drawn);
  keyIdentifier = *identifier;
  auto record = format::BackupManifestRecordCodecV1::wrapPayloadKey(key, keyIdentifier, scope, boundIdentifier,
                                                                    keyScope.packageIdentifier,
                                                                    keyScope.libraryDomainIdentifier, keyScope.bpmk);
  if (!record) return backupWriterFailure(record.error());
  plan.newKeyRecords.push_back(std::move(*record));
  return {};
}

// standInPart is a part of the right shape whose digests and file length are not known yet. Its
// values are within every bound (a length of 1 to the chunk or packed limit, 16-byte artifact).
[[nodiscard]] format::BackupPayloadPartRecordV1 standInPart(std::uint64_t ordinal, std::uint64_t offset,
                                                            std::uint64_t byteCount, Container container,
                                                            const format::BackupIdentifierV1& artifact,
                                                            std::uint64_t artifactOrdinal) {
  const platform::SHA256Digest unknown{};
  return *format::BackupPayloadPartRecordV1::make(
      {ordinal, offset, byteCount, unknown, container, artifact, artifactOrdinal, 1, unknown});
}

[[nodiscard]] std::expected<void, Failure> drawSegments(Plan& plan, const BackupWriterSources& sources,
                                                        const BackupKeyScope& keyScope) {
  for (auto& segment : plan.segments) {
    auto identifier = sources.identifier();
    if (!identifier) return backupWriterFailure(identifier.error());
    segment.identifier = *identifier;
    format::BackupIdentifierV1 keyIdentifier{};
    if (auto done = keyed(plan, segment.key, keyIdentifier, format::BackupPayloadKeyScopeV1::pack, segment.identifier,
                          sources, keyScope);
        !done)
      return done;
    for (std::size_t ordinal = 0; ordinal < segment.resources.size(); ++ordinal) {
      Planned& resource = plan.resources[segment.resources[ordinal]];
      resource.payloadKeyIdentifier = keyIdentifier;
      resource.parts = {standInPart(0, 0, resource.plaintextByteCount, Container::pack, segment.identifier, ordinal)};
    }
  }
  return {};
}

[[nodiscard]] std::expected<void, Failure> drawChunks(Plan& plan, const BackupPayloadLayout& layout,
                                                      const BackupWriterSources& sources,
                                                      const BackupKeyScope& keyScope) {
  for (auto& chunked : plan.chunkedResources) {
    Planned& resource = plan.resources[chunked.resource];
    if (auto done = keyed(plan, chunked.key, resource.payloadKeyIdentifier, format::BackupPayloadKeyScopeV1::resource,
                          resource.description->identifier, sources, keyScope);
        !done)
      return done;
    for (std::size_t ordinal = 0; ordinal < chunked.chunkIdentifiers.size(); ++ordinal) {
      auto identifier = sources.identifier();
      if (!identifier) return backupWriterFailure(identifier.error());
      chunked.chunkIdentifiers[ordinal] = *identifier;
      const std::uint64_t offset = ordinal * layout.chunkPlaintextByteCount;
      const std::uint64_t byteCount = std::min(layout.chunkPlaintextByteCount, resource.plaintextByteCount - offset);
      resource.parts.push_back(standInPart(ordinal, offset, byteCount, Container::chunk, *identifier, ordinal));
    }
  }
  return {};
}

}  // namespace

BackupPayloadPlan::~BackupPayloadPlan() {
  for (auto& segment : segments) platform::SecureMemory::wipe(segment.key);
  for (auto& chunked : chunkedResources) platform::SecureMemory::wipe(chunked.key);
}

std::expected<Plan, Failure> BackupPayloadPlan::make(const BackupLibrarySnapshot& library,
                                                     const BackupReusablePayloads& reusable,
                                                     const BackupPayloadLayout& layout,
                                                     const BackupWriterSources& sources,
                                                     const BackupKeyScope& keyScope) {
  Plan plan;
  for (const auto& item : library.items) {
    for (const auto& description : item.resources) {
      auto planned = planResource(item, description, reusable);
      if (!planned) return std::unexpected(planned.error());
      plan.resources.push_back(std::move(*planned));
    }
  }
  if (auto done = assignContainers(plan, layout); !done) return std::unexpected(done.error());
  if (auto done = drawSegments(plan, sources, keyScope); !done) return std::unexpected(done.error());
  if (auto done = drawChunks(plan, layout, sources, keyScope); !done) return std::unexpected(done.error());
  return plan;
}

}  // namespace galdrine::writer
