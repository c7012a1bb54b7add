#pragma once
// GaldrineLibraryDomainIdentifier names one library's key domain: exactly 16 bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>

#include "GaldrineKeyManagement/GaldrineLibraryDomainIdentifierError.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineLibraryDomainIdentifier {
 public:
  static constexpr std::size_t byteCount = 16;

  // make copies 16 bytes; another length is invalidByteCount(16, length).
  [[nodiscard]] static std::expected<GaldrineLibraryDomainIdentifier, GaldrineLibraryDomainIdentifierError> make(
      ByteView bytes);

  [[nodiscard]] ByteView bytes() const { return bytes_; }

  friend bool operator==(const GaldrineLibraryDomainIdentifier&, const GaldrineLibraryDomainIdentifier&) = default;

 private:
  GaldrineLibraryDomainIdentifier() = default;
  std::array<std::uint8_t, byteCount> bytes_{};
};
