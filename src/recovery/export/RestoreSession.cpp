#include "recovery/export/RestoreSession.hpp"

#include <algorithm>
#include <utility>

#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using Error = RecoveryExporterError;
using InspectorError = RecoveryPackageInspectorError;
using Reader = reader::BackupKeyEnvelopeSetReader;
using Preflight = RecoverySnapshotPreflight;
using Selected = RecoveryAuthenticatedSnapshot;

constexpr std::size_t selectedCommitIdentifierByteCount = 16;

[[nodiscard]] std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

[[nodiscard]] std::expected<Bytes, Error> unlocked(const Reader& reader, const ExportCredential& credential) {
  auto bpmk = credential.factor == envelope::PortableKeyFactorV1::backupPassphrase
                  ? reader.openWithBackupPassphrase(credential.bytes)
                  : reader.openWithRecoveryKey(credential.bytes);
  if (!bpmk) return failure(Error::unlockFailed);
  return std::move(*bpmk);
}

[[nodiscard]] std::expected<Preflight, Error> selectedPreflight(const RecoveryPackageInspection& inspection,
                                                                ByteView selectedCommitIdentifier) {
  const auto found = std::ranges::find_if(inspection.authenticatedSnapshots, [&](const Preflight& preflight) {
    return ByteOrder::equal(preflight.commitIdentifier, selectedCommitIdentifier);
  });
  if (found == inspection.authenticatedSnapshots.end()) return failure(Error::snapshotNotFound);
  return *found;
}

// agreesWithPreflight: the commit authenticated a second time is the one selected, and its
// snapshot is the one the inspection described.
[[nodiscard]] bool agreesWithPreflight(const Selected& selected, const Preflight& preflight,
                                       ByteView selectedCommitIdentifier) {
  const format::BackupSnapshotV1& snapshot = selected.snapshot;
  return ByteOrder::equal(selected.authenticatedCommit.commit().identifier(), selectedCommitIdentifier) &&
         ByteOrder::equal(snapshot.identifier(), preflight.snapshotIdentifier) &&
         snapshot.createdAtUTCMilliseconds() == preflight.createdAtUTCMilliseconds &&
         snapshot.counts() == preflight.counts &&
         snapshot.logicalPlaintextByteCount() == preflight.logicalPlaintextByteCount &&
         snapshot.encryptedPayloadByteCount() == preflight.encryptedPayloadByteCount;
}

}  // namespace

Error mappedInspectionError(InspectorError error) {
  switch (error) {
    case InspectorError::invalidPackage:
    case InspectorError::packageUnavailable:
      return Error::invalidPackage;
    case InspectorError::unlockFailed:
      return Error::unlockFailed;
    case InspectorError::resourceLimitExceeded:
      return Error::resourceLimitExceeded;
    case InspectorError::integrityFailure:
      return Error::integrityFailure;
  }
  return Error::integrityFailure;
}

std::expected<std::shared_ptr<const RestoreSession>, Error> RestoreSession::restoreSession(
    const fs::path& packagePath, const ExportCredential& credential, ByteView selectedCommitIdentifier) {
  if (selectedCommitIdentifier.size() != selectedCommitIdentifierByteCount) return failure(Error::snapshotNotFound);
  auto reader = openEnvelopeReader(packagePath);
  if (!reader) return failure(Error::invalidPackage);
  auto bpmk = unlocked(*reader, credential);
  if (!bpmk) return std::unexpected(bpmk.error());
  // Until the session holds the key, this guard wipes it; once moved, it wipes an empty value.
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*bpmk); }};

  const auto inspection = inspectExamined(*reader, *bpmk, credential.factor, RecoveryInspectionLimits{});
  if (!inspection) return failure(mappedInspectionError(inspection.error()));
  auto preflight = selectedPreflight(inspection->inspection, selectedCommitIdentifier);
  if (!preflight) return std::unexpected(preflight.error());
  auto selected = authenticatedSnapshot(selectedCommitIdentifier, *reader, *bpmk);
  if (!selected) return failure(mappedInspectionError(selected.error()));
  if (!agreesWithPreflight(*selected, *preflight, selectedCommitIdentifier)) return failure(Error::integrityFailure);

  // From here the session owns the key: any failure releases it, which wipes the key.
  std::shared_ptr<RestoreSession> session(
      new RestoreSession(std::move(*reader), std::move(*bpmk), std::move(*preflight), std::move(*selected)));
  auto model = exportModel(session->selected_.records);
  if (!model) return std::unexpected(model.error());
  session->model_ = std::move(*model);
  auto plan = resourcePlan(session->model_);
  if (!plan) return std::unexpected(plan.error());
  session->plan_ = std::move(*plan);
  session->availability_ = payloadAvailability(session->plan_, session->reader_.package(), inspection->payloadFiles);
  return session;
}

RestoreSession::~RestoreSession() { platform::SecureMemory::wipe(bpmk_); }

}  // namespace galdrine::recovery
