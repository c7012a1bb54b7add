#include "recoverytool/LiveBackend.hpp"

#include <string_view>
#include <utility>

#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "platform/UTF8.hpp"
#include "recovery/export/RecoveryExporter.hpp"
#include "recovery/inspection/RecoveryPackageInspector.hpp"

namespace galdrine::recoverytool {

namespace {

namespace fs = std::filesystem;
using Factor = envelope::PortableKeyFactorV1;
using EngineDisposition = recovery::RecoveryBranchDisposition;

[[nodiscard]] RecoveryToolBranchDisposition toolDisposition(const EngineDisposition& disposition) {
  switch (disposition.code) {
    case EngineDisposition::Code::canonicalizedBranches:
      return RecoveryToolBranchDisposition::canonicalizedBranches(disposition.canonicalTipIdentifier);
    case EngineDisposition::Code::noPublishedHead:
      return RecoveryToolBranchDisposition::noPublishedHead();
    case EngineDisposition::Code::singleBranch:
      return RecoveryToolBranchDisposition::singleBranch();
    case EngineDisposition::Code::unresolvedFork:
      return RecoveryToolBranchDisposition::unresolvedFork();
  }
  std::unreachable();
}

[[nodiscard]] RecoveryToolSnapshot toolSnapshot(const recovery::RecoverySnapshotPreflight& preflight) {
  const auto& evidence = preflight.payloadFileEvidence;
  return RecoveryToolSnapshot{preflight.commitIdentifier,
                              preflight.createdAtUTCMilliseconds,
                              preflight.writerEpoch,
                              preflight.generation,
                              preflight.isRetainedTip,
                              preflight.counts.itemCount(),
                              preflight.counts.resourceCount(),
                              preflight.counts.folderCount(),
                              preflight.counts.albumCount(),
                              preflight.counts.membershipCount(),
                              preflight.counts.tombstoneCount(),
                              preflight.logicalPlaintextByteCount,
                              preflight.encryptedPayloadByteCount,
                              {evidence.requiredFileCount, evidence.matchingFileCount, evidence.missingFileCount,
                               evidence.mismatchedFileCount, evidence.unreadableFileCount}};
}

[[nodiscard]] RecoveryToolBranch toolBranch(const recovery::RecoveryPreservedBranch& branch) {
  RecoveryToolBranch converted{branch.tipCommitIdentifier, {}};
  converted.commitIdentifiers.reserve(branch.snapshots.size());
  for (const auto& snapshot : branch.snapshots) converted.commitIdentifiers.push_back(snapshot.commitIdentifier);
  return converted;
}

// toolInspection is the engine's inspection in the tool's records.
[[nodiscard]] RecoveryToolInspection toolInspection(const recovery::RecoveryPackageInspection& inspection) {
  RecoveryToolInspection converted;
  converted.packageIdentifier = inspection.packageIdentifier;
  converted.formatIdentifier = inspection.formatIdentifier;
  converted.formatVersion = inspection.formatVersion;
  converted.unlockedFactor = inspection.unlockedFactor;
  converted.branchDisposition = toolDisposition(inspection.branchDisposition);
  for (const auto& branch : inspection.preservedBranches) converted.branches.push_back(toolBranch(branch));
  for (const auto& snapshot : inspection.authenticatedSnapshots) converted.snapshots.push_back(toolSnapshot(snapshot));
  converted.authenticatedCommitCount = inspection.authenticatedCommitCount;
  converted.authenticatedHeadCount = inspection.authenticatedHeadCount;
  converted.maximumWriterEpoch = inspection.maximumWriterEpoch;
  return converted;
}

// withCredentialBytes hands the engine what the factor calls for, built from the credential,
// and wipes it after the call whatever came of it: a copy of the passphrase bytes, or the
// recovery key's 32 bytes. Words that make no key fail as an inspection would.
template <typename Result, typename Call>
[[nodiscard]] std::expected<Result, RecoveryToolError> withCredentialBytes(Factor factor, ByteView credential,
                                                                           Call call) {
  if (factor == Factor::backupPassphrase) {
    Bytes passphrase(credential.begin(), credential.end());
    ScopeGuard wipePassphrase{[&] { platform::SecureMemory::wipe(passphrase); }};
    return call(factor, ByteView(passphrase));
  }
  auto recoveryKey = LiveBackend::recoveryKey(credential);
  if (!recoveryKey) return std::unexpected(LiveBackend::mapInspectionError(recoveryKey.error()));
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*recoveryKey); }};
  return call(factor, ByteView(*recoveryKey));
}

}  // namespace

std::expected<Bytes, RecoveryToolBackendError> LiveBackend::recoveryKey(ByteView credential) {
  if (!platform::UTF8::isValid(credential)) return std::unexpected(RecoveryToolBackendError::invalidCredential);
  const std::string_view phrase(reinterpret_cast<const char*>(credential.data()), credential.size());
  auto entropy = keys::RecoveryKeyMnemonicV1::entropy(phrase);
  if (!entropy) return std::unexpected(RecoveryToolBackendError::invalidCredential);
  return std::move(*entropy);
}

std::expected<RecoveryToolInspection, RecoveryToolError> LiveBackend::inspect(const fs::path& packagePath,
                                                                              Factor factor, ByteView credential) {
  const auto call = [&](Factor usedFactor,
                        ByteView secret) -> std::expected<RecoveryToolInspection, RecoveryToolError> {
    const auto inspection = usedFactor == Factor::backupPassphrase
                                ? recovery::inspectWithBackupPassphrase(packagePath, secret)
                                : recovery::inspectWithRecoveryKey(packagePath, secret);
    if (!inspection) return std::unexpected(mapInspectionError(inspection.error()));
    return toolInspection(*inspection);
  };
  return withCredentialBytes<RecoveryToolInspection>(factor, credential, call);
}

std::expected<recovery::RecoveryExportResult, RecoveryToolError> LiveBackend::exportSnapshot(
    const fs::path& packagePath, Factor factor, ByteView credential, ByteView selectedCommitIdentifier,
    const fs::path& destinationPath) {
  const auto call = [&](Factor usedFactor,
                        ByteView secret) -> std::expected<recovery::RecoveryExportResult, RecoveryToolError> {
    auto result =
        usedFactor == Factor::backupPassphrase
            ? recovery::exportWithBackupPassphrase(packagePath, secret, selectedCommitIdentifier, destinationPath)
            : recovery::exportWithRecoveryKey(packagePath, secret, selectedCommitIdentifier, destinationPath);
    if (!result) return std::unexpected(mapExportError(result.error()));
    return std::move(*result);
  };
  return withCredentialBytes<recovery::RecoveryExportResult>(factor, credential, call);
}

RecoveryToolError LiveBackend::mapInspectionError(const keys::RecoveryKeyMnemonicV1Error&) {
  return RecoveryToolError::invalidCredential;
}

RecoveryToolError LiveBackend::mapInspectionError(recovery::RecoveryPackageInspectorError error) {
  using Error = recovery::RecoveryPackageInspectorError;
  switch (error) {
    case Error::invalidPackage:
      return RecoveryToolError::invalidPackage;
    case Error::unlockFailed:
      return RecoveryToolError::unlockFailed;
    case Error::packageUnavailable:
      return RecoveryToolError::packageUnavailable;
    case Error::resourceLimitExceeded:
      return RecoveryToolError::resourceLimitExceeded;
    case Error::integrityFailure:
      return RecoveryToolError::integrityFailure;
  }
  return RecoveryToolError::integrityFailure;
}

RecoveryToolError LiveBackend::mapInspectionError(RecoveryToolBackendError error) {
  switch (error) {
    case RecoveryToolBackendError::invalidCredential:
      return RecoveryToolError::invalidCredential;
  }
  return RecoveryToolError::integrityFailure;
}

RecoveryToolError LiveBackend::mapExportError(recovery::RecoveryExporterError error) {
  using Error = recovery::RecoveryExporterError;
  switch (error) {
    case Error::invalidPackage:
      return RecoveryToolError::invalidPackage;
    case Error::unlockFailed:
      return RecoveryToolError::unlockFailed;
    case Error::snapshotNotFound:
      return RecoveryToolError::snapshotSelectionNotFound;
    case Error::destinationExists:
      return RecoveryToolError::destinationExists;
    case Error::destinationUnavailable:
      return RecoveryToolError::destinationUnavailable;
    case Error::resourceLimitExceeded:
      return RecoveryToolError::resourceLimitExceeded;
    case Error::integrityFailure:
      return RecoveryToolError::integrityFailure;
    case Error::outputWriteFailed:
      return RecoveryToolError::outputWriteFailed;
  }
  return RecoveryToolError::integrityFailure;
}

}  // namespace galdrine::recoverytool
