#include "fixtureproducer/GraphFixtureContent.hpp"

#include <array>
#include <string>

#include "fixtureproducer/DeterministicPayloadFiles.hpp"
#include "fixtureproducer/FixtureProducerBytes.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = FixtureProducerError;
namespace Fixed = FixtureProducerBytes;

constexpr std::int64_t createdAt = graphFixtureCreatedAtUTCMilliseconds;
constexpr std::string_view photoPlaintext = "Galdrine V1 graph fixture photo.\n";
constexpr std::string_view videoPlaintext = "Galdrine V1 graph fixture video, kept in a standalone chunk.\n";

// The identifiers of the library's records and payload files.
struct Identifiers {
  Bytes segment = Fixed::identifier("graph/pack-segment");
  Bytes chunk = Fixed::identifier("graph/resource-chunk");
  Bytes photoItem = Fixed::identifier("graph/item/photo");
  Bytes videoItem = Fixed::identifier("graph/item/video");
  Bytes photoResource = Fixed::identifier("graph/resource/photo");
  Bytes videoResource = Fixed::identifier("graph/resource/video");
  Bytes packKey = Fixed::identifier("graph/payload-key/pack");
  Bytes videoKey = Fixed::identifier("graph/payload-key/video");
  Bytes folder = Fixed::identifier("graph/folder");
  Bytes album = Fixed::identifier("graph/album");
  Bytes deletedItem = Fixed::identifier("graph/tombstone/item");
  Bytes deletedResource = Fixed::identifier("graph/tombstone/resource");
};

template <typename Record>
[[nodiscard]] std::expected<format::BackupManifestRecordV1, Error> recordOf(
    std::expected<Record, format::BackupManifestRecordV1Error> made) {
  if (!made) return std::unexpected(Error::materialRefused);
  return format::BackupManifestRecordV1(std::move(*made));
}

[[nodiscard]] std::expected<format::BackupManifestRecordV1, Error> item(ByteView identifier,
                                                                        format::BackupMediaKindV1 kind,
                                                                        std::string_view filename, ByteView resource) {
  const std::array<ByteView, 1> resources{resource};
  return recordOf(format::BackupMediaItemRecordV1::make({
      .identifier = identifier,
      .kind = kind,
      .displayDateUTCMilliseconds = createdAt - 86400000,
      .displayTimeZoneSeconds = 3600,
      .dateSource = format::BackupMediaDateSourceV1::embedded,
      .importDateUTCMilliseconds = createdAt - 3600000,
      .originalFilename = filename,
      .favorite = kind == format::BackupMediaKindV1::photo,
      .lifecycle = format::BackupMediaLifecycleV1::active,
      .trashDateUTCMilliseconds = std::nullopt,
      .sourceType = format::BackupMediaSourceTypeV1::photos,
      .entitlementCounted = true,
      .resourceIdentifiers = resources,
  }));
}

// ResourceFile is where a resource's one part lies: its container, file and place in it.
struct ResourceFile {
  format::BackupPayloadContainerKindV1 container;
  ByteView identifier;
  ByteView bytes;
};

[[nodiscard]] std::expected<format::BackupManifestRecordV1, Error> resource(
    const format::BackupMediaResourceRecordV1::Fields& shape, ByteView plaintext, const ResourceFile& file) {
  const platform::SHA256Digest plaintextSHA256 = platform::SHA256::digest(plaintext);
  const platform::SHA256Digest fileSHA256 = platform::SHA256::digest(file.bytes);
  const auto part = format::BackupPayloadPartRecordV1::make({
      .ordinal = 0,
      .plaintextOffset = 0,
      .plaintextByteCount = plaintext.size(),
      .plaintextSHA256 = plaintextSHA256,
      .container = file.container,
      .artifactIdentifier = file.identifier,
      .artifactOrdinal = 0,
      .artifactFileByteCount = file.bytes.size(),
      .artifactFileSHA256 = fileSHA256,
  });
  if (!part) return std::unexpected(Error::materialRefused);
  format::BackupMediaResourceRecordV1::Fields fields = shape;
  fields.plaintextByteCount = plaintext.size();
  fields.plaintextSHA256 = plaintextSHA256;
  fields.parts = std::span(&*part, 1);
  return recordOf(format::BackupMediaResourceRecordV1::make(fields));
}

[[nodiscard]] std::expected<format::BackupManifestRecordV1, Error> payloadKey(ByteView key, ByteView keyIdentifier,
                                                                              format::BackupPayloadKeyScopeV1 scope,
                                                                              ByteView boundIdentifier,
                                                                              const FixturePackage& package,
                                                                              ByteView bpmk) {
  return recordOf(format::BackupManifestRecordCodecV1::wrapPayloadKey(
      key, keyIdentifier, scope, boundIdentifier, package.packageIdentifier, package.libraryDomainIdentifier, bpmk,
      format::AESGCMFrameV1::NonceSource::fixed(
          Fixed::nonce("graph/payload-key/" + ByteText::lowerHex(keyIdentifier) + "/nonce"))));
}

// organisingRecords are the folder, the album in it with the photo as cover, the photo's
// membership, and the tombstone of an item deleted earlier.
[[nodiscard]] std::expected<std::vector<format::BackupManifestRecordV1>, Error> organisingRecords(
    const Identifiers& ids) {
  const std::array<ByteView, 1> deletedResources{ids.deletedResource};
  const std::expected<format::BackupManifestRecordV1, Error> made[] = {
      recordOf(format::BackupAlbumFolderRecordV1::make(
          {.identifier = ids.folder, .parentFolderIdentifier = std::nullopt, .name = "Travel", .manualPosition = 0})),
      recordOf(format::BackupAlbumRecordV1::make({.identifier = ids.album,
                                                  .parentFolderIdentifier = ByteView(ids.folder),
                                                  .name = "Summer",
                                                  .coverItemIdentifier = ByteView(ids.photoItem),
                                                  .sortMode = format::BackupAlbumSortModeV1::displayDateAscending,
                                                  .manualOrderEnabled = false,
                                                  .manualPosition = 0})),
      recordOf(format::BackupAlbumMembershipRecordV1::make({.albumIdentifier = ids.album,
                                                            .itemIdentifier = ids.photoItem,
                                                            .manualPosition = 0,
                                                            .addedAtUTCMilliseconds = createdAt})),
      recordOf(format::BackupTombstoneRecordV1::make({.itemIdentifier = ids.deletedItem,
                                                      .deletedAtUTCMilliseconds = createdAt - 60000,
                                                      .resourceIdentifiers = deletedResources})),
  };
  std::vector<format::BackupManifestRecordV1> records;
  for (const auto& record : made) {
    if (!record) return std::unexpected(record.error());
    records.push_back(*record);
  }
  return records;
}

[[nodiscard]] format::BackupMediaResourceRecordV1::Fields resourceShape(ByteView identifier, ByteView item,
                                                                        ByteView key) {
  return {.identifier = identifier,
          .itemIdentifier = item,
          .role = format::BackupMediaResourceRoleV1::primary,
          .originalUTI = "public.heic",
          .plaintextByteCount = 0,
          .pixelWidth = 4032,
          .pixelHeight = 3024,
          .durationIEEE754Bits = std::nullopt,
          .plaintextSHA256 = {},
          .payloadKeyIdentifier = key,
          .parts = {}};
}

// mediaRecords are the two keys, two items and two resources, given the payload files.
[[nodiscard]] std::expected<std::vector<format::BackupManifestRecordV1>, Error> mediaRecords(
    const Identifiers& ids, const GraphFixtureContent& content, const FixturePackage& package, ByteView bpmk,
    ByteView packKey, ByteView videoKey) {
  auto videoShape = resourceShape(ids.videoResource, ids.videoItem, ids.videoKey);
  videoShape.originalUTI = "public.mpeg-4";
  videoShape.pixelWidth = 1920;
  videoShape.pixelHeight = 1080;
  videoShape.durationIEEE754Bits = 0x4024000000000000;  // 10.0 seconds
  const std::expected<format::BackupManifestRecordV1, Error> made[] = {
      payloadKey(packKey, ids.packKey, format::BackupPayloadKeyScopeV1::pack, ids.segment, package, bpmk),
      payloadKey(videoKey, ids.videoKey, format::BackupPayloadKeyScopeV1::resource, ids.videoResource, package, bpmk),
      item(ids.photoItem, format::BackupMediaKindV1::photo, "IMG_0001.HEIC", ids.photoResource),
      item(ids.videoItem, format::BackupMediaKindV1::video, "IMG_0002.MP4", ids.videoResource),
      resource(resourceShape(ids.photoResource, ids.photoItem, ids.packKey), ByteText::view(photoPlaintext),
               {format::BackupPayloadContainerKindV1::pack, content.segmentIdentifier, content.segment}),
      resource(videoShape, ByteText::view(videoPlaintext),
               {format::BackupPayloadContainerKindV1::chunk, content.chunkIdentifier, content.chunkFrame}),
  };
  std::vector<format::BackupManifestRecordV1> records;
  for (const auto& record : made) {
    if (!record) return std::unexpected(record.error());
    records.push_back(*record);
  }
  return records;
}

}  // namespace

std::expected<GraphFixtureContent, Error> graphFixtureContent(const FixturePackage& package, ByteView bpmk) {
  const Identifiers ids;
  // Synthetic payload keys: fixed, since the fixture must come out the same every time, and
  // wiped like any key.
  Bytes packKey = Fixed::labelled("graph/payload-key/pack/key", Fixed::keyByteCount);
  Bytes videoKey = Fixed::labelled("graph/payload-key/video/key", Fixed::keyByteCount);
  ScopeGuard wipeKeys{[&] {
    platform::SecureMemory::wipe(packKey);
    platform::SecureMemory::wipe(videoKey);
  }};
  GraphFixtureContent content{ids.segment, {}, ids.chunk, {}, {}, {}};
  content.resources = {{ids.photoResource, ByteText::bytes(photoPlaintext)},
                       {ids.videoResource, ByteText::bytes(videoPlaintext)}};

  const DeterministicPackEntry photoEntry{ids.photoResource, content.resources[0].plaintext,
                                          Fixed::nonce("graph/pack-segment/photo/nonce")};
  auto segment = DeterministicPayloadFiles::packSegment(package, ids.segment, packKey, std::span(&photoEntry, 1),
                                                        Fixed::nonce("graph/pack-segment/index-nonce"));
  if (!segment) return std::unexpected(segment.error());
  content.segment = std::move(*segment);
  auto chunk = DeterministicPayloadFiles::resourceChunk(package, ids.chunk, 0, videoKey, content.resources[1].plaintext,
                                                        Fixed::nonce("graph/resource-chunk/nonce"));
  if (!chunk) return std::unexpected(chunk.error());
  content.chunkFrame = std::move(*chunk);

  auto media = mediaRecords(ids, content, package, bpmk, packKey, videoKey);
  if (!media) return std::unexpected(media.error());
  auto organising = organisingRecords(ids);
  if (!organising) return std::unexpected(organising.error());
  content.records = std::move(*media);
  content.records.insert(content.records.end(), organising->begin(), organising->end());
  return content;
}

}  // namespace galdrine::fixtureproducer
