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

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/ExportModel.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupKeyEnvelopeSetReaderV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryAuthenticatedSnapshotV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryExporterV1Error.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1Error.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPortableFactorV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoverySnapshotPreflightV1.hpp"
#include "GaldrineRecoveryCore/PayloadAvailabilityCheck.hpp"
#include "GaldrineRecoveryCore/PlannedResource.hpp"

namespace GaldrineRecoveryExporterV1 {

// ExportCredential is a portable credential as the caller holds it: passphrase bytes, or the
// 32 bytes of a recovery key. It stays the caller's.
struct ExportCredential {
  GaldrineRecoveryPortableFactorV1 factor;
  ByteView bytes;
};

// mappedInspectionError is the export's reading of an inspection failure: a package that
// cannot be opened or read is invalidPackage, a wrong credential unlockFailed, a limit
// resourceLimitExceeded, and anything else integrityFailure.
[[nodiscard]] GaldrineRecoveryExporterV1Error mappedInspectionError(GaldrineRecoveryPackageInspectorV1Error error);

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
  [[nodiscard]] static std::expected<std::shared_ptr<const RestoreSession>, GaldrineRecoveryExporterV1Error> restoreSession(
      const std::filesystem::path& packageURL, const ExportCredential& credential, ByteView selectedCommitIdentifier);

  ~RestoreSession();
  RestoreSession(const RestoreSession&) = delete;
  RestoreSession& operator=(const RestoreSession&) = delete;

  [[nodiscard]] const GaldrineRecoverySnapshotPreflightV1& preflight() const { return preflight_; }
  [[nodiscard]] const Bytes& packageIdentifier() const { return reader_.package().header().packageIdentifier(); }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return reader_.envelopeSet().libraryDomainIdentifier(); }
  [[nodiscard]] const std::vector<GaldrineBackupManifestRecordV1>& records() const { return selected_.records; }
  [[nodiscard]] const GaldrineBackupKeyEnvelopeSetReaderV1& reader() const { return reader_; }
  // bpmk lends the key for as long as the session lives.
  [[nodiscard]] ByteView bpmk() const { return bpmk_; }
  [[nodiscard]] const GaldrineRecoveryAuthenticatedSnapshotV1& selected() const { return selected_; }
  [[nodiscard]] const ExportModel& model() const { return model_; }
  // plan points into model(): both live exactly as long as the session.
  [[nodiscard]] const std::vector<PlannedResource>& plan() const { return plan_; }
  [[nodiscard]] const PayloadAvailabilityMap& availability() const { return availability_; }

 private:
  RestoreSession(GaldrineBackupKeyEnvelopeSetReaderV1 reader, Bytes bpmk, GaldrineRecoverySnapshotPreflightV1 preflight,
                 GaldrineRecoveryAuthenticatedSnapshotV1 selected)
      : reader_(std::move(reader)),
        bpmk_(std::move(bpmk)),
        preflight_(std::move(preflight)),
        selected_(std::move(selected)) {}

  GaldrineBackupKeyEnvelopeSetReaderV1 reader_;
  Bytes bpmk_;
  GaldrineRecoverySnapshotPreflightV1 preflight_;
  GaldrineRecoveryAuthenticatedSnapshotV1 selected_;
  ExportModel model_;
  std::vector<PlannedResource> plan_;
  PayloadAvailabilityMap availability_;
};

}  // namespace GaldrineRecoveryExporterV1
