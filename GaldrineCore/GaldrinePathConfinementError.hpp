#pragma once
// GaldrinePathConfinementError is why a path was not proven to reach a real directory. Cases
// stand in the order of the check's contract.

#include <cstdint>

enum class GaldrinePathConfinementError : std::uint8_t {
  invalidPath,
  unavailableDirectory,
};
