#include "envelope/BackupKeyEnvelopeSetV1.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::envelope {

namespace {

using Set = BackupKeyEnvelopeSetV1;
using Entry = BackupKeyEnvelopeEntryV1;
using Error = BackupKeyEnvelopeSetV1Error;
using Failure = BackupKeyEnvelopeSetV1Failure;
using Factor = PortableKeyFactorV1;
using Value = format::CBORValue;

enum SetKey : std::uint64_t {
  schemaKey = 0,
  versionKey = 1,
  formatKey = 2,
  packageKey = 3,
  libraryDomainKey = 4,
  entriesKey = 5,
};
enum EntryKey : std::uint64_t { envelopeKey = 0, isActiveKey = 1 };

[[nodiscard]] bool isIdentifier(ByteView bytes) {
  return std::cmp_equal(bytes.size(), format::BackupFormatV1::artifactIdentifierByteCount);
}

[[nodiscard]] std::vector<const Entry*> entriesOf(const std::vector<Entry>& entries, Factor factor) {
  std::vector<const Entry*> found;
  for (const Entry& entry : entries) {
    if (entry.metadata().factor() == factor) found.push_back(&entry);
  }
  return found;
}

[[nodiscard]] bool hasDistinctGenerations(const std::vector<const Entry*>& entries) {
  for (std::size_t index = 0; index < entries.size(); ++index) {
    for (std::size_t later = index + 1; later < entries.size(); ++later) {
      if (entries[index]->metadata().generation() == entries[later]->metadata().generation()) return false;
    }
  }
  return true;
}

// validateFactor checks the entries of one factor; `usedKeySlots` holds the slots of the
// factors already checked and gains this factor's.
[[nodiscard]] std::expected<void, Error> validateFactor(const std::vector<const Entry*>& entries, Factor factor,
                                                        std::vector<Bytes>& usedKeySlots) {
  const auto activeCount = std::ranges::count_if(entries, [](const Entry* entry) { return entry->isActive(); });
  if (activeCount == 0) return std::unexpected(Error::missingActiveEnvelope(factor));
  if (activeCount > 1) return std::unexpected(Error::multipleActiveEnvelopes(factor));
  const Bytes& keySlot = entries.front()->metadata().keySlotIdentifier();
  if (!std::ranges::all_of(entries,
                           [&](const Entry* entry) { return entry->metadata().keySlotIdentifier() == keySlot; }))
    return std::unexpected(Error::mixedKeySlots());
  if (std::ranges::find(usedKeySlots, keySlot) != usedKeySlots.end()) return std::unexpected(Error::sharedKeySlot());
  usedKeySlots.push_back(keySlot);
  if (!hasDistinctGenerations(entries)) return std::unexpected(Error::duplicateGeneration());
  return {};
}

[[nodiscard]] std::expected<void, Error> validate(const std::vector<Entry>& entries) {
  std::vector<Bytes> usedKeySlots;
  bool anyFactorPresent = false;
  for (const Factor factor : allCases<Factor>) {
    const std::vector<const Entry*> ofFactor = entriesOf(entries, factor);
    if (std::ssize(ofFactor) > Set::maximumEntriesPerFactor) return std::unexpected(Error::invalidEntryCount());
    if (ofFactor.empty()) continue;
    anyFactorPresent = true;
    if (auto valid = validateFactor(ofFactor, factor, usedKeySlots); !valid) return valid;
  }
  if (!anyFactorPresent) return std::unexpected(Error::invalidEntryCount());

  std::vector<Bytes> seenArtifacts;
  for (const Entry& entry : entries) {
    if (std::ssize(entry.envelope()) > Set::maximumEnvelopeByteCount) return std::unexpected(Error::envelopeTooLarge());
    const Bytes& artifact = entry.metadata().artifactIdentifier();
    if (std::ranges::find(seenArtifacts, artifact) != seenArtifacts.end())
      return std::unexpected(Error::duplicateArtifactIdentifier());
    seenArtifacts.push_back(artifact);
  }
  return {};
}

// ---- Decoding ----

[[nodiscard]] std::expected<void, Error> requireText(const Value& map, std::uint64_t key, std::string_view expected,
                                                     Error mismatch) {
  const std::string* text = map.find(key)->asTextString();
  if (!text) return std::unexpected(Error::invalidFieldType(key));
  if (*text != expected) return std::unexpected(mismatch);
  return {};
}

[[nodiscard]] std::expected<void, Error> requireFixedFields(const Value& map) {
  if (auto schema = requireText(map, schemaKey, Set::schemaIdentifier, Error::unsupportedSchema()); !schema)
    return schema;
  const std::optional<std::uint64_t> version = map.find(versionKey)->asUnsigned();
  if (!version) return std::unexpected(Error::invalidFieldType(versionKey));
  if (*version != Set::schemaVersion) return std::unexpected(Error::unsupportedVersion());
  return requireText(map, formatKey, format::BackupFormatV1::canonicalFormatIdentifier, Error::unsupportedFormat());
}

[[nodiscard]] std::expected<Entry, Failure> decodeEntry(const Value& item) {
  if (!item.asMap()) return std::unexpected(Error::malformedSet());
  if (!item.hasKeysZeroThrough(isActiveKey)) return std::unexpected(Error::invalidFieldSet());
  const Bytes* envelope = item.find(envelopeKey)->asByteString();
  if (!envelope) return std::unexpected(Error::invalidFieldType(envelopeKey));
  const std::optional<bool> isActive = item.find(isActiveKey)->asBoolean();
  if (!isActive) return std::unexpected(Error::invalidFieldType(isActiveKey));
  return Entry::make(*envelope, *isActive);
}

[[nodiscard]] std::expected<std::vector<Entry>, Failure> decodeEntries(const Value& map) {
  const Value::Array* items = map.find(entriesKey)->asArray();
  if (!items) return std::unexpected(Error::invalidFieldType(entriesKey));
  std::vector<Entry> entries;
  entries.reserve(items->size());
  for (const Value& item : *items) {
    auto entry = decodeEntry(item);
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  return entries;
}

[[nodiscard]] std::expected<const Bytes*, Error> bytesField(const Value& map, std::uint64_t key) {
  const Bytes* bytes = map.find(key)->asByteString();
  if (!bytes) return std::unexpected(Error::invalidFieldType(key));
  return bytes;
}

[[nodiscard]] Value text(std::string_view value) { return Value::textString(std::string(value)); }

}  // namespace

bool BackupKeyEnvelopeSetV1::entryPrecedes(const Entry& left, const Entry& right) {
  const auto& leftMetadata = left.metadata();
  const auto& rightMetadata = right.metadata();
  if (leftMetadata.factor() != rightMetadata.factor())
    return rawValue(leftMetadata.factor()) < rawValue(rightMetadata.factor());
  if (leftMetadata.generation() != rightMetadata.generation())
    return leftMetadata.generation() < rightMetadata.generation();
  return ByteOrder::precedes(leftMetadata.artifactIdentifier(), rightMetadata.artifactIdentifier());
}

std::expected<Set, Error> BackupKeyEnvelopeSetV1::make(ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                                       std::vector<Entry> entries) {
  if (!isIdentifier(packageIdentifier)) return std::unexpected(Error::invalidPackageIdentifier());
  if (!isIdentifier(libraryDomainIdentifier)) return std::unexpected(Error::invalidLibraryDomainIdentifier());
  if (entries.empty() || std::ssize(entries) > maximumEntryCount) return std::unexpected(Error::invalidEntryCount());
  std::ranges::sort(entries, entryPrecedes);
  if (auto valid = validate(entries); !valid) return std::unexpected(valid.error());
  return Set(Bytes(packageIdentifier.begin(), packageIdentifier.end()),
             Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()), std::move(entries));
}

std::expected<Set, Failure> BackupKeyEnvelopeSetV1::decode(ByteView bytes) {
  const auto decoded = format::DeterministicCBOR::decode(bytes, encodingLimits);
  if (!decoded || !decoded->asMap()) return std::unexpected(Error::malformedSet());
  if (!decoded->hasKeysZeroThrough(entriesKey)) return std::unexpected(Error::invalidFieldSet());
  if (auto fixed = requireFixedFields(*decoded); !fixed) return std::unexpected(fixed.error());
  auto entries = decodeEntries(*decoded);
  if (!entries) return std::unexpected(entries.error());
  const auto packageIdentifier = bytesField(*decoded, packageKey);
  if (!packageIdentifier) return std::unexpected(packageIdentifier.error());
  const auto libraryDomainIdentifier = bytesField(*decoded, libraryDomainKey);
  if (!libraryDomainIdentifier) return std::unexpected(libraryDomainIdentifier.error());

  auto set = make(**packageIdentifier, **libraryDomainIdentifier, std::move(*entries));
  if (!set) return std::unexpected(set.error());
  // The sort in make puts stored entries in canonical order; only a canonical input survives.
  const auto reencoded = set->encoded();
  if (!reencoded || !ByteOrder::equal(*reencoded, bytes)) return std::unexpected(Error::nonCanonicalEncoding());
  return std::move(*set);
}

std::expected<Bytes, format::CBORError> BackupKeyEnvelopeSetV1::encoded() const {
  Value::Array entries;
  entries.reserve(entries_.size());
  for (const Entry& entry : entries_) {
    entries.push_back(Value::map(
        {{envelopeKey, Value::byteString(entry.envelope())}, {isActiveKey, Value::boolean(entry.isActive())}}));
  }
  const Value::Map fields{
      {schemaKey, text(schemaIdentifier)},
      {versionKey, Value::unsignedInteger(schemaVersion)},
      {formatKey, text(format::BackupFormatV1::canonicalFormatIdentifier)},
      {packageKey, Value::byteString(packageIdentifier_)},
      {libraryDomainKey, Value::byteString(libraryDomainIdentifier_)},
      {entriesKey, Value::array(std::move(entries))},
  };
  return format::DeterministicCBOR::encode(Value::map(fields), encodingLimits);
}

std::vector<Entry> BackupKeyEnvelopeSetV1::activeEntries() const {
  std::vector<Entry> active;
  for (const Entry& entry : entries_) {
    if (entry.isActive()) active.push_back(entry);
  }
  return active;
}

std::optional<Entry> BackupKeyEnvelopeSetV1::activeEntry(Factor factor) const {
  const auto found = std::ranges::find_if(
      entries_, [factor](const Entry& entry) { return entry.isActive() && entry.metadata().factor() == factor; });
  if (found == entries_.end()) return std::nullopt;
  return *found;
}

}  // namespace galdrine::envelope
