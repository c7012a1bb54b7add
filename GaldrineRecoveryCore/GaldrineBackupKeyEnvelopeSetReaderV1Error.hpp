#pragma once
// GaldrineBackupKeyEnvelopeSetReaderV1Error is the reader's own refusal, apart from what the
// layers under it report. Cases stand in contract order; only factorUnavailable carries a
// payload, the factor that has no active envelope.

#include <cstdint>
#include <optional>

#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyFactorV1.hpp"

struct GaldrineBackupKeyEnvelopeSetReaderV1Error {
  enum class Code : std::uint8_t {
    factorUnavailable,  // payload: the factor asked for
    packageBindingMismatch,
  };

  Code code;
  std::optional<GaldrinePortableKeyFactorV1> factor = std::nullopt;  // only for factorUnavailable

  static constexpr GaldrineBackupKeyEnvelopeSetReaderV1Error factorUnavailable(GaldrinePortableKeyFactorV1 factor) {
    return {Code::factorUnavailable, factor};
  }
  static constexpr GaldrineBackupKeyEnvelopeSetReaderV1Error packageBindingMismatch() {
    return {Code::packageBindingMismatch};
  }

  friend constexpr bool operator==(const GaldrineBackupKeyEnvelopeSetReaderV1Error&,
                                   const GaldrineBackupKeyEnvelopeSetReaderV1Error&) = default;
};
