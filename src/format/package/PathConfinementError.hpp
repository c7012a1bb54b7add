#pragma once
// PathConfinementError is why a path was not proven to reach a real directory. Cases
// stand in the order of the check's contract.

#include <cstdint>

namespace galdrine::format {

enum class PathConfinementError : std::uint8_t {
  invalidPath,
  unavailableDirectory,
};

}  // namespace galdrine::format
