#include "format/manifest/BackupManifestRecordCodecV1.hpp"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/graph/BackupManifestCompressionV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"
#include "format/manifest/BackupPayloadKeyEnvelopeV1.hpp"
#include "platform/SecureMemory.hpp"
#include "platform/ScopeGuard.hpp"

namespace galdrine::format {

using Error = BackupManifestRecordV1Error;
using Kind = BackupManifestSectionKindV1;
using Record = BackupManifestRecordV1;
using Blob = BackupManifestRecordBlobV1;
using KeyRecord = BackupPayloadKeyRecordV1;
namespace Envelope = BackupPayloadKeyEnvelopeV1;

namespace {

template <typename TypedRecord>
std::expected<Record, Error> typedFromCBOR(const CBORBorrowedValue& value) {
  auto record = TypedRecord::fromCBOR(value);
  if (!record) return std::unexpected(record.error());
  return Record(std::move(*record));
}

std::expected<Record, Error> recordFromCBOR(Kind kind, const CBORBorrowedValue& value) {
  switch (kind) {
    case Kind::payloadKey: return typedFromCBOR<BackupPayloadKeyRecordV1>(value);
    case Kind::item: return typedFromCBOR<BackupMediaItemRecordV1>(value);
    case Kind::resource: return typedFromCBOR<BackupMediaResourceRecordV1>(value);
    case Kind::folder: return typedFromCBOR<BackupAlbumFolderRecordV1>(value);
    case Kind::album: return typedFromCBOR<BackupAlbumRecordV1>(value);
    case Kind::membership: return typedFromCBOR<BackupAlbumMembershipRecordV1>(value);
    case Kind::tombstone: return typedFromCBOR<BackupTombstoneRecordV1>(value);
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

// wrap is the one routine of both wrapping forms; without a nonce the frame draws a fresh one.
std::expected<KeyRecord, Error> wrap(ByteView key, ByteView keyIdentifier, BackupPayloadKeyScopeV1 scope,
                                     ByteView boundIdentifier, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                     ByteView bpmk, std::optional<ByteView> nonce) {
  using namespace BackupManifestRecordCodecV1;
  if (key.size() != payloadKeyByteCount || bpmk.size() != payloadKeyByteCount) return std::unexpected(Error::invalidKey);
  if (!areIdentifiers({keyIdentifier, boundIdentifier, packageIdentifier, libraryDomainIdentifier}))
    return std::unexpected(Error::invalidIdentifier);
  auto plaintext = Envelope::plaintext(key, keyIdentifier, scope, boundIdentifier);
  if (!plaintext) return std::unexpected(plaintext.error());
  ScopeGuard wipePlaintext{[&plaintext] { platform::SecureMemory::wipe(*plaintext); }};
  const auto authenticatedData = Envelope::authenticatedData(packageIdentifier, libraryDomainIdentifier, keyIdentifier);
  if (!authenticatedData) return std::unexpected(Error::invalidIdentifier);
  const auto frame = nonce ? AESGCMFrameV1::sealDeterministicFixture(*plaintext, bpmk, *authenticatedData,
                                                                              payloadKeyEnvelopePlaintextLimit, *nonce)
                           : AESGCMFrameV1::seal(*plaintext, bpmk, *authenticatedData, payloadKeyEnvelopePlaintextLimit);
  if (!frame) return std::unexpected(Error::verificationFailed);
  return KeyRecord::make(
      {.identifier = keyIdentifier, .scope = scope, .boundIdentifier = boundIdentifier, .wrappedKeyFrame = *frame});
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
    ByteView identifier, ByteView manifestIdentifier, ByteView libraryDomainIdentifier, std::uint64_t ordinal, Kind kind,
    std::span<const Record> records) {
  const bool allOfKind = std::ranges::all_of(records, [kind](const Record& record) { return record.kind() == kind; });
  if (records.empty() || !allOfKind) return std::unexpected(Error::invalidRecordKind);
  std::vector<Blob> blobs;
  blobs.reserve(records.size());
  for (const Record& record : records) {
    auto blob = recordBlob(record);
    if (!blob) return std::unexpected(blob.error());
    blobs.push_back(std::move(*blob));
  }
  std::ranges::stable_sort(blobs, [](const Blob& left, const Blob& right) {
    return ByteOrder::precedes(left.sortKey(), right.sortKey());
  });
  auto section = BackupManifestSectionV1::make(
      Bytes(identifier.begin(), identifier.end()), Bytes(manifestIdentifier.begin(), manifestIdentifier.end()),
      Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()), ordinal, kind,
      BackupManifestCompressionV1::none, std::move(blobs));
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
                                               ByteView libraryDomainIdentifier, ByteView bpmk) {
  return wrap(key, keyIdentifier, scope, boundIdentifier, packageIdentifier, libraryDomainIdentifier, bpmk, std::nullopt);
}

std::expected<KeyRecord, Error> wrapPayloadKeyDeterministicFixture(ByteView key, ByteView keyIdentifier,
                                                                   BackupPayloadKeyScopeV1 scope, ByteView boundIdentifier,
                                                                   ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                                                   ByteView bpmk, ByteView nonce) {
  return wrap(key, keyIdentifier, scope, boundIdentifier, packageIdentifier, libraryDomainIdentifier, bpmk, nonce);
}

std::expected<Bytes, Error> unwrapPayloadKey(const KeyRecord& record, ByteView packageIdentifier,
                                             ByteView libraryDomainIdentifier, ByteView bpmk) {
  if (bpmk.size() != payloadKeyByteCount) return std::unexpected(Error::invalidKey);
  const auto authenticatedData = Envelope::authenticatedData(packageIdentifier, libraryDomainIdentifier, record.identifier());
  if (!authenticatedData) return std::unexpected(Error::verificationFailed);
  auto plaintext =
      AESGCMFrameV1::open(record.wrappedKeyFrame(), bpmk, *authenticatedData, payloadKeyEnvelopePlaintextLimit);
  if (!plaintext) return std::unexpected(Error::verificationFailed);
  ScopeGuard wipePlaintext{[&plaintext] { platform::SecureMemory::wipe(*plaintext); }};
  return Envelope::keyFor(*plaintext, record);
}

std::expected<BackupManifestSemanticSummary, Error> validateAndSummarize(
    std::span<const BackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk) {
  return BackupManifestSemanticValidator::validateAndSummarize(sections, packageIdentifier, libraryDomainIdentifier,
                                                                        bpmk);
}

}  // namespace BackupManifestRecordCodecV1

}  // namespace galdrine::format
