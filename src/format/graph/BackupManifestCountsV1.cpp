#include "format/graph/BackupManifestCountsV1.hpp"

#include <algorithm>

#include "format/graph/BackupGraphCBORV1.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"

namespace galdrine::format {

namespace CBOR = BackupGraphCBORV1;

std::expected<BackupManifestCountsV1, BackupGraphV1Error> BackupManifestCountsV1::make(
    std::uint64_t payloadKeyCount, std::uint64_t itemCount, std::uint64_t resourceCount, std::uint64_t folderCount,
    std::uint64_t albumCount, std::uint64_t membershipCount, std::uint64_t tombstoneCount) {
  const std::array<std::uint64_t, 7> counts{payloadKeyCount, itemCount,       resourceCount, folderCount,
                                            albumCount,      membershipCount, tombstoneCount};
  const bool withinLimit =
      std::ranges::all_of(counts, [](std::uint64_t count) { return count <= BackupGraphLimitsV1::maximumRecordCount; });
  if (!withinLimit) return std::unexpected(BackupGraphV1Error::invalidCount);
  return BackupManifestCountsV1(counts);
}

CBORValue BackupManifestCountsV1::cborValue() const {
  CBORValue::Array items;
  items.reserve(counts_.size());
  for (const std::uint64_t count : counts_) items.push_back(CBORValue::unsignedInteger(count));
  return CBORValue::array(std::move(items));
}

bool BackupManifestCountsV1::hasCBORShape(const CBORBorrowedValue& value) {
  return CBOR::isArrayOfCount(value, 7) && std::ranges::all_of(*value.asArray(), CBOR::isUnsigned);
}

std::expected<BackupManifestCountsV1, BackupGraphV1Error> BackupManifestCountsV1::fromCBOR(
    const CBORBorrowedValue& value) {
  if (!hasCBORShape(value)) return std::unexpected(BackupGraphV1Error::malformedArtifact);
  const auto at = [&](std::size_t index) { return CBOR::unsignedInteger(CBOR::item(value, index)); };
  return make(at(0), at(1), at(2), at(3), at(4), at(5), at(6));
}

}  // namespace galdrine::format
