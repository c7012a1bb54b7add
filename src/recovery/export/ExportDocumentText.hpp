#pragma once
// ExportDocumentText is the JSON text of the export's two documents, as they stand on disk:
// keys sorted at every level, pretty printed, "/" unescaped, non-ASCII text as it is, no key
// for an absent optional, and no line feed after the closing brace. writeJSON puts that text
// in a new file through a RecoveryOutputFile, which proves the bytes on disk against the
// text's own length and digest before it makes them durable.
//
// Reading a document back ignores keys it does not know and fails with the first problem of
// JSONDocumentError it meets; text that is not JSON at all is dataCorrupted. The caller
// bounds the text's length before it reads it.

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/JSONDocumentError.hpp"
#include "recovery/export/MappingV1.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/ReportV1.hpp"

namespace galdrine::recovery {

// documentText fails with integrityFailure, and gives no text, for a text field that is not
// UTF-8 or a duration that is not a finite number.
[[nodiscard]] std::expected<std::string, RecoveryExporterError> documentText(const MappingV1& document);
[[nodiscard]] std::expected<std::string, RecoveryExporterError> documentText(const ReportV1& document);

// writeJSON encodes `document` (integrityFailure, and nothing is created) and writes it to a
// new file at `path`; a failure to create, write, prove or synchronise it is outputWriteFailed
// and leaves no file.
[[nodiscard]] std::expected<void, RecoveryExporterError> writeJSON(const MappingV1& document,
                                                                   const std::filesystem::path& path);
[[nodiscard]] std::expected<void, RecoveryExporterError> writeJSON(const ReportV1& document,
                                                                   const std::filesystem::path& path);

[[nodiscard]] std::expected<MappingV1, platform::JSONDocumentError> mappingFromDocumentText(std::string_view text);
[[nodiscard]] std::expected<ReportV1, platform::JSONDocumentError> reportFromDocumentText(std::string_view text);

}  // namespace galdrine::recovery
