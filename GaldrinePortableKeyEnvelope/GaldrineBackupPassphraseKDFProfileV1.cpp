#include "GaldrinePortableKeyEnvelope/GaldrineBackupPassphraseKDFProfileV1.hpp"

#include <nlohmann/json.hpp>

std::expected<GaldrineBackupPassphraseKDFProfileV1, GaldrineArgon2idError> GaldrineBackupPassphraseKDFProfileV1::make(
    std::uint64_t operationsLimit, std::int64_t memoryLimitBytes) {
  const auto parameters = GaldrineArgon2idParameters::make(operationsLimit, memoryLimitBytes);
  if (!parameters) return std::unexpected(parameters.error());
  return GaldrineBackupPassphraseKDFProfileV1(*parameters);
}

nlohmann::json GaldrineBackupPassphraseKDFProfileV1::encodeDocument() const { return parameters_.encodeDocument(); }

std::expected<GaldrineBackupPassphraseKDFProfileV1, GaldrineArgon2idParametersDocumentFailure>
GaldrineBackupPassphraseKDFProfileV1::decodeDocument(const nlohmann::json& document) {
  const auto parameters = GaldrineArgon2idParameters::decodeDocument(document);
  if (!parameters) return std::unexpected(parameters.error());
  return GaldrineBackupPassphraseKDFProfileV1(*parameters);
}
