#pragma once
// RestoreSession is one unlocked, authenticated snapshot of a package held ready for
// recovery: the preflight the inspection gave it, the package and its envelope set, the
// package master key, the snapshot with its records, the export model, the plan of output
// names and the availability of every payload file the plan needs. An export runs on one; an
// application may keep one to recover resources one by one.
//
// The session owns the bpmk and wipes it when the last reference goes away, on every road:
// a session that fails to build is released at once, so no way out of building keeps the key.

#include <expected>
#include <filesystem>
#include <memory>
#include <vector>

#include "envelope/PortableKeyFactorV1.hpp"
#include "platform/Bytes.hpp"
#include "reader/BackupKeyEnvelopeSetReader.hpp"
#include "recovery/export/ExportModel.hpp"
#include "recovery/export/PayloadAvailability.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/ResourcePlan.hpp"
#include "recovery/inspection/RecoveryPackageInspection.hpp"
#include "recovery/inspection/RecoveryPackageInspector.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

// ExportCredential is a portable credential as the caller holds it: passphrase bytes, or the
// 32 bytes of a recovery key. It stays the caller's.
struct ExportCredential {
  envelope::PortableKeyFactorV1 factor;
  ByteView bytes;
};

// mappedInspectionError is the export's reading of an inspection failure: a package that
// cannot be opened or read is invalidPackage, a wrong credential unlockFailed, a limit
// resourceLimitExceeded, and anything else integrityFailure.
[[nodiscard]] RecoveryExporterError mappedInspectionError(RecoveryPackageInspectorError error);

class RestoreSession {
 public:
  // restoreSession builds a session for the commit `selectedCommitIdentifier`, in this order:
  // an identifier of exactly 16 bytes (snapshotNotFound, before the package is touched); the
  // package and its envelope file, bound to each other (invalidPackage); the bpmk unlocked
  // with the credential (unlockFailed); a whole inspection at the default limits (mapped);
  // the selection among its authenticated snapshots (snapshotNotFound); the commit's content
  // authenticated down to its records (mapped); the commit's identifier and the snapshot's
  // identifier, time, counts and byte counts equal to the preflight's (integrityFailure); the
  // model and the plan (their failures); the availability of every payload file of the plan.
  // Files the inspection has just hashed against the same expectation are not hashed again.
  [[nodiscard]] static std::expected<std::shared_ptr<const RestoreSession>, RecoveryExporterError> restoreSession(
      const std::filesystem::path& packagePath, const ExportCredential& credential, ByteView selectedCommitIdentifier);

  ~RestoreSession();
  RestoreSession(const RestoreSession&) = delete;
  RestoreSession& operator=(const RestoreSession&) = delete;

  [[nodiscard]] const RecoverySnapshotPreflight& preflight() const { return preflight_; }
  [[nodiscard]] const Bytes& packageIdentifier() const { return reader_.package().header().packageIdentifier(); }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return reader_.envelopeSet().libraryDomainIdentifier(); }
  [[nodiscard]] const std::vector<format::BackupManifestRecordV1>& records() const { return selected_.records; }
  [[nodiscard]] const reader::BackupKeyEnvelopeSetReader& reader() const { return reader_; }
  // bpmk lends the key for as long as the session lives.
  [[nodiscard]] ByteView bpmk() const { return bpmk_; }
  [[nodiscard]] const RecoveryAuthenticatedSnapshot& selected() const { return selected_; }
  [[nodiscard]] const ExportModel& model() const { return model_; }
  // plan points into model(): both live exactly as long as the session.
  [[nodiscard]] const std::vector<PlannedResource>& plan() const { return plan_; }
  [[nodiscard]] const PayloadAvailabilityMap& availability() const { return availability_; }

 private:
  RestoreSession(reader::BackupKeyEnvelopeSetReader reader, Bytes bpmk, RecoverySnapshotPreflight preflight,
                 RecoveryAuthenticatedSnapshot selected)
      : reader_(std::move(reader)),
        bpmk_(std::move(bpmk)),
        preflight_(std::move(preflight)),
        selected_(std::move(selected)) {}

  reader::BackupKeyEnvelopeSetReader reader_;
  Bytes bpmk_;
  RecoverySnapshotPreflight preflight_;
  RecoveryAuthenticatedSnapshot selected_;
  ExportModel model_;
  std::vector<PlannedResource> plan_;
  PayloadAvailabilityMap availability_;
};

}  // namespace galdrine::recovery
