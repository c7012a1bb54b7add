// Graph fixtures: one small but complete backup, walked from its head down to the recovered
// plaintext of every resource under a master key built from a fixed seed.

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordCodecV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrineRecoveryCore/FixtureHex.hpp"
#include "GaldrineRecoveryCore/FixtureJSONFields.hpp"
#include "GaldrineRecoveryCore/FixtureMaterial.hpp"
#include "GaldrineRecoveryCore/FixtureVerification.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"
#include "GaldrineRecoveryCore/GraphFixturePayloads.hpp"

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;
namespace Graph = GaldrineBackupGraphV1;

// The kinds of artifact, in this order, and how many of each a graph fixture holds.
constexpr std::array<std::string_view, 5> artifactKindTexts{"manifest-section", "manifest-root", "snapshot", "commit",
                                                            "head"};
constexpr std::array<std::size_t, 5> artifactKindCounts{7, 1, 1, 1, 1};
constexpr std::size_t artifactCount = 11;

struct Artifact {
  std::size_t kind = 0;  // index into artifactKindTexts
  std::string identifierHex;
  std::string frameHex;
};

struct Reference {
  std::string identifierHex;
  std::uint64_t frameByteCount = 0;
  std::string frameSHA256Hex;
  std::uint64_t plaintextByteCount = 0;
  std::string plaintextSHA256Hex;
};

struct Payload {
  std::string packIdentifierHex;
  std::string segmentHex;
  std::string standaloneIdentifierHex;
  std::string frameHex;
};

struct Expected {
  std::array<std::uint64_t, 7> counts{};  // in the order of the section kinds
  std::uint64_t logicalPlaintextByteCount = 0;
  std::uint64_t encryptedPayloadByteCount = 0;
  std::string requiredPayloadSetSHA256Hex;
  std::int64_t recoveredResourceCount = 0;
  std::string recoveredPayloadSHA256Hex;
};

struct RecoveryGraphFixture {
  std::int64_t fixtureSchemaVersion = 0;
  std::string formatIdentifier;
  std::string packageIdentifierHex;
  std::string libraryDomainIdentifierHex;
  std::vector<Artifact> artifacts;
  Reference headReference;
  Payload payload;
  Expected expected;
};

// Identifiers and key of the fixture's package, decoded once.
struct GraphScope {
  Bytes packageIdentifier;
  Bytes libraryDomainIdentifier;
  Bytes bpmk;
};

// The field names of GaldrineBackupManifestCountsV1, in the order of the section kinds.
constexpr std::array<const char*, 7> countKeys{"payloadKeyCount", "itemCount",       "resourceCount", "folderCount",
                                               "albumCount",      "membershipCount", "tombstoneCount"};

[[nodiscard]] Artifact decodeArtifact(const FixtureJSONFields& fields, bool& faulted) {
  const std::string kind = fields.text("kind");
  const auto found = std::ranges::find(artifactKindTexts, kind);
  if (found == artifactKindTexts.end()) faulted = true;  // an unknown kind does not decode
  const auto kindIndex = found == artifactKindTexts.end() ? 0 : static_cast<std::size_t>(found - artifactKindTexts.begin());
  return {kindIndex, fields.text("identifierHex"), fields.text("frameHex")};
}

[[nodiscard]] Expected decodeExpected(const FixtureJSONFields& fields) {
  Expected expected;
  const FixtureJSONFields counts = fields.object("counts");
  for (std::size_t kind = 0; kind < countKeys.size(); ++kind) expected.counts[kind] = counts.unsignedInteger(countKeys[kind]);
  expected.logicalPlaintextByteCount = fields.unsignedInteger("logicalPlaintextByteCount");
  expected.encryptedPayloadByteCount = fields.unsignedInteger("encryptedPayloadByteCount");
  expected.requiredPayloadSetSHA256Hex = fields.text("requiredPayloadSetSHA256Hex");
  expected.recoveredResourceCount = fields.signedInteger("recoveredResourceCount");
  expected.recoveredPayloadSHA256Hex = fields.text("recoveredPayloadSHA256Hex");
  return expected;
}

[[nodiscard]] std::expected<RecoveryGraphFixture, Error> readGraphFixture(ByteView bytes) {
  const auto document = FixtureJSON::parse(bytes);
  if (!document) return std::unexpected(Error::invalidFixture);
  bool faulted = false;
  const FixtureJSONFields fields(*document, faulted);
  const FixtureJSONFields head = fields.object("headReference");
  const FixtureJSONFields payload = fields.object("payload");
  const FixtureJSONFields pack = payload.object("pack");
  const FixtureJSONFields standalone = payload.object("standalone");
  RecoveryGraphFixture fixture{
      fields.signedInteger("fixtureSchemaVersion"),
      fields.text("formatIdentifier"),
      fields.text("packageIdentifierHex"),
      fields.text("libraryDomainIdentifierHex"),
      {},
      {head.text("identifierHex"), head.unsignedInteger("frameByteCount"), head.text("frameSHA256Hex"),
       head.unsignedInteger("plaintextByteCount"), head.text("plaintextSHA256Hex")},
      {pack.text("identifierHex"), pack.text("segmentHex"), standalone.text("identifierHex"), standalone.text("frameHex")},
      decodeExpected(fields.object("expected")),
  };
  for (const FixtureJSONFields& artifact : fields.objects("artifacts"))
    fixture.artifacts.push_back(decodeArtifact(artifact, faulted));
  if (faulted) return std::unexpected(Error::invalidFixture);
  return fixture;
}

// hasTheGraphShape: 11 artifacts with pairwise different identifier texts, of each kind as
// many as a graph holds.
[[nodiscard]] bool hasTheGraphShape(const std::vector<Artifact>& artifacts) {
  if (artifacts.size() != artifactCount) return false;
  std::set<std::string> identifiers;
  for (const Artifact& artifact : artifacts) identifiers.insert(artifact.identifierHex);
  if (identifiers.size() != artifactCount) return false;
  std::array<std::size_t, 5> counts{};
  for (const Artifact& artifact : artifacts) ++counts[artifact.kind];
  return counts == artifactKindCounts;
}

[[nodiscard]] std::expected<Bytes, Error> decodedDigest(const std::string& text) { return FixtureHex::decode(text); }

// artifactFrames maps each decoded identifier to its frame; an identifier twice, whatever the
// case of its digits, is invalidFixture.
[[nodiscard]] std::expected<std::map<Bytes, Bytes>, Error> artifactFrames(const std::vector<Artifact>& artifacts) {
  std::map<Bytes, Bytes> frames;
  for (const Artifact& artifact : artifacts) {
    auto identifier = FixtureHex::decode(artifact.identifierHex);
    if (!identifier) return std::unexpected(identifier.error());
    auto frame = FixtureHex::decode(artifact.frameHex);
    if (!frame) return std::unexpected(frame.error());
    if (!frames.emplace(std::move(*identifier), std::move(*frame)).second) return std::unexpected(Error::invalidFixture);
  }
  return frames;
}

[[nodiscard]] std::expected<GaldrineBackupArtifactReferenceV1, Error> headReference(const Reference& reference) {
  auto identifier = FixtureHex::decode(reference.identifierHex);
  if (!identifier) return std::unexpected(identifier.error());
  auto frameSHA256 = FixtureHex::decode(reference.frameSHA256Hex);
  if (!frameSHA256) return std::unexpected(frameSHA256.error());
  auto plaintextSHA256 = FixtureHex::decode(reference.plaintextSHA256Hex);
  if (!plaintextSHA256) return std::unexpected(plaintextSHA256.error());
  auto made = GaldrineBackupArtifactReferenceV1::make(std::move(*identifier), reference.frameByteCount,
                                                      std::move(*frameSHA256), reference.plaintextByteCount,
                                                      std::move(*plaintextSHA256));
  if (!made) return std::unexpected(Error::invalidFixture);
  return std::move(*made);
}

// WalkedGraph is everything the walk from the head authenticated.
struct WalkedGraph {
  GaldrineBackupSnapshotV1 snapshot;
  GaldrineBackupManifestRootV1 root;
  std::vector<GaldrineBackupManifestSectionV1> sections;
  std::vector<GaldrineBackupManifestRecordV1> records;
};

[[nodiscard]] const Bytes* frameOf(const std::map<Bytes, Bytes>& frames, const Bytes& identifier) {
  const auto found = frames.find(identifier);
  return found == frames.end() ? nullptr : &found->second;
}

// openSections opens each section the root names, in order, and decodes its records.
[[nodiscard]] std::expected<void, Error> openSections(const std::map<Bytes, Bytes>& frames, const GraphScope& scope,
                                                      WalkedGraph& graph) {
  for (const auto& reference : graph.root.sections()) {
    const Bytes* frame = frameOf(frames, reference.artifact().identifier());
    if (frame == nullptr) return std::unexpected(Error::invalidFixture);
    auto section = Graph::openManifestSection(*frame, reference, graph.root.identifier(), scope.packageIdentifier,
                                              scope.libraryDomainIdentifier, scope.bpmk);
    if (!section) return std::unexpected(Error::invalidFixture);
    auto records = GaldrineBackupManifestRecordCodecV1::records(*section);
    if (!records) return std::unexpected(Error::invalidFixture);
    std::ranges::move(*records, std::back_inserter(graph.records));
    graph.sections.push_back(std::move(*section));
  }
  return {};
}

template <typename Record>
using GraphOpener = std::expected<Record, GaldrineBackupGraphV1Error> (*)(ByteView, const GaldrineBackupArtifactReferenceV1&,
                                                                         ByteView, ByteView, ByteView);

// openReferenced opens the frame that `reference` names against it; a frame the fixture lacks,
// or one that does not open, is invalidFixture.
template <typename Record>
[[nodiscard]] std::expected<Record, Error> openReferenced(const std::map<Bytes, Bytes>& frames,
                                                          const GaldrineBackupArtifactReferenceV1& reference,
                                                          const GraphScope& scope, GraphOpener<Record> open) {
  const Bytes* frame = frameOf(frames, reference.identifier());
  if (frame == nullptr) return std::unexpected(Error::invalidFixture);
  auto record = open(*frame, reference, scope.packageIdentifier, scope.libraryDomainIdentifier, scope.bpmk);
  if (!record) return std::unexpected(Error::invalidFixture);
  return std::move(*record);
}

// walkGraph opens the head, its commit, the commit's snapshot, the snapshot's manifest root
// and every section of it, each against the reference the one above gives.
[[nodiscard]] std::expected<WalkedGraph, Error> walkGraph(const std::map<Bytes, Bytes>& frames,
                                                          const GaldrineBackupArtifactReferenceV1& headReference,
                                                          const GraphScope& scope) {
  const auto head = openReferenced<GaldrineBackupHeadV1>(frames, headReference, scope, Graph::openHead);
  if (!head) return std::unexpected(head.error());
  const auto commit = openReferenced<GaldrineBackupCommitV1>(frames, head->commit(), scope, Graph::openCommit);
  if (!commit) return std::unexpected(commit.error());
  auto snapshot = openReferenced<GaldrineBackupSnapshotV1>(frames, commit->snapshot(), scope, Graph::openSnapshot);
  if (!snapshot) return std::unexpected(snapshot.error());
  auto root = openReferenced<GaldrineBackupManifestRootV1>(frames, snapshot->manifest(), scope, Graph::openManifestRoot);
  if (!root) return std::unexpected(root.error());
  WalkedGraph graph{std::move(*snapshot), std::move(*root), {}, {}};
  if (auto opened = openSections(frames, scope, graph); !opened) return std::unexpected(opened.error());
  return graph;
}

// agreesWithExpectations: summary, root and snapshot tell one story, and it is the fixture's.
[[nodiscard]] std::expected<bool, Error> agreesWithExpectations(const GaldrineBackupManifestSemanticSummaryV1& summary,
                                                                const WalkedGraph& graph, const Expected& expected) {
  const auto requiredPayloadSetSHA256 = decodedDigest(expected.requiredPayloadSetSHA256Hex);
  if (!requiredPayloadSetSHA256) return std::unexpected(requiredPayloadSetSHA256.error());
  const GaldrineBackupManifestCountsV1& counts = summary.counts;
  bool countsAsExpected = true;
  for (std::size_t kind = 0; kind < expected.counts.size(); ++kind)
    countsAsExpected = countsAsExpected &&
                       counts.count(static_cast<GaldrineBackupManifestSectionKindV1>(kind)) == expected.counts[kind];
  return counts == graph.root.counts() && counts == graph.snapshot.counts() && countsAsExpected &&
         summary.logicalPlaintextByteCount == graph.root.logicalPlaintextByteCount() &&
         summary.logicalPlaintextByteCount == graph.snapshot.logicalPlaintextByteCount() &&
         summary.logicalPlaintextByteCount == expected.logicalPlaintextByteCount &&
         summary.encryptedPayloadByteCount == graph.snapshot.encryptedPayloadByteCount() &&
         summary.encryptedPayloadByteCount == expected.encryptedPayloadByteCount &&
         summary.requiredPayloadSetSHA256 == graph.root.requiredPayloadSetSHA256() &&
         summary.requiredPayloadSetSHA256 == graph.snapshot.requiredPayloadSetSHA256() &&
         summary.requiredPayloadSetSHA256 == *requiredPayloadSetSHA256;
}

[[nodiscard]] std::expected<GraphFixturePayloadFiles, Error> payloadFiles(const Payload& payload) {
  GraphFixturePayloadFiles files;
  for (auto [text, bytes] : {std::pair{&payload.packIdentifierHex, &files.packIdentifier},
                             std::pair{&payload.segmentHex, &files.segment},
                             std::pair{&payload.standaloneIdentifierHex, &files.standaloneIdentifier},
                             std::pair{&payload.frameHex, &files.frame}}) {
    auto field = FixtureHex::decode(*text);
    if (!field) return std::unexpected(field.error());
    *bytes = std::move(*field);
  }
  return files;
}

// verifyRecoveredPayloads recovers every resource and compares the count and the transcript
// digest with the fixture's, giving the count.
[[nodiscard]] FixtureVerification::Count verifyRecoveredPayloads(const WalkedGraph& graph,
                                                                 const RecoveryGraphFixture& fixture,
                                                                 const GraphScope& scope) {
  const auto files = payloadFiles(fixture.payload);
  if (!files) return std::unexpected(files.error());
  auto recovered = GraphFixturePayloads::recoverPayloads(graph.records, *files, scope.packageIdentifier,
                                                         scope.libraryDomainIdentifier, scope.bpmk);
  if (!recovered) return std::unexpected(recovered.error());
  const auto count = static_cast<std::int64_t>(recovered->size());
  if (count != fixture.expected.recoveredResourceCount) return std::unexpected(Error::invalidFixture);
  const auto expectedDigest = decodedDigest(fixture.expected.recoveredPayloadSHA256Hex);
  if (!expectedDigest) return std::unexpected(expectedDigest.error());
  if (!GaldrineByteOrder::equal(GraphFixturePayloads::recoveredPayloadDigest(std::move(*recovered)), *expectedDigest))
    return std::unexpected(Error::invalidFixture);
  return count;
}

[[nodiscard]] std::expected<GraphScope, Error> graphScope(const RecoveryGraphFixture& fixture) {
  auto packageIdentifier = FixtureHex::decode(fixture.packageIdentifierHex);
  if (!packageIdentifier) return std::unexpected(packageIdentifier.error());
  auto libraryDomainIdentifier = FixtureHex::decode(fixture.libraryDomainIdentifierHex);
  if (!libraryDomainIdentifier) return std::unexpected(libraryDomainIdentifier.error());
  return GraphScope{std::move(*packageIdentifier), std::move(*libraryDomainIdentifier),
                    FixtureMaterial::keyFromSeed(FixtureMaterial::graphBPMKSeed)};
}

}  // namespace

namespace FixtureVerification {

Count verifyGraph(ByteView document) {
  const auto fixture = readGraphFixture(document);
  if (!fixture) return std::unexpected(fixture.error());
  if (fixture->fixtureSchemaVersion != GaldrineRecoveryFixtureVerifier::fixtureSchemaVersion ||
      fixture->formatIdentifier != GaldrineBackupFormatV1::canonicalFormatIdentifier ||
      !hasTheGraphShape(fixture->artifacts))
    return std::unexpected(Error::invalidFixture);
  auto scope = graphScope(*fixture);
  if (!scope) return std::unexpected(scope.error());
  GaldrineScopeGuard wipeBPMK{[&] { GaldrineSecureMemory::wipe(scope->bpmk); }};

  const auto frames = artifactFrames(fixture->artifacts);
  if (!frames) return std::unexpected(frames.error());
  const auto head = headReference(fixture->headReference);
  if (!head) return std::unexpected(head.error());
  const auto graph = walkGraph(*frames, *head, *scope);
  if (!graph) return std::unexpected(graph.error());
  const auto summary = GaldrineBackupManifestRecordCodecV1::validateAndSummarize(
      graph->sections, scope->packageIdentifier, scope->libraryDomainIdentifier, scope->bpmk);
  if (!summary) return std::unexpected(Error::invalidFixture);
  const auto agrees = agreesWithExpectations(*summary, *graph, fixture->expected);
  if (!agrees) return std::unexpected(agrees.error());
  if (!*agrees) return std::unexpected(Error::invalidFixture);
  return verifyRecoveredPayloads(*graph, *fixture, *scope);
}

}  // namespace FixtureVerification
