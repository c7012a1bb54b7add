#pragma once
// BackupPackageV1Error is why a directory was refused as a package, or could not be
// created as one. Cases stand in the order of the package's contract; only invalidRootEntry
// carries a payload, the name of the root entry at fault.

#include <cstdint>
#include <string>
#include <string_view>

namespace galdrine::format {

struct BackupPackageV1Error {
  enum class Code : std::uint8_t {
    invalidRootEntry,          // payload: the entry's name
    invalidPackageExtension,
    destinationAlreadyExists,
    invalidParentDirectory,
    invalidPackageRoot,
    invalidRootEntrySet,
    headerTooLarge,
    nonCanonicalHeader,
  };

  Code code;
  std::string entryName;  // empty for the cases without one

  static BackupPackageV1Error invalidRootEntry(std::string_view name) { return {Code::invalidRootEntry, std::string(name)}; }
  static BackupPackageV1Error invalidPackageExtension() { return {Code::invalidPackageExtension, {}}; }
  static BackupPackageV1Error destinationAlreadyExists() { return {Code::destinationAlreadyExists, {}}; }
  static BackupPackageV1Error invalidParentDirectory() { return {Code::invalidParentDirectory, {}}; }
  static BackupPackageV1Error invalidPackageRoot() { return {Code::invalidPackageRoot, {}}; }
  static BackupPackageV1Error invalidRootEntrySet() { return {Code::invalidRootEntrySet, {}}; }
  static BackupPackageV1Error headerTooLarge() { return {Code::headerTooLarge, {}}; }
  static BackupPackageV1Error nonCanonicalHeader() { return {Code::nonCanonicalHeader, {}}; }

  friend bool operator==(const BackupPackageV1Error&, const BackupPackageV1Error&) = default;
};

}  // namespace galdrine::format
