#pragma once
// LocalKeyIdentifier names one locally stored key (the database key, a resource key):
// exactly 16 bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "keys/KeyMaterialError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::keys {

class LocalKeyIdentifier {
 public:
  static constexpr std::size_t byteCount = 16;

  // make copies 16 bytes; another length is invalidIdentifierByteCount(16, length).
  [[nodiscard]] static std::expected<LocalKeyIdentifier, KeyMaterialError> make(ByteView bytes);

  [[nodiscard]] ByteView bytes() const { return bytes_; }

  friend bool operator==(const LocalKeyIdentifier&, const LocalKeyIdentifier&) = default;

 private:
  LocalKeyIdentifier() = default;
  std::array<std::uint8_t, byteCount> bytes_{};
};

}  // namespace galdrine::keys
