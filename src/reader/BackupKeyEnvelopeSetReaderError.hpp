#pragma once
// BackupKeyEnvelopeSetReaderError is the reader's own refusal, apart from what the
// layers under it report. Cases stand in contract order; only factorUnavailable carries a
// payload, the factor that has no active envelope.

#include <cstdint>
#include <optional>

#include "envelope/PortableKeyFactorV1.hpp"

namespace galdrine::reader {

struct BackupKeyEnvelopeSetReaderError {
  enum class Code : std::uint8_t {
    factorUnavailable,  // payload: the factor asked for
    packageBindingMismatch,
  };

  Code code;
  std::optional<envelope::PortableKeyFactorV1> factor = std::nullopt;  // only for factorUnavailable

  static constexpr BackupKeyEnvelopeSetReaderError factorUnavailable(envelope::PortableKeyFactorV1 factor) {
    return {Code::factorUnavailable, factor};
  }
  static constexpr BackupKeyEnvelopeSetReaderError packageBindingMismatch() {
    return {Code::packageBindingMismatch};
  }

  friend constexpr bool operator==(const BackupKeyEnvelopeSetReaderError&,
                                   const BackupKeyEnvelopeSetReaderError&) = default;
};

}  // namespace galdrine::reader
