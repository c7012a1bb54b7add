#pragma once
// PayloadAvailability is what looking at one payload artifact file found: either it matches
// its record, or it failed for a reason.

#include <optional>

#include "recovery/export/ResourceFailureReason.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

class PayloadAvailability {
 public:
  [[nodiscard]] static constexpr PayloadAvailability failed(ResourceFailureReason reason) { return PayloadAvailability(reason); }
  [[nodiscard]] static constexpr PayloadAvailability matching() { return PayloadAvailability(std::nullopt); }

  [[nodiscard]] constexpr bool isMatching() const { return !failureReason_.has_value(); }
  // failureReason is the reason of a failed artifact, and nothing for a matching one.
  [[nodiscard]] constexpr std::optional<ResourceFailureReason> failureReason() const { return failureReason_; }

  friend constexpr bool operator==(const PayloadAvailability&, const PayloadAvailability&) = default;

 private:
  explicit constexpr PayloadAvailability(std::optional<ResourceFailureReason> reason) : failureReason_(reason) {}

  std::optional<ResourceFailureReason> failureReason_;
};

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
