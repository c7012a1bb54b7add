#include "fixtureproducer/DeterministicPayloadFiles.hpp"

#include <algorithm>

#include "format/graph/BackupIdentifierV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPackIndexV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"

namespace galdrine::fixtureproducer {

namespace DeterministicPayloadFiles {

namespace {

using Error = FixtureProducerError;
using Header = format::BackupPackContainerHeaderV1;

void appendBigEndian(Bytes& bytes, std::uint64_t value) {
  for (int shift = 56; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

// appendEntry seals one entry and appends its prefix (identifier, ordinal, frame length) and
// frame to the entry area, giving what the index says of it.
[[nodiscard]] std::expected<format::BackupPackEntryDescriptorV1, Error> appendEntry(Bytes& entryArea,
                                                                                    const DeterministicPackEntry& entry,
                                                                                    std::uint64_t ordinal,
                                                                                    ByteView segmentKey,
                                                                                    const FixturePackage& package) {
  const auto frame = FixtureProducers::sealedFrame(
      entry.plaintext, segmentKey, format::BackupAADDomainV1::packEntry, package, entry.identifier, ordinal,
      static_cast<std::int64_t>(format::BackupFormatV1::maximumPackedResourcePlaintextByteCount), entry.nonce);
  if (!frame) return std::unexpected(frame.error());
  const std::uint64_t frameOffset =
      Header::encodedByteCount + entryArea.size() + format::BackupPayloadV1::entryPrefixByteCount;
  entryArea.insert(entryArea.end(), entry.identifier.begin(), entry.identifier.end());
  appendBigEndian(entryArea, ordinal);
  appendBigEndian(entryArea, frame->size());
  entryArea.insert(entryArea.end(), frame->begin(), frame->end());
  return format::BackupPackEntryDescriptorV1{entry.identifier,
                                             ordinal,
                                             frameOffset,
                                             frame->size(),
                                             entry.plaintext.size(),
                                             platform::SHA256::digest(entry.plaintext),
                                             platform::SHA256::digest(*frame)};
}

}  // namespace

std::expected<Bytes, Error> packSegment(const FixturePackage& package, ByteView segmentIdentifier, ByteView segmentKey,
                                        std::span<const DeterministicPackEntry> entries, ByteView indexNonce) {
  const auto identifier = format::FixedBytes::identifier(segmentIdentifier);
  if (!identifier) return std::unexpected(Error::materialRefused);
  Header header{*identifier, static_cast<std::uint32_t>(entries.size()), 0, 0};
  format::BackupPackIndexV1::Contents contents;
  Bytes entryArea;
  for (std::size_t ordinal = 0; ordinal < entries.size(); ++ordinal) {
    auto entry = appendEntry(entryArea, entries[ordinal], ordinal, segmentKey, package);
    if (!entry) return std::unexpected(entry.error());
    contents.totalPlaintextByteCount += entry->plaintextByteCount;
    contents.entries.push_back(std::move(*entry));
  }
  header.entryAreaByteCount = entryArea.size();

  const auto index = format::BackupPackIndexV1::encoded(header, contents);
  if (!index) return std::unexpected(Error::materialRefused);
  const auto indexFrame = FixtureProducers::sealedFrame(
      *index, segmentKey, format::BackupAADDomainV1::packIndex, package, segmentIdentifier,
      format::BackupFormatV1::packIndexOrdinal,
      static_cast<std::int64_t>(format::BackupFormatV1::maximumPackIndexPlaintextByteCount), indexNonce);
  if (!indexFrame) return std::unexpected(indexFrame.error());
  header.indexFrameByteCount = indexFrame->size();

  const auto encodedHeader = header.encoded();
  Bytes segment(encodedHeader.begin(), encodedHeader.end());
  segment.insert(segment.end(), entryArea.begin(), entryArea.end());
  segment.insert(segment.end(), indexFrame->begin(), indexFrame->end());
  return segment;
}

std::expected<Bytes, Error> resourceChunk(const FixturePackage& package, ByteView chunkIdentifier,
                                          std::uint64_t ordinal, ByteView resourceKey, ByteView plaintext,
                                          ByteView nonce) {
  return FixtureProducers::sealedFrame(
      plaintext, resourceKey, format::BackupAADDomainV1::resourceChunk, package, chunkIdentifier, ordinal,
      static_cast<std::int64_t>(format::BackupFormatV1::maximumStandaloneChunkPlaintextByteCount), nonce);
}

}  // namespace DeterministicPayloadFiles

}  // namespace galdrine::fixtureproducer
