#pragma once
// BackupAlbumMembershipRecordV1 puts one item into one album, at a manual position.
// Its sort key is the album's identifier followed by the item's, so an album's members lie
// together.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupAlbumMembershipRecordV1 {
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
  [[nodiscard]] static std::expected<BackupAlbumMembershipRecordV1, BackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<BackupAlbumMembershipRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the album identifier followed by the item identifier, 32 bytes.
  [[nodiscard]] ByteView sortKey() const { return key_; }

  [[nodiscard]] BackupIdentifierV1 albumIdentifier() const { return half(0); }
  [[nodiscard]] BackupIdentifierV1 itemIdentifier() const { return half(16); }
  [[nodiscard]] const Key& key() const { return key_; }
  [[nodiscard]] std::int64_t manualPosition() const { return manualPosition_; }
  [[nodiscard]] std::int64_t addedAtUTCMilliseconds() const { return addedAtUTCMilliseconds_; }

  friend bool operator==(const BackupAlbumMembershipRecordV1&, const BackupAlbumMembershipRecordV1&) = default;

 private:
  BackupAlbumMembershipRecordV1() = default;

  [[nodiscard]] BackupIdentifierV1 half(std::size_t offset) const {
    BackupIdentifierV1 identifier{};
    std::copy_n(key_.begin() + static_cast<std::ptrdiff_t>(offset), identifier.size(), identifier.begin());
    return identifier;
  }

  Key key_{};
  std::int64_t manualPosition_ = 0;
  std::int64_t addedAtUTCMilliseconds_ = 0;
};

}  // namespace galdrine::format
