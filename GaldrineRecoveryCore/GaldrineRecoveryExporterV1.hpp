#pragma once
// GaldrineRecoveryExporterV1 turns one authenticated snapshot of a package into plain files in
// a new directory: every media resource flat under "All Items", beside "library-mapping.json"
// and "recovery-report.json". A payload that is missing or damaged only marks its resource,
// and the export still completes, with the status completedWithIssues; damaged metadata, an
// unusable destination or a failed write ends it, and nothing is published.
//
// Each export unlocks the package itself and re-inspects it; the package master key lives in
// the export's session and is wiped when the call returns, on every road. The credential
// stays the caller's. Failures are one case of GaldrineRecoveryExporterV1Error, without a path.

#include <expected>
#include <filesystem>
#include <memory>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExportFaultPointV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExportResultV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExporterV1Error.hpp"
#include "GaldrineRecoveryCore/RestoreSession.hpp"

namespace GaldrineRecoveryExporterV1 {

// isStandardDestination: `destinationURL` is absolute and already in its standard form, text
// for text: no "." or ".." segment, no empty segment, no trailing separator.
[[nodiscard]] bool isStandardDestination(const std::filesystem::path& destinationURL);

// exportWithBackupPassphrase and exportWithRecoveryKey export the snapshot of the commit
// `selectedCommitIdentifier` to `destinationURL`, which must not exist yet, in this order: a
// destination that is not in standard form is destinationUnavailable, before the credential
// is used (a path with dot segments is refused, not resolved); the session is built
// (RestoreSession::restoreSession); the export is written and published (writeExport); the
// session is released, which wipes the key.
[[nodiscard]] std::expected<GaldrineRecoveryExportResultV1, GaldrineRecoveryExporterV1Error> exportWithBackupPassphrase(
    const std::filesystem::path& packageURL, ByteView passphrase, ByteView selectedCommitIdentifier,
    const std::filesystem::path& destinationURL);
[[nodiscard]] std::expected<GaldrineRecoveryExportResultV1, GaldrineRecoveryExporterV1Error> exportWithRecoveryKey(
    const std::filesystem::path& packageURL, ByteView recoveryKey, ByteView selectedCommitIdentifier,
    const std::filesystem::path& destinationURL);

// This form fails with outputWriteFailed at `faultPoint`, so that a test can see what an
// export interrupted there leaves behind: never a destination, never a staging directory.
[[nodiscard]] std::expected<GaldrineRecoveryExportResultV1, GaldrineRecoveryExporterV1Error> exportWithRecoveryKey(
    const std::filesystem::path& packageURL, ByteView recoveryKey, ByteView selectedCommitIdentifier,
    const std::filesystem::path& destinationURL, GaldrineRecoveryExportFaultPointV1 faultPoint);

// restoreSessionWithBackupPassphrase and restoreSessionWithRecoveryKey build a session that
// holds the unlocked snapshot for as long as the caller keeps it (RestoreSession).
[[nodiscard]] std::expected<std::shared_ptr<const RestoreSession>, GaldrineRecoveryExporterV1Error>
restoreSessionWithBackupPassphrase(const std::filesystem::path& packageURL, ByteView passphrase,
                                   ByteView selectedCommitIdentifier);
[[nodiscard]] std::expected<std::shared_ptr<const RestoreSession>, GaldrineRecoveryExporterV1Error>
restoreSessionWithRecoveryKey(const std::filesystem::path& packageURL, ByteView recoveryKey,
                              ByteView selectedCommitIdentifier);

}  // namespace GaldrineRecoveryExporterV1
