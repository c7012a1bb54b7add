#pragma once
// GaldrineBackupPassphraseKDFProfileV1 is the Argon2id cost a new passphrase envelope is sealed
// with. It is GaldrineArgon2idParameters under the name the envelope's writers use, with the
// same bounds; no profile outside them can exist. Its document form is the JSON object
// {"operationsLimit": n, "memoryLimitBytes": n}, decoded through the same bounds.

#include <cstdint>
#include <expected>

#include <nlohmann/json_fwd.hpp>

#include "GaldrineCryptoSupport/GaldrineArgon2idError.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2idParameters.hpp"

class GaldrineBackupPassphraseKDFProfileV1 {
 public:
  // make fails exactly as GaldrineArgon2idParameters::make does, with its error.
  [[nodiscard]] static std::expected<GaldrineBackupPassphraseKDFProfileV1, GaldrineArgon2idError> make(
      std::uint64_t operationsLimit, std::int64_t memoryLimitBytes);

  [[nodiscard]] std::uint64_t operationsLimit() const { return parameters_.operationsLimit(); }
  [[nodiscard]] std::int64_t memoryLimitBytes() const { return parameters_.memoryLimitBytes(); }
  [[nodiscard]] const GaldrineArgon2idParameters& parameters() const { return parameters_; }

  [[nodiscard]] nlohmann::json encodeDocument() const;

  // decodeDocument fails in the JSON layer on the first missing, null, mistyped or inexact
  // field ("operationsLimit" first), and only then in the bounds.
  [[nodiscard]] static std::expected<GaldrineBackupPassphraseKDFProfileV1, GaldrineArgon2idParametersDocumentFailure>
  decodeDocument(const nlohmann::json& document);

  friend bool operator==(const GaldrineBackupPassphraseKDFProfileV1&, const GaldrineBackupPassphraseKDFProfileV1&) = default;

 private:
  explicit GaldrineBackupPassphraseKDFProfileV1(GaldrineArgon2idParameters parameters) : parameters_(parameters) {}

  GaldrineArgon2idParameters parameters_;
};
