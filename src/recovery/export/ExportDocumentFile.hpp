#pragma once
// ExportDocumentFile writes one of the export's two documents as a new file: its JSON text,
// with no line feed after the closing brace, through a RecoveryOutputFile that proves the
// bytes on disk against the text's own length and digest before it makes them durable.

#include <expected>
#include <filesystem>

#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/MappingV1.hpp"
#include "recovery/export/ReportV1.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

// writeJSON encodes `document` (integrityFailure, and nothing is created) and writes it to a
// new file at `path`; a failure to create, write, prove or synchronise it is outputWriteFailed
// and leaves no file.
[[nodiscard]] std::expected<void, RecoveryExporterError> writeJSON(const MappingV1& document,
                                                                             const std::filesystem::path& path);
[[nodiscard]] std::expected<void, RecoveryExporterError> writeJSON(const ReportV1& document,
                                                                             const std::filesystem::path& path);

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
