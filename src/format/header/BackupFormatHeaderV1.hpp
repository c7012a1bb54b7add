#pragma once
// BackupFormatHeaderV1 is the one object of a package readable without a key: the file
// "format-header.cbor", which pins the format, schema, algorithm suite, layout and ceilings of
// version 1, so a reader can refuse a package it cannot honour before asking for a credential.
// Only the 16-byte package identifier varies; every valid header is exactly 159 bytes.

#include <cstddef>
#include <expected>
#include <variant>

#include "format/header/BackupFormatHeaderV1Error.hpp"
#include "format/cbor/CBORError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// A header decode fails either in the codec (its error passed on unchanged) or in the header's
// own checks.
using BackupFormatHeaderV1Failure = std::variant<CBORError, BackupFormatHeaderV1Error>;

class BackupFormatHeaderV1 {
 public:
  static constexpr std::size_t encodedByteCount = 159;

  // make fails with invalidPackageIdentifier unless `packageIdentifier` has exactly 16 bytes.
  [[nodiscard]] static std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Error> make(
      ByteView packageIdentifier);

  // decode checks, in this order, and the first failure decides: the codec under the
  // formatHeader limits (its error unchanged), a map at the root, the key set exactly 0 to 11,
  // then keys 0 to 7 each for kind and value, then the ceilings under keys 8 to 11. Nothing is
  // kept of a header that failed.
  [[nodiscard]] static std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Failure> decode(
      ByteView bytes);

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
