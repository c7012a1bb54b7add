#include "format/manifest/BackupManifestWorkingSets.hpp"

#include <utility>
#include <variant>

namespace galdrine::format {

using Sets = BackupManifestWorkingSets;

void Sets::reserve(std::span<const BackupManifestSectionV1> sections) {
  std::array<std::size_t, 7> counts{};
  for (const auto& section : sections) counts[static_cast<std::size_t>(section.kind())] += section.records().size();
  payloadKeys_.reserve(counts[0]);
  items_.reserve(counts[1]);
  resources_.reserve(counts[2]);
  folders_.reserve(counts[3]);
  albums_.reserve(counts[4]);
  memberships_.reserve(counts[5]);
  tombstones_.reserve(counts[6]);
  itemResourceIdentifiers_.reserve(counts[2]);  // each resource is listed by one item, or the manifest fails
  partPlacements_.reserve(counts[2]);           // at least one part each
}

std::expected<void, BackupManifestRecordV1Error> Sets::enter(BackupManifestRecordV1&& record) {
  const bool entered =
      std::visit([this](auto&& typed) { return enterTyped(std::move(typed)); }, std::move(record).variant());
  if (!entered) return std::unexpected(BackupManifestRecordV1Error::duplicateRecord);
  return {};
}

std::array<std::uint64_t, 7> Sets::counts() const {
  return {payloadKeys_.size(), items_.size(),       resources_.size(), folders_.size(),
          albums_.size(),      memberships_.size(), tombstones_.size()};
}

bool Sets::enterTyped(BackupPayloadKeyRecordV1&& record) {
  const auto key = record.identifier();
  return payloadKeys_.enter(key, std::move(record));
}

bool Sets::enterTyped(BackupMediaItemRecordV1&& record) {
  const auto& listed = record.resourceIdentifiers();
  ItemFacts facts{
      .identifier = record.identifier(),
      .kind = record.kind(),
      .resourceCount = static_cast<std::uint8_t>(listed.size()),
      .firstResourcePosition = itemResourceIdentifiers_.size(),
  };
  if (!items_.enter(facts.identifier, std::move(facts))) return false;
  itemResourceIdentifiers_.insert(itemResourceIdentifiers_.end(), listed.begin(), listed.end());
  return true;
}

bool Sets::enterTyped(BackupMediaResourceRecordV1&& record) {
  const auto& parts = record.parts();
  ResourceFacts facts{
      .identifier = record.identifier(),
      .itemIdentifier = record.itemIdentifier(),
      .payloadKeyIdentifier = record.payloadKeyIdentifier(),
      .plaintextByteCount = record.plaintextByteCount(),
      .role = record.role(),
      .partCount = static_cast<std::uint16_t>(parts.size()),
      .firstPartPosition = partPlacements_.size(),
  };
  if (!resources_.enter(facts.identifier, std::move(facts))) return false;
  for (const auto& part : parts) partPlacements_.push_back(BackupRequiredPayloadSetV1::Placement::of(part));
  return true;
}

bool Sets::enterTyped(BackupAlbumFolderRecordV1&& record) {
  const auto key = record.identifier();
  return folders_.enter(key, std::move(record));
}

bool Sets::enterTyped(BackupAlbumRecordV1&& record) {
  const auto key = record.identifier();
  return albums_.enter(key, std::move(record));
}

bool Sets::enterTyped(BackupAlbumMembershipRecordV1&& record) {
  const auto key = record.key();
  return memberships_.enter(key, std::move(record));
}

bool Sets::enterTyped(BackupTombstoneRecordV1&& record) {
  const auto key = record.itemIdentifier();
  return tombstones_.enter(key, std::move(record));
}

}  // namespace galdrine::format
