#pragma once
// ExportDocumentFile writes one of the export's two documents as a new file: its JSON text,
// with no line feed after the closing brace, through a RecoveryOutputFile that proves the
// bytes on disk against the text's own length and digest before it makes them durable.

#include <expected>
#include <filesystem>

#include "GaldrineRecoveryCore/GaldrineRecoveryExporterV1Error.hpp"
#include "GaldrineRecoveryCore/MappingV1.hpp"
#include "GaldrineRecoveryCore/ReportV1.hpp"

namespace GaldrineRecoveryExporterV1 {

// writeJSON encodes `document` (integrityFailure, and nothing is created) and writes it to a
// new file at `url`; a failure to create, write, prove or synchronise it is outputWriteFailed
// and leaves no file.
[[nodiscard]] std::expected<void, GaldrineRecoveryExporterV1Error> writeJSON(const MappingV1& document,
                                                                             const std::filesystem::path& url);
[[nodiscard]] std::expected<void, GaldrineRecoveryExporterV1Error> writeJSON(const ReportV1& document,
                                                                             const std::filesystem::path& url);

}  // namespace GaldrineRecoveryExporterV1
