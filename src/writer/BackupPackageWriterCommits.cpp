// Writing commits: payloads, manifest, snapshot and commit of a library snapshot, or a second
// commit of a snapshot already stored.

#include <algorithm>
#include <map>
#include <set>

#include "format/graph/BackupCommitGraph.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "writer/BackupArtifactFile.hpp"
#include "writer/BackupLineage.hpp"
#include "writer/BackupManifestAssembly.hpp"
#include "writer/BackupPackageGraphReader.hpp"
#include "writer/BackupPackageWriter.hpp"
#include "writer/BackupPayloadPlan.hpp"
#include "writer/BackupPayloadWriting.hpp"

namespace galdrine::writer {

struct BackupPackageWriter::SnapshotToCommit {
  format::BackupArtifactReferenceV1 reference;
  format::BackupSnapshotV1 snapshot;
  std::filesystem::path snapshotFile;
  format::BackupManifestRootV1 root;
  std::filesystem::path rootFile;
  std::vector<std::filesystem::path> sectionFiles;
  std::vector<format::BackupManifestRecordV1> records;
  format::BackupManifestSemanticSummary summary;
  std::set<format::BackupIdentifierV1> reused;   // resources whose payload an earlier commit wrote
  std::set<format::BackupIdentifierV1> written;  // payload files this commit wrote
};

namespace {

namespace fs = std::filesystem;
using Writer = BackupPackageWriter;
using Failure = BackupWriterFailure;
using Error = BackupWriterError;
using Record = format::BackupManifestRecordV1;
using Identifier = format::BackupIdentifierV1;
using IdentifierSet = std::set<Identifier>;
using Container = format::BackupPayloadContainerKindV1;

[[nodiscard]] Bytes bytesOf(const Identifier& identifier) { return Bytes(identifier.begin(), identifier.end()); }

[[nodiscard]] std::expected<Identifier, Failure> drawnIdentifier(const BackupWriterSources& sources) {
  auto drawn = sources.identifier();
  if (!drawn) return backupWriterFailure(drawn.error());
  return *drawn;
}

// The identifiers of the artifacts one commit adds, drawn before anything else so that a
// reproducible source gives them the same values whatever the library holds.
struct CommitIdentifiers {
  Identifier commit;
  Identifier snapshot;
  Identifier manifest;
};

[[nodiscard]] std::expected<CommitIdentifiers, Failure> drawIdentifiers(const BackupWriterSources& sources) {
  const auto commit = drawnIdentifier(sources);
  if (!commit) return std::unexpected(commit.error());
  const auto snapshot = drawnIdentifier(sources);
  if (!snapshot) return std::unexpected(snapshot.error());
  const auto manifest = drawnIdentifier(sources);
  if (!manifest) return std::unexpected(manifest.error());
  return CommitIdentifiers{*commit, *snapshot, *manifest};
}

// reusablePayloads reads the manifests of the parent and of every acknowledged tip, whose
// stored resources the new snapshot may keep.
[[nodiscard]] std::expected<std::vector<BackupStoredManifest>, Failure> storedManifests(
    const BackupLineage& lineage, const format::BackupPackageV1& package, ByteView libraryDomainIdentifier,
    ByteView bpmk) {
  std::vector<const format::BackupCommitV1*> commits;
  if (lineage.parent) commits.push_back(&lineage.parent->commit());
  for (const auto& tip : lineage.acknowledgedTips) commits.push_back(&tip.commit());
  std::vector<BackupStoredManifest> manifests;
  ByteSet snapshotsRead;
  for (const auto* commit : commits) {
    if (!snapshotsRead.insert(commit->snapshot().identifier()).second) continue;
    auto manifest = BackupPackageGraphReader::readManifest(package, *commit, libraryDomainIdentifier, bpmk);
    if (!manifest) return std::unexpected(manifest.error());
    manifests.push_back(std::move(*manifest));
  }
  return manifests;
}

// checkedManifest assembles the sections of `plan` and runs the manifest's validator over them.
struct CheckedManifest {
  std::vector<Record> records;
  std::vector<format::BackupManifestSectionV1> sections;
  format::BackupManifestSemanticSummary summary;
};

[[nodiscard]] std::expected<CheckedManifest, Failure> checkedManifest(
    const BackupLibrarySnapshot& library, const BackupPayloadPlan& plan, const Identifier& manifest,
    const Identifier& libraryDomainIdentifier, const BackupPayloadLayout& layout,
    const BackupManifestAssembly::SectionIdentifierSource& sectionIdentifiers, const BackupKeyScope& scope) {
  auto records = BackupManifestAssembly::records(library, plan);
  if (!records) return std::unexpected(records.error());
  auto sections =
      BackupManifestAssembly::sections(*records, manifest, libraryDomainIdentifier, layout, sectionIdentifiers);
  if (!sections) return std::unexpected(sections.error());
  auto summary = format::BackupManifestRecordCodecV1::validateAndSummarize(*sections, scope.packageIdentifier,
                                                                           scope.libraryDomainIdentifier, scope.bpmk);
  if (!summary) return backupWriterFailure(summary.error());
  return CheckedManifest{std::move(*records), std::move(*sections), std::move(*summary)};
}

// summaryAgrees compares what the validator found with what the plan meant to store.
[[nodiscard]] bool summaryAgrees(const format::BackupManifestSemanticSummary& summary,
                                 const format::BackupManifestSemanticSummary& planned, const BackupPayloadPlan& plan,
                                 const BackupLibrarySnapshot& library) {
  std::uint64_t logical = 0;
  for (const auto& resource : plan.resources) logical += resource.plaintextByteCount;
  return summary.counts == planned.counts && summary.logicalPlaintextByteCount == logical &&
         summary.counts.resourceCount() == plan.resources.size() && summary.counts.itemCount() == library.items.size();
}

struct WrittenManifest {
  format::BackupManifestRootV1 root;
  format::BackupArtifactReferenceV1 rootReference;
  fs::path rootFile;
  std::vector<fs::path> sectionFiles;
};

[[nodiscard]] std::expected<WrittenManifest, Failure> writeManifest(const format::BackupPackageV1& package,
                                                                    ByteView bpmk, const CheckedManifest& manifest,
                                                                    const CommitIdentifiers& identifiers,
                                                                    const Identifier& libraryDomainIdentifier,
                                                                    std::int64_t createdAtUTCMilliseconds) {
  const ByteView packageIdentifier = package.header().packageIdentifier();
  std::vector<format::BackupManifestSectionReferenceV1> references;
  std::vector<fs::path> sectionFiles;
  for (const auto& section : manifest.sections) {
    const auto sealed = format::BackupGraphV1::sealManifestSection(section, packageIdentifier, bpmk);
    if (!sealed) return backupWriterFailure(sealed.error());
    auto file = BackupArtifactFile::writeOnce(
        package, "manifests", *format::BackupGraphV1::manifestFileName(section.identifier()), sealed->frame);
    if (!file) return std::unexpected(file.error());
    references.push_back(sealed->reference);
    sectionFiles.push_back(std::move(*file));
  }
  auto sectionSetSHA256 = format::BackupGraphV1::sectionSetDigest(references);
  if (!sectionSetSHA256) return backupWriterFailure(sectionSetSHA256.error());
  auto root = format::BackupManifestRootV1::make(
      bytesOf(identifiers.manifest), bytesOf(libraryDomainIdentifier), bytesOf(identifiers.snapshot),
      createdAtUTCMilliseconds, manifest.summary.counts, manifest.summary.logicalPlaintextByteCount,
      manifest.summary.requiredPayloadSetSHA256, std::move(references), std::move(*sectionSetSHA256));
  if (!root) return backupWriterFailure(root.error());
  const auto sealed = format::BackupGraphV1::sealManifestRoot(*root, packageIdentifier, bpmk);
  if (!sealed) return backupWriterFailure(sealed.error());
  auto file = BackupArtifactFile::writeOnce(
      package, "manifests", *format::BackupGraphV1::manifestFileName(identifiers.manifest), sealed->frame);
  if (!file) return std::unexpected(file.error());
  return WrittenManifest{std::move(*root), sealed->reference, std::move(*file), std::move(sectionFiles)};
}

struct WrittenSnapshot {
  format::BackupSnapshotV1 snapshot;
  format::BackupArtifactReferenceV1 reference;
  fs::path file;
};

[[nodiscard]] std::expected<WrittenSnapshot, Failure> writeSnapshot(
    const format::BackupPackageV1& package, ByteView bpmk, const WrittenManifest& manifest,
    const format::BackupManifestSemanticSummary& summary, const CommitIdentifiers& identifiers,
    const Identifier& libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds) {
  auto snapshot = format::BackupSnapshotV1::make(
      bytesOf(identifiers.snapshot), bytesOf(libraryDomainIdentifier), createdAtUTCMilliseconds, manifest.rootReference,
      manifest.root.sectionSetSHA256(), summary.requiredPayloadSetSHA256, summary.counts,
      summary.logicalPlaintextByteCount, summary.encryptedPayloadByteCount);
  if (!snapshot) return backupWriterFailure(snapshot.error());
  const auto sealed = format::BackupGraphV1::sealSnapshot(*snapshot, package.header().packageIdentifier(), bpmk);
  if (!sealed) return backupWriterFailure(sealed.error());
  auto file = BackupArtifactFile::writeOnce(
      package, "snapshots", *format::BackupGraphV1::snapshotFileName(identifiers.snapshot), sealed->frame);
  if (!file) return std::unexpected(file.error());
  return WrittenSnapshot{std::move(*snapshot), sealed->reference, std::move(*file)};
}

[[nodiscard]] fs::path payloadFilePath(const format::BackupPackageV1& package, Container container,
                                       const Identifier& identifier) {
  if (container == Container::pack)
    return *package.directoryPath("packs") / *format::BackupPayloadV1::packSegmentFileName(identifier);
  return *package.directoryPath("objects") / *format::BackupPayloadV1::resourceChunkFileName(identifier);
}

// describePayloads tells, from the records, where each resource lies and which files the
// snapshot requires; `reused` and `written` say what this commit kept and what it wrote.
void describePayloads(BackupWrittenCommit& result, const format::BackupPackageV1& package, const IdentifierSet& reused,
                      const IdentifierSet& written) {
  std::map<Identifier, BackupWrittenPayloadFile> files;
  for (const Record& record : result.records) {
    const auto* resource = record.resource();
    if (resource == nullptr) continue;
    BackupWrittenResource described{resource->identifier(),
                                    resource->itemIdentifier(),
                                    resource->parts().front().container(),
                                    resource->payloadKeyIdentifier(),
                                    {},
                                    resource->plaintextByteCount(),
                                    resource->plaintextSHA256(),
                                    reused.contains(resource->identifier())};
    for (const auto& part : resource->parts()) {
      const fs::path path = payloadFilePath(package, part.container(), part.artifactIdentifier());
      if (described.partFiles.empty() || described.partFiles.back() != path) described.partFiles.push_back(path);
      files.try_emplace(
          part.artifactIdentifier(),
          BackupWrittenPayloadFile{part.artifactIdentifier(), part.container(), path, part.artifactFileByteCount(),
                                   part.artifactFileSHA256(), written.contains(part.artifactIdentifier())});
    }
    result.resources.push_back(std::move(described));
  }
  std::ranges::sort(result.resources, {}, &BackupWrittenResource::identifier);
  for (auto& [identifier, file] : files) result.payloadFiles.push_back(std::move(file));
}

}  // namespace

std::expected<BackupWrittenCommit, Failure> BackupPackageWriter::writeCommit(const BackupLibrarySnapshot& library,
                                                                             const BackupCommitRequest& request) {
  const auto lineage = BackupLineage::resolve(commits_, heads_, request);
  if (!lineage) return std::unexpected(lineage.error());
  const std::int64_t createdAt = settings_.sources.now();
  const auto identifiers = drawIdentifiers(settings_.sources);
  if (!identifiers) return std::unexpected(identifiers.error());
  if (auto done = lineage->standsIn(commits_, heads_, identifiers->commit); !done) return std::unexpected(done.error());
  const auto manifests = storedManifests(*lineage, package_, libraryDomainIdentifier_, bpmk_);
  if (!manifests) return std::unexpected(manifests.error());
  BackupReusablePayloads reusable;
  for (const auto& manifest : *manifests) reusable.add(manifest.records);

  const BackupKeyScope scope{package_.header().packageIdentifier(), libraryDomainIdentifier_, bpmk_};
  auto plan = BackupPayloadPlan::make(library, reusable, settings_.layout, settings_.sources, scope);
  if (!plan) return std::unexpected(plan.error());
  // The manifest is checked with stand-in payload values before any file exists, so a library
  // the format refuses leaves nothing behind.
  const auto standInIdentifiers = [] { return std::expected<Identifier, Error>(Identifier{}); };
  const auto planned = checkedManifest(library, *plan, identifiers->manifest, libraryDomainIdentifier_,
                                       settings_.layout, standInIdentifiers, scope);
  if (!planned) return std::unexpected(planned.error());

  const auto written = BackupPayloadWriting::writePayloads(*plan, package_, settings_.layout, scope,
                                                           settings_.concurrentPayloadWriterCount);
  if (!written) return std::unexpected(written.error());
  auto manifest = checkedManifest(
      library, *plan, identifiers->manifest, libraryDomainIdentifier_, settings_.layout,
      [&] { return settings_.sources.identifier(); }, scope);
  if (!manifest) return std::unexpected(manifest.error());
  if (!summaryAgrees(manifest->summary, planned->summary, *plan, library))
    return backupWriterFailure(Error::summaryMismatch);

  auto writtenManifest = writeManifest(package_, bpmk_, *manifest, *identifiers, libraryDomainIdentifier_, createdAt);
  if (!writtenManifest) return std::unexpected(writtenManifest.error());
  auto snapshot = writeSnapshot(package_, bpmk_, *writtenManifest, manifest->summary, *identifiers,
                                libraryDomainIdentifier_, createdAt);
  if (!snapshot) return std::unexpected(snapshot.error());

  IdentifierSet reused;
  for (const auto& resource : plan->resources) {
    if (resource.reused) reused.insert(resource.description->identifier);
  }
  SnapshotToCommit stored{snapshot->reference,
                          std::move(snapshot->snapshot),
                          std::move(snapshot->file),
                          std::move(writtenManifest->root),
                          std::move(writtenManifest->rootFile),
                          std::move(writtenManifest->sectionFiles),
                          std::move(manifest->records),
                          manifest->summary,
                          std::move(reused),
                          IdentifierSet(written->begin(), written->end())};
  return commitSnapshot(*lineage, identifiers->commit, std::move(stored), request);
}

std::expected<BackupWrittenCommit, Failure> BackupPackageWriter::writeCommitSharingSnapshot(
    const format::BackupIdentifierV1& snapshotOf, const BackupCommitRequest& request) {
  const auto* source = findCommit(snapshotOf);
  if (source == nullptr) return backupWriterFailure(Error::unknownCommit);
  const format::AuthenticatedBackupCommit sharedCommit = *source;
  const auto lineage = BackupLineage::resolve(commits_, heads_, request);
  if (!lineage) return std::unexpected(lineage.error());
  const auto commitIdentifier = drawnIdentifier(settings_.sources);
  if (!commitIdentifier) return std::unexpected(commitIdentifier.error());
  if (auto done = lineage->standsIn(commits_, heads_, *commitIdentifier); !done) return std::unexpected(done.error());
  auto manifest =
      BackupPackageGraphReader::readManifest(package_, sharedCommit.commit(), libraryDomainIdentifier_, bpmk_);
  if (!manifest) return std::unexpected(manifest.error());
  const format::BackupSnapshotV1& snapshot = manifest->snapshot;
  format::BackupManifestSemanticSummary summary{snapshot.counts(), snapshot.logicalPlaintextByteCount(),
                                                snapshot.encryptedPayloadByteCount(),
                                                snapshot.requiredPayloadSetSHA256()};
  IdentifierSet reused;
  for (const Record& record : manifest->records) {
    if (const auto* resource = record.resource()) reused.insert(resource->identifier());
  }
  SnapshotToCommit stored{sharedCommit.commit().snapshot(),
                          std::move(manifest->snapshot),
                          std::move(manifest->snapshotFile),
                          std::move(manifest->root),
                          std::move(manifest->rootFile),
                          std::move(manifest->sectionFiles),
                          std::move(manifest->records),
                          std::move(summary),
                          std::move(reused),
                          {}};
  return commitSnapshot(*lineage, *commitIdentifier, std::move(stored), request);
}

std::expected<BackupWrittenCommit, Failure> BackupPackageWriter::commitSnapshot(
    const BackupLineage& lineage, const format::BackupIdentifierV1& commitIdentifier, SnapshotToCommit stored,
    const BackupCommitRequest& request) {
  auto commit = writeCommitFile(lineage, commitIdentifier, stored);
  if (!commit) return std::unexpected(commit.error());
  BackupWrittenCommit result{commitIdentifier,
                             std::move(commit->first),
                             std::move(commit->second),
                             stored.reference,
                             std::move(stored.snapshot),
                             std::move(stored.snapshotFile),
                             std::move(stored.root),
                             std::move(stored.rootFile),
                             std::move(stored.sectionFiles),
                             std::move(stored.summary),
                             std::move(stored.records),
                             {},
                             {},
                             std::nullopt};
  describePayloads(result, package_, stored.reused, stored.written);
  if (request.publishHead) {
    auto head = writeHead(result.commit);
    if (!head) return std::unexpected(head.error());
    result.head = std::move(*head);
  }
  return result;
}

std::expected<std::pair<format::AuthenticatedBackupCommit, fs::path>, Failure> BackupPackageWriter::writeCommitFile(
    const BackupLineage& lineage, const format::BackupIdentifierV1& commitIdentifier, const SnapshotToCommit& stored) {
  std::optional<format::BackupArtifactReferenceV1> parent;
  if (lineage.parent) parent = lineage.parent->reference();
  // Every commit of one snapshot carries the snapshot's time, as readers require.
  const auto commit =
      format::BackupCommitV1::make(bytesOf(commitIdentifier), bytesOf(libraryDomainIdentifier_), parent,
                                   stored.reference, stored.root.identifier(), bytesOf(writerDeviceIdentifier_),
                                   lineage.writerEpoch, lineage.generation, stored.snapshot.createdAtUTCMilliseconds(),
                                   stored.snapshot.requiredPayloadSetSHA256(), lineage.acknowledgedReferences());
  if (!commit) return backupWriterFailure(commit.error());
  const auto sealed = format::BackupGraphV1::sealCommit(*commit, package_.header().packageIdentifier(), bpmk_);
  if (!sealed) return backupWriterFailure(sealed.error());
  auto authenticated = format::AuthenticatedBackupCommit::make(sealed->reference, *commit);
  if (!authenticated) return backupWriterFailure(authenticated.error());

  // The commit must stand in the graph as a reader will judge it, before its file exists.
  std::vector<format::AuthenticatedBackupCommit> extended(commits_.begin(), commits_.end());
  extended.push_back(*authenticated);
  if (const auto scan = format::BackupCommitGraph::scan(extended, heads_); !scan)
    return backupWriterFailure(scan.error());
  auto file = BackupArtifactFile::writeOnce(package_, "commits",
                                            *format::BackupGraphV1::commitFileName(commitIdentifier), sealed->frame);
  if (!file) return std::unexpected(file.error());
  commits_.push_back(*authenticated);
  return std::pair(std::move(*authenticated), std::move(*file));
}

}  // namespace galdrine::writer
