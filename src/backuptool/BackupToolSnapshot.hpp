#pragma once
// BackupToolSnapshot holds the steps that create and add share: scanning the source directory
// into what a snapshot will hold, and writing that snapshot as a commit on the package's
// current branch.

#include <expected>
#include <filesystem>

#include "backuptool/BackupSource.hpp"
#include "backuptool/BackupToolError.hpp"
#include "backuptool/BackupToolReport.hpp"
#include "writer/BackupPackageWriter.hpp"

namespace galdrine::backuptool {

namespace BackupToolSnapshot {

// scannedSource scans `sourcePath` (sourceUnavailable, sourceTooLarge) and requires at least one
// media file in it (sourceEmpty).
[[nodiscard]] std::expected<BackupSource, BackupToolError> scannedSource(const std::filesystem::path& sourcePath);

// write arranges `source` with identifiers keyed by the writer's package and commits it on the
// canonical tip, publishing a head (the writer's failures as BackupToolWriterFailure names them
// while committing; a failed derivation is operationFailed). It gives what the run reports.
[[nodiscard]] std::expected<BackupToolCounts, BackupToolError> write(writer::BackupPackageWriter& writer,
                                                                     const BackupSource& source);

}  // namespace BackupToolSnapshot

}  // namespace galdrine::backuptool
