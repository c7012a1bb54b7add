#include "format/manifest/BackupManifestRecordCodecV1.hpp"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/graph/BackupManifestCompressionV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::format {

using Error = BackupManifestRecordV1Error;
using Kind = BackupManifestSectionKindV1;
using Record = BackupManifestRecordV1;
using Blob = BackupManifestRecordBlobV1;
using KeyRecord = BackupPayloadKeyRecordV1;

namespace {

template <typename TypedRecord>
std::expected<Record, Error> typedFromCBOR(const CBORBorrowedValue& value) {
  auto record = TypedRecord::fromCBOR(value);
  if (!record) return std::unexpected(record.error());
  return Record(std::move(*record));
}

std::expected<Record, Error> recordFromCBOR(Kind kind, const CBORBorrowedValue& value) {
  switch (kind) {
    case Kind::payloadKey:
      return typedFromCBOR<BackupPayloadKeyRecordV1>(value);
    case Kind::item:
      return typedFromCBOR<BackupMediaItemRecordV1>(value);
    case Kind::resource:
      return typedFromCBOR<BackupMediaResourceRecordV1>(value);
    case Kind::folder:
      return typedFromCBOR<BackupAlbumFolderRecordV1>(value);
    case Kind::album:
      return typedFromCBOR<BackupAlbumRecordV1>(value);
    case Kind::membership:
      return typedFromCBOR<BackupAlbumMembershipRecordV1>(value);
    case Kind::tombstone:
      return typedFromCBOR<BackupTombstoneRecordV1>(value);
  }
  std::unreachable();
}

// recordOfBlob is one step of records(in:): decode, compare the sort key, compare the bytes
// with the record's own canonical encoding.
std::expected<Record, Error> recordOfBlob(Kind kind, const Blob& blob) {
  auto record = BackupManifestRecordCodecV1::decodeRecord(kind, blob.canonicalRecord());
  if (!record) return record;
  if (!ByteOrder::equal(record->sortKey(), blob.sortKey())) return std::unexpected(Error::malformedRecord);
  const auto canonical = BackupManifestRecordCodecV1::encodedRecord(*record);
  if (!canonical) return std::unexpected(canonical.error());
  if (*canonical != blob.canonicalRecord()) return std::unexpected(Error::malformedRecord);
  return record;
}

bool areIdentifiers(std::initializer_list<ByteView> identifiers) {
  return std::ranges::all_of(identifiers, [](ByteView identifier) { return identifier.size() == 16; });
}

// ---- The payload key envelope ----
// The plaintext inside a payload key record's frame is the map {0: schema, 1: key identifier,
// 2: scope, 3: bound identifier, 4: the 32 key bytes}. The key is thus bound twice: to its
// identifier by the authenticated data, and to its scope and bound identifier inside.

constexpr std::uint64_t envelopeLastKey = 4;

// hasEnvelopeShape: the key set {0..4}, the schema text, and the types of keys 1 to 4.
bool hasEnvelopeShape(const CBORBorrowedValue& envelope) {
  if (!envelope.hasKeysZeroThrough(envelopeLastKey)) return false;
  const auto schema = envelope.find(0)->asTextString();
  return schema && *schema == BackupFormatV1::payloadKeyEnvelopeSchemaIdentifier && envelope.find(1)->asByteString() &&
         envelope.find(2)->asUnsigned() && envelope.find(3)->asByteString() && envelope.find(4)->asByteString();
}

// envelopeAuthenticatedData gives the encoded authenticated data of the envelope of
// `keyIdentifier`, or nothing when an identifier is not 16 bytes.
std::optional<Bytes> envelopeAuthenticatedData(ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                               ByteView keyIdentifier) {
  const auto data = BackupAuthenticatedDataV1::make(BackupAADDomainV1::payloadKeyEnvelope, packageIdentifier,
                                                    libraryDomainIdentifier, keyIdentifier, 0, std::nullopt);
  if (!data) return std::nullopt;
  auto encoded = data->encoded();
  if (!encoded) return std::nullopt;
  return std::move(*encoded);
}

// envelopePlaintext encodes the envelope of a 32-byte `key` whose identifiers were checked. The
// key is written once, straight into the result, which the caller must wipe; a failure of the
// codec is invalidValue.
std::expected<Bytes, Error> envelopePlaintext(ByteView key, ByteView keyIdentifier, BackupPayloadKeyScopeV1 scope,
                                              ByteView boundIdentifier) {
  using BackupManifestRecordCodecV1::payloadKeyByteCount;
  // The map is encoded around a zero placeholder and the key is copied over it afterwards, so
  // no other value ever holds a copy of the key that would need wiping. Key 4 comes last in
  // the canonical order, and a 32-byte string ends the encoding with its 32 bytes.
  CBORValue::Map entries;
  entries.emplace(0, CBORValue::textString(std::string(BackupFormatV1::payloadKeyEnvelopeSchemaIdentifier)));
  entries.emplace(1, CBORValue::byteString(keyIdentifier));
  entries.emplace(2, CBORValue::unsignedInteger(rawValue(scope)));
  entries.emplace(3, CBORValue::byteString(boundIdentifier));
  entries.emplace(4, CBORValue::byteString(Bytes(payloadKeyByteCount, 0)));
  auto encoded = DeterministicCBOR::encode(CBORValue::map(std::move(entries)),
                                           BackupManifestRecordCodecV1::payloadKeyEnvelopeLimits);
  if (!encoded || encoded->size() < payloadKeyByteCount || key.size() != payloadKeyByteCount)
    return std::unexpected(Error::invalidValue);
  std::ranges::copy(key, encoded->end() - payloadKeyByteCount);
  return std::move(*encoded);
}

// keyOfEnvelope reads a decrypted envelope and gives its key, which the caller must wipe. A
// value that is not the envelope map with its schema and field types is malformedRecord; one
// that names another identifier, scope or bound identifier than `record`, or whose key is not
// 32 bytes, is verificationFailed.
std::expected<Bytes, Error> keyOfEnvelope(ByteView plaintext, const KeyRecord& record) {
  // The decoded value only borrows from the plaintext, so the key exists in one place until
  // it is copied into the result.
  const auto envelope =
      DeterministicCBOR::decodeBorrowed(plaintext, BackupManifestRecordCodecV1::payloadKeyEnvelopeLimits);
  if (!envelope || !hasEnvelopeShape(*envelope)) return std::unexpected(Error::malformedRecord);
  const ByteView key = *envelope->find(4)->asByteString();
  const bool namesRecord = ByteOrder::equal(*envelope->find(1)->asByteString(), record.identifier()) &&
                           *envelope->find(2)->asUnsigned() == rawValue(record.scope()) &&
                           ByteOrder::equal(*envelope->find(3)->asByteString(), record.boundIdentifier());
  if (!namesRecord || key.size() != BackupManifestRecordCodecV1::payloadKeyByteCount)
    return std::unexpected(Error::verificationFailed);
  return Bytes(key.begin(), key.end());
}

}  // namespace

namespace BackupManifestRecordCodecV1 {

std::expected<Bytes, Error> encodedRecord(const Record& record) {
  auto encoded = DeterministicCBOR::encode(record.cborValue(), recordLimits);
  if (!encoded) return std::unexpected(Error::invalidValue);
  return std::move(*encoded);
}

std::expected<Record, Error> decodeRecord(Kind kind, ByteView canonicalRecord) {
  const auto value = DeterministicCBOR::decodeBorrowed(canonicalRecord, recordLimits);
  if (!value) return std::unexpected(Error::malformedRecord);
  return recordFromCBOR(kind, *value);
}

std::expected<Blob, Error> recordBlob(const Record& record) {
  auto canonical = encodedRecord(record);
  if (!canonical) return std::unexpected(canonical.error());
  const ByteView sortKey = record.sortKey();
  auto blob = Blob::make(Bytes(sortKey.begin(), sortKey.end()), std::move(*canonical));
  // A record's sort key has 16 or 32 bytes and its encoding fits the record limits, so the
  // blob's ranges hold; should they not, the record has no stored form.
  if (!blob) return std::unexpected(Error::invalidValue);
  return std::move(*blob);
}

std::expected<BackupManifestSectionV1, BackupManifestRecordCodecV1Failure> makeSection(
    ByteView identifier, ByteView manifestIdentifier, ByteView libraryDomainIdentifier, std::uint64_t ordinal,
    Kind kind, std::span<const Record> records) {
  const bool allOfKind = std::ranges::all_of(records, [kind](const Record& record) { return record.kind() == kind; });
  if (records.empty() || !allOfKind) return std::unexpected(Error::invalidRecordKind);
  std::vector<Blob> blobs;
  blobs.reserve(records.size());
  for (const Record& record : records) {
    auto blob = recordBlob(record);
    if (!blob) return std::unexpected(blob.error());
    blobs.push_back(std::move(*blob));
  }
  std::ranges::stable_sort(
      blobs, [](const Blob& left, const Blob& right) { return ByteOrder::precedes(left.sortKey(), right.sortKey()); });
  auto section = BackupManifestSectionV1::make(Bytes(identifier.begin(), identifier.end()),
                                               Bytes(manifestIdentifier.begin(), manifestIdentifier.end()),
                                               Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()),
                                               ordinal, kind, BackupManifestCompressionV1::none, std::move(blobs));
  if (!section) return std::unexpected(section.error());
  return std::move(*section);
}

std::expected<std::vector<Record>, Error> records(const BackupManifestSectionV1& section) {
  std::vector<Record> records;
  records.reserve(section.records().size());
  for (const Blob& blob : section.records()) {
    auto record = recordOfBlob(section.kind(), blob);
    if (!record) return std::unexpected(record.error());
    records.push_back(std::move(*record));
  }
  return records;
}

std::expected<KeyRecord, Error> wrapPayloadKey(ByteView key, ByteView keyIdentifier, BackupPayloadKeyScopeV1 scope,
                                               ByteView boundIdentifier, ByteView packageIdentifier,
                                               ByteView libraryDomainIdentifier, ByteView bpmk,
                                               const AESGCMFrameV1::NonceSource& nonceSource) {
  if (key.size() != payloadKeyByteCount || bpmk.size() != payloadKeyByteCount)
    return std::unexpected(Error::invalidKey);
  if (!areIdentifiers({keyIdentifier, boundIdentifier, packageIdentifier, libraryDomainIdentifier}))
    return std::unexpected(Error::invalidIdentifier);
  auto plaintext = envelopePlaintext(key, keyIdentifier, scope, boundIdentifier);
  if (!plaintext) return std::unexpected(plaintext.error());
  ScopeGuard wipePlaintext{[&plaintext] { platform::SecureMemory::wipe(*plaintext); }};
  const auto authenticatedData = envelopeAuthenticatedData(packageIdentifier, libraryDomainIdentifier, keyIdentifier);
  if (!authenticatedData) return std::unexpected(Error::invalidIdentifier);
  const auto frame =
      AESGCMFrameV1::seal(*plaintext, bpmk, *authenticatedData, payloadKeyEnvelopePlaintextLimit, nonceSource);
  if (!frame) return std::unexpected(Error::verificationFailed);
  return KeyRecord::make(
      {.identifier = keyIdentifier, .scope = scope, .boundIdentifier = boundIdentifier, .wrappedKeyFrame = *frame});
}

std::expected<Bytes, Error> unwrapPayloadKey(const KeyRecord& record, ByteView packageIdentifier,
                                             ByteView libraryDomainIdentifier, ByteView bpmk) {
  if (bpmk.size() != payloadKeyByteCount) return std::unexpected(Error::invalidKey);
  const auto authenticatedData =
      envelopeAuthenticatedData(packageIdentifier, libraryDomainIdentifier, record.identifier());
  if (!authenticatedData) return std::unexpected(Error::verificationFailed);
  auto plaintext =
      AESGCMFrameV1::open(record.wrappedKeyFrame(), bpmk, *authenticatedData, payloadKeyEnvelopePlaintextLimit);
  if (!plaintext) return std::unexpected(Error::verificationFailed);
  ScopeGuard wipePlaintext{[&plaintext] { platform::SecureMemory::wipe(*plaintext); }};
  return keyOfEnvelope(*plaintext, record);
}

std::expected<BackupManifestSemanticSummary, Error> validateAndSummarize(
    std::span<const BackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk) {
  return BackupManifestSemanticValidator::validateAndSummarize(sections, packageIdentifier, libraryDomainIdentifier,
                                                               bpmk);
}

}  // namespace BackupManifestRecordCodecV1

}  // namespace galdrine::format
