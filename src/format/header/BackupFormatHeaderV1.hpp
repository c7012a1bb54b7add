#pragma once
// BackupFormatHeaderV1 is the one object of a package readable without a key: the file
// "format-header.cbor", which pins the format, schema, algorithm suite, layout and ceilings of
// version 1, so a reader can refuse a package it cannot honour before asking for a credential.
// Only the 16-byte package identifier varies; every valid header is exactly 159 bytes.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <variant>

#include "format/cbor/CBORError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// BackupFormatHeaderV1Error is why a format header was refused. Cases stand in the
// order of the header's contract; the first four carry an unsigned payload.
struct BackupFormatHeaderV1Error {
  enum class Code : std::uint8_t {
    invalidFieldType,                 // payload: the field's key
    unsupportedFormatVersion,         // payload: the version found
    unsupportedMinimumReaderVersion,  // payload: the version found
    incompatibleLayoutLimit,          // payload: the field's key
    invalidTopLevel,
    invalidFieldSet,
    invalidMagic,
    unsupportedFormatIdentifier,
    unsupportedHeaderSchema,
    invalidPackageIdentifier,
    unsupportedAlgorithmSuite,
    unsupportedLayout,
  };

  Code code;
  std::uint64_t payload = 0;  // zero for the cases without one

  static constexpr BackupFormatHeaderV1Error invalidFieldType(std::uint64_t key) {
    return {Code::invalidFieldType, key};
  }
  static constexpr BackupFormatHeaderV1Error unsupportedFormatVersion(std::uint64_t found) {
    return {Code::unsupportedFormatVersion, found};
  }
  static constexpr BackupFormatHeaderV1Error unsupportedMinimumReaderVersion(std::uint64_t found) {
    return {Code::unsupportedMinimumReaderVersion, found};
  }
  static constexpr BackupFormatHeaderV1Error incompatibleLayoutLimit(std::uint64_t key) {
    return {Code::incompatibleLayoutLimit, key};
  }
  static constexpr BackupFormatHeaderV1Error invalidTopLevel() { return {Code::invalidTopLevel}; }
  static constexpr BackupFormatHeaderV1Error invalidFieldSet() { return {Code::invalidFieldSet}; }
  static constexpr BackupFormatHeaderV1Error invalidMagic() { return {Code::invalidMagic}; }
  static constexpr BackupFormatHeaderV1Error unsupportedFormatIdentifier() {
    return {Code::unsupportedFormatIdentifier};
  }
  static constexpr BackupFormatHeaderV1Error unsupportedHeaderSchema() { return {Code::unsupportedHeaderSchema}; }
  static constexpr BackupFormatHeaderV1Error invalidPackageIdentifier() { return {Code::invalidPackageIdentifier}; }
  static constexpr BackupFormatHeaderV1Error unsupportedAlgorithmSuite() { return {Code::unsupportedAlgorithmSuite}; }
  static constexpr BackupFormatHeaderV1Error unsupportedLayout() { return {Code::unsupportedLayout}; }

  friend constexpr bool operator==(const BackupFormatHeaderV1Error&, const BackupFormatHeaderV1Error&) = default;
};

// A header decode fails either in the codec (its error passed on unchanged) or in the header's
// own checks.
using BackupFormatHeaderV1Failure = std::variant<CBORError, BackupFormatHeaderV1Error>;

class BackupFormatHeaderV1 {
 public:
  static constexpr std::size_t encodedByteCount = 159;

  // make fails with invalidPackageIdentifier unless `packageIdentifier` has exactly 16 bytes.
  [[nodiscard]] static std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Error> make(ByteView packageIdentifier);

  // decode checks, in this order, and the first failure decides: the codec under the
  // formatHeader limits (its error unchanged), a map at the root, the key set exactly 0 to 11,
  // then keys 0 to 7 each for kind and value, then the ceilings under keys 8 to 11. Nothing is
  // kept of a header that failed.
  [[nodiscard]] static std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Failure> decode(ByteView bytes);

  [[nodiscard]] const Bytes& packageIdentifier() const { return packageIdentifier_; }

  // encoded gives the 159 bytes of the header file through the deterministic codec; a codec
  // failure (which valid fields cannot cause) is passed on as it is.
  [[nodiscard]] std::expected<Bytes, CBORError> encoded() const;

  friend bool operator==(const BackupFormatHeaderV1&, const BackupFormatHeaderV1&) = default;

 private:
  explicit BackupFormatHeaderV1(Bytes packageIdentifier) : packageIdentifier_(std::move(packageIdentifier)) {}

  Bytes packageIdentifier_;
};

}  // namespace galdrine::format
