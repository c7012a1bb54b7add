#pragma once
// BackupToolAddition runs `galdrine-backup add`, in this order: the package opened without a
// key (invalidPackage); the source (BackupToolSnapshot); the credential read
// (BackupToolCredentials); the package opened and unlocked for writing (the writer's failures
// while opening: unlockFailed for a wrong credential or a factor the package lacks); and the
// snapshot written as a commit on the current branch, unchanged files keeping their payloads.
//
// A failure while the snapshot is written leaves only files that nothing references yet; the
// package reads as before. The credential is wiped on every way out. The output is the
// summary line.

#include <expected>

#include "backuptool/BackupToolCommand.hpp"
#include "backuptool/BackupToolCredentialReading.hpp"
#include "backuptool/BackupToolError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::backuptool {

namespace BackupToolAddition {

[[nodiscard]] std::expected<Bytes, BackupToolError> run(const BackupToolCommand::Add& command,
                                                        BackupToolCredentialReading& reader);

}  // namespace BackupToolAddition

}  // namespace galdrine::backuptool
