#pragma once
// BackupManifestRecordCodecV1 turns manifest records into the blobs and sections that
// store them and back, and wraps and unwraps the payload keys that the records carry.
//
// A record's stored form is unique: records(in:) refuses any blob whose bytes are not exactly
// the canonical encoding of the record they decode to, or whose sort key is not the record's.
// Sections are taken or refused whole: no partial list of records is ever returned.

#include <cstdint>
#include <expected>
#include <span>
#include <variant>
#include <vector>

#include "format/cbor/CBORLimits.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupManifestSectionKindV1.hpp"
#include "format/graph/BackupManifestSectionV1.hpp"
#include "format/manifest/BackupManifestRecordBlobV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"
#include "format/manifest/BackupPayloadKeyRecordV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// Making a section fails in the records' own terms, or in the section's rules (which are the
// graph's: two records with one sort key are an invalidRecordSet there).
using BackupManifestRecordCodecV1Failure = std::variant<BackupManifestRecordV1Error, BackupGraphV1Error>;

namespace BackupManifestRecordCodecV1 {

// Bounds of one record's canonical form, for encoding and decoding alike. A resource of 4,096
// parts stays within 50,000 items.
inline constexpr CBORLimits recordLimits{1048576, 4096, 1024, 4096, 50000, 5};
// Bounds of the plaintext of a wrapped payload key.
inline constexpr CBORLimits payloadKeyEnvelopeLimits{256, 32, 128, 8, 16, 2};
inline constexpr std::int64_t payloadKeyEnvelopePlaintextLimit = 256;
inline constexpr std::size_t payloadKeyByteCount = 32;

// encodedRecord gives the record's canonical bytes; a failure of the codec is invalidValue.
[[nodiscard]] std::expected<Bytes, BackupManifestRecordV1Error> encodedRecord(const BackupManifestRecordV1& record);

// decodeRecord reads one record of `kind` from its canonical bytes: bytes that are not one
// canonical CBOR item within recordLimits, a wrong shape, key set, schema or field type are
// malformedRecord; a signed value beyond 64 bits is invalidValue; then the record's own rules.
[[nodiscard]] std::expected<BackupManifestRecordV1, BackupManifestRecordV1Error> decodeRecord(
    BackupManifestSectionKindV1 kind, ByteView canonicalRecord);

// recordBlob gives the record's sort key and canonical encoding; an encoding failure is
// invalidValue.
[[nodiscard]] std::expected<BackupManifestRecordBlobV1, BackupManifestRecordV1Error> recordBlob(
    const BackupManifestRecordV1& record);

// makeSection, in this order: no records, or a record of another kind, is invalidRecordKind;
// each record becomes a blob (invalidValue); the blobs are sorted by sort key; the section is
// built uncompressed, and the section's own failures (such as a repeated sort key) pass on.
[[nodiscard]] std::expected<BackupManifestSectionV1, BackupManifestRecordCodecV1Failure> makeSection(
    ByteView identifier, ByteView manifestIdentifier, ByteView libraryDomainIdentifier, std::uint64_t ordinal,
    BackupManifestSectionKindV1 kind, std::span<const BackupManifestRecordV1> records);

// records gives the records of `section` in stored order. Each blob must decode as a record of
// the section's kind (see decodeRecord), carry that record's sort key (malformedRecord), and be
// exactly its canonical encoding (malformedRecord; a failure to encode is invalidValue).
[[nodiscard]] std::expected<std::vector<BackupManifestRecordV1>, BackupManifestRecordV1Error> records(
    const BackupManifestSectionV1& section);

// wrapPayloadKey seals `key` for the manifest. In this order: `key` and `bpmk` are 32 bytes
// (invalidKey); the key, bound, package and library domain identifiers are 16 bytes
// (invalidIdentifier); the envelope {schema, key identifier, scope, bound identifier, key} is
// sealed under `bpmk`, bound to the package, the library domain and the key identifier, with a
// nonce from `nonceSource`, by default a fresh random one (a failure is verificationFailed).
// The envelope's plaintext is wiped before returning, on every way out.
[[nodiscard]] std::expected<BackupPayloadKeyRecordV1, BackupManifestRecordV1Error> wrapPayloadKey(
    ByteView key, ByteView keyIdentifier, BackupPayloadKeyScopeV1 scope, ByteView boundIdentifier,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk,
    const AESGCMFrameV1::NonceSource& nonceSource = {});

// unwrapPayloadKey gives the 32 key bytes of `record`, which the caller owns and must wipe. In
// this order: `bpmk` is 32 bytes (invalidKey); the frame opens under the record's identifier,
// package and library domain (verificationFailed); the envelope is well formed
// (malformedRecord); it names the record's identifier, scope and bound identifier and holds 32
// key bytes (verificationFailed). So a key record cannot be moved to another pack or resource.
[[nodiscard]] std::expected<Bytes, BackupManifestRecordV1Error> unwrapPayloadKey(const BackupPayloadKeyRecordV1& record,
                                                                                 ByteView packageIdentifier,
                                                                                 ByteView libraryDomainIdentifier,
                                                                                 ByteView bpmk);

// validateAndSummarize checks the records of all sections of one manifest together; it is
// BackupManifestSemanticValidator::validateAndSummarize.
[[nodiscard]] std::expected<BackupManifestSemanticSummary, BackupManifestRecordV1Error> validateAndSummarize(
    std::span<const BackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk);

}  // namespace BackupManifestRecordCodecV1

}  // namespace galdrine::format
