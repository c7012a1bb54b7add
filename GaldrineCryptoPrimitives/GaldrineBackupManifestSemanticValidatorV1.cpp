#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSemanticValidatorV1.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupFolderHierarchyV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordCodecV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupRecordSetV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupRequiredPayloadSetV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"

using Error = GaldrineBackupManifestRecordV1Error;
using Identifier = GaldrineBackupIdentifierV1;
using KeyRecord = GaldrineBackupPayloadKeyRecordV1;
using ItemRecord = GaldrineBackupMediaItemRecordV1;
using ResourceRecord = GaldrineBackupMediaResourceRecordV1;
using AlbumRecord = GaldrineBackupAlbumRecordV1;
using MembershipRecord = GaldrineBackupAlbumMembershipRecordV1;
using TombstoneRecord = GaldrineBackupTombstoneRecordV1;
using Container = GaldrineBackupPayloadContainerKindV1;
using Role = GaldrineBackupMediaResourceRoleV1;

namespace GaldrineBackupManifestSemanticValidatorV1 {

namespace {

template <typename Record>
using IdentifierSet = GaldrineBackupRecordSetV1<Identifier, Record>;

std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

// WorkingSets holds every record of the manifest by kind, each set keyed as its records are.
struct WorkingSets {
  IdentifierSet<KeyRecord> payloadKeys;
  IdentifierSet<ItemRecord> items;
  IdentifierSet<ResourceRecord> resources;
  GaldrineBackupFolderSetV1 folders;
  IdentifierSet<AlbumRecord> albums;
  GaldrineBackupRecordSetV1<MembershipRecord::Key, MembershipRecord> memberships;
  IdentifierSet<TombstoneRecord> tombstones;

  // enter moves `record` into its set; a key already present is duplicateRecord.
  std::expected<void, Error> enter(GaldrineBackupManifestRecordV1&& record) {
    const bool entered = std::visit([this](auto&& typed) { return enterTyped(std::move(typed)); }, std::move(record).variant());
    if (!entered) return failure(Error::duplicateRecord);
    return {};
  }

  std::array<std::uint64_t, 7> counts() const {
    return {payloadKeys.size(), items.size(), resources.size(), folders.size(), albums.size(), memberships.size(),
            tombstones.size()};
  }

 private:
  template <typename Set, typename Record>
  static bool enterInto(Set& set, Record&& record, const auto& key) {
    const auto ownKey = key;  // copied before the record moves
    return set.enter(ownKey, std::move(record));
  }
  bool enterTyped(KeyRecord&& record) { return enterInto(payloadKeys, std::move(record), record.identifier()); }
  bool enterTyped(ItemRecord&& record) { return enterInto(items, std::move(record), record.identifier()); }
  bool enterTyped(ResourceRecord&& record) { return enterInto(resources, std::move(record), record.identifier()); }
  bool enterTyped(GaldrineBackupAlbumFolderRecordV1&& record) { return enterInto(folders, std::move(record), record.identifier()); }
  bool enterTyped(AlbumRecord&& record) { return enterInto(albums, std::move(record), record.identifier()); }
  bool enterTyped(MembershipRecord&& record) { return enterInto(memberships, std::move(record), record.key()); }
  bool enterTyped(TombstoneRecord&& record) { return enterInto(tombstones, std::move(record), record.itemIdentifier()); }
};

// A pack's key is bound to the pack, a chunked resource's key to the resource.
bool keyFitsContainer(const KeyRecord& key, const ResourceRecord& resource) {
  const auto& firstPart = resource.parts().front();
  switch (firstPart.container()) {
    case Container::chunk:
      return key.scope() == GaldrineBackupPayloadKeyScopeV1::resource && key.boundIdentifier() == resource.identifier();
    case Container::pack:
      return key.scope() == GaldrineBackupPayloadKeyScopeV1::pack && key.boundIdentifier() == firstPart.artifactIdentifier();
  }
  std::unreachable();
}

class ManifestCheck {
 public:
  ManifestCheck(ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk)
      : packageIdentifier_(packageIdentifier), libraryDomainIdentifier_(libraryDomainIdentifier), bpmk_(bpmk) {}

  std::expected<GaldrineBackupManifestSemanticSummaryV1, Error> run(std::span<const GaldrineBackupManifestSectionV1> sections) {
    if (auto read = readRecords(sections); !read) return failure(read.error());
    const auto counts = sets_.counts();
    if (std::ranges::any_of(counts, [](std::uint64_t count) { return count > maximumRecordCount; }))
      return failure(Error::invalidValue);
    if (auto unwrapped = unwrapPayloadKeys(); !unwrapped) return failure(unwrapped.error());
    if (auto arranged = validateArrangement(); !arranged) return failure(arranged.error());
    if (auto resourced = validateResources(); !resourced) return failure(resourced.error());
    if (std::ranges::count(keyUsed_, true) != static_cast<std::ptrdiff_t>(sets_.payloadKeys.size()))
      return failure(Error::invalidRelationship);
    if (auto itemized = validateItems(); !itemized) return failure(itemized.error());
    return summary(counts);
  }

 private:
  std::expected<void, Error> readRecords(std::span<const GaldrineBackupManifestSectionV1> sections) {
    for (const auto& section : sections) {
      auto records = GaldrineBackupManifestRecordCodecV1::records(section);
      if (!records) return failure(records.error());
      for (auto& record : *records) {
        if (auto entered = sets_.enter(std::move(record)); !entered) return entered;
      }
    }
    return {};
  }

  // Unwrapping proves that the package's master key wrapped every key; the keys are not kept.
  std::expected<void, Error> unwrapPayloadKeys() const {
    for (const KeyRecord& record : sets_.payloadKeys.records()) {
      auto key = GaldrineBackupManifestRecordCodecV1::unwrapPayloadKey(record, packageIdentifier_, libraryDomainIdentifier_, bpmk_);
      if (!key) return failure(key.error());
      GaldrineSecureMemory::wipe(*key);
    }
    return {};
  }

  // validateArrangement: folders, albums, memberships and tombstones, in this order.
  std::expected<void, Error> validateArrangement() const {
    if (auto folders = GaldrineBackupFolderHierarchyV1::validateFolders(sets_.folders); !folders) return folders;
    for (const AlbumRecord& album : sets_.albums.records()) {
      const auto& parent = album.parentFolderIdentifier();
      const auto& cover = album.coverItemIdentifier();
      if ((parent && !sets_.folders.contains(*parent)) || (cover && !sets_.items.contains(*cover)))
        return failure(Error::missingReference);
    }
    for (const MembershipRecord& membership : sets_.memberships.records()) {
      if (!sets_.albums.contains(membership.albumIdentifier()) || !sets_.items.contains(membership.itemIdentifier()))
        return failure(Error::missingReference);
    }
    // A tombstone tells of what is gone: its item and resources cannot also be live.
    for (const TombstoneRecord& tombstone : sets_.tombstones.records()) {
      const auto& resources = tombstone.resourceIdentifiers();
      if (sets_.items.contains(tombstone.itemIdentifier()) ||
          std::ranges::any_of(resources, [this](const Identifier& resource) { return sets_.resources.contains(resource); }))
        return failure(Error::conflictingReference);
    }
    return {};
  }

  std::expected<void, Error> validateResources() {
    itemOfResource_.reserve(sets_.resources.size());
    keyUsed_.assign(sets_.payloadKeys.size(), false);
    for (const ResourceRecord& resource : sets_.resources.records()) {
      if (auto checked = validateResource(resource); !checked) return checked;
    }
    return {};
  }

  std::expected<void, Error> validateResource(const ResourceRecord& resource) {
    const auto item = sets_.items.positionOf(resource.itemIdentifier());
    if (!item) return failure(Error::missingReference);
    itemOfResource_.push_back(static_cast<std::uint32_t>(*item));
    if (__builtin_add_overflow(logicalPlaintextByteCount_, resource.plaintextByteCount(), &logicalPlaintextByteCount_))
      return failure(Error::arithmeticOverflow);
    const auto keyPosition = sets_.payloadKeys.positionOf(resource.payloadKeyIdentifier());
    if (!keyPosition) return failure(Error::missingReference);
    if (!keyFitsContainer(sets_.payloadKeys.records()[*keyPosition], resource)) return failure(Error::invalidRelationship);
    keyUsed_[*keyPosition] = true;
    for (const auto& part : resource.parts()) {
      if (auto required = requiredPayloads_.require(part, resource.payloadKeyIdentifier()); !required) return required;
    }
    return {};
  }

  std::expected<void, Error> validateItems() const {
    const auto namingResources = resourcesByItem();
    const auto& resources = sets_.resources.records();
    const auto& items = sets_.items.records();
    for (std::size_t position = 0; position < items.size(); ++position) {
      const std::span<const std::uint32_t> named(namingResources.positions.data() + namingResources.starts[position],
                                                 namingResources.starts[position + 1] - namingResources.starts[position]);
      if (auto checked = validateItem(items[position], named, resources); !checked) return checked;
    }
    return {};
  }

  // ResourcesByItem lists the positions of the resources that name each item, item by item.
  struct ResourcesByItem {
    std::vector<std::uint32_t> starts;     // item i's resources are positions[starts[i] ... starts[i + 1])
    std::vector<std::uint32_t> positions;  // at most 2,000,000 of each kind, so 32 bits suffice
  };

  ResourcesByItem resourcesByItem() const {
    ResourcesByItem grouped{std::vector<std::uint32_t>(sets_.items.size() + 1, 0),
                            std::vector<std::uint32_t>(itemOfResource_.size(), 0)};
    for (const std::uint32_t item : itemOfResource_) ++grouped.starts[item + 1];
    for (std::size_t item = 0; item < sets_.items.size(); ++item) grouped.starts[item + 1] += grouped.starts[item];
    std::vector<std::uint32_t> next(grouped.starts.begin(), grouped.starts.end() - 1);
    for (std::size_t resource = 0; resource < itemOfResource_.size(); ++resource)
      grouped.positions[next[itemOfResource_[resource]]++] = static_cast<std::uint32_t>(resource);
    return grouped;
  }

  std::expected<void, Error> validateItem(const ItemRecord& item, std::span<const std::uint32_t> named,
                                          const std::vector<ResourceRecord>& resources) const {
    const auto& listed = item.resourceIdentifiers();
    if (named.size() != listed.size()) return failure(Error::missingReference);
    std::array<Identifier, GaldrineBackupManifestFieldRulesV1::maximumResourceIdentifierCount> naming{};
    for (std::size_t index = 0; index < named.size(); ++index) naming[index] = resources[named[index]].identifier();
    std::sort(naming.begin(), naming.begin() + static_cast<std::ptrdiff_t>(named.size()));
    if (!std::equal(listed.begin(), listed.end(), naming.begin())) return failure(Error::missingReference);

    std::size_t primaryCount = 0;
    std::size_t pairedVideoCount = 0;
    for (const Identifier& identifier : listed) {
      const ResourceRecord* resource = sets_.resources.find(identifier);
      if (resource == nullptr) return failure(Error::missingReference);
      primaryCount += resource->role() == Role::primary ? 1 : 0;
      pairedVideoCount += resource->role() == Role::pairedVideo ? 1 : 0;
    }
    const std::size_t expectedPairedVideoCount = item.kind() == GaldrineBackupMediaKindV1::livePhoto ? 1 : 0;
    if (primaryCount != 1 || pairedVideoCount != expectedPairedVideoCount) return failure(Error::invalidRelationship);
    return {};
  }

  std::expected<GaldrineBackupManifestSemanticSummaryV1, Error> summary(const std::array<std::uint64_t, 7>& counts) const {
    const auto encryptedPayloadByteCount = requiredPayloads_.encryptedPayloadByteCount();
    if (!encryptedPayloadByteCount) return failure(encryptedPayloadByteCount.error());
    if (logicalPlaintextByteCount_ > maximumTotalByteCount || *encryptedPayloadByteCount > maximumTotalByteCount)
      return failure(Error::invalidValue);
    auto manifestCounts =
        GaldrineBackupManifestCountsV1::make(counts[0], counts[1], counts[2], counts[3], counts[4], counts[5], counts[6]);
    if (!manifestCounts) return failure(Error::invalidValue);  // each count was checked above
    return GaldrineBackupManifestSemanticSummaryV1{
        .counts = *manifestCounts,
        .logicalPlaintextByteCount = logicalPlaintextByteCount_,
        .encryptedPayloadByteCount = *encryptedPayloadByteCount,
        .requiredPayloadSetSHA256 = requiredPayloads_.digest(),
    };
  }

  ByteView packageIdentifier_;
  ByteView libraryDomainIdentifier_;
  ByteView bpmk_;
  WorkingSets sets_;
  GaldrineBackupRequiredPayloadSetV1 requiredPayloads_;
  std::vector<std::uint32_t> itemOfResource_;  // for each resource in order, its item's position
  std::vector<bool> keyUsed_;                  // for each payload key in order
  std::uint64_t logicalPlaintextByteCount_ = 0;
};

}  // namespace

std::expected<GaldrineBackupManifestSemanticSummaryV1, Error> validateAndSummarize(
    std::span<const GaldrineBackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk) {
  if (packageIdentifier.size() != 16 || libraryDomainIdentifier.size() != 16) return failure(Error::invalidIdentifier);
  if (bpmk.size() != GaldrineBackupManifestRecordCodecV1::payloadKeyByteCount) return failure(Error::invalidKey);
  return ManifestCheck(packageIdentifier, libraryDomainIdentifier, bpmk).run(sections);
}

}  // namespace GaldrineBackupManifestSemanticValidatorV1
