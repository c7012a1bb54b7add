#pragma once
// GaldrineRecoveryToolCredentialReading is how a credential enters the driver. The driver
// asks once per run, after the command line parsed, and owns (and wipes) what it is given.

#include <cstdint>
#include <expected>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialFactorV1.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialInputV1.hpp"

// A reader's failure reaches the driver without a reason: whatever went wrong, no usable
// credential was obtained. A reader keeps its own reasons to itself.
struct GaldrineRecoveryToolCredentialReadingFailure {
  friend bool operator==(const GaldrineRecoveryToolCredentialReadingFailure&,
                         const GaldrineRecoveryToolCredentialReadingFailure&) = default;
};

class GaldrineRecoveryToolCredentialReading {
 public:
  virtual ~GaldrineRecoveryToolCredentialReading() = default;

  // read gives the credential for `factor` from `input` as raw bytes, which the caller owns
  // and must wipe. `maximumByteCount` is the bound the reader enforces on its own input; a
  // reader that fails keeps no copy of what it read.
  [[nodiscard]] virtual std::expected<Bytes, GaldrineRecoveryToolCredentialReadingFailure> read(
      GaldrineRecoveryToolCredentialFactorV1 factor, GaldrineRecoveryToolCredentialInputV1 input,
      std::int64_t maximumByteCount) = 0;
};
