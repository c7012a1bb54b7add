#include "recovery/inspection/RecoveryPackageInspector.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "format/graph/BackupCommitGraph.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "recovery/inspection/BranchLineage.hpp"
#include "recovery/inspection/ContentAuthentication.hpp"
#include "recovery/inspection/GraphArtifactDiscovery.hpp"
#include "recovery/inspection/PayloadObservation.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;
using Inspection = RecoveryPackageInspection;
using Reader = reader::BackupKeyEnvelopeSetReader;
using Factor = envelope::PortableKeyFactorV1;
using Limits = RecoveryInspectionLimits;
using Preflight = RecoverySnapshotPreflight;
using Disposition = RecoveryBranchDisposition;
using Scan = format::BackupCommitGraphScan;
using ContentMap = ByteMap<AuthenticatedContent>;

[[nodiscard]] AuthenticationScope scopeOf(const Reader& reader, ByteView bpmk) {
  return {reader.package(), reader.envelopeSet().libraryDomainIdentifier(), bpmk};
}

// inspectUnlocked runs `unlock` on a freshly opened reader and then inspects; the bpmk it unlocked
// is wiped on every way out.
template <typename Unlock>
[[nodiscard]] std::expected<Inspection, Error> inspectUnlocked(const std::filesystem::path& packagePath, Factor factor,
                                                               const Limits& limits, Unlock unlock) {
  const auto reader = openEnvelopeReader(packagePath);
  if (!reader) return std::unexpected(reader.error());
  auto bpmk = unlock(*reader);
  if (!bpmk) return std::unexpected(Error::unlockFailed);
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*bpmk); }};
  return inspect(*reader, *bpmk, factor, limits);
}

// AuthenticatedGraph is every commit's content and the payload files they require together.
struct AuthenticatedGraph {
  ContentMap contents;
  PayloadExpectationMap expectations;
};

[[nodiscard]] std::expected<AuthenticatedGraph, Error> authenticateCommits(
    const std::vector<format::AuthenticatedBackupCommit>& commits, const AuthenticationScope& scope,
    const Limits& limits) {
  AuthenticationBudget budget(limits);
  SnapshotCache cache;
  AuthenticatedGraph graph;
  ByteSet seenSnapshots;
  for (const auto& commit : commits) {
    auto content = ContentAuthentication::authenticateContent(commit, scope, false, cache, budget);
    if (!content) return std::unexpected(content.error());
    const auto expectations = content->payloadExpectations;
    const Bytes snapshotIdentifier = content->snapshot.identifier();
    if (!graph.contents.try_emplace(commit.commit().identifier(), std::move(*content)).second) {
      return std::unexpected(Error::integrityFailure);
    }
    if (!seenSnapshots.insert(snapshotIdentifier).second) continue;
    const auto merged = PayloadExpectations::merge(graph.expectations, *expectations);
    if (!merged) return std::unexpected(merged.error());
  }
  return graph;
}

[[nodiscard]] Preflight preflightOf(const AuthenticatedContent& content, bool isRetainedTip,
                                    const RecoveryPayloadFileEvidence& evidence) {
  const auto& commit = content.authenticatedCommit.commit();
  const auto& snapshot = content.snapshot;
  return Preflight{commit.identifier(),
                   snapshot.identifier(),
                   commit.createdAtUTCMilliseconds(),
                   commit.writerEpoch(),
                   commit.generation(),
                   isRetainedTip,
                   snapshot.counts(),
                   snapshot.logicalPlaintextByteCount(),
                   snapshot.encryptedPayloadByteCount(),
                   evidence};
}

// preflightsOf gives each commit its preflight, computing the evidence once per snapshot.
[[nodiscard]] ByteMap<Preflight> preflightsOf(const ContentMap& contents, const PayloadObservationMap& observations,
                                              const ByteSet& retainedTips) {
  ByteMap<RecoveryPayloadFileEvidence> evidenceBySnapshot;
  ByteMap<Preflight> preflights;
  for (const auto& [commitIdentifier, content] : contents) {
    auto evidence = evidenceBySnapshot.find(content.snapshot.identifier());
    if (evidence == evidenceBySnapshot.end()) {
      evidence =
          evidenceBySnapshot
              .emplace(content.snapshot.identifier(), payloadFileEvidence(*content.payloadExpectations, observations))
              .first;
    }
    preflights.emplace(commitIdentifier,
                       preflightOf(content, retainedTips.contains(commitIdentifier), evidence->second));
  }
  return preflights;
}

[[nodiscard]] Disposition dispositionOf(const Scan& scan) {
  const auto* writable = scan.accessState.asWritable();
  if (writable == nullptr) return Disposition::unresolvedFork();
  if (!writable->canonicalTip) return Disposition::noPublishedHead();
  if (scan.retainedTips.size() == 1) return Disposition::singleBranch();
  return Disposition::canonicalizedBranches(writable->canonicalTip->reference().identifier());
}

[[nodiscard]] std::expected<std::vector<RecoveryPreservedBranch>, Error> preservedBranchesOf(
    const Scan& scan, const ContentMap& contents, const ByteMap<Preflight>& preflights) {
  std::vector<RecoveryPreservedBranch> branches;
  branches.reserve(scan.retainedTips.size());
  for (const auto& tip : scan.retainedTips) {
    const Bytes& tipIdentifier = tip.reference().identifier();
    auto lineage = branchLineage(tipIdentifier, contents, preflights);
    if (!lineage) return std::unexpected(lineage.error());
    branches.push_back({tipIdentifier, std::move(*lineage)});
  }
  return branches;
}

// inspectionHeading fills what an inspection says of the package itself.
[[nodiscard]] Inspection inspectionHeading(const Reader& reader, Factor factor) {
  Inspection inspection;
  inspection.packageIdentifier = reader.package().header().packageIdentifier();
  inspection.libraryDomainIdentifier = reader.envelopeSet().libraryDomainIdentifier();
  inspection.formatIdentifier = std::string(format::BackupFormatV1::canonicalFormatIdentifier);
  inspection.formatVersion = format::BackupFormatV1::formatVersion;
  inspection.unlockedFactor = factor;
  inspection.keyEnvelopeSetSHA256 = reader.envelopeSetSHA256();
  return inspection;
}

}  // namespace

std::expected<Inspection, Error> inspectWithBackupPassphrase(const std::filesystem::path& packagePath,
                                                             ByteView passphrase) {
  return inspectWithBackupPassphrase(packagePath, passphrase, Limits{});
}

std::expected<Inspection, Error> inspectWithBackupPassphrase(const std::filesystem::path& packagePath,
                                                             ByteView passphrase, const Limits& limits) {
  return inspectUnlocked(packagePath, Factor::backupPassphrase, limits,
                         [&](const Reader& reader) { return reader.openWithBackupPassphrase(passphrase); });
}

std::expected<Inspection, Error> inspectWithRecoveryKey(const std::filesystem::path& packagePath,
                                                        ByteView recoveryKey) {
  return inspectWithRecoveryKey(packagePath, recoveryKey, Limits{});
}

std::expected<Inspection, Error> inspectWithRecoveryKey(const std::filesystem::path& packagePath, ByteView recoveryKey,
                                                        const Limits& limits) {
  return inspectUnlocked(packagePath, Factor::recoveryKey, limits,
                         [&](const Reader& reader) { return reader.openWithRecoveryKey(recoveryKey); });
}

std::expected<Reader, Error> openEnvelopeReader(const std::filesystem::path& packagePath) {
  auto reader = Reader::open(packagePath);
  if (!reader) return std::unexpected(Error::invalidPackage);
  return std::move(*reader);
}

std::expected<Inspection, Error> inspect(const Reader& reader, ByteView bpmk, Factor factor, const Limits& limits,
                                         const RecoveryPayloadReadObserver& observer) {
  auto examined = inspectExamined(reader, bpmk, factor, limits, observer);
  if (!examined) return std::unexpected(examined.error());
  return std::move(examined->inspection);
}

std::expected<ExaminedInspection, Error> inspectExamined(const Reader& reader, ByteView bpmk, Factor factor,
                                                         const Limits& limits,
                                                         const RecoveryPayloadReadObserver& observer) {
  const AuthenticationScope scope = scopeOf(reader, bpmk);
  const auto commits = GraphArtifactDiscovery::discoverCommits(scope);
  if (!commits) return std::unexpected(commits.error());
  const auto heads = GraphArtifactDiscovery::discoverHeads(scope);
  if (!heads) return std::unexpected(heads.error());
  const auto scan = format::BackupCommitGraph::scan(*commits, *heads);
  if (!scan) return std::unexpected(inspectorError(scan.error()));
  const auto graph = authenticateCommits(*commits, scope, limits);
  if (!graph) return std::unexpected(graph.error());
  auto examinations = PayloadObservations::examinePayloadFiles(graph->expectations, reader.package(), observer);
  if (!examinations) return std::unexpected(examinations.error());
  const PayloadObservationMap observations = PayloadObservations::observations(*examinations);
  ByteSet retainedTips;
  for (const auto& tip : scan->retainedTips) retainedTips.insert(tip.reference().identifier());
  auto preflights = preflightsOf(graph->contents, observations, retainedTips);
  auto branches = preservedBranchesOf(*scan, graph->contents, preflights);
  if (!branches) return std::unexpected(branches.error());

  Inspection inspection = inspectionHeading(reader, factor);
  inspection.branchDisposition = dispositionOf(*scan);
  inspection.preservedBranches = std::move(*branches);
  // The map is ordered by commit identifier in the system's byte order already.
  inspection.authenticatedSnapshots.reserve(preflights.size());
  for (auto& entry : preflights) inspection.authenticatedSnapshots.push_back(std::move(entry.second));
  inspection.authenticatedCommitCount = static_cast<std::int64_t>(commits->size());
  inspection.authenticatedHeadCount = static_cast<std::int64_t>(heads->size());
  inspection.maximumWriterEpoch = scan->maximumWriterEpoch;
  return ExaminedInspection{std::move(inspection), std::move(*examinations)};
}

std::expected<RecoveryAuthenticatedSnapshot, Error> authenticatedSnapshot(ByteView commitIdentifier,
                                                                          const Reader& reader, ByteView bpmk) {
  const AuthenticationScope scope = scopeOf(reader, bpmk);
  const auto commits = GraphArtifactDiscovery::discoverCommits(scope);
  if (!commits) return std::unexpected(commits.error());
  const auto found = std::ranges::find_if(*commits, [&](const format::AuthenticatedBackupCommit& commit) {
    return ByteOrder::equal(commit.commit().identifier(), commitIdentifier);
  });
  if (found == commits->end()) return std::unexpected(Error::integrityFailure);
  AuthenticationBudget budget{Limits{}};
  SnapshotCache cache;
  auto content = ContentAuthentication::authenticateContent(*found, scope, true, cache, budget);
  if (!content) return std::unexpected(content.error());
  cache.clear();  // the content is now the records' only holder, so they can move out
  return RecoveryAuthenticatedSnapshot{std::move(content->authenticatedCommit), std::move(content->snapshot),
                                       std::move(*content->retainedRecords)};
}

}  // namespace galdrine::recovery
