#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCountsV1.hpp"

#include <algorithm>

#include "GaldrineCryptoPrimitives/GaldrineBackupGraphCBORV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"

namespace CBOR = GaldrineBackupGraphCBORV1;

std::expected<GaldrineBackupManifestCountsV1, GaldrineBackupGraphV1Error> GaldrineBackupManifestCountsV1::make(
    std::uint64_t payloadKeyCount, std::uint64_t itemCount, std::uint64_t resourceCount, std::uint64_t folderCount,
    std::uint64_t albumCount, std::uint64_t membershipCount, std::uint64_t tombstoneCount) {
  const std::array<std::uint64_t, 7> counts{payloadKeyCount, itemCount,       resourceCount, folderCount,
                                            albumCount,      membershipCount, tombstoneCount};
  const bool withinLimit = std::ranges::all_of(
      counts, [](std::uint64_t count) { return count <= GaldrineBackupGraphLimitsV1::maximumRecordCount; });
  if (!withinLimit) return std::unexpected(GaldrineBackupGraphV1Error::invalidCount);
  return GaldrineBackupManifestCountsV1(counts);
}

GaldrineCBORValue GaldrineBackupManifestCountsV1::cborValue() const {
  GaldrineCBORValue::Array items;
  items.reserve(counts_.size());
  for (const std::uint64_t count : counts_) items.push_back(GaldrineCBORValue::unsignedInteger(count));
  return GaldrineCBORValue::array(std::move(items));
}

bool GaldrineBackupManifestCountsV1::hasCBORShape(const GaldrineCBORBorrowedValue& value) {
  return CBOR::isArrayOfCount(value, 7) && std::ranges::all_of(*value.asArray(), CBOR::isUnsigned);
}

std::expected<GaldrineBackupManifestCountsV1, GaldrineBackupGraphV1Error> GaldrineBackupManifestCountsV1::fromCBOR(
    const GaldrineCBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(GaldrineBackupGraphV1Error::malformedArtifact);
  const auto at = [&](std::size_t index) { return CBOR::unsignedInteger(CBOR::item(value, index)); };
  return make(at(0), at(1), at(2), at(3), at(4), at(5), at(6));
}
