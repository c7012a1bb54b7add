// The graph fixture: the content of GraphFixtureContent in seven sections, a manifest root, a
// snapshot, a root commit and a head, each sealed under the graph seed's master key with a
// fixed nonce, and the results a recovery of it must give.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "fixtureproducer/FixtureProducerBytes.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "fixtureproducer/GraphFixtureContent.hpp"
#include "fixtures/FixtureMaterial.hpp"
#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = FixtureProducerError;
using SectionKind = format::BackupManifestSectionKindV1;
namespace Fixed = FixtureProducerBytes;
namespace Graph = format::BackupGraphV1;

constexpr std::int64_t createdAt = graphFixtureCreatedAtUTCMilliseconds;

// The identifiers of the graph's artifacts.
struct GraphIdentifiers {
  Bytes manifest = Fixed::identifier("graph/manifest-root");
  Bytes snapshot = Fixed::identifier("graph/snapshot");
  Bytes commit = Fixed::identifier("graph/commit");
  Bytes head = Fixed::identifier("graph/head");
  Bytes writerDevice = Fixed::identifier("graph/writer-device");
};

// SealedGraph is every frame of the graph, sections first, and the head's reference.
struct SealedGraph {
  std::vector<format::BackupSealedManifestSection> sections;
  std::vector<std::pair<std::string_view, format::BackupSealedGraphArtifact>>
      artifacts;  // root, snapshot, commit, head
  format::BackupManifestSemanticSummary summary;
};

struct GraphKey {
  const FixturePackage& package;
  ByteView bpmk;
};

[[nodiscard]] std::expected<std::vector<format::BackupManifestSectionV1>, Error> sections(
    const std::vector<format::BackupManifestRecordV1>& records, const GraphIdentifiers& ids,
    const FixturePackage& package) {
  std::vector<format::BackupManifestSectionV1> made;
  for (const SectionKind kind : allCases<SectionKind>) {
    std::vector<format::BackupManifestRecordV1> ofKind;
    std::ranges::copy_if(records, std::back_inserter(ofKind),
                         [&](const auto& record) { return record.kind() == kind; });
    const auto ordinal = static_cast<std::uint64_t>(kind);
    auto section = format::BackupManifestRecordCodecV1::makeSection(
        Fixed::identifier("graph/section/" + std::to_string(ordinal)), ids.manifest, package.libraryDomainIdentifier,
        ordinal, kind, ofKind);
    if (!section) return std::unexpected(Error::materialRefused);
    made.push_back(std::move(*section));
  }
  return made;
}

template <typename Sealed>
[[nodiscard]] std::expected<Sealed, Error> sealedOrRefused(std::expected<Sealed, format::BackupGraphV1Error> sealed) {
  if (!sealed) return std::unexpected(Error::materialRefused);
  return std::move(*sealed);
}

[[nodiscard]] std::expected<format::BackupManifestRootV1, Error> manifestRoot(const SealedGraph& graph,
                                                                              const GraphIdentifiers& ids,
                                                                              const GraphKey& key) {
  std::vector<format::BackupManifestSectionReferenceV1> references;
  for (const auto& section : graph.sections) references.push_back(section.reference);
  const auto sectionSetSHA256 = Graph::sectionSetDigest(references);
  if (!sectionSetSHA256) return std::unexpected(Error::materialRefused);
  auto root = format::BackupManifestRootV1::make(
      ids.manifest, key.package.libraryDomainIdentifier, ids.snapshot, createdAt, graph.summary.counts,
      graph.summary.logicalPlaintextByteCount, graph.summary.requiredPayloadSetSHA256, references, *sectionSetSHA256);
  if (!root) return std::unexpected(Error::materialRefused);
  return std::move(*root);
}

[[nodiscard]] std::expected<format::BackupSealedGraphArtifact, Error> sealedSnapshot(
    const SealedGraph& graph, const format::BackupManifestRootV1& root,
    const format::BackupArtifactReferenceV1& rootReference, const GraphIdentifiers& ids, const GraphKey& key) {
  const auto snapshot = format::BackupSnapshotV1::make(
      ids.snapshot, key.package.libraryDomainIdentifier, createdAt, rootReference, root.sectionSetSHA256(),
      graph.summary.requiredPayloadSetSHA256, graph.summary.counts, graph.summary.logicalPlaintextByteCount,
      graph.summary.encryptedPayloadByteCount);
  if (!snapshot) return std::unexpected(Error::materialRefused);
  return sealedOrRefused(Graph::sealSnapshot(*snapshot, key.package.packageIdentifier, key.bpmk,
                                             Graph::NonceSource::fixed(Fixed::nonce("graph/snapshot/nonce"))));
}

[[nodiscard]] std::expected<format::BackupSealedGraphArtifact, Error> sealedCommit(
    const SealedGraph& graph, const format::BackupArtifactReferenceV1& snapshotReference, const GraphIdentifiers& ids,
    const GraphKey& key) {
  const auto commit = format::BackupCommitV1::make(ids.commit, key.package.libraryDomainIdentifier, std::nullopt,
                                                   snapshotReference, ids.manifest, ids.writerDevice, 1, 0, createdAt,
                                                   graph.summary.requiredPayloadSetSHA256, {});
  if (!commit) return std::unexpected(Error::materialRefused);
  return sealedOrRefused(Graph::sealCommit(*commit, key.package.packageIdentifier, key.bpmk,
                                           Graph::NonceSource::fixed(Fixed::nonce("graph/commit/nonce"))));
}

[[nodiscard]] std::expected<format::BackupSealedGraphArtifact, Error> sealedHead(
    const format::BackupArtifactReferenceV1& commitReference, const GraphIdentifiers& ids, const GraphKey& key) {
  const auto head =
      format::BackupHeadV1::make(ids.head, key.package.libraryDomainIdentifier, commitReference, createdAt);
  if (!head) return std::unexpected(Error::materialRefused);
  return sealedOrRefused(Graph::sealHead(*head, key.package.packageIdentifier, key.bpmk,
                                         Graph::NonceSource::fixed(Fixed::nonce("graph/head/nonce"))));
}

// sealedGraph seals the sections, summarises them as a reader will, and seals the chain above
// them: root, snapshot, commit, head.
[[nodiscard]] std::expected<SealedGraph, Error> sealedGraph(const GraphFixtureContent& content, const GraphKey& key) {
  const GraphIdentifiers ids;
  const auto opened = sections(content.records, ids, key.package);
  if (!opened) return std::unexpected(opened.error());
  const auto summary = format::BackupManifestRecordCodecV1::validateAndSummarize(
      *opened, key.package.packageIdentifier, key.package.libraryDomainIdentifier, key.bpmk);
  if (!summary) return std::unexpected(Error::materialRefused);
  SealedGraph graph{{}, {}, *summary};
  for (const auto& section : *opened) {
    auto sealed = sealedOrRefused(Graph::sealManifestSection(
        section, key.package.packageIdentifier, key.bpmk,
        Graph::NonceSource::fixed(Fixed::nonce("graph/section/" + std::to_string(section.ordinal()) + "/nonce"))));
    if (!sealed) return std::unexpected(sealed.error());
    graph.sections.push_back(std::move(*sealed));
  }
  const auto root = manifestRoot(graph, ids, key);
  if (!root) return std::unexpected(root.error());
  auto sealedRoot =
      sealedOrRefused(Graph::sealManifestRoot(*root, key.package.packageIdentifier, key.bpmk,
                                              Graph::NonceSource::fixed(Fixed::nonce("graph/manifest-root/nonce"))));
  if (!sealedRoot) return std::unexpected(sealedRoot.error());
  auto snapshot = sealedSnapshot(graph, *root, sealedRoot->reference, ids, key);
  if (!snapshot) return std::unexpected(snapshot.error());
  auto commit = sealedCommit(graph, snapshot->reference, ids, key);
  if (!commit) return std::unexpected(commit.error());
  auto head = sealedHead(commit->reference, ids, key);
  if (!head) return std::unexpected(head.error());
  graph.artifacts = {{"manifest-root", std::move(*sealedRoot)},
                     {"snapshot", std::move(*snapshot)},
                     {"commit", std::move(*commit)},
                     {"head", std::move(*head)}};
  return graph;
}

void appendBigEndian(Bytes& bytes, std::uint64_t value) {
  for (int shift = 56; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

// recoveredPayloadDigest is the digest a recovery of the fixture must arrive at: the label, a
// zero byte, the count, and each resource by ascending identifier with its length and bytes.
[[nodiscard]] Bytes recoveredPayloadDigest(std::vector<GraphFixtureResource> resources) {
  std::ranges::sort(resources, ByteOrder::precedes, &GraphFixtureResource::identifier);
  Bytes transcript = ByteText::bytes("Galdrine V1 recovered payload fixture");
  transcript.push_back(0);
  appendBigEndian(transcript, resources.size());
  for (const GraphFixtureResource& resource : resources) {
    transcript.insert(transcript.end(), resource.identifier.begin(), resource.identifier.end());
    appendBigEndian(transcript, resource.plaintext.size());
    transcript.insert(transcript.end(), resource.plaintext.begin(), resource.plaintext.end());
  }
  return Fixed::digestOf(transcript);
}

[[nodiscard]] nlohmann::json artifactDocument(std::string_view kind, ByteView identifier, ByteView frame) {
  return {
      {"kind", kind}, {"identifierHex", FixtureProducers::hex(identifier)}, {"frameHex", FixtureProducers::hex(frame)}};
}

[[nodiscard]] nlohmann::json referenceDocument(const format::BackupArtifactReferenceV1& reference) {
  return {{"identifierHex", FixtureProducers::hex(reference.identifier())},
          {"frameByteCount", reference.frameByteCount()},
          {"frameSHA256Hex", FixtureProducers::hex(reference.frameSHA256())},
          {"plaintextByteCount", reference.plaintextByteCount()},
          {"plaintextSHA256Hex", FixtureProducers::hex(reference.plaintextSHA256())}};
}

[[nodiscard]] nlohmann::json expectedDocument(const SealedGraph& graph, const GraphFixtureContent& content) {
  const format::BackupManifestCountsV1& counts = graph.summary.counts;
  return {{"counts",
           {{"payloadKeyCount", counts.payloadKeyCount()},
            {"itemCount", counts.itemCount()},
            {"resourceCount", counts.resourceCount()},
            {"folderCount", counts.folderCount()},
            {"albumCount", counts.albumCount()},
            {"membershipCount", counts.membershipCount()},
            {"tombstoneCount", counts.tombstoneCount()}}},
          {"logicalPlaintextByteCount", graph.summary.logicalPlaintextByteCount},
          {"encryptedPayloadByteCount", graph.summary.encryptedPayloadByteCount},
          {"requiredPayloadSetSHA256Hex", FixtureProducers::hex(graph.summary.requiredPayloadSetSHA256)},
          {"recoveredResourceCount", content.resources.size()},
          {"recoveredPayloadSHA256Hex", FixtureProducers::hex(recoveredPayloadDigest(content.resources))}};
}

}  // namespace

namespace FixtureProducers {

Document graphFixture(const FixturePackage& package) {
  Bytes bpmk = fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::graphBPMKSeed);
  ScopeGuard wipeBPMK{[&] { platform::SecureMemory::wipe(bpmk); }};
  const auto content = graphFixtureContent(package, bpmk);
  if (!content) return std::unexpected(content.error());
  const auto graph = sealedGraph(*content, {package, bpmk});
  if (!graph) return std::unexpected(graph.error());

  nlohmann::json artifacts = nlohmann::json::array();
  for (const auto& section : graph->sections)
    artifacts.push_back(artifactDocument("manifest-section", section.reference.artifact().identifier(), section.frame));
  for (const auto& [kind, artifact] : graph->artifacts)
    artifacts.push_back(artifactDocument(kind, artifact.reference.identifier(), artifact.frame));
  return nlohmann::json{
      {"fixtureSchemaVersion", fixtures::RecoveryFixtureVerifier::fixtureSchemaVersion},
      {"formatIdentifier", format::BackupFormatV1::canonicalFormatIdentifier},
      {"packageIdentifierHex", hex(package.packageIdentifier)},
      {"libraryDomainIdentifierHex", hex(package.libraryDomainIdentifier)},
      {"artifacts", std::move(artifacts)},
      {"headReference", referenceDocument(graph->artifacts.back().second.reference)},
      {"payload",
       {{"pack", {{"identifierHex", hex(content->segmentIdentifier)}, {"segmentHex", hex(content->segment)}}},
        {"standalone", {{"identifierHex", hex(content->chunkIdentifier)}, {"frameHex", hex(content->chunkFrame)}}}}},
      {"expected", expectedDocument(*graph, *content)},
  };
}

}  // namespace FixtureProducers

}  // namespace galdrine::fixtureproducer
