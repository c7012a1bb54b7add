#pragma once
// success turns a document into a successful run: its JSON, pretty printed with keys sorted
// at every level, "/" unescaped, characters above U+007F written as they are, and one final
// line feed, on standard output with exit status 0. An absent optional is an absent key.
// On failure no output is given.

#include <cstdint>
#include <expected>

#include "recoverytool/ExportDocument.hpp"
#include "recoverytool/InspectionDocument.hpp"
#include "recoverytool/RecoveryTool.hpp"

namespace galdrine::recoverytool {

// RecoveryToolDocumentEncodingError: a document could not be written as JSON (a text that
// is not valid UTF-8). The driver reports it as the generic failure.
enum class RecoveryToolDocumentEncodingError : std::uint8_t {
  encodingFailed,
};

namespace RecoveryTool {

[[nodiscard]] std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> success(
    const InspectionDocument& json);

[[nodiscard]] std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> success(
    const ExportDocument& json);

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
