#pragma once
// GaldrineBackupAlbumFolderRecordV1 is a folder of albums, itself in an optional parent folder.
// A record alone can only refuse being its own parent; longer cycles and depth are judged with
// all folders at hand.

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupAlbumFolderRecordV1 {
 public:
  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    std::optional<ByteView> parentFolderIdentifier;
    std::string_view name;
    std::int64_t manualPosition;
  };

  // make checks, in this order: `identifier` and a present parent are 16 bytes
  // (invalidIdentifier); `name` is UTF-8 of 1 to 512 bytes, not only whitespace and line
  // breaks (invalidValue); the parent is not the folder itself (invalidValue).
  [[nodiscard]] static std::expected<GaldrineBackupAlbumFolderRecordV1, GaldrineBackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupAlbumFolderRecordV1, GaldrineBackupManifestRecordV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  [[nodiscard]] GaldrineCBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const GaldrineBackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] const std::optional<GaldrineBackupIdentifierV1>& parentFolderIdentifier() const { return parentFolderIdentifier_; }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::int64_t manualPosition() const { return manualPosition_; }

  friend bool operator==(const GaldrineBackupAlbumFolderRecordV1&, const GaldrineBackupAlbumFolderRecordV1&) = default;

 private:
  GaldrineBackupAlbumFolderRecordV1() = default;

  GaldrineBackupIdentifierV1 identifier_{};
  std::optional<GaldrineBackupIdentifierV1> parentFolderIdentifier_;
  std::string name_;
  std::int64_t manualPosition_ = 0;
};
