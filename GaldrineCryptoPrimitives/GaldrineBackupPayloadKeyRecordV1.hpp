#pragma once
// GaldrineBackupPayloadKeyRecordV1 holds one payload key, wrapped under the package master key,
// together with what the key is bound to: a pack segment or a chunked resource. The record
// itself proves nothing about the wrapped bytes; unwrapping does.

#include <cstddef>
#include <expected>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyScopeV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupPayloadKeyRecordV1 {
 public:
  static constexpr std::size_t maximumWrappedKeyFrameByteCount = 4096;

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView identifier;
    GaldrineBackupPayloadKeyScopeV1 scope;
    ByteView boundIdentifier;
    ByteView wrappedKeyFrame;
  };

  // make checks: `identifier` and `boundIdentifier` are 16 bytes (invalidIdentifier);
  // `wrappedKeyFrame` has 1 to 4,096 bytes (invalidKey).
  [[nodiscard]] static std::expected<GaldrineBackupPayloadKeyRecordV1, GaldrineBackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), then
  // the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupPayloadKeyRecordV1, GaldrineBackupManifestRecordV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  [[nodiscard]] GaldrineCBORValue cborValue() const;
  // sortKey is the identifier.
  [[nodiscard]] ByteView sortKey() const { return identifier_; }

  [[nodiscard]] const GaldrineBackupIdentifierV1& identifier() const { return identifier_; }
  [[nodiscard]] GaldrineBackupPayloadKeyScopeV1 scope() const { return scope_; }
  [[nodiscard]] const GaldrineBackupIdentifierV1& boundIdentifier() const { return boundIdentifier_; }
  [[nodiscard]] const Bytes& wrappedKeyFrame() const { return wrappedKeyFrame_; }

  friend bool operator==(const GaldrineBackupPayloadKeyRecordV1&, const GaldrineBackupPayloadKeyRecordV1&) = default;

 private:
  GaldrineBackupPayloadKeyRecordV1() = default;

  GaldrineBackupIdentifierV1 identifier_{};
  GaldrineBackupPayloadKeyScopeV1 scope_{};
  GaldrineBackupIdentifierV1 boundIdentifier_{};
  Bytes wrappedKeyFrame_;
};
