#pragma once
// BackupMediaItemRecordV1 is one photo or video of the library: its dates, its name,
// where it came from, whether it is in the trash, and the sorted identifiers of its 1 to 8
// resources.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::format {

// BackupMediaKindV1 is what a media item shows; a live photo is a still with its
// paired movie.
enum class BackupMediaKindV1 : std::uint8_t {
  photo,
  video,
  livePhoto,
};

// BackupMediaDateSourceV1 says where an item's display date came from.
enum class BackupMediaDateSourceV1 : std::uint8_t {
  photos,
  embedded,
  file,
  imported,
  camera,
};

// BackupMediaLifecycleV1 says whether an item is live or in the trash.
enum class BackupMediaLifecycleV1 : std::uint8_t {
  active,
  trash,
};

// BackupMediaSourceTypeV1 says how an item entered the vault.
enum class BackupMediaSourceTypeV1 : std::uint8_t {
  photos,
  files,
  shareExtension,
  privateCamera,
  restore,
};

class BackupMediaItemRecordV1 {
 public:
  static constexpr std::size_t maximumOriginalFilenameByteCount = 1024;
  static constexpr std::int64_t maximumTimeZoneSeconds = 64800;  // 18 hours either way

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    BackupMediaKindV1 kind;
    std::int64_t displayDateUTCMilliseconds;
    std::optional<std::int64_t> displayTimeZoneSeconds;
    BackupMediaDateSourceV1 dateSource;
    std::int64_t importDateUTCMilliseconds;
    std::string_view originalFilename;
    bool favorite;
    BackupMediaLifecycleV1 lifecycle;
    std::optional<std::int64_t> trashDateUTCMilliseconds;
    BackupMediaSourceTypeV1 sourceType;
    bool entitlementCounted;  // kept and written back unchanged; nothing here reads it
    std::span<const ByteView> resourceIdentifiers;
  };

  // make checks, in this order: `identifier` is 16 bytes (invalidIdentifier); then, each
  // failing with invalidValue: `originalFilename` is empty only for the share extension and the
  // private camera; it is valid UTF-8 of at most 1,024 bytes; a time zone lies within
  // +-64,800 seconds; a trash date is present exactly for a trashed item; there are 1 to 8
  // resource identifiers of 16 bytes in strictly ascending order.
  [[nodiscard]] static std::expected<BackupMediaItemRecordV1, BackupManifestRecordV1Error> make(const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<BackupMediaItemRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const BackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] BackupMediaKindV1 kind() const { return kind_; }
  [[nodiscard]] std::int64_t displayDateUTCMilliseconds() const { return displayDateUTCMilliseconds_; }
  [[nodiscard]] std::optional<std::int64_t> displayTimeZoneSeconds() const { return displayTimeZoneSeconds_; }
  [[nodiscard]] BackupMediaDateSourceV1 dateSource() const { return dateSource_; }
  [[nodiscard]] std::int64_t importDateUTCMilliseconds() const { return importDateUTCMilliseconds_; }
  [[nodiscard]] const std::string& originalFilename() const { return originalFilename_; }
  [[nodiscard]] bool favorite() const { return favorite_; }
  [[nodiscard]] BackupMediaLifecycleV1 lifecycle() const { return lifecycle_; }
  [[nodiscard]] std::optional<std::int64_t> trashDateUTCMilliseconds() const { return trashDateUTCMilliseconds_; }
  [[nodiscard]] BackupMediaSourceTypeV1 sourceType() const { return sourceType_; }
  [[nodiscard]] bool entitlementCounted() const { return entitlementCounted_; }
  [[nodiscard]] const std::vector<BackupIdentifierV1>& resourceIdentifiers() const { return resourceIdentifiers_; }

  friend bool operator==(const BackupMediaItemRecordV1&, const BackupMediaItemRecordV1&) = default;

 private:
  BackupMediaItemRecordV1() = default;

  BackupIdentifierV1 identifier_{};
  BackupMediaKindV1 kind_{};
  std::int64_t displayDateUTCMilliseconds_ = 0;
  std::optional<std::int64_t> displayTimeZoneSeconds_;
  BackupMediaDateSourceV1 dateSource_{};
  std::int64_t importDateUTCMilliseconds_ = 0;
  std::string originalFilename_;
  bool favorite_ = false;
  BackupMediaLifecycleV1 lifecycle_{};
  std::optional<std::int64_t> trashDateUTCMilliseconds_;
  BackupMediaSourceTypeV1 sourceType_{};
  bool entitlementCounted_ = false;
  std::vector<BackupIdentifierV1> resourceIdentifiers_;
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaKindV1> {
  static constexpr std::array<std::uint64_t, 3> rawValues{0, 1, 2};
};

template <>
struct RawValueTable<format::BackupMediaDateSourceV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};

template <>
struct RawValueTable<format::BackupMediaLifecycleV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

template <>
struct RawValueTable<format::BackupMediaSourceTypeV1> {
  static constexpr std::array<std::uint64_t, 5> rawValues{0, 1, 2, 3, 4};
};

}  // namespace galdrine
