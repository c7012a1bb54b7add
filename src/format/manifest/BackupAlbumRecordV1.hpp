#pragma once
// BackupAlbumRecordV1 is an album: its name, an optional folder, an optional cover
// item, how it sorts, and its own position among its siblings.

#include <array>
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
#include "platform/RawValue.hpp"

namespace galdrine::format {

// BackupAlbumSortModeV1 is how an album orders its items.
enum class BackupAlbumSortModeV1 : std::uint8_t {
  manual,
  displayDateAscending,
  displayDateDescending,
  importDateAscending,
  importDateDescending,
};

class BackupAlbumRecordV1 {
 public:
  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    std::optional<ByteView> parentFolderIdentifier;
    std::string_view name;
    std::optional<ByteView> coverItemIdentifier;
    BackupAlbumSortModeV1 sortMode;
    bool manualOrderEnabled;
    std::int64_t manualPosition;
  };

  // make checks, in this order: `identifier` and a present parent folder and cover item are
  // 16 bytes (invalidIdentifier); `name` is UTF-8 of 1 to 512 bytes, not only whitespace and
  // line breaks (invalidText).
  [[nodiscard]] static std::expected<BackupAlbumRecordV1, BackupManifestRecordV1Error> make(const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<BackupAlbumRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const BackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] const std::optional<BackupIdentifierV1>& parentFolderIdentifier() const {
    return parentFolderIdentifier_;
  }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::optional<BackupIdentifierV1>& coverItemIdentifier() const { return coverItemIdentifier_; }
  [[nodiscard]] BackupAlbumSortModeV1 sortMode() const { return sortMode_; }
  [[nodiscard]] bool manualOrderEnabled() const { return manualOrderEnabled_; }
  [[nodiscard]] std::int64_t manualPosition() const { return manualPosition_; }

  friend bool operator==(const BackupAlbumRecordV1&, const BackupAlbumRecordV1&) = default;

 private:
  BackupAlbumRecordV1() = default;

  BackupIdentifierV1 identifier_{};
  std::optional<BackupIdentifierV1> parentFolderIdentifier_;
  std::string name_;
  std::optional<BackupIdentifierV1> coverItemIdentifier_;
  BackupAlbumSortModeV1 sortMode_{};
  bool manualOrderEnabled_ = false;
  std::int64_t manualPosition_ = 0;
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupAlbumSortModeV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};

}  // namespace galdrine
