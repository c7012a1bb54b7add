#include "recoverytool/RecoveryToolSelectionCode.hpp"

#include <algorithm>

#include "platform/SHA256.hpp"

namespace galdrine::recoverytool {

namespace RecoveryTool {

std::string selectionCode(ByteView packageIdentifier, ByteView commitIdentifier) {
  platform::SHA256::Hasher hasher;
  hasher.update(ByteText::view(selectionCodeDomain));
  const std::uint8_t separator = 0;
  hasher.update(ByteView(&separator, 1));
  hasher.update(packageIdentifier);
  hasher.update(commitIdentifier);
  return ByteText::lowerHex(hasher.finalize());
}

bool validSelectionCode(std::string_view text) {
  // Upper-case digits are refused rather than folded: a code is compared as typed.
  const auto isLowerHexDigit = [](char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
  };
  return text.size() == selectionCodeCharacterCount && std::ranges::all_of(text, isLowerHexDigit);
}

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
