#include "format/manifest/BackupRequiredPayloadSetV1.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

using Error = BackupManifestRecordV1Error;

namespace {

void updateBigEndian(platform::SHA256::Hasher& hasher, std::uint64_t value) {
  std::array<std::uint8_t, 8> bytes{};
  for (std::size_t index = 0; index < bytes.size(); ++index)
    bytes[index] = static_cast<std::uint8_t>(value >> (56 - 8 * index));
  hasher.update(bytes);
}

}  // namespace

bool BackupRequiredPayloadSetV1::occupy(std::size_t artifactPosition, std::uint64_t artifactOrdinal) {
  if (artifactOrdinal < 32) {
    const std::uint32_t place = std::uint32_t{1} << artifactOrdinal;
    if ((lowPlaces_[artifactPosition] & place) != 0) return false;
    lowPlaces_[artifactPosition] |= place;
    return true;
  }
  std::array<std::uint8_t, 16> key{};
  const std::uint64_t position = artifactPosition;
  std::memcpy(key.data(), &position, 8);
  std::memcpy(key.data() + 8, &artifactOrdinal, 8);
  return highPlaces_.enter(key, 0);
}

std::expected<void, Error> BackupRequiredPayloadSetV1::require(const Placement& placement,
                                                               const BackupIdentifierV1& payloadKeyIdentifier) {
  const RequiredArtifact artifact{
      .identifier = placement.artifactIdentifier,
      .container = placement.container,
      .fileByteCount = placement.fileByteCount,
      .fileSHA256 = placement.fileSHA256,
      .payloadKeyIdentifier = payloadKeyIdentifier,
  };
  auto position = artifacts_.positionOf(artifact.identifier);
  if (position && artifacts_.records()[*position] != artifact) return std::unexpected(Error::conflictingReference);
  if (!position) {
    position = artifacts_.size();
    if (!artifacts_.enter(artifact.identifier, RequiredArtifact(artifact)))
      return std::unexpected(Error::conflictingReference);
    lowPlaces_.push_back(0);
  }
  if (!occupy(*position, placement.artifactOrdinal)) return std::unexpected(Error::conflictingReference);
  return {};
}

std::expected<std::uint64_t, Error> BackupRequiredPayloadSetV1::encryptedPayloadByteCount() const {
  std::uint64_t total = 0;
  for (const RequiredArtifact& artifact : artifacts_.records()) {
    if (artifact.fileByteCount > std::numeric_limits<std::uint64_t>::max() - total)
      return std::unexpected(Error::arithmeticOverflow);
    total += artifact.fileByteCount;
  }
  return total;
}

Bytes BackupRequiredPayloadSetV1::digest() const {
  const auto& artifacts = artifacts_.records();
  std::vector<std::size_t> order(artifacts.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, [&artifacts](std::size_t left, std::size_t right) {
    return ByteOrder::precedes(artifacts[left].identifier, artifacts[right].identifier);
  });

  platform::SHA256::Hasher hasher;
  hasher.update(ByteText::view(BackupFormatV1::requiredPayloadSetDigestDomain));
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
  const platform::SHA256Digest digest = hasher.finalize();
  return Bytes(digest.begin(), digest.end());
}

}  // namespace galdrine::format
