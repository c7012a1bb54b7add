#pragma once
// The exporter turns one authenticated snapshot of a package into plain files in a new
// directory: every media resource flat under "All Items", beside "library-mapping.json"
// and "recovery-report.json". A payload that is missing or damaged only marks its resource,
// and the export still completes, with the status completedWithIssues; damaged metadata, an
// unusable destination or a failed write ends it, and nothing is published.
//
// Each export unlocks the package itself and re-inspects it; the package master key lives in
// the export's session and is wiped when the call returns, on every road. The credential
// stays the caller's. Failures are one case of RecoveryExporterError, without a path.

#include <expected>
#include <filesystem>
#include <memory>

#include "platform/Bytes.hpp"
#include "recovery/export/ExportWriting.hpp"
#include "recovery/export/RecoveryExportResult.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/RestoreSession.hpp"

namespace galdrine::recovery {

// exportWithBackupPassphrase and exportWithRecoveryKey export the snapshot of the commit
// `selectedCommitIdentifier` to `destinationPath`, which must not exist yet, in this order: a
// destination that is not absolute and in standard form, text for text (no "." or ".."
// segment, no empty segment, no trailing separator), is destinationUnavailable before the
// credential is used (a path with dot segments is refused, not resolved); the session is built
// (RestoreSession::restoreSession); the export is written and published (writeExport); the
// session is released, which wipes the key.
[[nodiscard]] std::expected<RecoveryExportResult, RecoveryExporterError> exportWithBackupPassphrase(
    const std::filesystem::path& packagePath, ByteView passphrase, ByteView selectedCommitIdentifier,
    const std::filesystem::path& destinationPath);
[[nodiscard]] std::expected<RecoveryExportResult, RecoveryExporterError> exportWithRecoveryKey(
    const std::filesystem::path& packagePath, ByteView recoveryKey, ByteView selectedCommitIdentifier,
    const std::filesystem::path& destinationPath);

// This form fails with outputWriteFailed at `faultPoint`, so that a test can see what an
// export interrupted there leaves behind: never a destination, never a staging directory.
[[nodiscard]] std::expected<RecoveryExportResult, RecoveryExporterError> exportWithRecoveryKey(
    const std::filesystem::path& packagePath, ByteView recoveryKey, ByteView selectedCommitIdentifier,
    const std::filesystem::path& destinationPath, RecoveryExportFaultPoint faultPoint);

// restoreSessionWithBackupPassphrase and restoreSessionWithRecoveryKey build a session that
// holds the unlocked snapshot for as long as the caller keeps it (RestoreSession).
[[nodiscard]] std::expected<std::shared_ptr<const RestoreSession>, RecoveryExporterError>
restoreSessionWithBackupPassphrase(const std::filesystem::path& packagePath, ByteView passphrase,
                                   ByteView selectedCommitIdentifier);
[[nodiscard]] std::expected<std::shared_ptr<const RestoreSession>, RecoveryExporterError> restoreSessionWithRecoveryKey(
    const std::filesystem::path& packagePath, ByteView recoveryKey, ByteView selectedCommitIdentifier);

}  // namespace galdrine::recovery
