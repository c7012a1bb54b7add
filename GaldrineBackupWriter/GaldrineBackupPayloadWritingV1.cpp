#include "GaldrineBackupWriter/GaldrineBackupPayloadWritingV1.hpp"

#include <algorithm>

#include "GaldrineBackupWriter/GaldrineBackupContentSourceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPackContainerHeaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineSHA256.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

namespace {

namespace fs = std::filesystem;
using Failure = GaldrineBackupWriterV1Failure;
using Container = GaldrineBackupPayloadContainerKindV1;
using Planned = GaldrineBackupPlannedResourceV1;

[[nodiscard]] std::expected<fs::path, Failure> directoryOf(const GaldrineBackupPackageV1& package, std::string_view name) {
  auto directory = package.directoryURL(name);
  if (!directory) return galdrineBackupWriterFailure(GaldrineBackupPackageV1Failure(directory.error()));
  return std::move(*directory);
}

[[nodiscard]] std::expected<Bytes, Failure> wholeContent(const Planned& resource) {
  auto reader = GaldrineBackupContentReaderV1::open(resource.description->content);
  if (!reader) return galdrineBackupWriterFailure(reader.error());
  if (reader->byteCount() != resource.plaintextByteCount)
    return galdrineBackupWriterFailure(GaldrineBackupWriterV1Error::contentChanged);
  Bytes content(static_cast<std::size_t>(resource.plaintextByteCount));
  if (auto done = reader->read(content); !done) return galdrineBackupWriterFailure(done.error());
  if (auto done = reader->finish(); !done) return galdrineBackupWriterFailure(done.error());
  return content;
}

[[nodiscard]] GaldrineBackupPayloadPartRecordV1 part(std::uint64_t ordinal, std::uint64_t offset, std::uint64_t byteCount,
                                                     const GaldrineSHA256Digest& plaintextSHA256, Container container,
                                                     const GaldrineBackupIdentifierV1& artifact,
                                                     std::uint64_t artifactOrdinal, std::uint64_t fileByteCount,
                                                     ByteView fileSHA256) {
  // Every value comes from a file just written within the format's bounds, so make cannot refuse it.
  return *GaldrineBackupPayloadPartRecordV1::make(
      {ordinal, offset, byteCount, plaintextSHA256, container, artifact, artifactOrdinal, fileByteCount, fileSHA256});
}

[[nodiscard]] std::expected<void, Failure> writeSegment(GaldrineBackupPayloadPlanV1& plan,
                                                        const GaldrineBackupPlannedSegmentV1& segment,
                                                        const fs::path& packs, const GaldrineBackupKeyScopeV1& scope) {
  std::vector<GaldrineBackupPackEntryInputV1> entries;
  const GaldrineScopeGuard wipeEntries{[&] {
    for (auto& entry : entries) GaldrineSecureMemory::wipe(entry.plaintext);
  }};
  entries.reserve(segment.resources.size());
  for (const std::size_t position : segment.resources) {
    auto content = wholeContent(plan.resources[position]);
    if (!content) return std::unexpected(content.error());
    const auto& identifier = plan.resources[position].description->identifier;
    entries.push_back({Bytes(identifier.begin(), identifier.end()), std::move(*content)});
  }
  const fs::path file = packs / *GaldrineBackupPayloadV1::packSegmentFileName(segment.identifier);
  const auto descriptor = GaldrineBackupPayloadV1::writePackSegment(file, scope.packageIdentifier,
                                                                    scope.libraryDomainIdentifier, segment.identifier,
                                                                    segment.key, entries);
  if (!descriptor) return galdrineBackupWriterFailure(descriptor.error());
  // A part names the whole segment file by length and digest, which the descriptor does not
  // carry: the file is read once more, from the cache it was just written through.
  const auto fileSHA256 = GaldrineSHA256::digest(file);
  if (!fileSHA256) return galdrineBackupWriterFailure(GaldrinePlatformFileError{EIO});
  const std::uint64_t fileByteCount =
      GaldrineBackupPackContainerHeaderV1::encodedByteCount + descriptor->entryAreaByteCount + descriptor->indexFrameByteCount;
  for (std::size_t ordinal = 0; ordinal < segment.resources.size(); ++ordinal) {
    Planned& resource = plan.resources[segment.resources[ordinal]];
    const auto& entry = descriptor->entries[ordinal];
    resource.plaintextSHA256 = entry.plaintextSHA256;
    resource.parts = {part(0, 0, entry.plaintextByteCount, entry.plaintextSHA256, Container::pack, segment.identifier,
                           ordinal, fileByteCount, *fileSHA256)};
  }
  return {};
}

[[nodiscard]] std::expected<void, Failure> writeChunkedResource(GaldrineBackupPayloadPlanV1& plan,
                                                                const GaldrineBackupPlannedChunkedResourceV1& chunked,
                                                                const fs::path& objects,
                                                                const GaldrineBackupPayloadLayoutV1& layout,
                                                                const GaldrineBackupKeyScopeV1& scope) {
  Planned& resource = plan.resources[chunked.resource];
  auto reader = GaldrineBackupContentReaderV1::open(resource.description->content);
  if (!reader) return galdrineBackupWriterFailure(reader.error());
  if (reader->byteCount() != resource.plaintextByteCount)
    return galdrineBackupWriterFailure(GaldrineBackupWriterV1Error::contentChanged);
  Bytes piece(static_cast<std::size_t>(std::min(layout.chunkPlaintextByteCount, resource.plaintextByteCount)));
  const GaldrineScopeGuard wipePiece{[&] { GaldrineSecureMemory::wipe(piece); }};
  GaldrinePlatformSHA256::Hasher hasher;
  std::vector<GaldrineBackupPayloadPartRecordV1> parts;
  for (std::size_t ordinal = 0; ordinal < chunked.chunkIdentifiers.size(); ++ordinal) {
    const std::uint64_t offset = reader->position();
    const auto byteCount = static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), resource.plaintextByteCount - offset));
    const std::span<std::uint8_t> plaintext(piece.data(), byteCount);
    if (auto done = reader->read(plaintext); !done) return galdrineBackupWriterFailure(done.error());
    hasher.update(plaintext);
    const auto& identifier = chunked.chunkIdentifiers[ordinal];
    const fs::path file = objects / *GaldrineBackupPayloadV1::resourceChunkFileName(identifier);
    const auto descriptor =
        GaldrineBackupPayloadV1::writeResourceChunk(file, scope.packageIdentifier, scope.libraryDomainIdentifier,
                                                    identifier, ordinal, chunked.key, plaintext);
    if (!descriptor) return galdrineBackupWriterFailure(descriptor.error());
    parts.push_back(part(ordinal, offset, byteCount, descriptor->plaintextSHA256, Container::chunk, identifier, ordinal,
                         descriptor->frameByteCount, descriptor->frameSHA256));
  }
  if (auto done = reader->finish(); !done) return galdrineBackupWriterFailure(done.error());
  resource.plaintextSHA256 = hasher.finalize();
  resource.parts = std::move(parts);
  return {};
}

}  // namespace

namespace GaldrineBackupPayloadWritingV1 {

std::expected<std::vector<GaldrineBackupIdentifierV1>, Failure> writePayloads(GaldrineBackupPayloadPlanV1& plan,
                                                                             const GaldrineBackupPackageV1& package,
                                                                             const GaldrineBackupPayloadLayoutV1& layout,
                                                                             const GaldrineBackupKeyScopeV1& scope) {
  const auto packs = directoryOf(package, "packs");
  if (!packs) return std::unexpected(packs.error());
  const auto objects = directoryOf(package, "objects");
  if (!objects) return std::unexpected(objects.error());
  std::vector<GaldrineBackupIdentifierV1> written;
  for (const auto& segment : plan.segments) {
    if (auto done = writeSegment(plan, segment, *packs, scope); !done) return std::unexpected(done.error());
    written.push_back(segment.identifier);
  }
  for (const auto& chunked : plan.chunkedResources) {
    if (auto done = writeChunkedResource(plan, chunked, *objects, layout, scope); !done)
      return std::unexpected(done.error());
    std::ranges::copy(chunked.chunkIdentifiers, std::back_inserter(written));
  }
  return written;
}

}  // namespace GaldrineBackupPayloadWritingV1
