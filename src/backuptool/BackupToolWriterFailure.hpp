#pragma once
// BackupToolWriterFailure names a failure of the package writer in galdrine-backup's terms. The
// same lower failure means different things at different stages: a file error while a new
// package is written is an output failure, while the package that add opens is simply invalid.

#include <cstdint>

#include "backuptool/BackupToolError.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::backuptool {

enum class BackupToolStage : std::uint8_t {
  creating,    // a new package and its key envelopes are written
  opening,     // an existing package is opened and unlocked
  committing,  // a snapshot is written into a package
};

[[nodiscard]] BackupToolError backupToolError(const writer::BackupWriterFailure& failure, BackupToolStage stage);

}  // namespace galdrine::backuptool
