#pragma once
// GaldrineRecoveryFixtureVerificationError is why a fixture run failed. The cases carry no
// detail: a fixture run only says whether the build still reads the format.

#include <cstdint>

enum class GaldrineRecoveryFixtureVerificationError : std::uint8_t {
  invalidIndex,        // the index cannot be read or decoded, or breaks a rule of the index
  invalidFixturePath,  // a fixture's identifier or file name breaks a rule
  invalidFixture,      // a fixture cannot be read, or disagrees with what it expects
  invalidHex,          // a hexadecimal field is malformed
};
