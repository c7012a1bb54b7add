#pragma once
// BackupFormatHeaderV1Error is why a format header was refused. Cases stand in the
// order of the header's contract; the first four carry an unsigned payload.

#include <cstdint>

namespace galdrine::format {

struct BackupFormatHeaderV1Error {
  enum class Code : std::uint8_t {
    invalidFieldType,                 // payload: the field's key
    unsupportedFormatVersion,         // payload: the version found
    unsupportedMinimumReaderVersion,  // payload: the version found
    incompatibleLayoutLimit,          // payload: the field's key
    invalidTopLevel,
    invalidFieldSet,
    invalidMagic,
    unsupportedFormatIdentifier,
    unsupportedHeaderSchema,
    invalidPackageIdentifier,
    unsupportedAlgorithmSuite,
    unsupportedLayout,
  };

  Code code;
  std::uint64_t payload = 0;  // zero for the cases without one

  static constexpr BackupFormatHeaderV1Error invalidFieldType(std::uint64_t key) { return {Code::invalidFieldType, key}; }
  static constexpr BackupFormatHeaderV1Error unsupportedFormatVersion(std::uint64_t found) { return {Code::unsupportedFormatVersion, found}; }
  static constexpr BackupFormatHeaderV1Error unsupportedMinimumReaderVersion(std::uint64_t found) { return {Code::unsupportedMinimumReaderVersion, found}; }
  static constexpr BackupFormatHeaderV1Error incompatibleLayoutLimit(std::uint64_t key) { return {Code::incompatibleLayoutLimit, key}; }
  static constexpr BackupFormatHeaderV1Error invalidTopLevel() { return {Code::invalidTopLevel}; }
  static constexpr BackupFormatHeaderV1Error invalidFieldSet() { return {Code::invalidFieldSet}; }
  static constexpr BackupFormatHeaderV1Error invalidMagic() { return {Code::invalidMagic}; }
  static constexpr BackupFormatHeaderV1Error unsupportedFormatIdentifier() { return {Code::unsupportedFormatIdentifier}; }
  static constexpr BackupFormatHeaderV1Error unsupportedHeaderSchema() { return {Code::unsupportedHeaderSchema}; }
  static constexpr BackupFormatHeaderV1Error invalidPackageIdentifier() { return {Code::invalidPackageIdentifier}; }
  static constexpr BackupFormatHeaderV1Error unsupportedAlgorithmSuite() { return {Code::unsupportedAlgorithmSuite}; }
  static constexpr BackupFormatHeaderV1Error unsupportedLayout() { return {Code::unsupportedLayout}; }

  friend constexpr bool operator==(const BackupFormatHeaderV1Error&, const BackupFormatHeaderV1Error&) = default;
};

}  // namespace galdrine::format
