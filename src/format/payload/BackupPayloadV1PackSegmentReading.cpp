// Reading pack segments: inspection of everything but the entry frames, and the opening of
// entries through one positioned read each.

#include <fcntl.h>

#include <array>

#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPackIndexV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "format/payload/BackupPayloadV1Detail.hpp"
#include "platform/SecureMemory.hpp"
#include "platform/ByteCursor.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
namespace Detail = BackupPayloadV1Detail;
using Error = BackupPayloadV1Error;
using Header = BackupPackContainerHeaderV1;
using Entry = BackupPackEntryDescriptorV1;
using File = BackupPayloadFileV1;
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
  platform::ByteCursor cursor(prefix);
  const auto identifier = cursor.take(BackupPayloadV1::identifierByteCount);
  const auto ordinal = cursor.takeBigEndian(prefixOrdinalByteCount);
  const auto frameByteCount = cursor.takeBigEndian(prefixFrameByteCountByteCount);
  return identifier && ordinal && frameByteCount && ByteOrder::equal(*identifier, entry.identifier) &&
         *ordinal == entry.ordinal && *frameByteCount == entry.frameByteCount &&
         entry.frameOffset == prefixOffset + BackupPayloadV1::entryPrefixByteCount;
}

// validateEntryPrefixes walks the entry area from prefix to prefix. Each step reads within the
// file (else invalidArtifact) and moves on by at most 32 + 16,778,240 bytes, so the offset
// cannot overflow.
[[nodiscard]] std::expected<void, Error> validateEntryPrefixes(const File& file, const Header& header,
                                                               const std::vector<Entry>& entries) {
  std::uint64_t offset = Header::encodedByteCount;
  for (const Entry& entry : entries) {
    std::array<std::uint8_t, BackupPayloadV1::entryPrefixByteCount> prefix{};
    if (auto read = file.readInto(offset, prefix); !read) return std::unexpected(read.error());
    if (!prefixAgrees(prefix, offset, entry)) return refuse(Error::malformedIndex());
    offset += BackupPayloadV1::entryPrefixByteCount + entry.frameByteCount;
  }
  if (offset != Header::encodedByteCount + header.entryAreaByteCount) return refuse(Error::malformedIndex());
  return {};
}

struct OpenedIndex {
  BackupPackIndexV1::Contents contents;
  platform::SHA256Digest frameSHA256;
};

[[nodiscard]] std::expected<OpenedIndex, Error> openIndex(const File& file, const Header& header,
                                                          const KeyScope& scope) {
  const auto frame = file.readHashed(Header::encodedByteCount + header.entryAreaByteCount, header.indexFrameByteCount);
  if (!frame) return std::unexpected(frame.error());
  const auto authenticatedData = Detail::authenticatedData(
      BackupAADDomainV1::packIndex, scope, header.segmentIdentifier, BackupFormatV1::packIndexOrdinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  const auto plaintext = AESGCMFrameV1::open(
      frame->bytes.view(), scope.key, *authenticatedData,
      static_cast<std::int64_t>(BackupFormatV1::maximumPackIndexPlaintextByteCount));
  if (!plaintext) return refuse(Error::verificationFailed());
  auto contents = BackupPackIndexV1::decode(*plaintext, header);
  if (!contents) return std::unexpected(contents.error());
  return OpenedIndex{std::move(*contents), frame->digest};
}

[[nodiscard]] KeyScope scopeOf(ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView segmentKey) {
  return KeyScope{packageIdentifier, libraryDomainIdentifier, segmentKey};
}

}  // namespace

namespace BackupPayloadV1Detail {

std::expected<InspectedPackSegment, Error> inspectPackSegmentAt(int directory, const fs::path& name,
                                                                const KeyScope& scope) {
  if (auto checked = validateKeyAndDomains(scope); !checked) return std::unexpected(checked.error());
  const auto nameIdentifier =
      identifierSpelledBy(name.filename().native(), BackupFormatV1::packSegmentFileExtension);
  if (!nameIdentifier) return refuse(Error::invalidArtifactName());

  auto file = File::open(directory, name, BackupPayloadV1::maximumSegmentFileByteCount);
  if (!file) return std::unexpected(file.error());
  const auto header = readHeader(*file);
  if (!header) return std::unexpected(header.error());
  // The header names the segment the index is sealed for; the file's name must name the same.
  if (!ByteOrder::equal(header->segmentIdentifier, *nameIdentifier))
    return refuse(Error::invalidArtifactName());

  auto index = openIndex(*file, *header, scope);
  if (!index) return std::unexpected(index.error());
  if (auto prefixes = validateEntryPrefixes(*file, *header, index->contents.entries); !prefixes)
    return std::unexpected(prefixes.error());
  BackupPackSegmentDescriptorV1 descriptor{
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
      Detail::authenticatedData(BackupAADDomainV1::packEntry, scope, entry.identifier, entry.ordinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  return openExpectedFrame(*frame, scope.key, *authenticatedData,
                           BackupFormatV1::maximumPackedResourcePlaintextByteCount,
                           {entry.frameSHA256, entry.plaintextByteCount, entry.plaintextSHA256});
}

}  // namespace BackupPayloadV1Detail

namespace BackupPayloadV1 {

std::expected<BackupPackSegmentDescriptorV1, Error> inspectPackSegment(const fs::path& path,
                                                                               ByteView packageIdentifier,
                                                                               ByteView libraryDomainIdentifier,
                                                                               ByteView segmentKey) {
  auto segment =
      Detail::inspectPackSegmentAt(AT_FDCWD, path, scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey));
  if (!segment) return std::unexpected(segment.error());
  return std::move(segment->descriptor);
}

std::expected<Bytes, Error> openPackEntry(ByteView identifier, const fs::path& path, ByteView packageIdentifier,
                                          ByteView libraryDomainIdentifier, ByteView segmentKey) {
  const KeyScope scope = scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey);
  const auto segment = Detail::inspectPackSegmentAt(AT_FDCWD, path, scope);
  if (!segment) return std::unexpected(segment.error());
  const Entry* entry = segment->descriptor.entry(identifier);
  if (entry == nullptr) return refuse(Error::entryNotFound());
  return Detail::openInspectedEntry(*segment, *entry, scope);
}

std::expected<BackupPackSegmentDescriptorV1, Error> verifyPackSegment(const fs::path& path,
                                                                              ByteView packageIdentifier,
                                                                              ByteView libraryDomainIdentifier,
                                                                              ByteView segmentKey) {
  const KeyScope scope = scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey);
  auto segment = Detail::inspectPackSegmentAt(AT_FDCWD, path, scope);
  if (!segment) return std::unexpected(segment.error());
  for (const Entry& entry : segment->descriptor.entries) {
    auto plaintext = Detail::openInspectedEntry(*segment, entry, scope);
    if (!plaintext) return std::unexpected(plaintext.error());
    platform::SecureMemory::wipe(*plaintext);  // only its opening was asked for
  }
  return std::move(segment->descriptor);
}

}  // namespace BackupPayloadV1

}  // namespace galdrine::format
