#include "recovery/inspection/ContentAuthentication.hpp"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "format/graph/BackupGraphV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"
#include "recovery/inspection/RecoveryArtifactFiles.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using namespace ContentAuthentication;
using Error = RecoveryPackageInspectorError;
using Commit = format::BackupCommitV1;
using Snapshot = format::BackupSnapshotV1;
using Root = format::BackupManifestRootV1;
using Section = format::BackupManifestSectionV1;
using Record = format::BackupManifestRecordV1;
using Reference = format::BackupArtifactReferenceV1;
using Summary = format::BackupManifestSemanticSummary;

[[nodiscard]] std::unexpected<Error> integrityFailure() { return std::unexpected(Error::integrityFailure); }

// readReferenced reads the artifact that `reference` names from `directory`, once its promised
// plaintext and frame lengths are within the ceilings of its kind.
[[nodiscard]] std::expected<Bytes, Error> readReferenced(
    const fs::path& directory, const std::expected<std::string, format::BackupGraphV1Error>& name,
    const Reference& reference, std::uint64_t maximumPlaintextByteCount, std::uint64_t maximumFrameByteCount) {
  if (reference.plaintextByteCount() > maximumPlaintextByteCount ||
      reference.frameByteCount() > maximumFrameByteCount) {
    return integrityFailure();
  }
  if (!name) return std::unexpected(inspectorError(name.error()));
  return RecoveryArtifactFiles::readRegularFile(directory / *name,
                                                static_cast<std::int64_t>(reference.frameByteCount()));
}

[[nodiscard]] std::expected<fs::path, Error> directoryOf(const AuthenticationScope& scope, std::string_view name) {
  auto directory = scope.package.directoryPath(name);
  if (!directory) return std::unexpected(inspectorError(directory.error()));
  return std::move(*directory);
}

[[nodiscard]] bool snapshotAgreesWithCommit(const Snapshot& snapshot, const Commit& commit) {
  return snapshot.createdAtUTCMilliseconds() == commit.createdAtUTCMilliseconds() &&
         snapshot.requiredPayloadSetSHA256() == commit.requiredPayloadSetSHA256() &&
         snapshot.manifest().identifier() == commit.manifestIdentifier();
}

[[nodiscard]] bool rootAgrees(const Root& root, const Snapshot& snapshot, const Commit& commit) {
  return root.snapshotIdentifier() == snapshot.identifier() &&
         root.createdAtUTCMilliseconds() == commit.createdAtUTCMilliseconds() && root.counts() == snapshot.counts() &&
         root.logicalPlaintextByteCount() == snapshot.logicalPlaintextByteCount() &&
         root.requiredPayloadSetSHA256() == commit.requiredPayloadSetSHA256() &&
         root.sectionSetSHA256() == snapshot.manifestSectionSetSHA256();
}

[[nodiscard]] bool summaryAgrees(const Summary& summary, const Snapshot& snapshot) {
  return summary.counts == snapshot.counts() &&
         summary.logicalPlaintextByteCount == snapshot.logicalPlaintextByteCount() &&
         summary.encryptedPayloadByteCount == snapshot.encryptedPayloadByteCount() &&
         summary.requiredPayloadSetSHA256 == snapshot.requiredPayloadSetSHA256();
}

[[nodiscard]] std::expected<AuthenticatedContent, Error> contentFromCache(
    const AuthenticatedSnapshotContent& cached, const format::AuthenticatedBackupCommit& commit, bool retainRecords) {
  if (cached.reference != commit.commit().snapshot()) return integrityFailure();
  if (retainRecords && !cached.retainedRecords) return integrityFailure();
  if (!snapshotAgreesWithCommit(cached.snapshot, commit.commit())) return integrityFailure();
  return AuthenticatedContent{commit, cached.snapshot, cached.payloadExpectations, cached.retainedRecords};
}

[[nodiscard]] std::expected<Snapshot, Error> openSnapshot(const Commit& commit, const AuthenticationScope& scope) {
  const auto directory = directoryOf(scope, "snapshots");
  if (!directory) return std::unexpected(directory.error());
  const Reference& reference = commit.snapshot();
  const auto frame = readReferenced(*directory, format::BackupGraphV1::snapshotFileName(reference.identifier()),
                                    reference, maximumSnapshotPlaintextByteCount, maximumSnapshotFrameByteCount);
  if (!frame) return std::unexpected(frame.error());
  auto snapshot = format::BackupGraphV1::openSnapshot(*frame, reference, scope.package.header().packageIdentifier(),
                                                      scope.libraryDomainIdentifier, scope.bpmk);
  if (!snapshot) return std::unexpected(inspectorError(snapshot.error()));
  return std::move(*snapshot);
}

[[nodiscard]] std::expected<Root, Error> openManifestRoot(const fs::path& directory, const Reference& reference,
                                                          const AuthenticationScope& scope) {
  const auto frame =
      readReferenced(directory, format::BackupGraphV1::manifestFileName(reference.identifier()), reference,
                     maximumManifestRootPlaintextByteCount, maximumManifestRootFrameByteCount);
  if (!frame) return std::unexpected(frame.error());
  auto root = format::BackupGraphV1::openManifestRoot(*frame, reference, scope.package.header().packageIdentifier(),
                                                      scope.libraryDomainIdentifier, scope.bpmk);
  if (!root) return std::unexpected(inspectorError(root.error()));
  return std::move(*root);
}

// ManifestContent is what the sections of one manifest held: the sections themselves, which
// the semantic validator reads, and their decoded records (only the resources, which name the
// payload files, unless every record is kept).
struct ManifestContent {
  std::vector<Section> sections;
  std::vector<Record> records;
};

[[nodiscard]] std::expected<void, Error> appendSection(ManifestContent& content, const fs::path& directory,
                                                       const format::BackupManifestSectionReferenceV1& reference,
                                                       const Root& root, const AuthenticationScope& scope,
                                                       bool retainRecords) {
  const Reference& artifact = reference.artifact();
  const auto frame = readReferenced(directory, format::BackupGraphV1::manifestFileName(artifact.identifier()), artifact,
                                    maximumManifestSectionPlaintextByteCount, maximumManifestSectionFrameByteCount);
  if (!frame) return std::unexpected(frame.error());
  auto section = format::BackupGraphV1::openManifestSection(*frame, reference, root.identifier(),
                                                            scope.package.header().packageIdentifier(),
                                                            scope.libraryDomainIdentifier, scope.bpmk);
  if (!section) return std::unexpected(inspectorError(section.error()));
  auto records = format::BackupManifestRecordCodecV1::records(*section);
  if (!records) return std::unexpected(inspectorError(records.error()));
  for (Record& record : *records) {
    if (retainRecords || record.resource() != nullptr) content.records.push_back(std::move(record));
  }
  content.sections.push_back(std::move(*section));
  return {};
}

[[nodiscard]] std::expected<ManifestContent, Error> readManifestSections(const fs::path& directory, const Root& root,
                                                                         const AuthenticationScope& scope,
                                                                         bool retainRecords,
                                                                         AuthenticationBudget& budget) {
  for (const auto& reference : root.sections()) {
    const auto charged = budget.reserve(reference.artifact(), reference.recordCount());
    if (!charged) return std::unexpected(charged.error());
  }
  ManifestContent content;
  content.sections.reserve(root.sections().size());
  for (const auto& reference : root.sections()) {
    const auto appended = appendSection(content, directory, reference, root, scope, retainRecords);
    if (!appended) return std::unexpected(appended.error());
  }
  return content;
}

// authenticateManifest proves the manifest of a snapshot that agrees with its commit: the
// charges, the root, the sections, the validator and its summary, and the expectations.
[[nodiscard]] std::expected<std::pair<PayloadExpectationMap, std::vector<Record>>, Error> authenticateManifest(
    const Snapshot& snapshot, const Commit& commit, const AuthenticationScope& scope, bool retainRecords,
    AuthenticationBudget& budget) {
  const auto directory = directoryOf(scope, "manifests");
  if (!directory) return std::unexpected(directory.error());
  const auto charged = budget.reserve(snapshot.manifest(), 0);
  if (!charged) return std::unexpected(charged.error());
  const auto root = openManifestRoot(*directory, snapshot.manifest(), scope);
  if (!root) return std::unexpected(root.error());
  if (!rootAgrees(*root, snapshot, commit)) return integrityFailure();
  auto content = readManifestSections(*directory, *root, scope, retainRecords, budget);
  if (!content) return std::unexpected(content.error());
  const auto summary = format::BackupManifestSemanticValidator::validateAndSummarize(
      content->sections, scope.package.header().packageIdentifier(), scope.libraryDomainIdentifier, scope.bpmk);
  if (!summary) return std::unexpected(inspectorError(summary.error()));
  if (!summaryAgrees(*summary, snapshot)) return integrityFailure();
  content->sections.clear();
  auto expectations = PayloadExpectations::collect(content->records);
  if (!expectations) return std::unexpected(expectations.error());
  if (!retainRecords) content->records.clear();
  return std::pair{std::move(*expectations), std::move(content->records)};
}

}  // namespace

namespace ContentAuthentication {

std::expected<AuthenticatedContent, Error> authenticateContent(
    const format::AuthenticatedBackupCommit& authenticatedCommit, const AuthenticationScope& scope, bool retainRecords,
    SnapshotCache& cache, AuthenticationBudget& budget) {
  const Commit& commit = authenticatedCommit.commit();
  if (const auto cached = cache.find(commit.snapshot().identifier()); cached != cache.end()) {
    return contentFromCache(cached->second, authenticatedCommit, retainRecords);
  }
  auto snapshot = openSnapshot(commit, scope);
  if (!snapshot) return std::unexpected(snapshot.error());
  if (!snapshotAgreesWithCommit(*snapshot, commit)) return integrityFailure();
  auto manifest = authenticateManifest(*snapshot, commit, scope, retainRecords, budget);
  if (!manifest) return std::unexpected(manifest.error());
  auto expectations = std::make_shared<const PayloadExpectationMap>(std::move(manifest->first));
  auto records = retainRecords ? std::make_shared<std::vector<Record>>(std::move(manifest->second)) : nullptr;
  cache.emplace(snapshot->identifier(),
                AuthenticatedSnapshotContent{commit.snapshot(), *snapshot, expectations, records});
  return AuthenticatedContent{authenticatedCommit, std::move(*snapshot), std::move(expectations), std::move(records)};
}

}  // namespace ContentAuthentication

}  // namespace galdrine::recovery
