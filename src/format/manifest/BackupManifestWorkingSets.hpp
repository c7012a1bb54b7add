#pragma once
// BackupManifestWorkingSets holds the records of one manifest by kind while they are
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

#include "format/graph/BackupIdentifierV1.hpp"
#include "format/graph/BackupManifestSectionV1.hpp"
#include "format/manifest/BackupFolderHierarchy.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/manifest/BackupRecordSet.hpp"
#include "format/manifest/BackupRequiredPayloadSetV1.hpp"

namespace galdrine::format {

class BackupManifestWorkingSets {
 public:
  struct ItemFacts {
    BackupIdentifierV1 identifier;
    BackupMediaKindV1 kind;
    std::uint8_t resourceCount;         // 1 to 8
    std::size_t firstResourcePosition;  // into the listed identifiers
  };

  struct ResourceFacts {
    BackupIdentifierV1 identifier;
    BackupIdentifierV1 itemIdentifier;
    BackupIdentifierV1 payloadKeyIdentifier;
    std::uint64_t plaintextByteCount;
    BackupMediaResourceRoleV1 role;
    std::uint16_t partCount;        // 1 to 4,096
    std::size_t firstPartPosition;  // into the placements
  };

  template <typename Record>
  using IdentifierSet = BackupRecordSet<BackupIdentifierV1, Record>;

  // reserve sizes every set for the records that `sections` hold, which are in memory already.
  void reserve(std::span<const BackupManifestSectionV1> sections);

  // enter moves `record` into its set; a key already present is duplicateRecord.
  [[nodiscard]] std::expected<void, BackupManifestRecordV1Error> enter(BackupManifestRecordV1&& record);

  // counts: records entered, by kind, in the order of the kinds.
  [[nodiscard]] std::array<std::uint64_t, 7> counts() const;

  [[nodiscard]] const IdentifierSet<BackupPayloadKeyRecordV1>& payloadKeys() const { return payloadKeys_; }
  [[nodiscard]] const IdentifierSet<ItemFacts>& items() const { return items_; }
  [[nodiscard]] const IdentifierSet<ResourceFacts>& resources() const { return resources_; }
  [[nodiscard]] const BackupFolderSet& folders() const { return folders_; }
  [[nodiscard]] const IdentifierSet<BackupAlbumRecordV1>& albums() const { return albums_; }
  [[nodiscard]] const BackupRecordSet<BackupAlbumMembershipRecordV1::Key, BackupAlbumMembershipRecordV1>& memberships()
      const {
    return memberships_;
  }
  [[nodiscard]] const IdentifierSet<BackupTombstoneRecordV1>& tombstones() const { return tombstones_; }

  // The resource identifiers an item lists, in its order.
  [[nodiscard]] std::span<const BackupIdentifierV1> resourceIdentifiersOf(const ItemFacts& item) const {
    return std::span(itemResourceIdentifiers_).subspan(item.firstResourcePosition, item.resourceCount);
  }
  // The placements of a resource's parts, in its order.
  [[nodiscard]] std::span<const BackupRequiredPayloadSetV1::Placement> placementsOf(
      const ResourceFacts& resource) const {
    return std::span(partPlacements_).subspan(resource.firstPartPosition, resource.partCount);
  }
  [[nodiscard]] std::size_t partCount() const { return partPlacements_.size(); }

 private:
  bool enterTyped(BackupPayloadKeyRecordV1&& record);
  bool enterTyped(BackupMediaItemRecordV1&& record);
  bool enterTyped(BackupMediaResourceRecordV1&& record);
  bool enterTyped(BackupAlbumFolderRecordV1&& record);
  bool enterTyped(BackupAlbumRecordV1&& record);
  bool enterTyped(BackupAlbumMembershipRecordV1&& record);
  bool enterTyped(BackupTombstoneRecordV1&& record);

  IdentifierSet<BackupPayloadKeyRecordV1> payloadKeys_;
  IdentifierSet<ItemFacts> items_;
  IdentifierSet<ResourceFacts> resources_;
  BackupFolderSet folders_;
  IdentifierSet<BackupAlbumRecordV1> albums_;
  BackupRecordSet<BackupAlbumMembershipRecordV1::Key, BackupAlbumMembershipRecordV1> memberships_;
  IdentifierSet<BackupTombstoneRecordV1> tombstones_;
  std::vector<BackupIdentifierV1> itemResourceIdentifiers_;
  std::vector<BackupRequiredPayloadSetV1::Placement> partPlacements_;
};

}  // namespace galdrine::format
