#include "recovery/inspection/AuthenticationBudget.hpp"

#include <limits>

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;

// addedWithin gives `total + amount` if that neither overflows nor passes `limit`.
[[nodiscard]] std::expected<std::uint64_t, Error> addedWithin(std::uint64_t total, std::uint64_t amount,
                                                              std::uint64_t limit) {
  if (amount > std::numeric_limits<std::uint64_t>::max() - total) return std::unexpected(Error::resourceLimitExceeded);
  if (total + amount > limit) return std::unexpected(Error::resourceLimitExceeded);
  return total + amount;
}

}  // namespace

std::expected<void, Error> AuthenticationBudget::reserve(const format::BackupArtifactReferenceV1& reference,
                                                         std::uint64_t recordCount) {
  if (const auto charged = charged_.find(reference.identifier()); charged != charged_.end()) {
    if (charged->second != reference) return std::unexpected(Error::integrityFailure);
    return {};
  }
  const auto bytes =
      addedWithin(consumedPlaintextByteCount_, reference.plaintextByteCount(), maximumManifestPlaintextByteCount_);
  if (!bytes) return std::unexpected(bytes.error());
  const auto records = addedWithin(consumedRecordCount_, recordCount, maximumManifestRecordCount_);
  if (!records) return std::unexpected(records.error());
  consumedPlaintextByteCount_ = *bytes;
  consumedRecordCount_ = *records;
  charged_.emplace(reference.identifier(), reference);
  return {};
}

}  // namespace galdrine::recovery
