#pragma once
// Argon2idParameters is the cost of one passphrase derivation: passes and memory. Its
// bounds are this system's own, far narrower than the library's, so that a stored envelope, a
// fixture or a calibration run can ask neither for less than the floor nor for a ruinous cost.
// No instance outside the bounds can exist: make is the only way in, and decoding goes through it.

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <expected>
#include <variant>

#include "kdf/Argon2idError.hpp"
#include "platform/JSONDocumentError.hpp"

namespace galdrine::kdf {

// Decoding a document fails in the JSON layer (its error as it came), or in validation.
using Argon2idParametersDocumentFailure = std::variant<platform::JSONDocumentError, Argon2idError>;

class Argon2idParameters {
 public:
  static constexpr std::uint64_t minimumOperationsLimit = 3;
  static constexpr std::uint64_t maximumOperationsLimit = 12;
  static constexpr std::int64_t minimumMemoryLimitBytes = 67'108'864;   // 64 MiB
  static constexpr std::int64_t maximumMemoryLimitBytes = 268'435'456;  // 256 MiB

  // make checks, in order, stopping at the first failure: the operations limit lies in 3...12
  // (operationsLimitOutOfRange), the memory limit in 64...256 MiB (memoryLimitOutOfRange), the
  // memory limit is a multiple of 1024 (memoryLimitMustBeKiBAligned).
  [[nodiscard]] static std::expected<Argon2idParameters, Argon2idError> make(std::uint64_t operationsLimit,
                                                                             std::int64_t memoryLimitBytes);

  [[nodiscard]] std::uint64_t operationsLimit() const { return operationsLimit_; }
  [[nodiscard]] std::int64_t memoryLimitBytes() const { return memoryLimitBytes_; }

  // encodeDocument gives the object {"operationsLimit": n, "memoryLimitBytes": n}.
  [[nodiscard]] nlohmann::json encodeDocument() const;

  // decodeDocument reads "operationsLimit", then "memoryLimitBytes", from a JSON object (other
  // keys are ignored), failing in the JSON layer on the first key that is missing, null, of the
  // wrong type or not an exact integer of the field's type; only then does make judge the two.
  [[nodiscard]] static std::expected<Argon2idParameters, Argon2idParametersDocumentFailure> decodeDocument(
      const nlohmann::json& document);

  friend bool operator==(const Argon2idParameters&, const Argon2idParameters&) = default;

 private:
  Argon2idParameters(std::uint64_t operationsLimit, std::int64_t memoryLimitBytes)
      : operationsLimit_(operationsLimit), memoryLimitBytes_(memoryLimitBytes) {}

  std::uint64_t operationsLimit_;
  std::int64_t memoryLimitBytes_;
};

}  // namespace galdrine::kdf
