#include "GaldrineRecoveryCore/GraphFixturePayloads.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordCodecV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrineRecoveryCore/FixtureScratchDirectory.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupPayloadReader.hpp"

namespace GraphFixturePayloads {

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;
using Resource = GaldrineBackupMediaResourceRecordV1;
using Part = GaldrineBackupPayloadPartRecordV1;
namespace fs = std::filesystem;

constexpr std::string_view scratchPrefix = "GaldrineRecoveryGraphFixture-";
constexpr std::string_view transcriptLabel = "Galdrine V1 recovered payload fixture";
static_assert(transcriptLabel.size() == 37);

// Scope is where parts are opened from and under what.
struct Scope {
  const fs::path& directory;
  ByteView packageIdentifier;
  ByteView libraryDomainIdentifier;
  ByteView payloadKey;
};

void appendBigEndian(GaldrinePlatformSHA256::Hasher& hasher, std::uint64_t value) {
  std::array<std::uint8_t, 8> bytes{};
  for (std::size_t index = 0; index < bytes.size(); ++index)
    bytes[index] = static_cast<std::uint8_t>(value >> (56 - 8 * index));
  hasher.update(bytes);
}

[[nodiscard]] std::expected<Bytes, Error> openChunkPart(const Part& part, const Scope& scope) {
  const GaldrineBackupResourceChunkDescriptorV1 descriptor{
      Bytes(part.artifactIdentifier().begin(), part.artifactIdentifier().end()),
      part.artifactOrdinal(),
      part.artifactFileByteCount(),
      part.plaintextByteCount(),
      part.plaintextSHA256(),
      part.artifactFileSHA256()};
  const auto name = GaldrineBackupPayloadV1::resourceChunkFileName(descriptor.identifier);
  if (!name) return std::unexpected(Error::invalidFixture);
  auto plaintext = GaldrineBackupPayloadReader::openResourceChunk(scope.directory / *name, descriptor, scope.packageIdentifier,
                                                                  scope.libraryDomainIdentifier, scope.payloadKey);
  if (!plaintext) return std::unexpected(Error::invalidFixture);
  return std::move(*plaintext);
}

// openPackedPart opens a packed resource's one part once the segment's index agrees with it.
[[nodiscard]] std::expected<Bytes, Error> openPackedPart(const Part& part, const Resource& resource, const Scope& scope) {
  if (resource.parts().size() != 1) return std::unexpected(Error::invalidFixture);
  const auto name = GaldrineBackupPayloadV1::packSegmentFileName(part.artifactIdentifier());
  if (!name) return std::unexpected(Error::invalidFixture);
  const fs::path url = scope.directory / *name;
  const auto segment = GaldrineBackupPayloadReader::inspectPackSegment(url, scope.packageIdentifier,
                                                                       scope.libraryDomainIdentifier, scope.payloadKey);
  if (!segment || !GaldrineByteOrder::equal(segment->identifier, part.artifactIdentifier()))
    return std::unexpected(Error::invalidFixture);
  const GaldrineBackupPackEntryDescriptorV1* entry = segment->entry(resource.identifier());
  if (entry == nullptr || entry->ordinal != part.artifactOrdinal() ||
      entry->plaintextByteCount != part.plaintextByteCount() || entry->plaintextSHA256 != part.plaintextSHA256())
    return std::unexpected(Error::invalidFixture);
  auto plaintext = GaldrineBackupPayloadReader::openPackEntry(resource.identifier(), url, scope.packageIdentifier,
                                                              scope.libraryDomainIdentifier, scope.payloadKey);
  if (!plaintext) return std::unexpected(Error::invalidFixture);
  return std::move(*plaintext);
}

[[nodiscard]] std::expected<Bytes, Error> recoverResource(const Resource& resource, const Scope& scope) {
  Bytes joined;
  for (const Part& part : resource.parts()) {
    const auto plaintext = part.container() == GaldrineBackupPayloadContainerKindV1::chunk
                               ? openChunkPart(part, scope)
                               : openPackedPart(part, resource, scope);
    if (!plaintext) return std::unexpected(plaintext.error());
    joined.insert(joined.end(), plaintext->begin(), plaintext->end());
  }
  if (joined.size() != resource.plaintextByteCount() ||
      GaldrinePlatformSHA256::digest(joined) != resource.plaintextSHA256())
    return std::unexpected(Error::invalidFixture);
  return joined;
}

[[nodiscard]] std::expected<fs::path, Error> writtenPayloadFiles(const FixtureScratchDirectory& scratch,
                                                                 const GraphFixturePayloadFiles& files) {
  const auto segmentName = GaldrineBackupPayloadV1::packSegmentFileName(files.packIdentifier);
  const auto chunkName = GaldrineBackupPayloadV1::resourceChunkFileName(files.standaloneIdentifier);
  if (!segmentName || !chunkName) return std::unexpected(Error::invalidFixture);
  if (auto written = scratch.write(*segmentName, files.segment); !written) return std::unexpected(written.error());
  if (auto written = scratch.write(*chunkName, files.frame); !written) return std::unexpected(written.error());
  return scratch.path();
}

}  // namespace

std::expected<std::vector<RecoveredPayload>, Error> recoverPayloads(std::span<const GaldrineBackupManifestRecordV1> records,
                                                                    const GraphFixturePayloadFiles& files,
                                                                    ByteView packageIdentifier,
                                                                    ByteView libraryDomainIdentifier, ByteView bpmk) {
  std::map<GaldrineBackupIdentifierV1, const GaldrineBackupPayloadKeyRecordV1*> payloadKeys;
  for (const auto& record : records) {
    if (const auto* key = record.payloadKey()) payloadKeys.emplace(key->identifier(), key);
  }
  const auto scratch = FixtureScratchDirectory::create(scratchPrefix);
  if (!scratch) return std::unexpected(scratch.error());
  const auto directory = writtenPayloadFiles(*scratch, files);
  if (!directory) return std::unexpected(directory.error());

  std::vector<RecoveredPayload> recovered;
  for (const auto& record : records) {
    const Resource* resource = record.resource();
    if (resource == nullptr) continue;
    const auto keyRecord = payloadKeys.find(resource->payloadKeyIdentifier());
    if (keyRecord == payloadKeys.end()) return std::unexpected(Error::invalidFixture);
    auto key = GaldrineBackupManifestRecordCodecV1::unwrapPayloadKey(*keyRecord->second, packageIdentifier,
                                                                     libraryDomainIdentifier, bpmk);
    if (!key) return std::unexpected(Error::invalidFixture);
    GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(*key); }};
    auto plaintext = recoverResource(*resource, {*directory, packageIdentifier, libraryDomainIdentifier, *key});
    if (!plaintext) return std::unexpected(plaintext.error());
    recovered.push_back({resource->identifier(), std::move(*plaintext)});
  }
  return recovered;
}

GaldrineSHA256Digest recoveredPayloadDigest(std::vector<RecoveredPayload> payloads) {
  std::ranges::sort(payloads, {}, &RecoveredPayload::identifier);  // std::array compares as unsigned bytes
  GaldrinePlatformSHA256::Hasher hasher;
  hasher.update(GaldrineByteText::view(transcriptLabel));
  hasher.update(std::array<std::uint8_t, 1>{0});
  appendBigEndian(hasher, payloads.size());
  for (const RecoveredPayload& payload : payloads) {
    hasher.update(payload.identifier);
    appendBigEndian(hasher, payload.plaintext.size());
    hasher.update(payload.plaintext);
  }
  return hasher.finalize();
}

}  // namespace GraphFixturePayloads
