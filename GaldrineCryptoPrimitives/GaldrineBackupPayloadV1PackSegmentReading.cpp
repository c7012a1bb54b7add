// Reading pack segments: inspection of everything but the entry frames, and the opening of
// entries through one positioned read each.

#include <fcntl.h>

#include <array>

#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPackContainerHeaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPackIndexV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1Detail.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineByteCursor.hpp"

namespace {

namespace fs = std::filesystem;
namespace Detail = GaldrineBackupPayloadV1Detail;
using Error = GaldrineBackupPayloadV1Error;
using Header = GaldrineBackupPackContainerHeaderV1;
using Entry = GaldrineBackupPackEntryDescriptorV1;
using File = GaldrineBackupPayloadFileV1;
using Detail::InspectedPackSegment;
using Detail::KeyScope;

constexpr std::size_t prefixOrdinalByteCount = 8;
constexpr std::size_t prefixFrameByteCountByteCount = 8;

[[nodiscard]] std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

[[nodiscard]] std::expected<Header, Error> readHeader(const File& file) {
  std::array<std::uint8_t, Header::encodedByteCount> bytes{};
  if (auto read = file.readInto(0, bytes); !read) return std::unexpected(read.error());
  auto header = Header::decode(bytes);
  if (!header) return std::unexpected(header.error());
  if (auto valid = header->validate(file.byteCount()); !valid) return std::unexpected(valid.error());
  return header;
}

// prefixAgrees: the prefix at `prefixOffset` names the entry's identifier, ordinal and frame
// byte count, and the index puts the frame right behind it.
[[nodiscard]] bool prefixAgrees(ByteView prefix, std::uint64_t prefixOffset, const Entry& entry) {
  GaldrineByteCursor cursor(prefix);
  const auto identifier = cursor.take(GaldrineBackupPayloadV1::identifierByteCount);
  const auto ordinal = cursor.takeBigEndian(prefixOrdinalByteCount);
  const auto frameByteCount = cursor.takeBigEndian(prefixFrameByteCountByteCount);
  return identifier && ordinal && frameByteCount && GaldrineByteOrder::equal(*identifier, entry.identifier) &&
         *ordinal == entry.ordinal && *frameByteCount == entry.frameByteCount &&
         entry.frameOffset == prefixOffset + GaldrineBackupPayloadV1::entryPrefixByteCount;
}

// validateEntryPrefixes walks the entry area from prefix to prefix. Each step reads within the
// file (else invalidArtifact) and moves on by at most 32 + 16,778,240 bytes, so the offset
// cannot overflow.
[[nodiscard]] std::expected<void, Error> validateEntryPrefixes(const File& file, const Header& header,
                                                               const std::vector<Entry>& entries) {
  std::uint64_t offset = Header::encodedByteCount;
  for (const Entry& entry : entries) {
    std::array<std::uint8_t, GaldrineBackupPayloadV1::entryPrefixByteCount> prefix{};
    if (auto read = file.readInto(offset, prefix); !read) return std::unexpected(read.error());
    if (!prefixAgrees(prefix, offset, entry)) return refuse(Error::malformedIndex());
    offset += GaldrineBackupPayloadV1::entryPrefixByteCount + entry.frameByteCount;
  }
  if (offset != Header::encodedByteCount + header.entryAreaByteCount) return refuse(Error::malformedIndex());
  return {};
}

struct OpenedIndex {
  GaldrineBackupPackIndexV1::Contents contents;
  GaldrineSHA256Digest frameSHA256;
};

[[nodiscard]] std::expected<OpenedIndex, Error> openIndex(const File& file, const Header& header,
                                                          const KeyScope& scope) {
  const auto frame = file.readHashed(Header::encodedByteCount + header.entryAreaByteCount, header.indexFrameByteCount);
  if (!frame) return std::unexpected(frame.error());
  const auto authenticatedData = Detail::authenticatedData(
      GaldrineBackupAADDomainV1::packIndex, scope, header.segmentIdentifier, GaldrineBackupFormatV1::packIndexOrdinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  const auto plaintext = GaldrineAESGCMFrameV1::open(
      frame->bytes.view(), scope.key, *authenticatedData,
      static_cast<std::int64_t>(GaldrineBackupFormatV1::maximumPackIndexPlaintextByteCount));
  if (!plaintext) return refuse(Error::verificationFailed());
  auto contents = GaldrineBackupPackIndexV1::decode(*plaintext, header);
  if (!contents) return std::unexpected(contents.error());
  return OpenedIndex{std::move(*contents), frame->digest};
}

[[nodiscard]] KeyScope scopeOf(ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView segmentKey) {
  return KeyScope{packageIdentifier, libraryDomainIdentifier, segmentKey};
}

}  // namespace

namespace GaldrineBackupPayloadV1Detail {

std::expected<InspectedPackSegment, Error> inspectPackSegmentAt(int directory, const fs::path& name,
                                                                const KeyScope& scope) {
  if (auto checked = validateKeyAndDomains(scope); !checked) return std::unexpected(checked.error());
  const auto nameIdentifier =
      identifierSpelledBy(name.filename().native(), GaldrineBackupFormatV1::packSegmentFileExtension);
  if (!nameIdentifier) return refuse(Error::invalidArtifactName());

  auto file = File::open(directory, name, GaldrineBackupPayloadV1::maximumSegmentFileByteCount);
  if (!file) return std::unexpected(file.error());
  const auto header = readHeader(*file);
  if (!header) return std::unexpected(header.error());
  // The header names the segment the index is sealed for; the file's name must name the same.
  if (!GaldrineByteOrder::equal(header->segmentIdentifier, *nameIdentifier))
    return refuse(Error::invalidArtifactName());

  auto index = openIndex(*file, *header, scope);
  if (!index) return std::unexpected(index.error());
  if (auto prefixes = validateEntryPrefixes(*file, *header, index->contents.entries); !prefixes)
    return std::unexpected(prefixes.error());
  GaldrineBackupPackSegmentDescriptorV1 descriptor{
      Bytes(header->segmentIdentifier.begin(), header->segmentIdentifier.end()),
      header->entryAreaByteCount,
      header->indexFrameByteCount,
      index->frameSHA256,
      index->contents.totalPlaintextByteCount,
      std::move(index->contents.entries),
  };
  return InspectedPackSegment{std::move(*file), std::move(descriptor)};
}

std::expected<Bytes, Error> openInspectedEntry(const InspectedPackSegment& segment, const Entry& entry,
                                               const KeyScope& scope) {
  const auto frame = segment.file.readHashed(entry.frameOffset, entry.frameByteCount);
  if (!frame) return std::unexpected(frame.error());
  const auto authenticatedData =
      Detail::authenticatedData(GaldrineBackupAADDomainV1::packEntry, scope, entry.identifier, entry.ordinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  return openExpectedFrame(*frame, scope.key, *authenticatedData,
                           GaldrineBackupFormatV1::maximumPackedResourcePlaintextByteCount,
                           {entry.frameSHA256, entry.plaintextByteCount, entry.plaintextSHA256});
}

}  // namespace GaldrineBackupPayloadV1Detail

namespace GaldrineBackupPayloadV1 {

std::expected<GaldrineBackupPackSegmentDescriptorV1, Error> inspectPackSegment(const fs::path& url,
                                                                               ByteView packageIdentifier,
                                                                               ByteView libraryDomainIdentifier,
                                                                               ByteView segmentKey) {
  auto segment =
      Detail::inspectPackSegmentAt(AT_FDCWD, url, scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey));
  if (!segment) return std::unexpected(segment.error());
  return std::move(segment->descriptor);
}

std::expected<Bytes, Error> openPackEntry(ByteView identifier, const fs::path& url, ByteView packageIdentifier,
                                          ByteView libraryDomainIdentifier, ByteView segmentKey) {
  const KeyScope scope = scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey);
  const auto segment = Detail::inspectPackSegmentAt(AT_FDCWD, url, scope);
  if (!segment) return std::unexpected(segment.error());
  const Entry* entry = segment->descriptor.entry(identifier);
  if (entry == nullptr) return refuse(Error::entryNotFound());
  return Detail::openInspectedEntry(*segment, *entry, scope);
}

std::expected<GaldrineBackupPackSegmentDescriptorV1, Error> verifyPackSegment(const fs::path& url,
                                                                              ByteView packageIdentifier,
                                                                              ByteView libraryDomainIdentifier,
                                                                              ByteView segmentKey) {
  const KeyScope scope = scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey);
  auto segment = Detail::inspectPackSegmentAt(AT_FDCWD, url, scope);
  if (!segment) return std::unexpected(segment.error());
  for (const Entry& entry : segment->descriptor.entries) {
    auto plaintext = Detail::openInspectedEntry(*segment, entry, scope);
    if (!plaintext) return std::unexpected(plaintext.error());
    GaldrineSecureMemory::wipe(*plaintext);  // only its opening was asked for
  }
  return std::move(segment->descriptor);
}

}  // namespace GaldrineBackupPayloadV1
