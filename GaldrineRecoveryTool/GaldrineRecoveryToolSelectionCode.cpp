#include "GaldrineRecoveryTool/GaldrineRecoveryToolSelectionCode.hpp"

#include <algorithm>

#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

namespace GaldrineRecoveryToolV1 {

std::string selectionCode(ByteView packageIdentifier, ByteView commitIdentifier) {
  GaldrinePlatformSHA256::Hasher hasher;
  hasher.update(GaldrineByteText::view(selectionCodeDomain));
  const std::uint8_t separator = 0;
  hasher.update(ByteView(&separator, 1));
  hasher.update(packageIdentifier);
  hasher.update(commitIdentifier);
  return GaldrineByteText::lowerHex(hasher.finalize());
}

bool validSelectionCode(std::string_view text) {
  // Upper-case digits are refused rather than folded: a code is compared as typed.
  const auto isLowerHexDigit = [](char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
  };
  return text.size() == selectionCodeCharacterCount && std::ranges::all_of(text, isLowerHexDigit);
}

}  // namespace GaldrineRecoveryToolV1
