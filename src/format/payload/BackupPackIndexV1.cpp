#include "format/payload/BackupPackIndexV1.hpp"

#include <algorithm>
#include <string>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"

namespace galdrine::format {

namespace {

using Value = CBORValue;
using Borrowed = CBORBorrowedValue;
using Entry = BackupPackEntryDescriptorV1;
using Error = BackupPayloadV1Error;
using Contents = BackupPackIndexV1::Contents;

enum IndexKey : std::uint64_t {
  schemaKey = 0,
  segmentIdentifierKey = 1,
  entryCountKey = 2,
  entryAreaByteCountKey = 3,
  totalPlaintextByteCountKey = 4,
  entriesKey = 5,
};
constexpr std::size_t entryItemCount = 7;

[[nodiscard]] std::unexpected<Error> malformed() { return std::unexpected(Error::malformedIndex()); }

[[nodiscard]] Value entryValue(const Entry& entry) {
  return Value::array({
      Value::byteString(entry.identifier),
      Value::unsignedInteger(entry.ordinal),
      Value::unsignedInteger(entry.frameOffset),
      Value::unsignedInteger(entry.frameByteCount),
      Value::unsignedInteger(entry.plaintextByteCount),
      Value::byteString(ByteView(entry.plaintextSHA256)),
      Value::byteString(ByteView(entry.frameSHA256)),
  });
}

[[nodiscard]] std::optional<platform::SHA256Digest> digestOf(const Borrowed& item) {
  const auto bytes = item.asByteString();
  if (!bytes || bytes->size() != platform::SHA256Digest{}.size()) return std::nullopt;
  platform::SHA256Digest digest{};
  std::ranges::copy(*bytes, digest.begin());
  return digest;
}

// entryAt reads the entry array at `position`, with its own field rules; nothing here compares
// one entry with another.
[[nodiscard]] std::expected<Entry, Error> entryAt(const Borrowed& item, std::uint64_t position) {
  const Borrowed::Array* fields = item.asArray();
  if (fields == nullptr || fields->size() != entryItemCount) return malformed();
  const auto identifier = (*fields)[0].asByteString();
  const auto ordinal = (*fields)[1].asUnsigned();
  const auto frameOffset = (*fields)[2].asUnsigned();
  const auto frameByteCount = (*fields)[3].asUnsigned();
  const auto plaintextByteCount = (*fields)[4].asUnsigned();
  const auto plaintextSHA256 = digestOf((*fields)[5]);
  const auto frameSHA256 = digestOf((*fields)[6]);
  if (!identifier || !ordinal || !frameOffset || !frameByteCount || !plaintextByteCount || !plaintextSHA256 ||
      !frameSHA256)
    return malformed();
  if (identifier->size() != BackupPayloadV1::identifierByteCount || *ordinal != position ||
      *frameByteCount > BackupPayloadV1::maximumEntryFrameByteCount ||
      *plaintextByteCount > BackupFormatV1::maximumPackedResourcePlaintextByteCount)
    return malformed();
  return Entry{Bytes(identifier->begin(), identifier->end()),
               *ordinal,
               *frameOffset,
               *frameByteCount,
               *plaintextByteCount,
               *plaintextSHA256,
               *frameSHA256};
}

[[nodiscard]] bool identifiersArePairwiseDifferent(const std::vector<Entry>& entries) {
  for (std::size_t later = 1; later < entries.size(); ++later) {
    for (std::size_t earlier = 0; earlier < later; ++earlier) {
      if (entries[earlier].identifier == entries[later].identifier) return false;
    }
  }
  return true;
}

// The entry counts are at most 32 and each plaintext count at most 16 MiB, so the sum fits.
[[nodiscard]] std::uint64_t plaintextSum(const std::vector<Entry>& entries) {
  std::uint64_t sum = 0;
  for (const Entry& entry : entries) sum += entry.plaintextByteCount;
  return sum;
}

// requireHeaderAgreement checks the index's own fields, in key order, against the header.
[[nodiscard]] std::expected<std::uint64_t, Error> requireHeaderAgreement(const Borrowed& index,
                                                                         const BackupPackContainerHeaderV1& header) {
  if (!index.hasKeysZeroThrough(entriesKey)) return malformed();
  const auto schema = index.find(schemaKey)->asTextString();
  const auto segmentIdentifier = index.find(segmentIdentifierKey)->asByteString();
  const auto entryCount = index.find(entryCountKey)->asUnsigned();
  const auto entryAreaByteCount = index.find(entryAreaByteCountKey)->asUnsigned();
  const auto total = index.find(totalPlaintextByteCountKey)->asUnsigned();
  if (!schema || *schema != BackupFormatV1::packIndexSchemaIdentifier) return malformed();
  if (!segmentIdentifier || !ByteOrder::equal(*segmentIdentifier, header.segmentIdentifier)) return malformed();
  if (!entryCount || *entryCount != header.entryCount) return malformed();
  if (!entryAreaByteCount || *entryAreaByteCount != header.entryAreaByteCount) return malformed();
  if (!total || *total > BackupFormatV1::maximumSegmentPlaintextByteCount) return malformed();
  return *total;
}

}  // namespace

namespace BackupPackIndexV1 {

std::expected<Bytes, CBORError> encoded(const BackupPackContainerHeaderV1& header, const Contents& contents) {
  Value::Array entries;
  entries.reserve(contents.entries.size());
  for (const Entry& entry : contents.entries) entries.push_back(entryValue(entry));
  const Value index = Value::map({
      {schemaKey, Value::textString(std::string(BackupFormatV1::packIndexSchemaIdentifier))},
      {segmentIdentifierKey, Value::byteString(ByteView(header.segmentIdentifier))},
      {entryCountKey, Value::unsignedInteger(header.entryCount)},
      {entryAreaByteCountKey, Value::unsignedInteger(header.entryAreaByteCount)},
      {totalPlaintextByteCountKey, Value::unsignedInteger(contents.totalPlaintextByteCount)},
      {entriesKey, Value::array(std::move(entries))},
  });
  return DeterministicCBOR::encode(index, limits);
}

std::expected<Contents, Error> decode(ByteView plaintext, const BackupPackContainerHeaderV1& header) {
  const auto index = DeterministicCBOR::decodeBorrowed(plaintext, limits);
  if (!index) return malformed();  // the codec's reason stays below this edge
  const auto total = requireHeaderAgreement(*index, header);
  if (!total) return std::unexpected(total.error());
  const Borrowed::Array* items = index->find(entriesKey)->asArray();
  if (items == nullptr || items->size() != header.entryCount) return malformed();

  Contents contents{*total, {}};
  contents.entries.reserve(items->size());
  for (std::size_t position = 0; position < items->size(); ++position) {
    auto entry = entryAt((*items)[position], position);
    if (!entry) return std::unexpected(entry.error());
    contents.entries.push_back(std::move(*entry));
  }
  if (!identifiersArePairwiseDifferent(contents.entries) || plaintextSum(contents.entries) != *total)
    return malformed();
  return contents;
}

}  // namespace BackupPackIndexV1

}  // namespace galdrine::format
