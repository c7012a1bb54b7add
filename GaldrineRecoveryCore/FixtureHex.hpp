#pragma once
// FixtureHex decodes the hexadecimal fields of fixtures, whose names end in "Hex": an even
// number of digits, each 0-9, a-f or A-F. Anything else is invalidHex.

#include <expected>
#include <string>
#include <string_view>
#include <utility>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationError.hpp"

namespace FixtureHex {

[[nodiscard]] inline std::expected<Bytes, GaldrineRecoveryFixtureVerificationError> decode(std::string_view text) {
  std::string lowered(text);
  for (char& digit : lowered) {
    if (digit >= 'A' && digit <= 'F') digit = static_cast<char>(digit - 'A' + 'a');
  }
  auto bytes = GaldrineByteText::parseLowerHex(lowered);
  if (!bytes) return std::unexpected(GaldrineRecoveryFixtureVerificationError::invalidHex);
  return std::move(*bytes);
}

}  // namespace FixtureHex
