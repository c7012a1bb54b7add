#include "format/manifest/BackupManifestFieldReaderV1.hpp"

namespace galdrine::format {

using Reader = BackupManifestFieldReaderV1;

Reader Reader::forRecord(Faults& faults, const CBORBorrowedValue& value, std::string_view schema,
                         std::uint64_t lastKey) {
  if (!value.hasKeysZeroThrough(lastKey)) {
    faults.malformed = true;
    return Reader(faults, nullptr, nullptr);
  }
  Reader reader(faults, value.asMap(), nullptr);
  if (reader.text(0) != schema) faults.malformed = true;
  return reader;
}

Reader Reader::forArray(Faults& faults, const CBORBorrowedValue& value, std::uint64_t itemCount) {
  const auto* items = value.asArray();
  if (items == nullptr || items->size() != itemCount) {
    faults.malformed = true;
    return Reader(faults, nullptr, nullptr);
  }
  return Reader(faults, nullptr, items);
}

const CBORBorrowedValue* Reader::field(std::uint64_t key) const {
  // The shape was checked on entry: a map's keys are exactly 0 ... n - 1, so key k is entry k.
  if (entries_ != nullptr && key < entries_->size()) return &(*entries_)[key].second;
  if (items_ != nullptr && key < items_->size()) return &(*items_)[key];
  faults_->malformed = true;
  return nullptr;
}

ByteView Reader::bytes(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr) return {};
  const auto bytes = value->asByteString();
  if (!bytes) {
    faults_->malformed = true;
    return {};
  }
  return *bytes;
}

std::optional<ByteView> Reader::optionalBytes(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr || value->isNull()) return std::nullopt;
  return bytes(key);
}

std::string_view Reader::text(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr) return {};
  const auto text = value->asTextString();
  if (!text) {
    faults_->malformed = true;
    return {};
  }
  return *text;
}

bool Reader::boolean(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr) return false;
  const auto boolean = value->asBoolean();
  if (!boolean) faults_->malformed = true;
  return boolean.value_or(false);
}

std::uint64_t Reader::unsignedInteger(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr) return 0;
  const auto number = value->asUnsigned();
  if (!number) faults_->malformed = true;
  return number.value_or(0);
}

std::optional<std::uint64_t> Reader::optionalUnsignedInteger(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr || value->isNull()) return std::nullopt;
  return unsignedInteger(key);
}

std::optional<std::int64_t> Reader::signedFrom(const CBORBorrowedValue& value) const {
  const auto number = value.asSignedInteger();
  if (number) return *number;
  if (number.error() == CBORSignedIntegerFault::outOfRange) {
    faults_->signedValueOutOfRange = true;
  } else {
    faults_->malformed = true;
  }
  return std::nullopt;
}

std::int64_t Reader::signedInteger(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr) return 0;
  return signedFrom(*value).value_or(0);
}

std::optional<std::int64_t> Reader::optionalSignedInteger(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr || value->isNull()) return std::nullopt;
  // A present value stays present even when it was faulty: the verdict refuses it anyway.
  return signedFrom(*value).value_or(0);
}

std::span<const CBORBorrowedValue> Reader::items(std::uint64_t key) const {
  const auto* value = field(key);
  if (value == nullptr) return {};
  const auto* items = value->asArray();
  if (items == nullptr) {
    faults_->malformed = true;
    return {};
  }
  return *items;
}

std::vector<ByteView> Reader::byteStrings(std::uint64_t key) const {
  const auto values = items(key);
  std::vector<ByteView> strings;
  strings.reserve(values.size());
  for (const auto& value : values) {
    const auto bytes = value.asByteString();
    if (!bytes) {
      faults_->malformed = true;
      return {};
    }
    strings.push_back(*bytes);
  }
  return strings;
}

std::expected<void, BackupManifestRecordV1Error> Reader::verdict(const Faults& faults) {
  if (faults.malformed) return std::unexpected(BackupManifestRecordV1Error::malformedRecord);
  if (faults.signedValueOutOfRange) return std::unexpected(BackupManifestRecordV1Error::invalidValue);
  return {};
}

}  // namespace galdrine::format
