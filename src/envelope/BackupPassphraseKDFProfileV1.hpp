#pragma once
// BackupPassphraseKDFProfileV1 is the Argon2id cost a new passphrase envelope is sealed
// with. It is Argon2idParameters under the name the envelope's writers use, with the
// same bounds; no profile outside them can exist. Its document form is the JSON object
// {"operationsLimit": n, "memoryLimitBytes": n}, decoded through the same bounds.

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <expected>

#include "kdf/Argon2idError.hpp"
#include "kdf/Argon2idParameters.hpp"

namespace galdrine::envelope {

class BackupPassphraseKDFProfileV1 {
 public:
  // make fails exactly as Argon2idParameters::make does, with its error.
  [[nodiscard]] static std::expected<BackupPassphraseKDFProfileV1, kdf::Argon2idError> make(
      std::uint64_t operationsLimit, std::int64_t memoryLimitBytes);

  [[nodiscard]] std::uint64_t operationsLimit() const { return parameters_.operationsLimit(); }
  [[nodiscard]] std::int64_t memoryLimitBytes() const { return parameters_.memoryLimitBytes(); }
  [[nodiscard]] const kdf::Argon2idParameters& parameters() const { return parameters_; }

  [[nodiscard]] nlohmann::json encodeDocument() const;

  // decodeDocument fails in the JSON layer on the first missing, null, mistyped or inexact
  // field ("operationsLimit" first), and only then in the bounds.
  [[nodiscard]] static std::expected<BackupPassphraseKDFProfileV1, kdf::Argon2idParametersDocumentFailure>
  decodeDocument(const nlohmann::json& document);

  friend bool operator==(const BackupPassphraseKDFProfileV1&, const BackupPassphraseKDFProfileV1&) = default;

 private:
  explicit BackupPassphraseKDFProfileV1(kdf::Argon2idParameters parameters) : parameters_(parameters) {}

  kdf::Argon2idParameters parameters_;
};

}  // namespace galdrine::envelope
