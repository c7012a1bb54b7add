#pragma once
// GaldrineBackupAlbumRecordV1 is an album: its name, an optional folder, an optional cover
// item, how it sorts, and its own position among its siblings.

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumSortModeV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupAlbumRecordV1 {
 public:
  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    std::optional<ByteView> parentFolderIdentifier;
    std::string_view name;
    std::optional<ByteView> coverItemIdentifier;
    GaldrineBackupAlbumSortModeV1 sortMode;
    bool manualOrderEnabled;
    std::int64_t manualPosition;
  };

  // make checks, in this order: `identifier` and a present parent folder and cover item are
  // 16 bytes (invalidIdentifier); `name` is UTF-8 of 1 to 512 bytes, not only whitespace and
  // line breaks (invalidText).
  [[nodiscard]] static std::expected<GaldrineBackupAlbumRecordV1, GaldrineBackupManifestRecordV1Error> make(const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupAlbumRecordV1, GaldrineBackupManifestRecordV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  [[nodiscard]] GaldrineCBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const GaldrineBackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] const std::optional<GaldrineBackupIdentifierV1>& parentFolderIdentifier() const { return parentFolderIdentifier_; }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::optional<GaldrineBackupIdentifierV1>& coverItemIdentifier() const { return coverItemIdentifier_; }
  [[nodiscard]] GaldrineBackupAlbumSortModeV1 sortMode() const { return sortMode_; }
  [[nodiscard]] bool manualOrderEnabled() const { return manualOrderEnabled_; }
  [[nodiscard]] std::int64_t manualPosition() const { return manualPosition_; }

  friend bool operator==(const GaldrineBackupAlbumRecordV1&, const GaldrineBackupAlbumRecordV1&) = default;

 private:
  GaldrineBackupAlbumRecordV1() = default;

  GaldrineBackupIdentifierV1 identifier_{};
  std::optional<GaldrineBackupIdentifierV1> parentFolderIdentifier_;
  std::string name_;
  std::optional<GaldrineBackupIdentifierV1> coverItemIdentifier_;
  GaldrineBackupAlbumSortModeV1 sortMode_{};
  bool manualOrderEnabled_ = false;
  std::int64_t manualPosition_ = 0;
};
