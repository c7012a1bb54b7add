#pragma once
// BackupSourceScanError is why a source directory could not be scanned.

#include <cstdint>

namespace galdrine::backuptool {

enum class BackupSourceScanError : std::uint8_t {
  unavailable,  // the source is no directory, cannot be opened, or a directory listing failed
  tooLarge,     // more entries, deeper nesting or more bytes than one snapshot can hold
};

}  // namespace galdrine::backuptool
