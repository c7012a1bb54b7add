#pragma once
// GaldrineBackupManifestCountsV1 holds how many records of each kind a manifest has, each at
// most 2,000,000.

#include <array>
#include <cstdint>
#include <expected>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionKindV1.hpp"

class GaldrineBackupManifestCountsV1 {
 public:
  // make fails with invalidCount when any count exceeds 2,000,000.
  [[nodiscard]] static std::expected<GaldrineBackupManifestCountsV1, GaldrineBackupGraphV1Error> make(
      std::uint64_t payloadKeyCount, std::uint64_t itemCount, std::uint64_t resourceCount, std::uint64_t folderCount,
      std::uint64_t albumCount, std::uint64_t membershipCount, std::uint64_t tombstoneCount);

  [[nodiscard]] std::uint64_t payloadKeyCount() const { return count(GaldrineBackupManifestSectionKindV1::payloadKey); }
  [[nodiscard]] std::uint64_t itemCount() const { return count(GaldrineBackupManifestSectionKindV1::item); }
  [[nodiscard]] std::uint64_t resourceCount() const { return count(GaldrineBackupManifestSectionKindV1::resource); }
  [[nodiscard]] std::uint64_t folderCount() const { return count(GaldrineBackupManifestSectionKindV1::folder); }
  [[nodiscard]] std::uint64_t albumCount() const { return count(GaldrineBackupManifestSectionKindV1::album); }
  [[nodiscard]] std::uint64_t membershipCount() const { return count(GaldrineBackupManifestSectionKindV1::membership); }
  [[nodiscard]] std::uint64_t tombstoneCount() const { return count(GaldrineBackupManifestSectionKindV1::tombstone); }
  // count gives the number of records of `kind`.
  [[nodiscard]] std::uint64_t count(GaldrineBackupManifestSectionKindV1 kind) const {
    return counts_[static_cast<std::size_t>(kind)];
  }

  // The CBOR form: an array of exactly 7 unsigned integers in the order of the kinds.
  [[nodiscard]] GaldrineCBORValue cborValue() const;
  [[nodiscard]] static bool hasCBORShape(const GaldrineCBORBorrowedValue& value);
  // fromCBOR checks the shape (malformedArtifact), then builds the counts through make.
  [[nodiscard]] static std::expected<GaldrineBackupManifestCountsV1, GaldrineBackupGraphV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  friend bool operator==(const GaldrineBackupManifestCountsV1&, const GaldrineBackupManifestCountsV1&) = default;

 private:
  explicit GaldrineBackupManifestCountsV1(const std::array<std::uint64_t, 7>& counts) : counts_(counts) {}

  std::array<std::uint64_t, 7> counts_;  // indexed by the kind's raw value
};
