#pragma once
// BackupGraphV1 holds the operations of the backup graph: the rules and digest of a
// manifest's section set, the artifacts' file names, and sealing each record into a frame
// under the backup package master key and opening it again against a reference.
//
// Every artifact is sealed directly under `bpmk` (32 bytes); kinds of artifact are kept apart
// by their authenticated data: domain, package, library domain, identifier and ordinal. Once
// an artifact has a reference, anything wrong with its bytes reads as verificationFailed, so
// damage and tampering look alike; nothing partly opened is ever returned.

#include <cstdint>
#include <expected>
#include <span>
#include <string>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupCommitV1.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupHeadV1.hpp"
#include "format/graph/BackupManifestCountsV1.hpp"
#include "format/graph/BackupManifestRootV1.hpp"
#include "format/graph/BackupManifestSectionReferenceV1.hpp"
#include "format/graph/BackupManifestSectionV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// BackupSealedGraphArtifact is what sealing a head, commit, snapshot or manifest root gives:
// the frame, which is the file's content, and the reference that goes into the next record up.
// It is not stored as such.
struct BackupSealedGraphArtifact {
  BackupArtifactReferenceV1 reference;
  Bytes frame;

  friend bool operator==(const BackupSealedGraphArtifact&, const BackupSealedGraphArtifact&) = default;
};

// BackupSealedManifestSection is what sealing a manifest section gives: the frame, which is the
// file's content, and the section reference that goes into the manifest root.
struct BackupSealedManifestSection {
  BackupManifestSectionReferenceV1 reference;
  Bytes frame;

  friend bool operator==(const BackupSealedManifestSection&, const BackupSealedManifestSection&) = default;
};

namespace BackupGraphV1 {

// validateSectionSet checks a root's section references against its counts, in this order,
// each failure invalidSectionSet unless told otherwise: at most 4,096 sections; ordinals
// 0, 1, 2, ... in array order; artifact identifiers pairwise different; between neighbours
// the kind never decreases and, within one kind, the earlier lastSortKey strictly precedes
// the later firstSortKey; for each kind the record counts of its sections add up to that
// kind's count (an overflowing sum is invalidCount). No sections at all is valid when all
// counts are 0.
[[nodiscard]] std::expected<void, BackupGraphV1Error> validateSectionSet(
    std::span<const BackupManifestSectionReferenceV1> sections, const BackupManifestCountsV1& counts);

// sectionSetDigest is the SHA-256 of the canonical CBOR of one array of the section references,
// in their order, under the manifest root limits. A list too large for those limits is
// invalidSectionSet.
[[nodiscard]] std::expected<Bytes, BackupGraphV1Error> sectionSetDigest(
    std::span<const BackupManifestSectionReferenceV1> sections);

// manifestSectionFitsPlaintextLimit is true when the section's canonical encoding stays within
// the section limits (8 MiB), that is when it can be sealed.
[[nodiscard]] bool manifestSectionFitsPlaintextLimit(const BackupManifestSectionV1& section);

// The file name of an artifact: its identifier as 32 lower-case hexadecimal digits, ".", and
// the extension of its kind. An identifier that is not 16 bytes is invalidIdentifier.
[[nodiscard]] std::expected<std::string, BackupGraphV1Error> headFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, BackupGraphV1Error> commitFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, BackupGraphV1Error> snapshotFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, BackupGraphV1Error> manifestFileName(ByteView identifier);

// Sealing. Each encodes the record canonically under its object's limits (a section too large
// for them is malformedArtifact), checks `bpmk` to be 32 bytes (invalidKey), builds the
// authenticated data from its object's domain and ordinal, `packageIdentifier`, the record's
// own library domain and identifier (an identifier the authenticated data refuses is
// invalidIdentifier), seals with a nonce from `nonceSource`, by default a fresh random one (a
// frame failure, a fixed nonce of the wrong length included, is verificationFailed), and
// references the frame and plaintext by length and SHA-256.
//
//   object            domain      ordinal                  plaintext limit
//   head              head        0                        65,536
//   commit            commit      0                        65,536
//   snapshot          snapshot    0                        65,536
//   manifest root     manifest    all ones (2^64 - 1)      2,097,152
//   manifest section  manifest    the section's ordinal    8,388,608
using AESGCMFrameV1::NonceSource;
[[nodiscard]] std::expected<BackupSealedGraphArtifact, BackupGraphV1Error> sealHead(
    const BackupHeadV1& head, ByteView packageIdentifier, ByteView bpmk, const NonceSource& nonceSource = {});
[[nodiscard]] std::expected<BackupSealedGraphArtifact, BackupGraphV1Error> sealCommit(
    const BackupCommitV1& commit, ByteView packageIdentifier, ByteView bpmk, const NonceSource& nonceSource = {});
[[nodiscard]] std::expected<BackupSealedGraphArtifact, BackupGraphV1Error> sealSnapshot(
    const BackupSnapshotV1& snapshot, ByteView packageIdentifier, ByteView bpmk, const NonceSource& nonceSource = {});
[[nodiscard]] std::expected<BackupSealedGraphArtifact, BackupGraphV1Error> sealManifestRoot(
    const BackupManifestRootV1& root, ByteView packageIdentifier, ByteView bpmk, const NonceSource& nonceSource = {});
// The section's reference also carries its ordinal, kind, record count, first and last sort
// key, and the decoded length and digest (those of the plaintext: sections are not compressed).
[[nodiscard]] std::expected<BackupSealedManifestSection, BackupGraphV1Error> sealManifestSection(
    const BackupManifestSectionV1& section, ByteView packageIdentifier, ByteView bpmk,
    const NonceSource& nonceSource = {});

// Opening against a reference, in this order, each failure verificationFailed except the
// decoder's: the frame's length and SHA-256 equal the reference's; its plaintext length is
// within the object's limit; `bpmk` is 32 bytes; the frame opens under the authenticated data
// of the expected identifier (and, for a section, the reference's ordinal) with the caller's
// library domain; the plaintext's length and SHA-256 equal the reference's; the plaintext
// decodes (the decoder's own error stands); the record bears the expected identifier and
// `libraryDomainIdentifier`. A section must further agree with `manifestIdentifier` and with
// every field of its reference. Nothing is returned unless every check passed.
[[nodiscard]] std::expected<BackupHeadV1, BackupGraphV1Error> openHead(ByteView frame,
                                                                       const BackupArtifactReferenceV1& expected,
                                                                       ByteView packageIdentifier,
                                                                       ByteView libraryDomainIdentifier, ByteView bpmk);
[[nodiscard]] std::expected<BackupCommitV1, BackupGraphV1Error> openCommit(ByteView frame,
                                                                           const BackupArtifactReferenceV1& expected,
                                                                           ByteView packageIdentifier,
                                                                           ByteView libraryDomainIdentifier,
                                                                           ByteView bpmk);
[[nodiscard]] std::expected<BackupSnapshotV1, BackupGraphV1Error> openSnapshot(
    ByteView frame, const BackupArtifactReferenceV1& expected, ByteView packageIdentifier,
    ByteView libraryDomainIdentifier, ByteView bpmk);
[[nodiscard]] std::expected<BackupManifestRootV1, BackupGraphV1Error> openManifestRoot(
    ByteView frame, const BackupArtifactReferenceV1& expected, ByteView packageIdentifier,
    ByteView libraryDomainIdentifier, ByteView bpmk);
[[nodiscard]] std::expected<BackupManifestSectionV1, BackupGraphV1Error> openManifestSection(
    ByteView frame, const BackupManifestSectionReferenceV1& expected, ByteView manifestIdentifier,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk);

// Opening a commit or head found by listing a directory, which no reference names yet, in
// this order: `identifier` is 16 bytes (invalidIdentifier); the frame is 1 to 66,560 bytes and
// `bpmk` 32 bytes (verificationFailed); the frame opens under the authenticated data of
// `identifier` with ordinal 0 and a limit of 65,536 (verificationFailed); the reference is
// built from the frame and plaintext actually seen (its own checks); the plaintext decodes
// (the decoder's error) to a record with `identifier` and `libraryDomainIdentifier`
// (verificationFailed).
[[nodiscard]] std::expected<AuthenticatedBackupCommit, BackupGraphV1Error> openDiscoveredCommit(
    ByteView frame, ByteView identifier, ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk);
[[nodiscard]] std::expected<AuthenticatedBackupHead, BackupGraphV1Error> openDiscoveredHead(
    ByteView frame, ByteView identifier, ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk);

}  // namespace BackupGraphV1

}  // namespace galdrine::format
