#pragma once
// GaldrineLocalKeyIdentifier names one locally stored key (the database key, a resource key):
// exactly 16 bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "GaldrineKeyManagement/GaldrineKeyMaterialError.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineLocalKeyIdentifier {
 public:
  static constexpr std::size_t byteCount = 16;

  // make copies 16 bytes; another length is invalidIdentifierByteCount(16, length).
  [[nodiscard]] static std::expected<GaldrineLocalKeyIdentifier, GaldrineKeyMaterialError> make(ByteView bytes);

  [[nodiscard]] ByteView bytes() const { return bytes_; }

  friend bool operator==(const GaldrineLocalKeyIdentifier&, const GaldrineLocalKeyIdentifier&) = default;

 private:
  GaldrineLocalKeyIdentifier() = default;
  std::array<std::uint8_t, byteCount> bytes_{};
};
