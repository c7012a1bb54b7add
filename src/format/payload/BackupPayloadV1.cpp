// The payload files' names, and the reading of pack segments and resource chunks. A segment is
// inspected whole but for its entry frames, and each entry opens through one positioned read; a
// chunk's frame is read once, into one buffer, hashed, and decrypted straight into the plaintext
// that is given back. The writers are in BackupPayloadV1Writing.cpp.

#include "format/payload/BackupPayloadV1.hpp"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <optional>

#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPackIndexV1.hpp"
#include "format/payload/BackupPayloadV1Detail.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/ByteCursor.hpp"
#include "platform/Random.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
using namespace BackupPayloadV1Detail;
using Error = BackupPayloadV1Error;
using Header = BackupPackContainerHeaderV1;
using Entry = BackupPackEntryDescriptorV1;
using File = BackupPayloadFile;

[[nodiscard]] std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

// ---- Names ----

constexpr std::size_t uuidTextByteCount = 36;

[[nodiscard]] std::expected<std::string, Error> fileName(ByteView identifier, std::string_view extension) {
  if (identifier.size() != BackupPayloadV1::identifierByteCount) return std::unexpected(Error::invalidIdentifier());
  return ByteText::lowerHex(identifier) + "." + std::string(extension);
}

[[nodiscard]] bool isLowerHexDigit(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
}

// isLowerCaseUUIDText: 8-4-4-4-12 lower-case hexadecimal digits.
[[nodiscard]] bool isLowerCaseUUIDText(std::string_view text) {
  if (text.size() != uuidTextByteCount) return false;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool dashPlace = index == 8 || index == 13 || index == 18 || index == 23;
    if (dashPlace ? text[index] != '-' : !isLowerHexDigit(text[index])) return false;
  }
  return true;
}

// finalNameOf strips a staging suffix ".<uuid>.partial" if there is one.
[[nodiscard]] std::string_view finalNameOf(std::string_view name) {
  const std::size_t suffixByteCount = 1 + uuidTextByteCount + BackupPayloadV1::stagingNameSuffix.size();
  if (!name.ends_with(BackupPayloadV1::stagingNameSuffix) || name.size() <= suffixByteCount) return name;
  const std::string_view uuid =
      name.substr(name.size() - BackupPayloadV1::stagingNameSuffix.size() - uuidTextByteCount, uuidTextByteCount);
  if (name[name.size() - suffixByteCount] != '.' || !isLowerCaseUUIDText(uuid)) return name;
  return name.substr(0, name.size() - suffixByteCount);
}

// identifierSpelledBy gives the identifier that a payload file name spells, "<32 lower-case
// hex digits>.<extension>" or that name followed by ".<lower-case UUID>.partial", and nothing
// for any other name.
[[nodiscard]] std::optional<Bytes> identifierSpelledBy(std::string_view name, std::string_view extension) {
  const std::string_view finalName = finalNameOf(name);
  constexpr std::size_t digitCount = 2 * BackupPayloadV1::identifierByteCount;
  if (finalName.size() != digitCount + 1 + extension.size() || finalName[digitCount] != '.' ||
      finalName.substr(digitCount + 1) != extension)
    return std::nullopt;
  return ByteText::parseLowerHex(finalName.substr(0, digitCount));
}

// ---- Frames ----

// FrameExpectation is what an authenticated reference says of a frame and its plaintext.
struct FrameExpectation {
  const platform::SHA256Digest& frameSHA256;
  std::uint64_t plaintextByteCount;
  const platform::SHA256Digest& plaintextSHA256;
};

// openExpectedFrame compares the digest of a frame read with readHashed, opens the frame under
// `plaintextLimit`, and checks the plaintext's length and digest. Every mismatch and a failed
// opening is verificationFailed; a plaintext that fails its checks is wiped before it is dropped.
[[nodiscard]] std::expected<Bytes, Error> openExpectedFrame(const File::HashedRead& frame, ByteView key,
                                                            ByteView authenticatedData, std::uint64_t plaintextLimit,
                                                            const FrameExpectation& expectation) {
  if (frame.digest != expectation.frameSHA256) return std::unexpected(Error::verificationFailed());
  auto plaintext =
      AESGCMFrameV1::open(frame.bytes.view(), key, authenticatedData, static_cast<std::int64_t>(plaintextLimit));
  if (!plaintext) return std::unexpected(Error::verificationFailed());
  if (plaintext->size() != expectation.plaintextByteCount ||
      platform::SHA256::digest(*plaintext) != expectation.plaintextSHA256) {
    platform::SecureMemory::wipe(*plaintext);
    return std::unexpected(Error::verificationFailed());
  }
  return std::move(*plaintext);
}

// ---- Pack segments ----

constexpr std::size_t prefixOrdinalByteCount = 8;
constexpr std::size_t prefixFrameByteCountByteCount = 8;

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
  const auto authenticatedData = BackupPayloadV1Detail::authenticatedData(
      BackupAADDomainV1::packIndex, scope, header.segmentIdentifier, BackupFormatV1::packIndexOrdinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  const auto plaintext =
      AESGCMFrameV1::open(frame->bytes.view(), scope.key, *authenticatedData,
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

std::expected<void, Error> validateKeyAndDomains(const KeyScope& scope) {
  if (scope.key.size() != BackupPayloadV1::keyByteCount) return std::unexpected(Error::invalidKey());
  if (scope.packageIdentifier.size() != BackupPayloadV1::identifierByteCount ||
      scope.libraryDomainIdentifier.size() != BackupPayloadV1::identifierByteCount)
    return std::unexpected(Error::invalidIdentifier());
  return {};
}

std::expected<Bytes, Error> authenticatedData(BackupAADDomainV1 domain, const KeyScope& scope,
                                              ByteView artifactIdentifier, std::uint64_t ordinal) {
  const auto data = BackupAuthenticatedDataV1::make(domain, scope.packageIdentifier, scope.libraryDomainIdentifier,
                                                    artifactIdentifier, ordinal, std::nullopt);
  if (!data) return std::unexpected(Error::invalidIdentifier());
  auto encoded = data->encoded();
  if (!encoded) return std::unexpected(Error::invalidIdentifier());  // valid fields never fail to encode
  return std::move(*encoded);
}

std::expected<InspectedPackSegment, Error> inspectPackSegmentAt(int directory, const fs::path& name,
                                                                const KeyScope& scope) {
  if (auto checked = validateKeyAndDomains(scope); !checked) return std::unexpected(checked.error());
  const auto nameIdentifier = identifierSpelledBy(name.filename().native(), BackupFormatV1::packSegmentFileExtension);
  if (!nameIdentifier) return refuse(Error::invalidArtifactName());

  auto file = File::open(directory, name, BackupPayloadV1::maximumSegmentFileByteCount);
  if (!file) return std::unexpected(file.error());
  const auto header = readHeader(*file);
  if (!header) return std::unexpected(header.error());
  // The header names the segment the index is sealed for; the file's name must name the same.
  if (!ByteOrder::equal(header->segmentIdentifier, *nameIdentifier)) return refuse(Error::invalidArtifactName());

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
      BackupPayloadV1Detail::authenticatedData(BackupAADDomainV1::packEntry, scope, entry.identifier, entry.ordinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  return openExpectedFrame(*frame, scope.key, *authenticatedData,
                           BackupFormatV1::maximumPackedResourcePlaintextByteCount,
                           {entry.frameSHA256, entry.plaintextByteCount, entry.plaintextSHA256});
}

std::expected<Bytes, Error> openResourceChunkAt(int directory, const fs::path& name,
                                                const BackupResourceChunkDescriptorV1& descriptor,
                                                const KeyScope& scope) {
  if (auto checked = validateKeyAndDomains(scope); !checked) return std::unexpected(checked.error());
  if (descriptor.frameByteCount > BackupPayloadV1::maximumChunkFrameByteCount ||
      descriptor.plaintextByteCount > BackupFormatV1::maximumStandaloneChunkPlaintextByteCount)
    return refuse(Error::invalidArtifact());
  if (!BackupPayloadV1::resourceChunkFileName(descriptor.identifier)) return refuse(Error::invalidIdentifier());
  const auto nameIdentifier = identifierSpelledBy(name.filename().native(), BackupFormatV1::resourceChunkFileExtension);
  if (!nameIdentifier || *nameIdentifier != descriptor.identifier) return refuse(Error::invalidArtifactName());

  // The descriptor's frame byte count bounds the file, so a longer file fails before any read.
  const auto file = File::open(directory, name, descriptor.frameByteCount);
  if (!file) return std::unexpected(file.error());
  const auto frame = file->readHashed(0, descriptor.frameByteCount);
  if (!frame) return std::unexpected(frame.error());
  const auto authenticatedData = BackupPayloadV1Detail::authenticatedData(BackupAADDomainV1::resourceChunk, scope,
                                                                          descriptor.identifier, descriptor.ordinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  return openExpectedFrame(*frame, scope.key, *authenticatedData,
                           BackupFormatV1::maximumStandaloneChunkPlaintextByteCount,
                           {descriptor.frameSHA256, descriptor.plaintextByteCount, descriptor.plaintextSHA256});
}

}  // namespace BackupPayloadV1Detail

namespace BackupPayloadV1 {

std::expected<std::string, Error> packSegmentFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::packSegmentFileExtension);
}

std::expected<std::string, Error> resourceChunkFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::resourceChunkFileExtension);
}

std::expected<Bytes, std::int32_t> generateRandomKey() {
  Bytes key(keyByteCount);  // sized once: nothing reallocates behind the caller's wipe
  if (const std::int32_t status = platform::Random::fill(key); status != 0) return std::unexpected(status);
  return key;
}

std::expected<BackupPackSegmentDescriptorV1, Error> inspectPackSegment(const fs::path& path, ByteView packageIdentifier,
                                                                       ByteView libraryDomainIdentifier,
                                                                       ByteView segmentKey) {
  auto segment = inspectPackSegmentAt(AT_FDCWD, path, scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey));
  if (!segment) return std::unexpected(segment.error());
  return std::move(segment->descriptor);
}

std::expected<Bytes, Error> openPackEntry(ByteView identifier, const fs::path& path, ByteView packageIdentifier,
                                          ByteView libraryDomainIdentifier, ByteView segmentKey) {
  const KeyScope scope = scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey);
  const auto segment = inspectPackSegmentAt(AT_FDCWD, path, scope);
  if (!segment) return std::unexpected(segment.error());
  const Entry* entry = segment->descriptor.entry(identifier);
  if (entry == nullptr) return refuse(Error::entryNotFound());
  return openInspectedEntry(*segment, *entry, scope);
}

std::expected<BackupPackSegmentDescriptorV1, Error> verifyPackSegment(const fs::path& path, ByteView packageIdentifier,
                                                                      ByteView libraryDomainIdentifier,
                                                                      ByteView segmentKey) {
  const KeyScope scope = scopeOf(packageIdentifier, libraryDomainIdentifier, segmentKey);
  auto segment = inspectPackSegmentAt(AT_FDCWD, path, scope);
  if (!segment) return std::unexpected(segment.error());
  for (const Entry& entry : segment->descriptor.entries) {
    auto plaintext = openInspectedEntry(*segment, entry, scope);
    if (!plaintext) return std::unexpected(plaintext.error());
    platform::SecureMemory::wipe(*plaintext);  // only its opening was asked for
  }
  return std::move(segment->descriptor);
}

std::expected<Bytes, Error> openResourceChunk(const fs::path& path, const BackupResourceChunkDescriptorV1& descriptor,
                                              ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                              ByteView resourceKey) {
  return openResourceChunkAt(AT_FDCWD, path, descriptor, {packageIdentifier, libraryDomainIdentifier, resourceKey});
}

}  // namespace BackupPayloadV1

}  // namespace galdrine::format
