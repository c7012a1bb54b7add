#pragma once
// GaldrineBackupManifestRecordV1 is any one manifest record: a payload key, an item, a
// resource, a folder, an album, a membership or a tombstone. Its kind is the kind of section
// that holds records of its type.

#include <utility>
#include <variant>

#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumFolderRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumMembershipRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionKindV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaItemRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaResourceRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupTombstoneRecordV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupManifestRecordV1 {
 public:
  // The alternatives stand in the order of the section kinds, so the index is the kind.
  using Variant = std::variant<GaldrineBackupPayloadKeyRecordV1, GaldrineBackupMediaItemRecordV1,
                               GaldrineBackupMediaResourceRecordV1, GaldrineBackupAlbumFolderRecordV1,
                               GaldrineBackupAlbumRecordV1, GaldrineBackupAlbumMembershipRecordV1,
                               GaldrineBackupTombstoneRecordV1>;

  GaldrineBackupManifestRecordV1(GaldrineBackupPayloadKeyRecordV1 record) : variant_(std::move(record)) {}
  GaldrineBackupManifestRecordV1(GaldrineBackupMediaItemRecordV1 record) : variant_(std::move(record)) {}
  GaldrineBackupManifestRecordV1(GaldrineBackupMediaResourceRecordV1 record) : variant_(std::move(record)) {}
  GaldrineBackupManifestRecordV1(GaldrineBackupAlbumFolderRecordV1 record) : variant_(std::move(record)) {}
  GaldrineBackupManifestRecordV1(GaldrineBackupAlbumRecordV1 record) : variant_(std::move(record)) {}
  GaldrineBackupManifestRecordV1(GaldrineBackupAlbumMembershipRecordV1 record) : variant_(std::move(record)) {}
  GaldrineBackupManifestRecordV1(GaldrineBackupTombstoneRecordV1 record) : variant_(std::move(record)) {}

  [[nodiscard]] GaldrineBackupManifestSectionKindV1 kind() const {
    return static_cast<GaldrineBackupManifestSectionKindV1>(variant_.index());
  }
  // sortKey orders the records of one section (see each record type).
  [[nodiscard]] ByteView sortKey() const {
    return std::visit([](const auto& record) { return record.sortKey(); }, variant_);
  }
  [[nodiscard]] GaldrineCBORValue cborValue() const {
    return std::visit([](const auto& record) { return record.cborValue(); }, variant_);
  }

  [[nodiscard]] const Variant& variant() const& { return variant_; }
  // Moving the record out lets a holder keep the typed record without a copy.
  [[nodiscard]] Variant&& variant() && { return std::move(variant_); }

  [[nodiscard]] const GaldrineBackupPayloadKeyRecordV1* payloadKey() const { return std::get_if<0>(&variant_); }
  [[nodiscard]] const GaldrineBackupMediaItemRecordV1* item() const { return std::get_if<1>(&variant_); }
  [[nodiscard]] const GaldrineBackupMediaResourceRecordV1* resource() const { return std::get_if<2>(&variant_); }
  [[nodiscard]] const GaldrineBackupAlbumFolderRecordV1* folder() const { return std::get_if<3>(&variant_); }
  [[nodiscard]] const GaldrineBackupAlbumRecordV1* album() const { return std::get_if<4>(&variant_); }
  [[nodiscard]] const GaldrineBackupAlbumMembershipRecordV1* membership() const { return std::get_if<5>(&variant_); }
  [[nodiscard]] const GaldrineBackupTombstoneRecordV1* tombstone() const { return std::get_if<6>(&variant_); }

  friend bool operator==(const GaldrineBackupManifestRecordV1&, const GaldrineBackupManifestRecordV1&) = default;

 private:
  Variant variant_;
};

static_assert(std::variant_size_v<GaldrineBackupManifestRecordV1::Variant> == 7);
