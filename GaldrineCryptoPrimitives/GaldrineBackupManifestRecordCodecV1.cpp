#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordCodecV1.hpp"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>

#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCompressionV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSemanticValidatorV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyEnvelopeV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

using Error = GaldrineBackupManifestRecordV1Error;
using Kind = GaldrineBackupManifestSectionKindV1;
using Record = GaldrineBackupManifestRecordV1;
using Blob = GaldrineBackupManifestRecordBlobV1;
using KeyRecord = GaldrineBackupPayloadKeyRecordV1;
namespace Envelope = GaldrineBackupPayloadKeyEnvelopeV1;

namespace {

template <typename TypedRecord>
std::expected<Record, Error> typedFromCBOR(const GaldrineCBORBorrowedValue& value) {
  auto record = TypedRecord::fromCBOR(value);
  if (!record) return std::unexpected(record.error());
  return Record(std::move(*record));
}

std::expected<Record, Error> recordFromCBOR(Kind kind, const GaldrineCBORBorrowedValue& value) {
  switch (kind) {
    case Kind::payloadKey: return typedFromCBOR<GaldrineBackupPayloadKeyRecordV1>(value);
    case Kind::item: return typedFromCBOR<GaldrineBackupMediaItemRecordV1>(value);
    case Kind::resource: return typedFromCBOR<GaldrineBackupMediaResourceRecordV1>(value);
    case Kind::folder: return typedFromCBOR<GaldrineBackupAlbumFolderRecordV1>(value);
    case Kind::album: return typedFromCBOR<GaldrineBackupAlbumRecordV1>(value);
    case Kind::membership: return typedFromCBOR<GaldrineBackupAlbumMembershipRecordV1>(value);
    case Kind::tombstone: return typedFromCBOR<GaldrineBackupTombstoneRecordV1>(value);
  }
  std::unreachable();
}

// recordOfBlob is one step of records(in:): decode, compare the sort key, compare the bytes
// with the record's own canonical encoding.
std::expected<Record, Error> recordOfBlob(Kind kind, const Blob& blob) {
  auto record = GaldrineBackupManifestRecordCodecV1::decodeRecord(kind, blob.canonicalRecord());
  if (!record) return record;
  if (!GaldrineByteOrder::equal(record->sortKey(), blob.sortKey())) return std::unexpected(Error::malformedRecord);
  const auto canonical = GaldrineBackupManifestRecordCodecV1::encodedRecord(*record);
  if (!canonical) return std::unexpected(canonical.error());
  if (*canonical != blob.canonicalRecord()) return std::unexpected(Error::malformedRecord);
  return record;
}

bool areIdentifiers(std::initializer_list<ByteView> identifiers) {
  return std::ranges::all_of(identifiers, [](ByteView identifier) { return identifier.size() == 16; });
}

// wrap is the one routine of both wrapping forms; without a nonce the frame draws a fresh one.
std::expected<KeyRecord, Error> wrap(ByteView key, ByteView keyIdentifier, GaldrineBackupPayloadKeyScopeV1 scope,
                                     ByteView boundIdentifier, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                     ByteView bpmk, std::optional<ByteView> nonce) {
  using namespace GaldrineBackupManifestRecordCodecV1;
  if (key.size() != payloadKeyByteCount || bpmk.size() != payloadKeyByteCount) return std::unexpected(Error::invalidKey);
  if (!areIdentifiers({keyIdentifier, boundIdentifier, packageIdentifier, libraryDomainIdentifier}))
    return std::unexpected(Error::invalidIdentifier);
  auto plaintext = Envelope::plaintext(key, keyIdentifier, scope, boundIdentifier);
  if (!plaintext) return std::unexpected(plaintext.error());
  GaldrineScopeGuard wipePlaintext{[&plaintext] { GaldrineSecureMemory::wipe(*plaintext); }};
  const auto authenticatedData = Envelope::authenticatedData(packageIdentifier, libraryDomainIdentifier, keyIdentifier);
  if (!authenticatedData) return std::unexpected(Error::invalidIdentifier);
  const auto frame = nonce ? GaldrineAESGCMFrameV1::sealDeterministicFixture(*plaintext, bpmk, *authenticatedData,
                                                                              payloadKeyEnvelopePlaintextLimit, *nonce)
                           : GaldrineAESGCMFrameV1::seal(*plaintext, bpmk, *authenticatedData, payloadKeyEnvelopePlaintextLimit);
  if (!frame) return std::unexpected(Error::verificationFailed);
  return KeyRecord::make(
      {.identifier = keyIdentifier, .scope = scope, .boundIdentifier = boundIdentifier, .wrappedKeyFrame = *frame});
}

}  // namespace

namespace GaldrineBackupManifestRecordCodecV1 {

std::expected<Bytes, Error> encodedRecord(const Record& record) {
  auto encoded = GaldrineDeterministicCBOR::encode(record.cborValue(), recordLimits);
  if (!encoded) return std::unexpected(Error::invalidValue);
  return std::move(*encoded);
}

std::expected<Record, Error> decodeRecord(Kind kind, ByteView canonicalRecord) {
  const auto value = GaldrineDeterministicCBOR::decodeBorrowed(canonicalRecord, recordLimits);
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

std::expected<GaldrineBackupManifestSectionV1, GaldrineBackupManifestRecordCodecV1Failure> makeSection(
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
    return GaldrineByteOrder::precedes(left.sortKey(), right.sortKey());
  });
  auto section = GaldrineBackupManifestSectionV1::make(
      Bytes(identifier.begin(), identifier.end()), Bytes(manifestIdentifier.begin(), manifestIdentifier.end()),
      Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()), ordinal, kind,
      GaldrineBackupManifestCompressionV1::none, std::move(blobs));
  if (!section) return std::unexpected(section.error());
  return std::move(*section);
}

std::expected<std::vector<Record>, Error> records(const GaldrineBackupManifestSectionV1& section) {
  std::vector<Record> records;
  records.reserve(section.records().size());
  for (const Blob& blob : section.records()) {
    auto record = recordOfBlob(section.kind(), blob);
    if (!record) return std::unexpected(record.error());
    records.push_back(std::move(*record));
  }
  return records;
}

std::expected<KeyRecord, Error> wrapPayloadKey(ByteView key, ByteView keyIdentifier, GaldrineBackupPayloadKeyScopeV1 scope,
                                               ByteView boundIdentifier, ByteView packageIdentifier,
                                               ByteView libraryDomainIdentifier, ByteView bpmk) {
  return wrap(key, keyIdentifier, scope, boundIdentifier, packageIdentifier, libraryDomainIdentifier, bpmk, std::nullopt);
}

std::expected<KeyRecord, Error> wrapPayloadKeyDeterministicFixture(ByteView key, ByteView keyIdentifier,
                                                                   GaldrineBackupPayloadKeyScopeV1 scope, ByteView boundIdentifier,
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
      GaldrineAESGCMFrameV1::open(record.wrappedKeyFrame(), bpmk, *authenticatedData, payloadKeyEnvelopePlaintextLimit);
  if (!plaintext) return std::unexpected(Error::verificationFailed);
  GaldrineScopeGuard wipePlaintext{[&plaintext] { GaldrineSecureMemory::wipe(*plaintext); }};
  return Envelope::keyFor(*plaintext, record);
}

std::expected<GaldrineBackupManifestSemanticSummaryV1, Error> validateAndSummarize(
    std::span<const GaldrineBackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk) {
  return GaldrineBackupManifestSemanticValidatorV1::validateAndSummarize(sections, packageIdentifier, libraryDomainIdentifier,
                                                                        bpmk);
}

}  // namespace GaldrineBackupManifestRecordCodecV1
