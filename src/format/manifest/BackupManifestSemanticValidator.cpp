#include "format/manifest/BackupManifestSemanticValidator.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "format/manifest/BackupFolderHierarchy.hpp"
#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/manifest/BackupManifestWorkingSets.hpp"
#include "format/manifest/BackupRequiredPayloadSetV1.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::format {

using Error = BackupManifestRecordV1Error;
using Identifier = BackupIdentifierV1;
using Sets = BackupManifestWorkingSets;
using KeyRecord = BackupPayloadKeyRecordV1;
using Container = BackupPayloadContainerKindV1;
using Role = BackupMediaResourceRoleV1;
using Placement = BackupRequiredPayloadSetV1::Placement;

namespace BackupManifestSemanticValidator {

namespace {

std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

// A pack's key is bound to the pack, a chunked resource's key to the resource.
bool keyFitsContainer(const KeyRecord& key, const Sets::ResourceFacts& resource, const Placement& firstPart) {
  switch (firstPart.container) {
    case Container::chunk:
      return key.scope() == BackupPayloadKeyScopeV1::resource && key.boundIdentifier() == resource.identifier;
    case Container::pack:
      return key.scope() == BackupPayloadKeyScopeV1::pack && key.boundIdentifier() == firstPart.artifactIdentifier;
  }
  std::unreachable();
}

// ResourcesByItem lists, item by item, the positions of the resources that name each item.
struct ResourcesByItem {
  std::vector<std::size_t> starts;  // item i's resources are positions[starts[i] ... starts[i + 1])
  std::vector<std::size_t> positions;

  ResourcesByItem(std::size_t itemCount, const std::vector<std::size_t>& itemOfResource)
      : starts(itemCount + 1, 0), positions(itemOfResource.size(), 0) {
    for (const std::size_t item : itemOfResource) ++starts[item + 1];
    for (std::size_t item = 0; item < itemCount; ++item) starts[item + 1] += starts[item];
    std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
    for (std::size_t resource = 0; resource < itemOfResource.size(); ++resource)
      positions[next[itemOfResource[resource]]++] = resource;
  }

  [[nodiscard]] std::span<const std::size_t> of(std::size_t item) const {
    return std::span(positions).subspan(starts[item], starts[item + 1] - starts[item]);
  }
};

class ManifestCheck {
 public:
  ManifestCheck(ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk)
      : packageIdentifier_(packageIdentifier), libraryDomainIdentifier_(libraryDomainIdentifier), bpmk_(bpmk) {}

  std::expected<BackupManifestSemanticSummary, Error> run(std::span<const BackupManifestSectionV1> sections) {
    if (auto read = readRecords(sections); !read) return failure(read.error());
    const auto counts = sets_.counts();
    if (std::ranges::any_of(counts, [](std::uint64_t count) { return count > maximumRecordCount; }))
      return failure(Error::invalidValue);
    if (auto unwrapped = unwrapPayloadKeys(); !unwrapped) return failure(unwrapped.error());
    if (auto arranged = validateArrangement(); !arranged) return failure(arranged.error());
    if (auto resourced = validateResources(); !resourced) return failure(resourced.error());
    if (std::ranges::count(keyUsed_, true) != static_cast<std::ptrdiff_t>(sets_.payloadKeys().size()))
      return failure(Error::invalidRelationship);
    if (auto itemized = validateItems(); !itemized) return failure(itemized.error());
    return summary(counts);
  }

 private:
  // Sections are decoded one at a time, and each record moves into its set at once.
  std::expected<void, Error> readRecords(std::span<const BackupManifestSectionV1> sections) {
    sets_.reserve(sections);
    for (const auto& section : sections) {
      auto records = BackupManifestRecordCodecV1::records(section);
      if (!records) return failure(records.error());
      for (auto& record : *records) {
        if (auto entered = sets_.enter(std::move(record)); !entered) return entered;
      }
    }
    return {};
  }

  // Unwrapping proves that the package's master key wrapped every key; the keys are not kept.
  std::expected<void, Error> unwrapPayloadKeys() const {
    for (const KeyRecord& record : sets_.payloadKeys().records()) {
      auto key =
          BackupManifestRecordCodecV1::unwrapPayloadKey(record, packageIdentifier_, libraryDomainIdentifier_, bpmk_);
      if (!key) return failure(key.error());
      platform::SecureMemory::wipe(*key);
    }
    return {};
  }

  // validateArrangement: folders, albums, memberships and tombstones, in this order.
  std::expected<void, Error> validateArrangement() const {
    if (auto folders = BackupFolderHierarchy::validateFolders(sets_.folders()); !folders) return folders;
    for (const auto& album : sets_.albums().records()) {
      const auto& parent = album.parentFolderIdentifier();
      const auto& cover = album.coverItemIdentifier();
      if ((parent && !sets_.folders().contains(*parent)) || (cover && !sets_.items().contains(*cover)))
        return failure(Error::missingReference);
    }
    for (const auto& membership : sets_.memberships().records()) {
      if (!sets_.albums().contains(membership.albumIdentifier()) ||
          !sets_.items().contains(membership.itemIdentifier()))
        return failure(Error::missingReference);
    }
    // A tombstone tells of what is gone: its item and resources cannot also be live.
    for (const auto& tombstone : sets_.tombstones().records()) {
      const auto& resources = tombstone.resourceIdentifiers();
      if (sets_.items().contains(tombstone.itemIdentifier()) ||
          std::ranges::any_of(resources,
                              [this](const Identifier& resource) { return sets_.resources().contains(resource); }))
        return failure(Error::conflictingReference);
    }
    return {};
  }

  std::expected<void, Error> validateResources() {
    requiredPayloads_.reserve(sets_.partCount());
    itemOfResource_.reserve(sets_.resources().size());
    keyUsed_.assign(sets_.payloadKeys().size(), false);
    for (const auto& resource : sets_.resources().records()) {
      if (auto checked = validateResource(resource); !checked) return checked;
    }
    return {};
  }

  std::expected<void, Error> validateResource(const Sets::ResourceFacts& resource) {
    const auto item = sets_.items().positionOf(resource.itemIdentifier);
    if (!item) return failure(Error::missingReference);
    itemOfResource_.push_back(*item);
    if (resource.plaintextByteCount > std::numeric_limits<std::uint64_t>::max() - logicalPlaintextByteCount_)
      return failure(Error::arithmeticOverflow);
    logicalPlaintextByteCount_ += resource.plaintextByteCount;
    const auto keyPosition = sets_.payloadKeys().positionOf(resource.payloadKeyIdentifier);
    if (!keyPosition) return failure(Error::missingReference);
    const auto placements = sets_.placementsOf(resource);
    if (!keyFitsContainer(sets_.payloadKeys().records()[*keyPosition], resource, placements.front()))
      return failure(Error::invalidRelationship);
    keyUsed_[*keyPosition] = true;
    for (const Placement& placement : placements) {
      if (auto required = requiredPayloads_.require(placement, resource.payloadKeyIdentifier); !required)
        return required;
    }
    return {};
  }

  std::expected<void, Error> validateItems() const {
    const ResourcesByItem naming(sets_.items().size(), itemOfResource_);
    const auto& items = sets_.items().records();
    for (std::size_t position = 0; position < items.size(); ++position) {
      if (auto checked = validateItem(items[position], naming.of(position)); !checked) return checked;
    }
    return {};
  }

  // validateItem compares the resources that name the item with those it lists, then counts
  // their roles. The lists being equal, the naming resources are the listed ones, already at
  // hand by position.
  std::expected<void, Error> validateItem(const Sets::ItemFacts& item, std::span<const std::size_t> named) const {
    const auto listed = sets_.resourceIdentifiersOf(item);
    if (named.size() != listed.size()) return failure(Error::missingReference);
    std::array<const Sets::ResourceFacts*, BackupManifestFieldRulesV1::maximumResourceIdentifierCount> naming{};
    const auto& resources = sets_.resources().records();
    for (std::size_t index = 0; index < named.size(); ++index) naming[index] = &resources[named[index]];
    const auto namingEnd = naming.begin() + static_cast<std::ptrdiff_t>(named.size());
    std::sort(naming.begin(), namingEnd, [](const Sets::ResourceFacts* left, const Sets::ResourceFacts* right) {
      return ByteOrder::precedes(left->identifier, right->identifier);
    });
    if (!std::equal(listed.begin(), listed.end(), naming.begin(),
                    [](const Identifier& identifier, const Sets::ResourceFacts* resource) {
                      return identifier == resource->identifier;
                    }))
      return failure(Error::missingReference);

    const auto hasRole = [](Role role) {
      return [role](const Sets::ResourceFacts* resource) { return resource->role == role; };
    };
    const auto primaryCount = std::count_if(naming.begin(), namingEnd, hasRole(Role::primary));
    const auto pairedVideoCount = std::count_if(naming.begin(), namingEnd, hasRole(Role::pairedVideo));
    const std::ptrdiff_t expectedPairedVideoCount = item.kind == BackupMediaKindV1::livePhoto ? 1 : 0;
    if (primaryCount != 1 || pairedVideoCount != expectedPairedVideoCount) return failure(Error::invalidRelationship);
    return {};
  }

  std::expected<BackupManifestSemanticSummary, Error> summary(const std::array<std::uint64_t, 7>& counts) const {
    const auto encryptedPayloadByteCount = requiredPayloads_.encryptedPayloadByteCount();
    if (!encryptedPayloadByteCount) return failure(encryptedPayloadByteCount.error());
    if (logicalPlaintextByteCount_ > maximumTotalByteCount || *encryptedPayloadByteCount > maximumTotalByteCount)
      return failure(Error::invalidValue);
    auto manifestCounts =
        BackupManifestCountsV1::make(counts[0], counts[1], counts[2], counts[3], counts[4], counts[5], counts[6]);
    if (!manifestCounts) return failure(Error::invalidValue);  // each count was checked above
    return BackupManifestSemanticSummary{
        .counts = *manifestCounts,
        .logicalPlaintextByteCount = logicalPlaintextByteCount_,
        .encryptedPayloadByteCount = *encryptedPayloadByteCount,
        .requiredPayloadSetSHA256 = requiredPayloads_.digest(),
    };
  }

  ByteView packageIdentifier_;
  ByteView libraryDomainIdentifier_;
  ByteView bpmk_;
  Sets sets_;
  BackupRequiredPayloadSetV1 requiredPayloads_;
  std::vector<std::size_t> itemOfResource_;  // for each resource in order, its item's position
  std::vector<bool> keyUsed_;                // for each payload key in order
  std::uint64_t logicalPlaintextByteCount_ = 0;
};

}  // namespace

std::expected<BackupManifestSemanticSummary, Error> validateAndSummarize(
    std::span<const BackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk) {
  if (packageIdentifier.size() != 16 || libraryDomainIdentifier.size() != 16) return failure(Error::invalidIdentifier);
  if (bpmk.size() != BackupManifestRecordCodecV1::payloadKeyByteCount) return failure(Error::invalidKey);
  return ManifestCheck(packageIdentifier, libraryDomainIdentifier, bpmk).run(sections);
}

}  // namespace BackupManifestSemanticValidator

}  // namespace galdrine::format
