#include "writer/BackupPayloadWriting.hpp"

#include <algorithm>
#include <mutex>
#include <optional>
#include <thread>

#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "platform/SHA256.hpp"
#include "writer/BackupContentSource.hpp"

namespace galdrine::writer {

namespace {

namespace fs = std::filesystem;
using Failure = BackupWriterFailure;
using Container = format::BackupPayloadContainerKindV1;
using Planned = BackupPlannedResource;

[[nodiscard]] std::expected<fs::path, Failure> directoryOf(const format::BackupPackageV1& package,
                                                           std::string_view name) {
  auto directory = package.directoryPath(name);
  if (!directory) return backupWriterFailure(format::BackupPackageV1Failure(directory.error()));
  return std::move(*directory);
}

// Scratch is one writer's buffers, kept from one file to the next so that memory is mapped once
// and not zeroed again for every file. The content it holds is a copy of the caller's plaintext
// media, not key material, and is not wiped.
struct Scratch {
  std::vector<format::BackupPackEntryInput> entries;
  Bytes piece;
};

// readWhole reads all of a resource's content into `content`, which takes its length.
[[nodiscard]] std::expected<void, Failure> readWhole(const Planned& resource, Bytes& content) {
  auto reader = BackupContentReader::open(resource.description->content);
  if (!reader) return backupWriterFailure(reader.error());
  if (reader->byteCount() != resource.plaintextByteCount) return backupWriterFailure(BackupWriterError::contentChanged);
  content.resize(static_cast<std::size_t>(resource.plaintextByteCount));
  if (auto done = reader->read(content); !done) return backupWriterFailure(done.error());
  if (auto done = reader->finish(); !done) return backupWriterFailure(done.error());
  return {};
}

[[nodiscard]] format::BackupPayloadPartRecordV1 part(std::uint64_t ordinal, std::uint64_t offset,
                                                     std::uint64_t byteCount,
                                                     const platform::SHA256Digest& plaintextSHA256, Container container,
                                                     const format::BackupIdentifierV1& artifact,
                                                     std::uint64_t artifactOrdinal, std::uint64_t fileByteCount,
                                                     ByteView fileSHA256) {
  // Every value comes from a file just written within the format's bounds, so make cannot refuse it.
  return *format::BackupPayloadPartRecordV1::make(
      {ordinal, offset, byteCount, plaintextSHA256, container, artifact, artifactOrdinal, fileByteCount, fileSHA256});
}

[[nodiscard]] std::expected<void, Failure> writeSegment(BackupPayloadPlan& plan, const BackupPlannedSegment& segment,
                                                        const fs::path& packs, const BackupKeyScope& scope,
                                                        Scratch& scratch) {
  auto& entries = scratch.entries;
  if (entries.size() < segment.resources.size()) entries.resize(segment.resources.size());
  for (std::size_t ordinal = 0; ordinal < segment.resources.size(); ++ordinal) {
    const Planned& resource = plan.resources[segment.resources[ordinal]];
    entries[ordinal].identifier.assign(resource.description->identifier.begin(),
                                       resource.description->identifier.end());
    if (auto done = readWhole(resource, entries[ordinal].plaintext); !done) return done;
  }
  const fs::path file = packs / *format::BackupPayloadV1::packSegmentFileName(segment.identifier);
  const auto descriptor = format::BackupPayloadV1::writePackSegment(
      file, scope.packageIdentifier, scope.libraryDomainIdentifier, segment.identifier, segment.key,
      std::span(entries).first(segment.resources.size()));
  if (!descriptor) return backupWriterFailure(descriptor.error());
  // A part names the whole segment file by length and digest, which the descriptor does not
  // carry: the file is read once more, from the cache it was just written through.
  const auto fileSHA256 = platform::SHA256::digestOfFile(file);
  if (!fileSHA256) return backupWriterFailure(platform::FileError{EIO});
  const std::uint64_t fileByteCount = format::BackupPackContainerHeaderV1::encodedByteCount +
                                      descriptor->entryAreaByteCount + descriptor->indexFrameByteCount;
  for (std::size_t ordinal = 0; ordinal < segment.resources.size(); ++ordinal) {
    Planned& resource = plan.resources[segment.resources[ordinal]];
    const auto& entry = descriptor->entries[ordinal];
    resource.plaintextSHA256 = entry.plaintextSHA256;
    resource.parts = {part(0, 0, entry.plaintextByteCount, entry.plaintextSHA256, Container::pack, segment.identifier,
                           ordinal, fileByteCount, *fileSHA256)};
  }
  return {};
}

[[nodiscard]] std::expected<void, Failure> writeChunkedResource(BackupPayloadPlan& plan,
                                                                const BackupPlannedChunkedResource& chunked,
                                                                const fs::path& objects,
                                                                const BackupPayloadLayout& layout,
                                                                const BackupKeyScope& scope, Scratch& scratch) {
  Planned& resource = plan.resources[chunked.resource];
  auto reader = BackupContentReader::open(resource.description->content);
  if (!reader) return backupWriterFailure(reader.error());
  if (reader->byteCount() != resource.plaintextByteCount) return backupWriterFailure(BackupWriterError::contentChanged);
  Bytes& piece = scratch.piece;
  piece.resize(static_cast<std::size_t>(std::min(layout.chunkPlaintextByteCount, resource.plaintextByteCount)));
  platform::SHA256::Hasher hasher;
  std::vector<format::BackupPayloadPartRecordV1> parts;
  for (std::size_t ordinal = 0; ordinal < chunked.chunkIdentifiers.size(); ++ordinal) {
    const std::uint64_t offset = reader->position();
    const auto byteCount =
        static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), resource.plaintextByteCount - offset));
    const std::span<std::uint8_t> plaintext(piece.data(), byteCount);
    if (auto done = reader->read(plaintext); !done) return backupWriterFailure(done.error());
    hasher.update(plaintext);
    const auto& identifier = chunked.chunkIdentifiers[ordinal];
    const fs::path file = objects / *format::BackupPayloadV1::resourceChunkFileName(identifier);
    const auto descriptor = format::BackupPayloadV1::writeResourceChunk(
        file, scope.packageIdentifier, scope.libraryDomainIdentifier, identifier, ordinal, chunked.key, plaintext);
    if (!descriptor) return backupWriterFailure(descriptor.error());
    parts.push_back(part(ordinal, offset, byteCount, descriptor->plaintextSHA256, Container::chunk, identifier, ordinal,
                         descriptor->frameByteCount, descriptor->frameSHA256));
  }
  if (auto done = reader->finish(); !done) return backupWriterFailure(done.error());
  resource.plaintextSHA256 = hasher.finalize();
  resource.parts = std::move(parts);
  return {};
}

// Jobs hands out the payload files of a plan to one or more workers: each segment and each
// chunked resource is one job, and the first failure stops every worker before its next job.
class Jobs {
 public:
  explicit Jobs(std::size_t count) : count_(count) {}

  // next gives the next job, or nothing once all are taken or one has failed.
  [[nodiscard]] std::optional<std::size_t> next() {
    const std::lock_guard lock(mutex_);
    if (failure_ || taken_ == count_) return std::nullopt;
    return taken_++;
  }
  void fail(Failure failure) {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::move(failure);
  }
  [[nodiscard]] std::optional<Failure> failure() {
    const std::lock_guard lock(mutex_);
    return failure_;
  }

 private:
  std::mutex mutex_;
  std::size_t count_;
  std::size_t taken_ = 0;
  std::optional<Failure> failure_;
};

}  // namespace

namespace BackupPayloadWriting {

std::expected<std::vector<format::BackupIdentifierV1>, Failure> writePayloads(BackupPayloadPlan& plan,
                                                                              const format::BackupPackageV1& package,
                                                                              const BackupPayloadLayout& layout,
                                                                              const BackupKeyScope& scope,
                                                                              std::size_t concurrentWriterCount) {
  const auto packs = directoryOf(package, "packs");
  if (!packs) return std::unexpected(packs.error());
  const auto objects = directoryOf(package, "objects");
  if (!objects) return std::unexpected(objects.error());
  // Jobs touch disjoint parts of the plan: a segment its own resources, a chunked resource itself.
  Jobs jobs(plan.segments.size() + plan.chunkedResources.size());
  const auto work = [&] {
    Scratch scratch;
    while (const auto job = jobs.next()) {
      const auto done = *job < plan.segments.size()
                            ? writeSegment(plan, plan.segments[*job], *packs, scope, scratch)
                            : writeChunkedResource(plan, plan.chunkedResources[*job - plan.segments.size()], *objects,
                                                   layout, scope, scratch);
      if (!done) jobs.fail(done.error());
    }
  };
  {
    std::vector<std::jthread> helpers;
    for (std::size_t helper = 1; helper < std::max<std::size_t>(concurrentWriterCount, 1); ++helper)
      helpers.emplace_back(work);
    work();
  }
  if (auto failure = jobs.failure()) return std::unexpected(std::move(*failure));
  std::vector<format::BackupIdentifierV1> written;
  for (const auto& segment : plan.segments) written.push_back(segment.identifier);
  for (const auto& chunked : plan.chunkedResources)
    std::ranges::copy(chunked.chunkIdentifiers, std::back_inserter(written));
  return written;
}

}  // namespace BackupPayloadWriting

}  // namespace galdrine::writer
