#pragma once
// success turns a document into a successful run: its JSON, pretty printed with keys sorted
// at every level, "/" unescaped, characters above U+007F written as they are, and one final
// line feed, on standard output with exit status 0. An absent optional is an absent key.
// On failure no output is given.

#include <expected>

#include "recoverytool/ExportDocument.hpp"
#include "recoverytool/RecoveryToolExecution.hpp"
#include "recoverytool/InspectionDocument.hpp"
#include "recoverytool/RecoveryToolDocumentEncodingError.hpp"

namespace galdrine::recoverytool {

namespace RecoveryTool {

[[nodiscard]] std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> success(
    const InspectionDocument& json);

[[nodiscard]] std::expected<RecoveryToolExecution, RecoveryToolDocumentEncodingError> success(
    const ExportDocument& json);

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
