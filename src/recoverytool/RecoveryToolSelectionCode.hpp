#pragma once
// A selection code names one snapshot of one package without revealing its identifiers:
// the lower-case hexadecimal SHA-256 of a fixed label, a zero byte, the package identifier
// and the commit identifier. It is stable across inspections of a package and means
// nothing for any other package.

#include <string>
#include <string_view>

#include "platform/Bytes.hpp"

namespace galdrine::recoverytool {

namespace RecoveryTool {

inline constexpr std::string_view selectionCodeDomain = "galdrine/recovery/cli-snapshot-selection/v1";
inline constexpr std::size_t selectionCodeCharacterCount = 64;

// selectionCode gives the 64-character code of a commit of a package.
[[nodiscard]] std::string selectionCode(ByteView packageIdentifier, ByteView commitIdentifier);

// validSelectionCode is true for exactly 64 characters, each a digit or a letter a to f.
[[nodiscard]] bool validSelectionCode(std::string_view text);

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
