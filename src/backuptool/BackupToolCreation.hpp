#pragma once
// BackupToolCreation runs `galdrine-backup create`, in this order: the new package's location
// (BackupPackagePublication::checkNewPackageLocation); the source (BackupToolSnapshot); the
// new passphrase, read and judged (BackupToolCredentials), and the new recovery key, drawn
// (operationFailed); the package built under a hidden staging name with one active envelope
// per credential (the writer's failures while creating); the snapshot written into it; and
// the package published at its path with one rename (BackupPackagePublication::publish).
//
// A failure at any step leaves nothing at the package's path, and the staged package is
// removed. The passphrase is wiped, and the recovery key goes away wiped, on every way out.
// The output is the summary line, after the recovery key's words when one was made; it holds
// those words, and the caller wipes it.

#include <expected>

#include "backuptool/BackupToolCommand.hpp"
#include "backuptool/BackupToolCredentialReading.hpp"
#include "backuptool/BackupToolError.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::backuptool {

namespace BackupToolCreation {

[[nodiscard]] std::expected<Bytes, BackupToolError> run(const BackupToolCommand::Create& command,
                                                        BackupToolCredentialReading& reader);

}  // namespace BackupToolCreation

}  // namespace galdrine::backuptool
