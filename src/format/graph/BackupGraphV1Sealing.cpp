// Sealing and opening of the graph artifacts; the rest of BackupGraphV1 is in
// BackupGraphV1.cpp.
#include <limits>
#include <optional>
#include <utility>

#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

namespace Limits = BackupGraphLimitsV1;
using Error = BackupGraphV1Error;
using Reference = BackupArtifactReferenceV1;
using AESGCMFrameV1::NonceSource;

namespace {

// How one kind of object is sealed: the authenticated data's domain and ordinal, and the
// plaintext limit of its frame.
struct SealedObjectRules {
  BackupAADDomainV1 domain;
  std::uint64_t ordinal;
  std::uint64_t plaintextLimit;
};

constexpr SealedObjectRules headRules{BackupAADDomainV1::head, 0, Limits::graphDescriptorPlaintextLimit};
constexpr SealedObjectRules commitRules{BackupAADDomainV1::commit, 0, Limits::graphDescriptorPlaintextLimit};
constexpr SealedObjectRules snapshotRules{BackupAADDomainV1::snapshot, 0, Limits::graphDescriptorPlaintextLimit};
// The all-ones ordinal keeps a root apart from every section of the same domain, whose
// ordinal is at most 4,095.
constexpr SealedObjectRules manifestRootRules{BackupAADDomainV1::manifest, std::numeric_limits<std::uint64_t>::max(),
                                              Limits::manifestRootPlaintextLimit};

constexpr SealedObjectRules manifestSectionRules(std::uint64_t ordinal) {
  return {BackupAADDomainV1::manifest, ordinal, Limits::manifestSectionPlaintextLimit};
}

// A discovered frame may carry at most 1 KiB of frame structure around its plaintext.
constexpr std::size_t maximumDiscoveredFrameByteCount = Limits::graphDescriptorPlaintextLimit + 1'024;

Bytes sha256(ByteView bytes) {
  const auto digest = platform::SHA256::digest(bytes);
  return Bytes(digest.begin(), digest.end());
}

std::optional<Bytes> authenticatedData(const SealedObjectRules& rules, ByteView packageIdentifier,
                                       ByteView libraryDomainIdentifier, ByteView identifier) {
  const auto data = BackupAuthenticatedDataV1::make(rules.domain, packageIdentifier, libraryDomainIdentifier,
                                                    identifier, rules.ordinal, std::nullopt);
  if (!data) return std::nullopt;
  auto encoded = data->encoded();
  if (!encoded) return std::nullopt;
  return std::move(*encoded);
}

struct SealedPlaintext {
  Reference reference;
  Bytes frame;
};

// sealPlaintext seals canonical record bytes. Identifiers were checked when the record was
// built, so only the package identifier can make the authenticated data fail.
std::expected<SealedPlaintext, Error> sealPlaintext(ByteView plaintext, const SealedObjectRules& rules,
                                                    ByteView identifier, ByteView libraryDomainIdentifier,
                                                    ByteView packageIdentifier, ByteView bpmk,
                                                    const NonceSource& nonceSource) {
  if (bpmk.size() != Limits::keyByteCount) return std::unexpected(Error::invalidKey);
  const auto data = authenticatedData(rules, packageIdentifier, libraryDomainIdentifier, identifier);
  if (!data) return std::unexpected(Error::invalidIdentifier);
  const auto limit = static_cast<std::int64_t>(rules.plaintextLimit);
  auto frame = AESGCMFrameV1::seal(plaintext, bpmk, *data, limit, nonceSource);
  if (!frame) return std::unexpected(Error::verificationFailed);
  auto reference = Reference::make(Bytes(identifier.begin(), identifier.end()), frame->size(), sha256(*frame),
                                   plaintext.size(), sha256(plaintext));
  if (!reference) return std::unexpected(reference.error());
  return SealedPlaintext{std::move(*reference), std::move(*frame)};
}

template <typename Record>
std::expected<BackupSealedGraphArtifact, Error> sealRecord(const Record& record, const SealedObjectRules& rules,
                                                           ByteView packageIdentifier, ByteView bpmk,
                                                           const NonceSource& nonceSource) {
  const auto plaintext = record.encoded();
  if (!plaintext) return std::unexpected(plaintext.error());
  auto sealed = sealPlaintext(*plaintext, rules, record.identifier(), record.libraryDomainIdentifier(),
                              packageIdentifier, bpmk, nonceSource);
  if (!sealed) return std::unexpected(sealed.error());
  return BackupSealedGraphArtifact{std::move(sealed->reference), std::move(sealed->frame)};
}

std::expected<BackupSealedManifestSection, Error> sealSection(const BackupManifestSectionV1& section,
                                                              ByteView packageIdentifier, ByteView bpmk,
                                                              const NonceSource& nonceSource) {
  const auto plaintext = section.encoded();
  if (!plaintext) return std::unexpected(plaintext.error());
  auto sealed = sealPlaintext(*plaintext, manifestSectionRules(section.ordinal()), section.identifier(),
                              section.libraryDomainIdentifier(), packageIdentifier, bpmk, nonceSource);
  if (!sealed) return std::unexpected(sealed.error());
  const std::uint64_t plaintextByteCount = sealed->reference.plaintextByteCount();
  Bytes plaintextSHA256 = sealed->reference.plaintextSHA256();
  auto reference = BackupManifestSectionReferenceV1::make(
      std::move(sealed->reference), section.ordinal(), section.kind(), section.compression(), section.records().size(),
      section.records().front().sortKey(), section.records().back().sortKey(), plaintextByteCount,
      std::move(plaintextSHA256));
  if (!reference) return std::unexpected(reference.error());
  return BackupSealedManifestSection{std::move(*reference), std::move(sealed->frame)};
}

// openAgainst authenticates `frame` against `expected` and gives its plaintext; every way in
// which the bytes disagree with the reference is verificationFailed.
std::expected<Bytes, Error> openAgainst(ByteView frame, const Reference& expected, const SealedObjectRules& rules,
                                        ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk) {
  constexpr auto failed = Error::verificationFailed;
  if (frame.size() != expected.frameByteCount()) return std::unexpected(failed);
  if (sha256(frame) != expected.frameSHA256()) return std::unexpected(failed);
  if (expected.plaintextByteCount() > rules.plaintextLimit) return std::unexpected(failed);
  if (bpmk.size() != Limits::keyByteCount) return std::unexpected(failed);
  const auto data = authenticatedData(rules, packageIdentifier, libraryDomainIdentifier, expected.identifier());
  if (!data) return std::unexpected(failed);
  auto plaintext = AESGCMFrameV1::open(frame, bpmk, *data, static_cast<std::int64_t>(rules.plaintextLimit));
  if (!plaintext) return std::unexpected(failed);
  if (plaintext->size() != expected.plaintextByteCount() || sha256(*plaintext) != expected.plaintextSHA256()) {
    return std::unexpected(failed);
  }
  return std::move(*plaintext);
}

template <typename Record>
std::expected<Record, Error> openRecord(ByteView frame, const Reference& expected, const SealedObjectRules& rules,
                                        ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk) {
  const auto plaintext = openAgainst(frame, expected, rules, packageIdentifier, libraryDomainIdentifier, bpmk);
  if (!plaintext) return std::unexpected(plaintext.error());
  auto record = Record::decode(*plaintext);
  if (!record) return std::unexpected(record.error());
  if (record->identifier() != expected.identifier() ||
      !ByteOrder::equal(record->libraryDomainIdentifier(), libraryDomainIdentifier)) {
    return std::unexpected(Error::verificationFailed);
  }
  return record;
}

// sectionMatches: the opened section is the one its reference describes, down to its first
// and last record.
bool sectionMatches(const BackupManifestSectionV1& section, const BackupManifestSectionReferenceV1& expected,
                    ByteView manifestIdentifier, ByteView plaintext, const Bytes& plaintextSHA256) {
  return ByteOrder::equal(section.manifestIdentifier(), manifestIdentifier) &&
         section.ordinal() == expected.ordinal() && section.kind() == expected.kind() &&
         section.compression() == expected.compression() && section.records().size() == expected.recordCount() &&
         section.records().front().sortKey() == expected.firstSortKey() &&
         section.records().back().sortKey() == expected.lastSortKey() &&
         plaintext.size() == expected.decodedPlaintextByteCount() &&
         plaintextSHA256 == expected.decodedPlaintextSHA256();
}

template <typename Record>
struct DiscoveredRecord {
  Reference reference;
  Record record;
};

template <typename Record>
std::expected<DiscoveredRecord<Record>, Error> openDiscovered(ByteView frame, ByteView identifier,
                                                              const SealedObjectRules& rules,
                                                              ByteView packageIdentifier,
                                                              ByteView libraryDomainIdentifier, ByteView bpmk) {
  constexpr auto failed = Error::verificationFailed;
  if (identifier.size() != Limits::identifierByteCount) return std::unexpected(Error::invalidIdentifier);
  if (frame.empty() || frame.size() > maximumDiscoveredFrameByteCount) return std::unexpected(failed);
  if (bpmk.size() != Limits::keyByteCount) return std::unexpected(failed);
  const auto data = authenticatedData(rules, packageIdentifier, libraryDomainIdentifier, identifier);
  if (!data) return std::unexpected(failed);
  const auto plaintext = AESGCMFrameV1::open(frame, bpmk, *data, static_cast<std::int64_t>(rules.plaintextLimit));
  if (!plaintext) return std::unexpected(failed);
  auto reference = Reference::make(Bytes(identifier.begin(), identifier.end()), frame.size(), sha256(frame),
                                   plaintext->size(), sha256(*plaintext));
  if (!reference) return std::unexpected(reference.error());
  auto record = Record::decode(*plaintext);
  if (!record) return std::unexpected(record.error());
  if (!ByteOrder::equal(record->identifier(), identifier) ||
      !ByteOrder::equal(record->libraryDomainIdentifier(), libraryDomainIdentifier)) {
    return std::unexpected(failed);
  }
  return DiscoveredRecord<Record>{std::move(*reference), std::move(*record)};
}

}  // namespace

namespace BackupGraphV1 {

std::expected<BackupSealedGraphArtifact, Error> sealHead(const BackupHeadV1& head, ByteView packageIdentifier,
                                                         ByteView bpmk, const NonceSource& nonceSource) {
  return sealRecord(head, headRules, packageIdentifier, bpmk, nonceSource);
}

std::expected<BackupSealedGraphArtifact, Error> sealCommit(const BackupCommitV1& commit, ByteView packageIdentifier,
                                                           ByteView bpmk, const NonceSource& nonceSource) {
  return sealRecord(commit, commitRules, packageIdentifier, bpmk, nonceSource);
}

std::expected<BackupSealedGraphArtifact, Error> sealSnapshot(const BackupSnapshotV1& snapshot,
                                                             ByteView packageIdentifier, ByteView bpmk,
                                                             const NonceSource& nonceSource) {
  return sealRecord(snapshot, snapshotRules, packageIdentifier, bpmk, nonceSource);
}

std::expected<BackupSealedGraphArtifact, Error> sealManifestRoot(const BackupManifestRootV1& root,
                                                                 ByteView packageIdentifier, ByteView bpmk,
                                                                 const NonceSource& nonceSource) {
  return sealRecord(root, manifestRootRules, packageIdentifier, bpmk, nonceSource);
}

std::expected<BackupSealedManifestSection, Error> sealManifestSection(const BackupManifestSectionV1& section,
                                                                      ByteView packageIdentifier, ByteView bpmk,
                                                                      const NonceSource& nonceSource) {
  return sealSection(section, packageIdentifier, bpmk, nonceSource);
}

std::expected<BackupHeadV1, Error> openHead(ByteView frame, const Reference& expected, ByteView packageIdentifier,
                                            ByteView libraryDomainIdentifier, ByteView bpmk) {
  return openRecord<BackupHeadV1>(frame, expected, headRules, packageIdentifier, libraryDomainIdentifier, bpmk);
}

std::expected<BackupCommitV1, Error> openCommit(ByteView frame, const Reference& expected, ByteView packageIdentifier,
                                                ByteView libraryDomainIdentifier, ByteView bpmk) {
  return openRecord<BackupCommitV1>(frame, expected, commitRules, packageIdentifier, libraryDomainIdentifier, bpmk);
}

std::expected<BackupSnapshotV1, Error> openSnapshot(ByteView frame, const Reference& expected,
                                                    ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                                    ByteView bpmk) {
  return openRecord<BackupSnapshotV1>(frame, expected, snapshotRules, packageIdentifier, libraryDomainIdentifier, bpmk);
}

std::expected<BackupManifestRootV1, Error> openManifestRoot(ByteView frame, const Reference& expected,
                                                            ByteView packageIdentifier,
                                                            ByteView libraryDomainIdentifier, ByteView bpmk) {
  return openRecord<BackupManifestRootV1>(frame, expected, manifestRootRules, packageIdentifier,
                                          libraryDomainIdentifier, bpmk);
}

std::expected<BackupManifestSectionV1, Error> openManifestSection(ByteView frame,
                                                                  const BackupManifestSectionReferenceV1& expected,
                                                                  ByteView manifestIdentifier,
                                                                  ByteView packageIdentifier,
                                                                  ByteView libraryDomainIdentifier, ByteView bpmk) {
  const auto rules = manifestSectionRules(expected.ordinal());
  const auto plaintext =
      openAgainst(frame, expected.artifact(), rules, packageIdentifier, libraryDomainIdentifier, bpmk);
  if (!plaintext) return std::unexpected(plaintext.error());
  auto section = BackupManifestSectionV1::decode(*plaintext);
  if (!section) return std::unexpected(section.error());
  if (section->identifier() != expected.artifact().identifier() ||
      !ByteOrder::equal(section->libraryDomainIdentifier(), libraryDomainIdentifier) ||
      // The plaintext's digest was proven equal to the artifact's above; no second pass over it.
      !sectionMatches(*section, expected, manifestIdentifier, *plaintext, expected.artifact().plaintextSHA256())) {
    return std::unexpected(Error::verificationFailed);
  }
  return section;
}

std::expected<AuthenticatedBackupCommit, Error> openDiscoveredCommit(ByteView frame, ByteView identifier,
                                                                     ByteView packageIdentifier,
                                                                     ByteView libraryDomainIdentifier, ByteView bpmk) {
  auto discovered =
      openDiscovered<BackupCommitV1>(frame, identifier, commitRules, packageIdentifier, libraryDomainIdentifier, bpmk);
  if (!discovered) return std::unexpected(discovered.error());
  auto authenticated = AuthenticatedBackupCommit::make(std::move(discovered->reference), std::move(discovered->record));
  if (!authenticated) return std::unexpected(Error::verificationFailed);
  return std::move(*authenticated);
}

std::expected<AuthenticatedBackupHead, Error> openDiscoveredHead(ByteView frame, ByteView identifier,
                                                                 ByteView packageIdentifier,
                                                                 ByteView libraryDomainIdentifier, ByteView bpmk) {
  auto discovered =
      openDiscovered<BackupHeadV1>(frame, identifier, headRules, packageIdentifier, libraryDomainIdentifier, bpmk);
  if (!discovered) return std::unexpected(discovered.error());
  auto authenticated = AuthenticatedBackupHead::make(std::move(discovered->reference), std::move(discovered->record));
  if (!authenticated) return std::unexpected(Error::verificationFailed);
  return std::move(*authenticated);
}

}  // namespace BackupGraphV1

}  // namespace galdrine::format
