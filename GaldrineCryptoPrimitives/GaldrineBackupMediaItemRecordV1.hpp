#pragma once
// GaldrineBackupMediaItemRecordV1 is one photo or video of the library: its dates, its name,
// where it came from, whether it is in the trash, and the sorted identifiers of its 1 to 8
// resources.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaDateSourceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaKindV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaLifecycleV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaSourceTypeV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupMediaItemRecordV1 {
 public:
  static constexpr std::size_t maximumOriginalFilenameByteCount = 1024;
  static constexpr std::int64_t maximumTimeZoneSeconds = 64800;  // 18 hours either way

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    GaldrineBackupMediaKindV1 kind;
    std::int64_t displayDateUTCMilliseconds;
    std::optional<std::int64_t> displayTimeZoneSeconds;
    GaldrineBackupMediaDateSourceV1 dateSource;
    std::int64_t importDateUTCMilliseconds;
    std::string_view originalFilename;
    bool favorite;
    GaldrineBackupMediaLifecycleV1 lifecycle;
    std::optional<std::int64_t> trashDateUTCMilliseconds;
    GaldrineBackupMediaSourceTypeV1 sourceType;
    bool entitlementCounted;  // kept and written back unchanged; nothing here reads it
    std::span<const ByteView> resourceIdentifiers;
  };

  // make checks, in this order: `identifier` is 16 bytes (invalidIdentifier); then, each
  // failing with invalidValue: `originalFilename` is empty only for the share extension and the
  // private camera; it is valid UTF-8 of at most 1,024 bytes; a time zone lies within
  // +-64,800 seconds; a trash date is present exactly for a trashed item; there are 1 to 8
  // resource identifiers of 16 bytes in strictly ascending order.
  [[nodiscard]] static std::expected<GaldrineBackupMediaItemRecordV1, GaldrineBackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupMediaItemRecordV1, GaldrineBackupManifestRecordV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  [[nodiscard]] GaldrineCBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const GaldrineBackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] GaldrineBackupMediaKindV1 kind() const { return kind_; }
  [[nodiscard]] std::int64_t displayDateUTCMilliseconds() const { return displayDateUTCMilliseconds_; }
  [[nodiscard]] std::optional<std::int64_t> displayTimeZoneSeconds() const { return displayTimeZoneSeconds_; }
  [[nodiscard]] GaldrineBackupMediaDateSourceV1 dateSource() const { return dateSource_; }
  [[nodiscard]] std::int64_t importDateUTCMilliseconds() const { return importDateUTCMilliseconds_; }
  [[nodiscard]] const std::string& originalFilename() const { return originalFilename_; }
  [[nodiscard]] bool favorite() const { return favorite_; }
  [[nodiscard]] GaldrineBackupMediaLifecycleV1 lifecycle() const { return lifecycle_; }
  [[nodiscard]] std::optional<std::int64_t> trashDateUTCMilliseconds() const { return trashDateUTCMilliseconds_; }
  [[nodiscard]] GaldrineBackupMediaSourceTypeV1 sourceType() const { return sourceType_; }
  [[nodiscard]] bool entitlementCounted() const { return entitlementCounted_; }
  [[nodiscard]] const std::vector<GaldrineBackupIdentifierV1>& resourceIdentifiers() const { return resourceIdentifiers_; }

  friend bool operator==(const GaldrineBackupMediaItemRecordV1&, const GaldrineBackupMediaItemRecordV1&) = default;

 private:
  GaldrineBackupMediaItemRecordV1() = default;

  GaldrineBackupIdentifierV1 identifier_{};
  GaldrineBackupMediaKindV1 kind_{};
  std::int64_t displayDateUTCMilliseconds_ = 0;
  std::optional<std::int64_t> displayTimeZoneSeconds_;
  GaldrineBackupMediaDateSourceV1 dateSource_{};
  std::int64_t importDateUTCMilliseconds_ = 0;
  std::string originalFilename_;
  bool favorite_ = false;
  GaldrineBackupMediaLifecycleV1 lifecycle_{};
  std::optional<std::int64_t> trashDateUTCMilliseconds_;
  GaldrineBackupMediaSourceTypeV1 sourceType_{};
  bool entitlementCounted_ = false;
  std::vector<GaldrineBackupIdentifierV1> resourceIdentifiers_;
};
