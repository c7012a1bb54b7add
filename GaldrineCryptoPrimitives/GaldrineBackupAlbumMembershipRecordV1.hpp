#pragma once
// GaldrineBackupAlbumMembershipRecordV1 puts one item into one album, at a manual position.
// Its sort key is the album's identifier followed by the item's, so an album's members lie
// together.

#include <array>
#include <cstdint>
#include <expected>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupAlbumMembershipRecordV1 {
 public:
  using Key = std::array<std::uint8_t, 32>;  // album identifier, then item identifier

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView albumIdentifier;
    ByteView itemIdentifier;
    std::int64_t manualPosition;
    std::int64_t addedAtUTCMilliseconds;
  };

  // make checks that both identifiers are 16 bytes (invalidIdentifier).
  [[nodiscard]] static std::expected<GaldrineBackupAlbumMembershipRecordV1, GaldrineBackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupAlbumMembershipRecordV1, GaldrineBackupManifestRecordV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  [[nodiscard]] GaldrineCBORValue cborValue() const;
  // sortKey is the album identifier followed by the item identifier, 32 bytes.
  [[nodiscard]] ByteView sortKey() const { return key_; }

  [[nodiscard]] GaldrineBackupIdentifierV1 albumIdentifier() const { return *GaldrineFixedBytes::identifier(ByteView(key_).first(16)); }
  [[nodiscard]] GaldrineBackupIdentifierV1 itemIdentifier() const { return *GaldrineFixedBytes::identifier(ByteView(key_).last(16)); }
  [[nodiscard]] const Key& key() const { return key_; }
  [[nodiscard]] std::int64_t manualPosition() const { return manualPosition_; }
  [[nodiscard]] std::int64_t addedAtUTCMilliseconds() const { return addedAtUTCMilliseconds_; }

  friend bool operator==(const GaldrineBackupAlbumMembershipRecordV1&, const GaldrineBackupAlbumMembershipRecordV1&) = default;

 private:
  GaldrineBackupAlbumMembershipRecordV1() = default;

  Key key_{};
  std::int64_t manualPosition_ = 0;
  std::int64_t addedAtUTCMilliseconds_ = 0;
};
