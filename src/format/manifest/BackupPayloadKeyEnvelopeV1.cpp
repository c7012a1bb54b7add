#include "format/manifest/BackupPayloadKeyEnvelopeV1.hpp"

#include <algorithm>

#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"

namespace galdrine::format {

using Error = BackupManifestRecordV1Error;

namespace {

constexpr std::uint64_t lastKey = 4;
constexpr std::size_t keyByteCount = BackupManifestRecordCodecV1::payloadKeyByteCount;

// hasEnvelopeShape: the key set {0..4}, the schema text, and the types of keys 1 to 4.
bool hasEnvelopeShape(const CBORBorrowedValue& envelope) {
  if (!envelope.hasKeysZeroThrough(lastKey)) return false;
  const auto schema = envelope.find(0)->asTextString();
  return schema && *schema == BackupFormatV1::payloadKeyEnvelopeSchemaIdentifier && envelope.find(1)->asByteString() &&
         envelope.find(2)->asUnsigned() && envelope.find(3)->asByteString() && envelope.find(4)->asByteString();
}

}  // namespace

namespace BackupPayloadKeyEnvelopeV1 {

std::optional<Bytes> authenticatedData(ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView keyIdentifier) {
  const auto data = BackupAuthenticatedDataV1::make(BackupAADDomainV1::payloadKeyEnvelope, packageIdentifier,
                                                            libraryDomainIdentifier, keyIdentifier, 0, std::nullopt);
  if (!data) return std::nullopt;
  auto encoded = data->encoded();
  if (!encoded) return std::nullopt;
  return std::move(*encoded);
}

std::expected<Bytes, Error> plaintext(ByteView key, ByteView keyIdentifier, BackupPayloadKeyScopeV1 scope,
                                      ByteView boundIdentifier) {
  // The map is encoded around a zero placeholder and the key is copied over it afterwards, so
  // no other value ever holds a copy of the key that would need wiping. Key 4 comes last in
  // the canonical order, and a 32-byte string ends the encoding with its 32 bytes.
  CBORValue::Map entries;
  entries.emplace(0, CBORValue::textString(std::string(BackupFormatV1::payloadKeyEnvelopeSchemaIdentifier)));
  entries.emplace(1, CBORValue::byteString(keyIdentifier));
  entries.emplace(2, CBORValue::unsignedInteger(rawValue(scope)));
  entries.emplace(3, CBORValue::byteString(boundIdentifier));
  entries.emplace(4, CBORValue::byteString(Bytes(keyByteCount, 0)));
  auto encoded = DeterministicCBOR::encode(CBORValue::map(std::move(entries)),
                                                   BackupManifestRecordCodecV1::payloadKeyEnvelopeLimits);
  if (!encoded || encoded->size() < keyByteCount || key.size() != keyByteCount) return std::unexpected(Error::invalidValue);
  std::ranges::copy(key, encoded->end() - keyByteCount);
  return std::move(*encoded);
}

std::expected<Bytes, Error> keyFor(ByteView plaintext, const BackupPayloadKeyRecordV1& record) {
  // The decoded value only borrows from the plaintext, so the key exists in one place until
  // it is copied into the result.
  const auto envelope = DeterministicCBOR::decodeBorrowed(plaintext, BackupManifestRecordCodecV1::payloadKeyEnvelopeLimits);
  if (!envelope || !hasEnvelopeShape(*envelope)) return std::unexpected(Error::malformedRecord);
  const ByteView key = *envelope->find(4)->asByteString();
  const bool namesRecord = ByteOrder::equal(*envelope->find(1)->asByteString(), record.identifier()) &&
                           *envelope->find(2)->asUnsigned() == rawValue(record.scope()) &&
                           ByteOrder::equal(*envelope->find(3)->asByteString(), record.boundIdentifier());
  if (!namesRecord || key.size() != keyByteCount) return std::unexpected(Error::verificationFailed);
  return Bytes(key.begin(), key.end());
}

}  // namespace BackupPayloadKeyEnvelopeV1

}  // namespace galdrine::format
