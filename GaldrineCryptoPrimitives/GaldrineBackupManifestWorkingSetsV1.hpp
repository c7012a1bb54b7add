#pragma once
// GaldrineBackupManifestWorkingSetsV1 holds the records of one manifest by kind while they are
// checked together, each set keyed as its records are (identifier; album and item for a
// membership; item for a tombstone) and kept in the order read. Items and resources, nearly
// all of a large manifest, are kept as the facts the checks use rather than whole records, so
// that a manifest of millions of records stays compact in memory; the rarer kinds are kept
// whole.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupFolderHierarchyV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupRecordSetV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupRequiredPayloadSetV1.hpp"

class GaldrineBackupManifestWorkingSetsV1 {
 public:
  struct ItemFacts {
    GaldrineBackupIdentifierV1 identifier;
    GaldrineBackupMediaKindV1 kind;
    std::uint8_t resourceCount;          // 1 to 8
    std::size_t firstResourcePosition;  // into the listed identifiers
  };

  struct ResourceFacts {
    GaldrineBackupIdentifierV1 identifier;
    GaldrineBackupIdentifierV1 itemIdentifier;
    GaldrineBackupIdentifierV1 payloadKeyIdentifier;
    std::uint64_t plaintextByteCount;
    GaldrineBackupMediaResourceRoleV1 role;
    std::uint16_t partCount;          // 1 to 4,096
    std::size_t firstPartPosition;  // into the placements
  };

  template <typename Record>
  using IdentifierSet = GaldrineBackupRecordSetV1<GaldrineBackupIdentifierV1, Record>;

  // reserve sizes every set for the records that `sections` hold, which are in memory already.
  void reserve(std::span<const GaldrineBackupManifestSectionV1> sections);

  // enter moves `record` into its set; a key already present is duplicateRecord.
  [[nodiscard]] std::expected<void, GaldrineBackupManifestRecordV1Error> enter(GaldrineBackupManifestRecordV1&& record);

  // counts: records entered, by kind, in the order of the kinds.
  [[nodiscard]] std::array<std::uint64_t, 7> counts() const;

  [[nodiscard]] const IdentifierSet<GaldrineBackupPayloadKeyRecordV1>& payloadKeys() const { return payloadKeys_; }
  [[nodiscard]] const IdentifierSet<ItemFacts>& items() const { return items_; }
  [[nodiscard]] const IdentifierSet<ResourceFacts>& resources() const { return resources_; }
  [[nodiscard]] const GaldrineBackupFolderSetV1& folders() const { return folders_; }
  [[nodiscard]] const IdentifierSet<GaldrineBackupAlbumRecordV1>& albums() const { return albums_; }
  [[nodiscard]] const GaldrineBackupRecordSetV1<GaldrineBackupAlbumMembershipRecordV1::Key, GaldrineBackupAlbumMembershipRecordV1>&
  memberships() const {
    return memberships_;
  }
  [[nodiscard]] const IdentifierSet<GaldrineBackupTombstoneRecordV1>& tombstones() const { return tombstones_; }

  // The resource identifiers an item lists, in its order.
  [[nodiscard]] std::span<const GaldrineBackupIdentifierV1> resourceIdentifiersOf(const ItemFacts& item) const {
    return std::span(itemResourceIdentifiers_).subspan(item.firstResourcePosition, item.resourceCount);
  }
  // The placements of a resource's parts, in its order.
  [[nodiscard]] std::span<const GaldrineBackupRequiredPayloadSetV1::Placement> placementsOf(const ResourceFacts& resource) const {
    return std::span(partPlacements_).subspan(resource.firstPartPosition, resource.partCount);
  }
  [[nodiscard]] std::size_t partCount() const { return partPlacements_.size(); }

 private:
  bool enterTyped(GaldrineBackupPayloadKeyRecordV1&& record);
  bool enterTyped(GaldrineBackupMediaItemRecordV1&& record);
  bool enterTyped(GaldrineBackupMediaResourceRecordV1&& record);
  bool enterTyped(GaldrineBackupAlbumFolderRecordV1&& record);
  bool enterTyped(GaldrineBackupAlbumRecordV1&& record);
  bool enterTyped(GaldrineBackupAlbumMembershipRecordV1&& record);
  bool enterTyped(GaldrineBackupTombstoneRecordV1&& record);

  IdentifierSet<GaldrineBackupPayloadKeyRecordV1> payloadKeys_;
  IdentifierSet<ItemFacts> items_;
  IdentifierSet<ResourceFacts> resources_;
  GaldrineBackupFolderSetV1 folders_;
  IdentifierSet<GaldrineBackupAlbumRecordV1> albums_;
  GaldrineBackupRecordSetV1<GaldrineBackupAlbumMembershipRecordV1::Key, GaldrineBackupAlbumMembershipRecordV1> memberships_;
  IdentifierSet<GaldrineBackupTombstoneRecordV1> tombstones_;
  std::vector<GaldrineBackupIdentifierV1> itemResourceIdentifiers_;
  std::vector<GaldrineBackupRequiredPayloadSetV1::Placement> partPlacements_;
};
