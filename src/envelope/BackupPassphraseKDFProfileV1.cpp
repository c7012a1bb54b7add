#include "envelope/BackupPassphraseKDFProfileV1.hpp"

#include <nlohmann/json.hpp>

namespace galdrine::envelope {

std::expected<BackupPassphraseKDFProfileV1, kdf::Argon2idError> BackupPassphraseKDFProfileV1::make(
    std::uint64_t operationsLimit, std::int64_t memoryLimitBytes) {
  const auto parameters = kdf::Argon2idParameters::make(operationsLimit, memoryLimitBytes);
  if (!parameters) return std::unexpected(parameters.error());
  return BackupPassphraseKDFProfileV1(*parameters);
}

nlohmann::json BackupPassphraseKDFProfileV1::encodeDocument() const { return parameters_.encodeDocument(); }

std::expected<BackupPassphraseKDFProfileV1, kdf::Argon2idParametersDocumentFailure>
BackupPassphraseKDFProfileV1::decodeDocument(const nlohmann::json& document) {
  const auto parameters = kdf::Argon2idParameters::decodeDocument(document);
  if (!parameters) return std::unexpected(parameters.error());
  return BackupPassphraseKDFProfileV1(*parameters);
}

}  // namespace galdrine::envelope
