// Writing pack segments and resource chunks: checks that create nothing, then a staging file
// written in order, made durable, read back, published without replacing, and read back again.

#include <algorithm>
#include <array>
#include <cerrno>

#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPackIndexV1.hpp"
#include "format/payload/BackupPayloadStagingFile.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "format/payload/BackupPayloadV1Detail.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "platform/FilePath.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
namespace Detail = BackupPayloadV1Detail;
using Error = BackupPayloadV1Error;
using Failure = BackupPayloadV1Failure;
using Point = BackupPayloadFaultPoint;
using Hook = BackupPayloadFaultHook;
using Input = BackupPackEntryInput;
using Entry = BackupPackEntryDescriptorV1;
using SegmentDescriptor = BackupPackSegmentDescriptorV1;
using ChunkDescriptor = BackupResourceChunkDescriptorV1;
using Header = BackupPackContainerHeaderV1;
using StagingFile = BackupPayloadStagingFile;
using Detail::KeyScope;

template <typename LowerError>
[[nodiscard]] std::unexpected<Failure> failure(LowerError error) {
  return std::unexpected(Failure(error));
}

[[nodiscard]] std::expected<void, Failure> passFaultPoint(const Hook& hook, Point point) {
  if (hook && hook(point)) return failure(Error::injectedFault(point));
  return {};
}

[[nodiscard]] std::expected<void, Error> validateEntrySet(ByteView segmentIdentifier, std::span<const Input> entries) {
  const auto hasIdentifierSize = [](ByteView identifier) {
    return identifier.size() == BackupPayloadV1::identifierByteCount;
  };
  if (!hasIdentifierSize(segmentIdentifier) || entries.empty() ||
      entries.size() > BackupFormatV1::maximumSegmentResourceCount)
    return std::unexpected(Error::invalidEntrySet());
  for (std::size_t later = 0; later < entries.size(); ++later) {
    if (!hasIdentifierSize(entries[later].identifier)) return std::unexpected(Error::invalidEntrySet());
    for (std::size_t earlier = 0; earlier < later; ++earlier) {
      if (entries[earlier].identifier == entries[later].identifier) return std::unexpected(Error::invalidEntrySet());
    }
  }
  return {};
}

// validatePlaintextSizes gives the total; each plaintext was bounded first, so the sum of at
// most 32 of them cannot overflow.
[[nodiscard]] std::expected<std::uint64_t, Error> validatePlaintextSizes(std::span<const Input> entries) {
  std::uint64_t total = 0;
  for (const Input& entry : entries) {
    if (entry.plaintext.size() > BackupFormatV1::maximumPackedResourcePlaintextByteCount)
      return std::unexpected(Error::plaintextLimitExceeded());
  }
  for (const Input& entry : entries) total += entry.plaintext.size();
  if (total > BackupFormatV1::maximumSegmentPlaintextByteCount) return std::unexpected(Error::segmentLimitExceeded());
  return total;
}

[[nodiscard]] std::expected<void, Error> requireDestinationName(const fs::path& path,
                                                                const std::expected<std::string, Error>& expectedName) {
  if (!expectedName) return std::unexpected(expectedName.error());
  if (platform::FilePath::standardized(path).filename().native() != *expectedName)
    return std::unexpected(Error::invalidArtifactName());
  return {};
}

// seal fails only when the random source or the cipher does, since key and size were checked.
[[nodiscard]] std::expected<Bytes, Failure> seal(ByteView plaintext, ByteView key, ByteView authenticatedData,
                                                 std::uint64_t plaintextLimit) {
  auto frame = AESGCMFrameV1::seal(plaintext, key, authenticatedData, static_cast<std::int64_t>(plaintextLimit));
  if (!frame) return failure(platform::FileError{EIO});
  return std::move(*frame);
}

[[nodiscard]] std::array<std::uint8_t, BackupPayloadV1::entryPrefixByteCount> entryPrefix(const Entry& entry) {
  std::array<std::uint8_t, BackupPayloadV1::entryPrefixByteCount> prefix{};
  auto output = std::ranges::copy(entry.identifier, prefix.begin()).out;
  for (const std::uint64_t value : {entry.ordinal, entry.frameByteCount}) {
    for (int shift = 56; shift >= 0; shift -= 8) *output++ = static_cast<std::uint8_t>(value >> shift);
  }
  return prefix;
}

// appendEntry seals one entry and writes its prefix and frame at `prefixOffset`.
[[nodiscard]] std::expected<Entry, Failure> appendEntry(StagingFile& staging, const Input& input, std::uint64_t ordinal,
                                                        std::uint64_t prefixOffset, const KeyScope& scope) {
  const platform::SHA256Digest plaintextSHA256 = platform::SHA256::digest(input.plaintext);
  const auto authenticatedData =
      Detail::authenticatedData(BackupAADDomainV1::packEntry, scope, input.identifier, ordinal);
  if (!authenticatedData) return failure(authenticatedData.error());
  const auto frame =
      seal(input.plaintext, scope.key, *authenticatedData, BackupFormatV1::maximumPackedResourcePlaintextByteCount);
  if (!frame) return std::unexpected(frame.error());
  const Entry entry{input.identifier,
                    ordinal,
                    prefixOffset + BackupPayloadV1::entryPrefixByteCount,
                    frame->size(),
                    input.plaintext.size(),
                    plaintextSHA256,
                    platform::SHA256::digest(*frame)};
  if (auto done = staging.append(entryPrefix(entry)); !done) return failure(done.error());
  if (auto done = staging.append(*frame); !done) return failure(done.error());
  return entry;
}

[[nodiscard]] std::expected<Bytes, Failure> sealedIndex(const Header& header,
                                                        const BackupPackIndexV1::Contents& contents,
                                                        const KeyScope& scope) {
  const auto index = BackupPackIndexV1::encoded(header, contents);
  if (!index) return failure(Error::malformedIndex());  // a segment within its limits always encodes
  const auto authenticatedData = Detail::authenticatedData(BackupAADDomainV1::packIndex, scope,
                                                           header.segmentIdentifier, BackupFormatV1::packIndexOrdinal);
  if (!authenticatedData) return failure(authenticatedData.error());
  return seal(*index, scope.key, *authenticatedData, BackupFormatV1::maximumPackIndexPlaintextByteCount);
}

// requireSegmentReadBack inspects the file `name` as any reader would and opens every entry:
// the descriptor and every plaintext must be what was written. Whatever fails is
// verificationFailed, since the writer's own bytes did not come back.
[[nodiscard]] std::expected<void, Failure> requireSegmentReadBack(int directory, const std::string& name,
                                                                  const SegmentDescriptor& written,
                                                                  std::span<const Input> inputs,
                                                                  const KeyScope& scope) {
  const auto segment = Detail::inspectPackSegmentAt(directory, name, scope);
  if (!segment || segment->descriptor != written) return failure(Error::verificationFailed());
  for (std::size_t ordinal = 0; ordinal < inputs.size(); ++ordinal) {
    auto plaintext = Detail::openInspectedEntry(*segment, segment->descriptor.entries[ordinal], scope);
    if (!plaintext) return failure(Error::verificationFailed());
    const bool matches = *plaintext == inputs[ordinal].plaintext;
    platform::SecureMemory::wipe(*plaintext);
    if (!matches) return failure(Error::verificationFailed());
  }
  return {};
}

[[nodiscard]] std::expected<void, Failure> requireChunkReadBack(int directory, const std::string& name,
                                                                const ChunkDescriptor& written, ByteView input,
                                                                const KeyScope& scope) {
  auto plaintext = Detail::openResourceChunkAt(directory, name, written, scope);
  if (!plaintext) return failure(Error::verificationFailed());
  const bool matches = ByteOrder::equal(*plaintext, input);
  platform::SecureMemory::wipe(*plaintext);
  if (!matches) return failure(Error::verificationFailed());
  return {};
}

// writeSegmentBody writes, after the 48 zero bytes already in place, every entry and then the
// index, and gives what it wrote; the header is written over the zeros last.
[[nodiscard]] std::expected<SegmentDescriptor, Failure> writeSegmentBody(StagingFile& staging, Header& header,
                                                                         std::uint64_t total,
                                                                         std::span<const Input> inputs,
                                                                         const KeyScope& scope, const Hook& hook) {
  BackupPackIndexV1::Contents contents{total, {}};
  contents.entries.reserve(inputs.size());
  std::uint64_t offset = Header::encodedByteCount;
  for (std::size_t ordinal = 0; ordinal < inputs.size(); ++ordinal) {
    auto entry = appendEntry(staging, inputs[ordinal], ordinal, offset, scope);
    if (!entry) return std::unexpected(entry.error());
    offset = entry->frameOffset + entry->frameByteCount;
    contents.entries.push_back(std::move(*entry));
  }
  if (auto done = passFaultPoint(hook, Point::afterPayloadWrite); !done) return failure(done.error());

  header.entryCount = static_cast<std::uint32_t>(inputs.size());
  header.entryAreaByteCount = offset - Header::encodedByteCount;
  const auto index = sealedIndex(header, contents, scope);
  if (!index) return std::unexpected(index.error());
  if (auto done = staging.append(*index); !done) return failure(done.error());
  if (auto done = passFaultPoint(hook, Point::afterIndexWrite); !done) return failure(done.error());
  header.indexFrameByteCount = index->size();
  return SegmentDescriptor{Bytes(header.segmentIdentifier.begin(), header.segmentIdentifier.end()),
                           header.entryAreaByteCount,
                           header.indexFrameByteCount,
                           platform::SHA256::digest(*index),
                           total,
                           std::move(contents.entries)};
}

struct SealedChunk {
  Bytes frame;
  ChunkDescriptor descriptor;
};

[[nodiscard]] std::expected<SealedChunk, Failure> sealedChunk(const KeyScope& scope, ByteView chunkIdentifier,
                                                              std::uint64_t ordinal, ByteView plaintext) {
  const auto authenticatedData =
      Detail::authenticatedData(BackupAADDomainV1::resourceChunk, scope, chunkIdentifier, ordinal);
  if (!authenticatedData) return failure(authenticatedData.error());
  auto frame = seal(plaintext, scope.key, *authenticatedData, BackupFormatV1::maximumStandaloneChunkPlaintextByteCount);
  if (!frame) return std::unexpected(frame.error());
  ChunkDescriptor descriptor{Bytes(chunkIdentifier.begin(), chunkIdentifier.end()),
                             ordinal,
                             frame->size(),
                             plaintext.size(),
                             platform::SHA256::digest(plaintext),
                             platform::SHA256::digest(*frame)};
  return SealedChunk{std::move(*frame), std::move(descriptor)};
}

// validateSegmentRequest runs the checks that create nothing and gives the plaintext total.
[[nodiscard]] std::expected<std::uint64_t, Error> validateSegmentRequest(const fs::path& path, const KeyScope& scope,
                                                                         ByteView segmentIdentifier,
                                                                         std::span<const Input> entries) {
  if (auto done = Detail::validateKeyAndDomains(scope); !done) return std::unexpected(done.error());
  if (auto done = validateEntrySet(segmentIdentifier, entries); !done) return std::unexpected(done.error());
  const auto total = validatePlaintextSizes(entries);
  if (!total) return std::unexpected(total.error());
  if (auto done = requireDestinationName(path, BackupPayloadV1::packSegmentFileName(segmentIdentifier)); !done)
    return std::unexpected(done.error());
  return total;
}

[[nodiscard]] std::expected<void, Error> validateChunkRequest(const fs::path& path, const KeyScope& scope,
                                                              ByteView chunkIdentifier, ByteView plaintext) {
  if (auto done = Detail::validateKeyAndDomains(scope); !done) return std::unexpected(done.error());
  if (chunkIdentifier.size() != BackupPayloadV1::identifierByteCount)
    return std::unexpected(Error::invalidIdentifier());
  if (plaintext.empty() || plaintext.size() > BackupFormatV1::maximumStandaloneChunkPlaintextByteCount)
    return std::unexpected(Error::plaintextLimitExceeded());
  return requireDestinationName(path, BackupPayloadV1::resourceChunkFileName(chunkIdentifier));
}

// writeStagedSegment fills the staging file in file order, with 48 zero bytes holding the
// header's place until the counts are known, and makes it durable.
[[nodiscard]] std::expected<SegmentDescriptor, Failure> writeStagedSegment(StagingFile& staging,
                                                                           ByteView segmentIdentifier,
                                                                           std::uint64_t total,
                                                                           std::span<const Input> entries,
                                                                           const KeyScope& scope, const Hook& hook) {
  if (auto done = staging.append(std::array<std::uint8_t, Header::encodedByteCount>{}); !done)
    return failure(done.error());
  Header header;
  std::ranges::copy(segmentIdentifier, header.segmentIdentifier.begin());
  auto written = writeSegmentBody(staging, header, total, entries, scope, hook);
  if (!written) return std::unexpected(written.error());
  if (auto done = staging.overwriteStart(header.encoded()); !done) return failure(done.error());
  if (auto done = staging.makeDurable(); !done) return failure(done.error());
  if (auto done = passFaultPoint(hook, Point::afterStagingSync); !done) return failure(done.error());
  return written;
}

// publishVerified is the end every writer shares: read the staging file back, move it to its
// final name, and read the final file back. `readBack` is given the name to read.
template <typename ReadBack>
[[nodiscard]] std::expected<void, Failure> publishVerified(StagingFile& staging, const Hook& hook,
                                                           const ReadBack& readBack) {
  if (auto done = readBack(staging.stagingName()); !done) return done;
  if (auto done = passFaultPoint(hook, Point::afterStagingVerification); !done) return done;
  if (auto done = staging.publish(); !done) return done;
  if (auto done = passFaultPoint(hook, Point::afterFinalRename); !done) return done;
  return readBack(staging.finalName());
}

}  // namespace

namespace BackupPayloadV1 {

std::expected<SegmentDescriptor, Failure> writePackSegment(const fs::path& path, ByteView packageIdentifier,
                                                           ByteView libraryDomainIdentifier, ByteView segmentIdentifier,
                                                           ByteView segmentKey, std::span<const Input> entries) {
  return writePackSegment(path, packageIdentifier, libraryDomainIdentifier, segmentIdentifier, segmentKey, entries,
                          Hook{});
}

std::expected<SegmentDescriptor, Failure> writePackSegment(const fs::path& path, ByteView packageIdentifier,
                                                           ByteView libraryDomainIdentifier, ByteView segmentIdentifier,
                                                           ByteView segmentKey, std::span<const Input> entries,
                                                           const Hook& faultHook) {
  const KeyScope scope{packageIdentifier, libraryDomainIdentifier, segmentKey};
  const auto total = validateSegmentRequest(path, scope, segmentIdentifier, entries);
  if (!total) return failure(total.error());

  auto staging = StagingFile::create(path);  // from here on, a failure removes the staging file
  if (!staging) return std::unexpected(staging.error());
  if (auto done = passFaultPoint(faultHook, Point::afterStagingCreation); !done) return std::unexpected(done.error());
  auto written = writeStagedSegment(*staging, segmentIdentifier, *total, entries, scope, faultHook);
  if (!written) return std::unexpected(written.error());
  const auto readBack = [&](const std::string& name) {
    return requireSegmentReadBack(staging->directory(), name, *written, entries, scope);
  };
  if (auto done = publishVerified(*staging, faultHook, readBack); !done) return std::unexpected(done.error());
  return std::move(*written);
}

std::expected<ChunkDescriptor, Failure> writeResourceChunk(const fs::path& path, ByteView packageIdentifier,
                                                           ByteView libraryDomainIdentifier, ByteView chunkIdentifier,
                                                           std::uint64_t ordinal, ByteView resourceKey,
                                                           ByteView plaintext) {
  return writeResourceChunk(path, packageIdentifier, libraryDomainIdentifier, chunkIdentifier, ordinal, resourceKey,
                            plaintext, Hook{});
}

std::expected<ChunkDescriptor, Failure> writeResourceChunk(const fs::path& path, ByteView packageIdentifier,
                                                           ByteView libraryDomainIdentifier, ByteView chunkIdentifier,
                                                           std::uint64_t ordinal, ByteView resourceKey,
                                                           ByteView plaintext, const Hook& faultHook) {
  const KeyScope scope{packageIdentifier, libraryDomainIdentifier, resourceKey};
  if (auto done = validateChunkRequest(path, scope, chunkIdentifier, plaintext); !done) return failure(done.error());
  const auto written = sealedChunk(scope, chunkIdentifier, ordinal, plaintext);
  if (!written) return std::unexpected(written.error());

  auto staging = StagingFile::create(path);  // from here on, a failure removes the staging file
  if (!staging) return std::unexpected(staging.error());
  if (auto done = passFaultPoint(faultHook, Point::afterStagingCreation); !done) return std::unexpected(done.error());
  if (auto done = staging->append(written->frame); !done) return std::unexpected(done.error());
  if (auto done = passFaultPoint(faultHook, Point::afterPayloadWrite); !done) return std::unexpected(done.error());
  if (auto done = staging->makeDurable(); !done) return std::unexpected(done.error());
  if (auto done = passFaultPoint(faultHook, Point::afterStagingSync); !done) return std::unexpected(done.error());
  const auto readBack = [&](const std::string& name) {
    return requireChunkReadBack(staging->directory(), name, written->descriptor, plaintext, scope);
  };
  if (auto done = publishVerified(*staging, faultHook, readBack); !done) return std::unexpected(done.error());
  return written->descriptor;
}

}  // namespace BackupPayloadV1

}  // namespace galdrine::format
