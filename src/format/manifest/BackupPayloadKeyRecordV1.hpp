#pragma once
// BackupPayloadKeyRecordV1 holds one payload key, wrapped under the package master key,
// together with what the key is bound to: a pack segment or a chunked resource. The record
// itself proves nothing about the wrapped bytes; unwrapping does.

#include <array>
#include <cstddef>
#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::format {

// BackupPayloadKeyScopeV1 says what a payload key is bound to: one pack segment or one
// chunked resource.
enum class BackupPayloadKeyScopeV1 : std::uint8_t {
  pack,
  resource,
};

class BackupPayloadKeyRecordV1 {
 public:
  static constexpr std::size_t maximumWrappedKeyFrameByteCount = 4096;

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    BackupPayloadKeyScopeV1 scope;
    ByteView boundIdentifier;
    ByteView wrappedKeyFrame;
  };

  // make checks: `identifier` and `boundIdentifier` are 16 bytes (invalidIdentifier);
  // `wrappedKeyFrame` has 1 to 4,096 bytes (invalidKey).
  [[nodiscard]] static std::expected<BackupPayloadKeyRecordV1, BackupManifestRecordV1Error> make(const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), then
  // the rules of make.
  [[nodiscard]] static std::expected<BackupPayloadKeyRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const BackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] BackupPayloadKeyScopeV1 scope() const { return scope_; }
  [[nodiscard]] const BackupIdentifierV1& boundIdentifier() const { return boundIdentifier_; }
  [[nodiscard]] const Bytes& wrappedKeyFrame() const { return wrappedKeyFrame_; }

  friend bool operator==(const BackupPayloadKeyRecordV1&, const BackupPayloadKeyRecordV1&) = default;

 private:
  BackupPayloadKeyRecordV1() = default;

  BackupIdentifierV1 identifier_{};
  BackupPayloadKeyScopeV1 scope_{};
  BackupIdentifierV1 boundIdentifier_{};
  Bytes wrappedKeyFrame_;
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupPayloadKeyScopeV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

}  // namespace galdrine
