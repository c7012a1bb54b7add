#pragma once
// ExportDocumentText is the JSON text of the export's two documents, as they stand on disk:
// keys sorted at every level, pretty printed, "/" unescaped, non-ASCII text as it is, no key
// for an absent optional, and no line feed after the closing brace.
//
// Reading a document back ignores keys it does not know and fails with the first problem of
// GaldrineJSONDocumentError it meets; text that is not JSON at all is dataCorrupted. The caller
// bounds the text's length before it reads it.

#include <expected>
#include <string>
#include <string_view>

#include "GaldrinePlatform/GaldrineJSONDocumentError.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExporterV1Error.hpp"
#include "GaldrineRecoveryCore/MappingV1.hpp"
#include "GaldrineRecoveryCore/ReportV1.hpp"

namespace GaldrineRecoveryExporterV1 {

// documentText fails with integrityFailure, and gives no text, for a text field that is not
// UTF-8 or a duration that is not a finite number.
[[nodiscard]] std::expected<std::string, GaldrineRecoveryExporterV1Error> documentText(const MappingV1& document);
[[nodiscard]] std::expected<std::string, GaldrineRecoveryExporterV1Error> documentText(const ReportV1& document);

[[nodiscard]] std::expected<MappingV1, GaldrineJSONDocumentError> mappingFromDocumentText(std::string_view text);
[[nodiscard]] std::expected<ReportV1, GaldrineJSONDocumentError> reportFromDocumentText(std::string_view text);

}  // namespace GaldrineRecoveryExporterV1
