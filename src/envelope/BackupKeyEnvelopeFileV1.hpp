#pragma once
// BackupKeyEnvelopeFileV1 moves a key envelope set between memory and the package's
// key-envelopes.cbor, the one file of a package that is replaced in place. Reading is bounded
// and accepts only a regular file of 1 to 8192 bytes, never through a symbolic link. Replacing
// is a compare-and-swap on the file's SHA-256: the new set is staged in the package's tmp
// directory, made durable, read back and proven, and renamed over the current file only if
// that file is still the one the caller read. No lock is taken; the last writer to rename
// wins whatever race the second check leaves.

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string_view>
#include <variant>

#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

// BackupKeyEnvelopeFileV1Error is why key-envelopes.cbor could not be read or replaced.
// Cases stand in the order of the file's contract. publicationFailed promises that the current
// file is as it was; publicationOutcomeUnknown promises nothing, and the caller must read the
// file again.
enum class BackupKeyEnvelopeFileV1Error : std::uint8_t {
  envelopeFileMissing,
  invalidEnvelopeFile,
  packageBindingMismatch,
  invalidExpectedDigest,
  staleCurrentFile,
  publicationFailed,
  publicationOutcomeUnknown,
};

// BackupKeyEnvelopeFileRead is a key envelope set as it stood on disk, with the SHA-256 of the
// file's bytes as read: the token a later replacement of the file must present.
struct BackupKeyEnvelopeFileRead {
  BackupKeyEnvelopeSetV1 envelopeSet;
  Bytes encodedSHA256;  // 32 bytes

  friend bool operator==(const BackupKeyEnvelopeFileRead&, const BackupKeyEnvelopeFileRead&) = default;
};

// BackupKeyEnvelopeFileFaultPoint names the places where a replacement of the file can be
// stopped on purpose, in the order in which the writer passes them. Only a caller's fault hook
// stops a write; the ordinary writer has none. A stop before the final rename fails with
// publicationFailed and leaves the old file; a stop after it fails with
// publicationOutcomeUnknown and leaves the new one.
enum class BackupKeyEnvelopeFileFaultPoint : std::uint8_t {
  afterStagingWrite,         // the staged file holds the new bytes, not yet durable
  afterStagingSync,          // staged file and tmp directory synchronised
  afterStagingVerification,  // the staged file was read back and matched
  beforeFinalRename,         // the current file was checked a second time
  afterFinalRename,          // the new file stands at the final name
  afterDirectorySync,        // tmp and package directories synchronised
};

// The hook is asked at each point; true stops the write there. It may also change the file
// system, standing in for another writer.
using BackupKeyEnvelopeFileFaultHook = std::function<bool(BackupKeyEnvelopeFileFaultPoint)>;

// A read fails with the file's own case, the package's failure as opening it gave it, or the
// set's failure as decoding gave it.
using BackupKeyEnvelopeFileV1Failure =
    std::variant<BackupKeyEnvelopeFileV1Error, format::BackupPackageV1Failure, BackupKeyEnvelopeSetV1Failure>;

namespace BackupKeyEnvelopeFileV1 {

inline constexpr std::string_view stagedNamePrefix = ".key-envelopes-";
inline constexpr std::string_view stagedNameSuffix = ".tmp";
inline constexpr std::int64_t maximumFileByteCount = BackupKeyEnvelopeSetV1::maximumEncodedByteCount;

// readBoundedRegularFile is the one way this file is read: opened read-only without following
// a final symbolic link, it must be a regular file of 1 to 8192 bytes by fstat, and one read of
// at most 8193 bytes must give exactly that many. Anything else, a read error included, is
// invalidEnvelopeFile. The descriptor is closed on every path.
[[nodiscard]] std::expected<Bytes, BackupKeyEnvelopeFileV1Error> readBoundedRegularFile(
    const std::filesystem::path& filePath);

// read opens the package again at its path (its failure unchanged) and requires the same header
// value and bytes as `package` (packageBindingMismatch); the file must exist by lstat
// (envelopeFileMissing), pass the bounded read (invalidEnvelopeFile), decode (the set's
// failure unchanged) and name the header's package (packageBindingMismatch). The digest is of
// the bytes as read. Reading never writes.
[[nodiscard]] std::expected<BackupKeyEnvelopeFileRead, BackupKeyEnvelopeFileV1Failure> read(
    const format::BackupPackageV1& package);

// writeAtomically replaces the file with `envelopeSet` if the current file's SHA-256 is
// `replacing`, or creates it if `replacing` is nothing and no file exists. In this order: a
// digest of 32 bytes (invalidExpectedDigest); the package reopened with the same header, and
// the set naming it (packageBindingMismatch); the current file as expected (staleCurrentFile,
// or invalidEnvelopeFile and packageBindingMismatch from reading it); then the set is staged
// as ".key-envelopes-<uuid>.tmp" in tmp, refusing to overwrite, synchronised with its
// directory, read back and compared; the current file is checked again; and the staged file is
// renamed onto the final name. Any other failure up to here is publicationFailed, the current
// file is untouched and the staged file removed (an existing file at the staged name is not
// ours and is left alone). After the rename, a failed synchronisation of tmp and the package
// directory, or a read-back that differs, is publicationOutcomeUnknown. The result is what was
// read back from the final file.
[[nodiscard]] std::expected<BackupKeyEnvelopeFileRead, BackupKeyEnvelopeFileV1Error> writeAtomically(
    const BackupKeyEnvelopeSetV1& envelopeSet, const format::BackupPackageV1& package,
    std::optional<ByteView> replacing);

// The same, asking `faultHook` at each fault point; a stop there fails as described with the
// fault points.
[[nodiscard]] std::expected<BackupKeyEnvelopeFileRead, BackupKeyEnvelopeFileV1Error> writeAtomically(
    const BackupKeyEnvelopeSetV1& envelopeSet, const format::BackupPackageV1& package,
    std::optional<ByteView> replacing, const BackupKeyEnvelopeFileFaultHook& faultHook);

}  // namespace BackupKeyEnvelopeFileV1

}  // namespace galdrine::envelope
