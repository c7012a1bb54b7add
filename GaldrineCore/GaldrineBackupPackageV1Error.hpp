#pragma once
// GaldrineBackupPackageV1Error is why a directory was refused as a package, or could not be
// created as one. Cases stand in the order of the package's contract; only invalidRootEntry
// carries a payload, the name of the root entry at fault.

#include <cstdint>
#include <string>
#include <string_view>

struct GaldrineBackupPackageV1Error {
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

  static GaldrineBackupPackageV1Error invalidRootEntry(std::string_view name) { return {Code::invalidRootEntry, std::string(name)}; }
  static GaldrineBackupPackageV1Error invalidPackageExtension() { return {Code::invalidPackageExtension, {}}; }
  static GaldrineBackupPackageV1Error destinationAlreadyExists() { return {Code::destinationAlreadyExists, {}}; }
  static GaldrineBackupPackageV1Error invalidParentDirectory() { return {Code::invalidParentDirectory, {}}; }
  static GaldrineBackupPackageV1Error invalidPackageRoot() { return {Code::invalidPackageRoot, {}}; }
  static GaldrineBackupPackageV1Error invalidRootEntrySet() { return {Code::invalidRootEntrySet, {}}; }
  static GaldrineBackupPackageV1Error headerTooLarge() { return {Code::headerTooLarge, {}}; }
  static GaldrineBackupPackageV1Error nonCanonicalHeader() { return {Code::nonCanonicalHeader, {}}; }

  friend bool operator==(const GaldrineBackupPackageV1Error&, const GaldrineBackupPackageV1Error&) = default;
};
