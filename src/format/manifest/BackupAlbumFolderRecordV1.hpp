#pragma once
// BackupAlbumFolderRecordV1 is a folder of albums, itself in an optional parent folder.
// A record alone can only refuse being its own parent; longer cycles and depth are judged with
// all folders at hand.

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupAlbumFolderRecordV1 {
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
  [[nodiscard]] static std::expected<BackupAlbumFolderRecordV1, BackupManifestRecordV1Error> make(const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<BackupAlbumFolderRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const BackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] const std::optional<BackupIdentifierV1>& parentFolderIdentifier() const {
    return parentFolderIdentifier_;
  }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::int64_t manualPosition() const { return manualPosition_; }

  friend bool operator==(const BackupAlbumFolderRecordV1&, const BackupAlbumFolderRecordV1&) = default;

 private:
  BackupAlbumFolderRecordV1() = default;

  BackupIdentifierV1 identifier_{};
  std::optional<BackupIdentifierV1> parentFolderIdentifier_;
  std::string name_;
  std::int64_t manualPosition_ = 0;
};

}  // namespace galdrine::format
