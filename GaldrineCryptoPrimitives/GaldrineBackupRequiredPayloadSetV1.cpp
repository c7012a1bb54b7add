#include "GaldrineCryptoPrimitives/GaldrineBackupRequiredPayloadSetV1.hpp"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"

using Error = GaldrineBackupManifestRecordV1Error;

namespace {

void updateBigEndian(GaldrinePlatformSHA256::Hasher& hasher, std::uint64_t value) {
  std::array<std::uint8_t, 8> bytes{};
  for (std::size_t index = 0; index < bytes.size(); ++index) bytes[index] = static_cast<std::uint8_t>(value >> (56 - 8 * index));
  hasher.update(bytes);
}

}  // namespace

GaldrineBackupRequiredPayloadSetV1::Place GaldrineBackupRequiredPayloadSetV1::placeOf(std::uint64_t artifactPosition,
                                                                                    std::uint64_t artifactOrdinal) {
  Place place{};
  std::memcpy(place.data(), &artifactPosition, 8);
  std::memcpy(place.data() + 8, &artifactOrdinal, 8);
  return place;
}

std::expected<void, Error> GaldrineBackupRequiredPayloadSetV1::require(const GaldrineBackupPayloadPartRecordV1& part,
                                                                       const GaldrineBackupIdentifierV1& payloadKeyIdentifier) {
  RequiredArtifact artifact{
      .identifier = part.artifactIdentifier(),
      .container = part.container(),
      .fileByteCount = part.artifactFileByteCount(),
      .fileSHA256 = part.artifactFileSHA256(),
      .payloadKeyIdentifier = payloadKeyIdentifier,
  };
  const auto known = artifacts_.positionOf(artifact.identifier);
  if (known && artifacts_.records()[*known] != artifact) return std::unexpected(Error::conflictingReference);
  const std::size_t position = known ? *known : artifacts_.size();
  if (occupiedPlaces_.contains(placeOf(position, part.artifactOrdinal()))) return std::unexpected(Error::conflictingReference);
  if (!known && !artifacts_.enter(part.artifactIdentifier(), std::move(artifact))) return std::unexpected(Error::conflictingReference);
  occupiedPlaces_.insert(placeOf(position, part.artifactOrdinal()));
  return {};
}

std::expected<std::uint64_t, Error> GaldrineBackupRequiredPayloadSetV1::encryptedPayloadByteCount() const {
  std::uint64_t total = 0;
  for (const RequiredArtifact& artifact : artifacts_.records()) {
    if (__builtin_add_overflow(total, artifact.fileByteCount, &total)) return std::unexpected(Error::arithmeticOverflow);
  }
  return total;
}

Bytes GaldrineBackupRequiredPayloadSetV1::digest() const {
  const auto& artifacts = artifacts_.records();
  std::vector<std::size_t> order(artifacts.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, [&artifacts](std::size_t left, std::size_t right) {
    return GaldrineByteOrder::precedes(artifacts[left].identifier, artifacts[right].identifier);
  });

  GaldrinePlatformSHA256::Hasher hasher;
  hasher.update(GaldrineByteText::view(GaldrineBackupFormatV1::requiredPayloadSetDigestDomain));
  hasher.update(Bytes{0});
  updateBigEndian(hasher, artifacts.size());
  for (const std::size_t position : order) {
    const RequiredArtifact& artifact = artifacts[position];
    hasher.update(artifact.identifier);
    updateBigEndian(hasher, rawValue(artifact.container));
    updateBigEndian(hasher, artifact.fileByteCount);
    hasher.update(artifact.fileSHA256);
    hasher.update(artifact.payloadKeyIdentifier);
  }
  const GaldrineSHA256Digest digest = hasher.finalize();
  return Bytes(digest.begin(), digest.end());
}
