#pragma once
// BackupMediaResourceRecordV1 is one file of a media item (the photo, its paired video,
// an original, a rendering): its type, size, digest, the payload key that opens it, and the
// parts that lay its plaintext out over a pack segment or over chunk files.

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
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

// BackupMediaResourceRoleV1 is the part a resource plays for its item.
enum class BackupMediaResourceRoleV1 : std::uint8_t {
  primary,
  pairedVideo,
  original,
  rendered,
};

class BackupMediaResourceRecordV1 {
 public:
  static constexpr std::size_t maximumOriginalUTIByteCount = 255;
  static constexpr std::uint64_t maximumPlaintextByteCount = std::uint64_t{1} << 36;
  static constexpr std::uint64_t maximumPixelCount = 2147483647;
  static constexpr std::size_t maximumPartCount = 4096;
  static constexpr std::uint64_t maximumPackOrdinal = 31;  // a pack segment holds at most 32 resources

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    ByteView itemIdentifier;
    BackupMediaResourceRoleV1 role;
    std::string_view originalUTI;
    std::uint64_t plaintextByteCount;
    std::optional<std::uint64_t> pixelWidth;
    std::optional<std::uint64_t> pixelHeight;
    std::optional<std::uint64_t> durationIEEE754Bits;  // the bits of a double, in seconds
    ByteView plaintextSHA256;
    ByteView payloadKeyIdentifier;
    std::span<const BackupPayloadPartRecordV1> parts;
  };

  // make checks, in this order: the three identifiers are 16 bytes (invalidIdentifier);
  // `plaintextSHA256` is 32 bytes (invalidDigest); then, each failing with invalidValue: the
  // type identifier is UTF-8 of 1 to 255 bytes; the size is 1 to 2^36; width and height are
  // both absent or both 1 to 2^31 - 1; a duration is a finite number not below 0; last the
  // parts' layout (invalidResourceLayout, see validateResourceParts).
  [[nodiscard]] static std::expected<BackupMediaResourceRecordV1, BackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map and its parts: shapes and field types
  // (malformedRecord), then each part's rules in order, then the rules of make.
  [[nodiscard]] static std::expected<BackupMediaResourceRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  // validateResourceParts: 1 to 4,096 parts, numbered 0, 1, 2, ... in order; parts that share
  // an artifact are all packed; each part starts where the ones before it end, and all of them
  // cover `plaintextByteCount` exactly. A packed resource is one part at offset 0 with the
  // resource's digest and an artifact ordinal of at most 31; otherwise every part is a chunk
  // whose artifact ordinal is its own ordinal. Any failure is invalidResourceLayout.
  [[nodiscard]] static std::expected<void, BackupManifestRecordV1Error> validateResourceParts(
      std::span<const BackupPayloadPartRecordV1> parts, std::uint64_t plaintextByteCount, ByteView plaintextSHA256);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const BackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] const BackupIdentifierV1& itemIdentifier() const { return itemIdentifier_; }
  [[nodiscard]] BackupMediaResourceRoleV1 role() const { return role_; }
  [[nodiscard]] const std::string& originalUTI() const { return originalUTI_; }
  [[nodiscard]] std::uint64_t plaintextByteCount() const { return plaintextByteCount_; }
  [[nodiscard]] std::optional<std::uint64_t> pixelWidth() const { return pixelWidth_; }
  [[nodiscard]] std::optional<std::uint64_t> pixelHeight() const { return pixelHeight_; }
  [[nodiscard]] std::optional<std::uint64_t> durationIEEE754Bits() const { return durationIEEE754Bits_; }
  [[nodiscard]] const platform::SHA256Digest& plaintextSHA256() const { return plaintextSHA256_; }
  [[nodiscard]] const BackupIdentifierV1& payloadKeyIdentifier() const { return payloadKeyIdentifier_; }
  [[nodiscard]] const std::vector<BackupPayloadPartRecordV1>& parts() const { return parts_; }

  friend bool operator==(const BackupMediaResourceRecordV1&, const BackupMediaResourceRecordV1&) = default;

 private:
  BackupMediaResourceRecordV1() = default;

  BackupIdentifierV1 identifier_{};
  BackupIdentifierV1 itemIdentifier_{};
  BackupMediaResourceRoleV1 role_{};
  std::string originalUTI_;
  std::uint64_t plaintextByteCount_ = 0;
  std::optional<std::uint64_t> pixelWidth_;
  std::optional<std::uint64_t> pixelHeight_;
  std::optional<std::uint64_t> durationIEEE754Bits_;
  platform::SHA256Digest plaintextSHA256_{};
  BackupIdentifierV1 payloadKeyIdentifier_{};
  std::vector<BackupPayloadPartRecordV1> parts_;
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupMediaResourceRoleV1> {
  static constexpr std::array<std::uint64_t, 4> rawValues{0, 1, 2, 3};
};

}  // namespace galdrine
