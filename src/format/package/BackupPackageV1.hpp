#pragma once
// BackupPackageV1 is an opened backup package: a directory named "<stem>.galdrine"
// whose root holds a closed list of twelve names, ten of them required, and a canonical
// format header. Opening checks only what needs no key; every sealed object inside is left to
// its own reader. A record is a snapshot of the checks at the moment of opening and holds no
// descriptor: a package may change afterwards, so readers re-check each file they open.
//
// Operations fail with one value of BackupPackageV1Failure: the package's own error,
// or the header's, the codec's or a file call's error passed on unchanged.

#include <array>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

#include "format/cbor/CBORError.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"

namespace galdrine::format {

// BackupPackageV1Error is why a directory was refused as a package, or could not be
// created as one. Cases stand in the order of the package's contract; only invalidRootEntry
// carries a payload, the name of the root entry at fault.
struct BackupPackageV1Error {
  enum class Code : std::uint8_t {
    invalidRootEntry,  // payload: the entry's name
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

  static BackupPackageV1Error invalidRootEntry(std::string_view name) {
    return {Code::invalidRootEntry, std::string(name)};
  }
  static BackupPackageV1Error invalidPackageExtension() { return {Code::invalidPackageExtension, {}}; }
  static BackupPackageV1Error destinationAlreadyExists() { return {Code::destinationAlreadyExists, {}}; }
  static BackupPackageV1Error invalidParentDirectory() { return {Code::invalidParentDirectory, {}}; }
  static BackupPackageV1Error invalidPackageRoot() { return {Code::invalidPackageRoot, {}}; }
  static BackupPackageV1Error invalidRootEntrySet() { return {Code::invalidRootEntrySet, {}}; }
  static BackupPackageV1Error headerTooLarge() { return {Code::headerTooLarge, {}}; }
  static BackupPackageV1Error nonCanonicalHeader() { return {Code::nonCanonicalHeader, {}}; }

  friend bool operator==(const BackupPackageV1Error&, const BackupPackageV1Error&) = default;
};

using BackupPackageV1Failure =
    std::variant<BackupPackageV1Error, BackupFormatHeaderV1Error, CBORError, platform::FileError>;

class BackupPackageV1 {
 public:
  static constexpr std::string_view formatHeaderName = "format-header.cbor";
  static constexpr std::string_view keyEnvelopesName = "key-envelopes.cbor";
  static constexpr std::string_view convenienceHeadName = "HEAD";
  static constexpr std::array<std::string_view, 9> requiredDirectoryNames{
      "commits", "heads", "snapshots", "manifests", "objects", "packs", "reports", "tmp", "advisory"};
  static constexpr std::int64_t maximumRootEntryCount = 12;
  static constexpr std::int64_t maximumHeaderByteCount = 4096;

  // open checks, in this order, and the first failure decides: the extension
  // (invalidPackageExtension); the root a directory and no symbolic link (invalidPackageRoot);
  // a listing of at most twelve names, all from the closed list, with the header and the nine
  // directories among them (invalidRootEntrySet, hidden names included); each of the nine a
  // directory and no link, in table order (invalidRootEntry of the name); key-envelopes.cbor
  // and then HEAD, where present, a regular file (invalidRootEntry of the name); the header a
  // regular file (invalidRootEntry) of a known size of at most 4096 bytes, checked before it is
  // opened and again after one bounded read (headerTooLarge); its decoding (the header's or
  // the codec's error); its re-encoding equal to the file's bytes (nonCanonicalHeader). A
  // failed lstat, open or read gives the file call's error. Opening never writes.
  [[nodiscard]] static std::expected<BackupPackageV1, BackupPackageV1Failure> open(
      const std::filesystem::path& packagePath);

  // create builds an empty package (nine directories and the header, no key envelopes and no
  // HEAD) in a hidden staging directory beside `packagePath`, makes each part durable, and
  // publishes it with one rename that refuses an existing target; the result is the package as
  // open gives it. Before the rename: the extension (invalidPackageExtension), nothing at the
  // target, a dangling link included (destinationAlreadyExists), the parent a directory and no
  // link (invalidParentDirectory), the identifier (the header's invalidPackageIdentifier),
  // nothing at the staging name (destinationAlreadyExists), a directory synchronisation that
  // failed (invalidPackageRoot), and nothing at the target just before the move
  // (destinationAlreadyExists); any other failed file call, a failed random source included
  // (EIO), gives the file call's error. On every failure up to and including the rename the
  // staging directory is removed (a failed removal is not reported) and no target exists. A
  // failed synchronisation of the parent after the rename gives invalidPackageRoot, and the
  // published package stays.
  [[nodiscard]] static std::expected<BackupPackageV1, BackupPackageV1Failure> create(
      const std::filesystem::path& packagePath, ByteView packageIdentifier);

  // directoryPath gives the path of one of the nine directories under the root; any other name,
  // the root files included, fails with invalidRootEntry of that name. Readers reach the
  // package's directories only through it.
  [[nodiscard]] std::expected<std::filesystem::path, BackupPackageV1Error> directoryPath(std::string_view name) const;

  [[nodiscard]] const std::filesystem::path& packagePath() const { return packagePath_; }
  [[nodiscard]] const BackupFormatHeaderV1& header() const { return header_; }
  // headerData is the exact bytes of format-header.cbor, whose digest binds the key envelopes.
  [[nodiscard]] const Bytes& headerData() const { return headerData_; }

  friend bool operator==(const BackupPackageV1&, const BackupPackageV1&) = default;

 private:
  BackupPackageV1(std::filesystem::path packagePath, BackupFormatHeaderV1 header, Bytes headerData)
      : packagePath_(std::move(packagePath)), header_(std::move(header)), headerData_(std::move(headerData)) {}

  std::filesystem::path packagePath_;
  BackupFormatHeaderV1 header_;
  Bytes headerData_;
};

}  // namespace galdrine::format
