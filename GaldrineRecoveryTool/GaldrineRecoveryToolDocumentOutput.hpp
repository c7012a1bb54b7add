#pragma once
// success turns a document into a successful run: its JSON, pretty printed with keys sorted
// at every level, "/" unescaped, characters above U+007F written as they are, and one final
// line feed, on standard output with exit status 0. An absent optional is an absent key.
// On failure no output is given.

#include <expected>

#include "GaldrineRecoveryTool/ExportDocument.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolExecutionV1.hpp"
#include "GaldrineRecoveryTool/InspectionDocument.hpp"
#include "GaldrineRecoveryTool/RecoveryToolDocumentEncodingError.hpp"

namespace GaldrineRecoveryToolV1 {

[[nodiscard]] std::expected<GaldrineRecoveryToolExecutionV1, RecoveryToolDocumentEncodingError> success(
    const InspectionDocument& json);

[[nodiscard]] std::expected<GaldrineRecoveryToolExecutionV1, RecoveryToolDocumentEncodingError> success(
    const ExportDocument& json);

}  // namespace GaldrineRecoveryToolV1
