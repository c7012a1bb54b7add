#pragma once
// BackupManifestRecordV1 is any one manifest record: a payload key, an item, a
// resource, a folder, an album, a membership or a tombstone. Its kind is the kind of section
// that holds records of its type.

#include <utility>
#include <variant>

#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupManifestSectionKindV1.hpp"
#include "format/manifest/BackupAlbumFolderRecordV1.hpp"
#include "format/manifest/BackupAlbumMembershipRecordV1.hpp"
#include "format/manifest/BackupAlbumRecordV1.hpp"
#include "format/manifest/BackupMediaItemRecordV1.hpp"
#include "format/manifest/BackupMediaResourceRecordV1.hpp"
#include "format/manifest/BackupPayloadKeyRecordV1.hpp"
#include "format/manifest/BackupTombstoneRecordV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupManifestRecordV1 {
 public:
  // The alternatives stand in the order of the section kinds, so the index is the kind.
  using Variant = std::variant<BackupPayloadKeyRecordV1, BackupMediaItemRecordV1, BackupMediaResourceRecordV1,
                               BackupAlbumFolderRecordV1, BackupAlbumRecordV1, BackupAlbumMembershipRecordV1,
                               BackupTombstoneRecordV1>;

  BackupManifestRecordV1(BackupPayloadKeyRecordV1 record) : variant_(std::move(record)) {}
  BackupManifestRecordV1(BackupMediaItemRecordV1 record) : variant_(std::move(record)) {}
  BackupManifestRecordV1(BackupMediaResourceRecordV1 record) : variant_(std::move(record)) {}
  BackupManifestRecordV1(BackupAlbumFolderRecordV1 record) : variant_(std::move(record)) {}
  BackupManifestRecordV1(BackupAlbumRecordV1 record) : variant_(std::move(record)) {}
  BackupManifestRecordV1(BackupAlbumMembershipRecordV1 record) : variant_(std::move(record)) {}
  BackupManifestRecordV1(BackupTombstoneRecordV1 record) : variant_(std::move(record)) {}

  [[nodiscard]] BackupManifestSectionKindV1 kind() const {
    return static_cast<BackupManifestSectionKindV1>(variant_.index());
  }
  // sortKey orders the records of one section (see each record type).
  [[nodiscard]] ByteView sortKey() const {
    return std::visit([](const auto& record) { return record.sortKey(); }, variant_);
  }
  [[nodiscard]] CBORValue cborValue() const {
    return std::visit([](const auto& record) { return record.cborValue(); }, variant_);
  }

  [[nodiscard]] const Variant& variant() const& { return variant_; }
  // Moving the record out lets a holder keep the typed record without a copy.
  [[nodiscard]] Variant&& variant() && { return std::move(variant_); }

  [[nodiscard]] const BackupPayloadKeyRecordV1* payloadKey() const { return std::get_if<0>(&variant_); }
  [[nodiscard]] const BackupMediaItemRecordV1* item() const { return std::get_if<1>(&variant_); }
  [[nodiscard]] const BackupMediaResourceRecordV1* resource() const { return std::get_if<2>(&variant_); }
  [[nodiscard]] const BackupAlbumFolderRecordV1* folder() const { return std::get_if<3>(&variant_); }
  [[nodiscard]] const BackupAlbumRecordV1* album() const { return std::get_if<4>(&variant_); }
  [[nodiscard]] const BackupAlbumMembershipRecordV1* membership() const { return std::get_if<5>(&variant_); }
  [[nodiscard]] const BackupTombstoneRecordV1* tombstone() const { return std::get_if<6>(&variant_); }

  friend bool operator==(const BackupManifestRecordV1&, const BackupManifestRecordV1&) = default;

 private:
  Variant variant_;
};

static_assert(std::variant_size_v<BackupManifestRecordV1::Variant> == 7);

}  // namespace galdrine::format
