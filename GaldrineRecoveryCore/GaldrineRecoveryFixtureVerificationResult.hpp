#pragma once
// GaldrineRecoveryFixtureVerificationResult is what a passing fixture index proved: how many
// fixtures it lists, and how many vectors, entries and resources they held together.

#include <cstdint>

struct GaldrineRecoveryFixtureVerificationResult {
  std::int64_t fixtureCount = 0;
  std::int64_t productionVectorCount = 0;

  friend bool operator==(const GaldrineRecoveryFixtureVerificationResult&,
                         const GaldrineRecoveryFixtureVerificationResult&) = default;
};
