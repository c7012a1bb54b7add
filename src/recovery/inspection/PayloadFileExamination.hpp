#pragma once
// PayloadFileExamination is what looking at one payload file against its expectation found,
// in the detail that both of its readers need. The inspector's observation and the export's
// availability sort the same findings differently (a file that is not regular is mismatched
// to the one and unreadable to the other), so a file is looked at once and each reader
// classifies the finding its own way.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>

#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"

namespace galdrine::recovery {

// RecoveryPayloadReadObserver is told of every read of a payload file that an examination
// hashes: the file, and the bytes that read gave (0 for the read that ends it). It changes
// nothing in the examination; tests and benchmarks use it to see how payload files are
// streamed. An empty observer costs one test per read.
using RecoveryPayloadReadObserver = std::function<void(const std::filesystem::path& file, std::size_t byteCount)>;

enum class PayloadFileExamination : std::uint8_t {
  matching,                // a regular file of the expected length and digest
  missing,                 // nothing stands at the path
  statusUnavailable,       // lstat failed otherwise
  openRefused,             // the open without following a link failed: a link, dangling or not, ends here
  descriptorStatusFailed,  // fstat of the open file failed
  notRegularFile,          // a directory, a device, a pipe
  wrongByteCount,          // a size below 1 or other than the expected one
  readFailed,              // a read failed, or gave more or fewer bytes than the size
  changedWhileRead,        // the second fstat failed, or showed another file, size or time
  wrongDigest,             // read whole, but its SHA-256 is another
};

// ExaminedPayloadFile is one examination with the expectation it was made against: a later
// reader may take it over only for the very same expectation.
struct ExaminedPayloadFile {
  PayloadExpectation expectation;
  PayloadFileExamination examination = PayloadFileExamination::missing;
};

// Examinations by artifact identifier.
using PayloadFileExaminationMap = ByteMap<ExaminedPayloadFile>;

// payloadFilePath is where `package` keeps the payload file `artifactIdentifier` of
// `container`: "objects" and the chunk's canonical file name, or "packs" and the segment's.
// Nothing when the directory or the name cannot be formed.
[[nodiscard]] std::optional<std::filesystem::path> payloadFilePath(const format::BackupPackageV1& package,
                                                                   ByteView artifactIdentifier,
                                                                   format::BackupPayloadContainerKindV1 container);

namespace PayloadFileExaminations {

// Payload files are streamed in pieces of this size and never held whole.
inline constexpr std::size_t readPieceByteCount = 1'048'576;

// examine looks at the file at `path`, in this order, and the first finding decides: lstat
// (missing for ENOENT, else statusUnavailable); an open, read-only and non-blocking, that does
// not follow a link (openRefused); fstat (descriptorStatusFailed); a regular file
// (notRegularFile); a size of at least 1 equal to `byteCount` (wrongByteCount); reads of at
// most one piece into `buffer`, hashed as they arrive, until a read gives nothing (readFailed
// for a failed read, or for more or fewer bytes than the size); fstat again, which must show
// the same device, inode, size and modification time to the nanosecond (changedWhileRead);
// the digest against `sha256` (matching or wrongDigest). `buffer` must hold one piece; the
// observer hears of every read. Nothing stays open.
[[nodiscard]] PayloadFileExamination examine(const std::filesystem::path& path, std::uint64_t byteCount,
                                             ByteView sha256, std::span<std::uint8_t> buffer,
                                             const RecoveryPayloadReadObserver& observer = {});

}  // namespace PayloadFileExaminations

}  // namespace galdrine::recovery
