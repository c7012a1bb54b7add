#pragma once
// Valid sample records of the backup graph for the tests, and small helpers to take a record
// apart as an owned CBOR value and put it together again.

#include <gtest/gtest.h>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "support/ManifestTestRecords.hpp"

namespace galdrine::format::BackupGraphTestRecords {

using Kind = BackupManifestSectionKindV1;
using Reference = BackupArtifactReferenceV1;
using Value = CBORValue;

// made gives the value of a result that a test requires to have succeeded (a failure fails the
// test and ends its body); errorOf gives the error of a failed result, or nothing.
using testsupport::ManifestTestRecords::errorOf;
using testsupport::ManifestTestRecords::made;

// identifier(n): 16 bytes that sort as n does.
inline Bytes identifier(std::uint32_t number, std::uint8_t prefix = 0xC0) {
  Bytes bytes(16, 0);
  bytes[0] = prefix;
  for (std::size_t index = 0; index < 4; ++index) bytes[15 - index] = static_cast<std::uint8_t>(number >> (8 * index));
  return bytes;
}
inline Bytes filled(std::size_t byteCount, std::uint8_t value) { return Bytes(byteCount, value); }
inline Bytes digest(std::uint8_t value) { return filled(32, value); }

inline const Bytes kLibrary = filled(16, 0x11);
inline const Bytes kPackage = filled(16, 0x22);
inline const Bytes kManifest = filled(16, 0x33);
inline const Bytes kKey = filled(32, 0x44);

inline BackupArtifactReferenceV1 reference(std::uint32_t number) {
  return made(BackupArtifactReferenceV1::make(identifier(number), 200 + number, digest(1), 100 + number, digest(2)));
}
inline BackupManifestCountsV1 counts(std::uint64_t payloadKeys, std::uint64_t items) {
  return made(BackupManifestCountsV1::make(payloadKeys, items, 0, 0, 0, 0, 0));
}
inline BackupHeadV1 head(std::int64_t createdAt = -1) {
  return made(BackupHeadV1::make(identifier(1, 0x40), kLibrary, reference(7), createdAt));
}
inline BackupCommitV1 commit() {
  return made(BackupCommitV1::make(identifier(7), kLibrary, reference(6), reference(5), kManifest, filled(16, 0x55), 3,
                                   2, 1'700'000'000'000, digest(9), {reference(2), reference(3)}));
}
inline BackupSnapshotV1 snapshot() {
  return made(BackupSnapshotV1::make(identifier(5), kLibrary, 1'700'000'000'000, reference(4), digest(3), digest(9),
                                     counts(2, 1), 4096, 8192));
}
inline BackupManifestRecordBlobV1 blob(std::uint8_t sortKey, std::size_t recordByteCount = 4) {
  return made(BackupManifestRecordBlobV1::make(Bytes{sortKey}, filled(recordByteCount, sortKey)));
}
inline BackupManifestSectionV1 section(std::uint64_t ordinal = 0, Kind kind = Kind::payloadKey,
                                       std::vector<BackupManifestRecordBlobV1> records = {blob(1), blob(2)}) {
  return made(BackupManifestSectionV1::make(identifier(100 + static_cast<std::uint32_t>(ordinal)), kManifest, kLibrary,
                                            ordinal, kind, BackupManifestCompressionV1::none, std::move(records)));
}
// sectionReference names section `ordinal` (artifact 100 + ordinal unless given) of `recordCount`
// records with one-byte sort keys `first` to `last`.
inline BackupManifestSectionReferenceV1 sectionReference(std::uint64_t ordinal, Kind kind, std::uint64_t recordCount,
                                                         std::uint8_t first, std::uint8_t last,
                                                         std::optional<std::uint32_t> artifact = std::nullopt) {
  const auto number = artifact.value_or(100 + static_cast<std::uint32_t>(ordinal));
  return made(BackupManifestSectionReferenceV1::make(
      made(BackupArtifactReferenceV1::make(identifier(number), 300, digest(5), 250, digest(6))), ordinal, kind,
      BackupManifestCompressionV1::none, recordCount, Bytes{first}, Bytes{last}, 250, digest(6)));
}
// A root with two payload-key sections and one item section.
inline std::vector<BackupManifestSectionReferenceV1> rootSections() {
  return {sectionReference(0, Kind::payloadKey, 2, 1, 2), sectionReference(1, Kind::payloadKey, 1, 3, 3),
          sectionReference(2, Kind::item, 1, 1, 1)};
}
inline BackupManifestRootV1 root() {
  return made(BackupManifestRootV1::make(kManifest, kLibrary, identifier(5), -5, counts(3, 1), 4096, digest(9),
                                         rootSections(), made(BackupGraphV1::sectionSetDigest(rootSections()))));
}

// Owned CBOR, to take a record's form apart and put it together again.
inline constexpr CBORLimits kLooseLimits{1 << 24, 1 << 24, 256, 5000, 100000, 8};
inline Value owned(const Bytes& encoded) { return made(DeterministicCBOR::decode(encoded, kLooseLimits)); }
inline Bytes encode(const Value& value) { return made(DeterministicCBOR::encode(value, kLooseLimits)); }
inline const Value& fieldOf(const Value& map, std::uint64_t key) { return *map.find(key); }
inline Value withField(const Value& map, std::uint64_t key, std::optional<Value> replacement) {
  Value::Map entries = *map.asMap();
  entries.erase(key);
  if (replacement) entries.emplace(key, std::move(*replacement));
  return Value::map(std::move(entries));
}
// withItem replaces item `index` of an array; withItems repeats its first item to `count` items.
inline Value withItem(const Value& array, std::size_t index, Value replacement) {
  Value::Array items = *array.asArray();
  items[index] = std::move(replacement);
  return Value::array(std::move(items));
}
inline Value withItems(const Value& array, std::size_t count) {
  Value::Array items = *array.asArray();
  items.resize(count, items.front());
  return Value::array(std::move(items));
}

}  // namespace galdrine::format::BackupGraphTestRecords
