#pragma once
// BackupManifestCountsV1 holds how many records of each kind a manifest has, each at
// most 2,000,000.

#include <array>
#include <cstdint>
#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupManifestSectionKindV1.hpp"

namespace galdrine::format {

class BackupManifestCountsV1 {
 public:
  // make fails with invalidCount when any count exceeds 2,000,000.
  [[nodiscard]] static std::expected<BackupManifestCountsV1, BackupGraphV1Error> make(
      std::uint64_t payloadKeyCount, std::uint64_t itemCount, std::uint64_t resourceCount, std::uint64_t folderCount,
      std::uint64_t albumCount, std::uint64_t membershipCount, std::uint64_t tombstoneCount);

  [[nodiscard]] std::uint64_t payloadKeyCount() const { return count(BackupManifestSectionKindV1::payloadKey); }
  [[nodiscard]] std::uint64_t itemCount() const { return count(BackupManifestSectionKindV1::item); }
  [[nodiscard]] std::uint64_t resourceCount() const { return count(BackupManifestSectionKindV1::resource); }
  [[nodiscard]] std::uint64_t folderCount() const { return count(BackupManifestSectionKindV1::folder); }
  [[nodiscard]] std::uint64_t albumCount() const { return count(BackupManifestSectionKindV1::album); }
  [[nodiscard]] std::uint64_t membershipCount() const { return count(BackupManifestSectionKindV1::membership); }
  [[nodiscard]] std::uint64_t tombstoneCount() const { return count(BackupManifestSectionKindV1::tombstone); }
  // count gives the number of records of `kind`.
  [[nodiscard]] std::uint64_t count(BackupManifestSectionKindV1 kind) const {
    return counts_[static_cast<std::size_t>(kind)];
  }

  // The CBOR form: an array of exactly 7 unsigned integers in the order of the kinds.
  [[nodiscard]] CBORValue cborValue() const;
  [[nodiscard]] static bool hasCBORShape(const CBORBorrowedValue& value);
  // fromCBOR checks the shape (malformedArtifact), then builds the counts through make.
  [[nodiscard]] static std::expected<BackupManifestCountsV1, BackupGraphV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  friend bool operator==(const BackupManifestCountsV1&, const BackupManifestCountsV1&) = default;

 private:
  explicit BackupManifestCountsV1(const std::array<std::uint64_t, 7>& counts) : counts_(counts) {}

  std::array<std::uint64_t, 7> counts_;  // indexed by the kind's raw value
};

}  // namespace galdrine::format
