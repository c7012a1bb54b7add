#pragma once
// Valid manifest records for tests, built from small numbers: identifier(7) is 16 bytes that
// sort by their number. Every view these helpers give lives until the program ends, so a
// test may keep Fields around and change one member at a time.

#include <map>
#include <memory>
#include <stdexcept>

#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"

namespace galdrine::testsupport {

namespace ManifestTestRecords {

using Error = format::BackupManifestRecordV1Error;

// bytesOf gives `byteCount` bytes that start with `number` in big-endian order.
inline ByteView bytesOf(std::uint64_t number, std::size_t byteCount) {
  static std::map<std::pair<std::uint64_t, std::size_t>, Bytes> kept;
  auto [entry, added] = kept.try_emplace({number, byteCount}, Bytes(byteCount, 0xA5));
  if (added) {
    for (std::size_t index = 0; index < 8 && index < byteCount; ++index)
      entry->second[index] = static_cast<std::uint8_t>(number >> (56 - 8 * index));
  }
  return entry->second;
}

inline ByteView identifier(std::uint64_t number) { return bytesOf(number, 16); }
inline ByteView digest(std::uint64_t number) { return bytesOf(number, 32); }

// kept keeps a list alive until the program ends, for the list fields of records.
template <typename T>
std::span<const T> kept(std::vector<T> list) {
  static std::vector<std::unique_ptr<std::vector<T>>> lists;
  lists.push_back(std::make_unique<std::vector<T>>(std::move(list)));
  return *lists.back();
}
inline std::span<const ByteView> viewsOf(std::vector<ByteView> views) { return kept(std::move(views)); }

inline std::span<const ByteView> identifiers(std::initializer_list<std::uint64_t> numbers) {
  std::vector<ByteView> views;
  for (const auto number : numbers) views.push_back(identifier(number));
  return viewsOf(std::move(views));
}

// errorOf gives the error of a failed result, or nothing for a success.
template <typename Result>
std::optional<typename Result::error_type> errorOf(const Result& result) {
  if (result) return std::nullopt;
  return result.error();
}

// made gives the value of a result that a test requires to have succeeded; a failure fails the
// test and ends its body.
template <typename Result>
auto made(Result result) {
  if (!result) throw std::logic_error("a record the test depends on could not be made");
  return std::move(*result);
}

inline format::BackupMediaItemRecordV1::Fields itemFields(std::uint64_t item, std::span<const ByteView> resources) {
  return {.identifier = identifier(item),
          .kind = format::BackupMediaKindV1::photo,
          .displayDateUTCMilliseconds = 1700000000000,
          .displayTimeZoneSeconds = 3600,
          .dateSource = format::BackupMediaDateSourceV1::embedded,
          .importDateUTCMilliseconds = -5,
          .originalFilename = "IMG_0001.HEIC",
          .favorite = true,
          .lifecycle = format::BackupMediaLifecycleV1::active,
          .trashDateUTCMilliseconds = std::nullopt,
          .sourceType = format::BackupMediaSourceTypeV1::photos,
          .entitlementCounted = false,
          .resourceIdentifiers = resources};
}

// packPartFields lays a whole resource of `byteCount` bytes with digest `resourceDigest` into
// pack `pack` at `ordinal`.
inline format::BackupPayloadPartRecordV1::Fields packPartFields(std::uint64_t pack, std::uint64_t ordinal,
                                                                std::uint64_t byteCount, std::uint64_t resourceDigest) {
  return {.ordinal = 0,
          .plaintextOffset = 0,
          .plaintextByteCount = byteCount,
          .plaintextSHA256 = digest(resourceDigest),
          .container = format::BackupPayloadContainerKindV1::pack,
          .artifactIdentifier = identifier(pack),
          .artifactOrdinal = ordinal,
          .artifactFileByteCount = 100000,
          .artifactFileSHA256 = digest(pack)};
}

inline format::BackupPayloadPartRecordV1::Fields chunkPartFields(std::uint64_t chunk, std::uint64_t ordinal,
                                                                 std::uint64_t offset, std::uint64_t byteCount) {
  return {.ordinal = ordinal,
          .plaintextOffset = offset,
          .plaintextByteCount = byteCount,
          .plaintextSHA256 = digest(chunk + 1000),
          .container = format::BackupPayloadContainerKindV1::chunk,
          .artifactIdentifier = identifier(chunk),
          .artifactOrdinal = ordinal,
          .artifactFileByteCount = byteCount + 64,
          .artifactFileSHA256 = digest(chunk)};
}

inline std::span<const format::BackupPayloadPartRecordV1> partsOf(
    std::vector<format::BackupPayloadPartRecordV1> parts) {
  return kept(std::move(parts));
}

// packedResourceFields: resource `resource` of item `item`, 1,000 bytes in pack `pack` at
// `ordinal`, opened by key `key`.
inline format::BackupMediaResourceRecordV1::Fields packedResourceFields(std::uint64_t resource, std::uint64_t item,
                                                                        std::uint64_t key, std::uint64_t pack,
                                                                        std::uint64_t ordinal) {
  return {
      .identifier = identifier(resource),
      .itemIdentifier = identifier(item),
      .role = format::BackupMediaResourceRoleV1::primary,
      .originalUTI = "public.heic",
      .plaintextByteCount = 1000,
      .pixelWidth = 4032,
      .pixelHeight = 3024,
      .durationIEEE754Bits = std::nullopt,
      .plaintextSHA256 = digest(resource),
      .payloadKeyIdentifier = identifier(key),
      .parts = partsOf({made(format::BackupPayloadPartRecordV1::make(packPartFields(pack, ordinal, 1000, resource)))})};
}

// chunkedResourceFields: resource `resource` of item `item` in `partCount` chunks of
// `partByteCount` bytes each, chunk files numbered from `firstChunk`, opened by key `key`.
inline format::BackupMediaResourceRecordV1::Fields chunkedResourceFields(std::uint64_t resource, std::uint64_t item,
                                                                         std::uint64_t key, std::uint64_t firstChunk,
                                                                         std::size_t partCount,
                                                                         std::uint64_t partByteCount) {
  std::vector<format::BackupPayloadPartRecordV1> parts;
  for (std::size_t ordinal = 0; ordinal < partCount; ++ordinal) {
    parts.push_back(made(format::BackupPayloadPartRecordV1::make(
        chunkPartFields(firstChunk + ordinal, ordinal, ordinal * partByteCount, partByteCount))));
  }
  auto fields = packedResourceFields(resource, item, key, 0, 0);
  fields.originalUTI = "public.mpeg-4";
  fields.plaintextByteCount = partCount * partByteCount;
  fields.durationIEEE754Bits = 0x4024000000000000;  // 10.0 seconds
  fields.parts = partsOf(std::move(parts));
  return fields;
}

inline format::BackupAlbumFolderRecordV1::Fields folderFields(std::uint64_t folder,
                                                              std::optional<std::uint64_t> parent) {
  return {.identifier = identifier(folder),
          .parentFolderIdentifier = parent ? std::optional<ByteView>(identifier(*parent)) : std::nullopt,
          .name = "Travel",
          .manualPosition = -3};
}

inline format::BackupAlbumRecordV1::Fields albumFields(std::uint64_t album, std::optional<std::uint64_t> folder,
                                                       std::optional<std::uint64_t> cover) {
  return {.identifier = identifier(album),
          .parentFolderIdentifier = folder ? std::optional<ByteView>(identifier(*folder)) : std::nullopt,
          .name = "Summer",
          .coverItemIdentifier = cover ? std::optional<ByteView>(identifier(*cover)) : std::nullopt,
          .sortMode = format::BackupAlbumSortModeV1::importDateDescending,
          .manualOrderEnabled = true,
          .manualPosition = 7};
}

inline format::BackupAlbumMembershipRecordV1::Fields membershipFields(std::uint64_t album, std::uint64_t item) {
  return {.albumIdentifier = identifier(album),
          .itemIdentifier = identifier(item),
          .manualPosition = 2,
          .addedAtUTCMilliseconds = 1};
}

inline format::BackupTombstoneRecordV1::Fields tombstoneFields(std::uint64_t item,
                                                               std::span<const ByteView> resources) {
  return {
      .itemIdentifier = identifier(item), .deletedAtUTCMilliseconds = 1700000000000, .resourceIdentifiers = resources};
}

inline format::BackupPayloadKeyRecordV1::Fields payloadKeyFields(std::uint64_t key,
                                                                 format::BackupPayloadKeyScopeV1 scope,
                                                                 std::uint64_t bound) {
  return {.identifier = identifier(key),
          .scope = scope,
          .boundIdentifier = identifier(bound),
          .wrappedKeyFrame = bytesOf(key, 120)};
}

}  // namespace ManifestTestRecords

}  // namespace galdrine::testsupport
