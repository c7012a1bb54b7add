#pragma once
// RecoveryOutputFile is the one way the exporter puts bytes on disk. It creates a new file
// where nothing stands, hashes every byte as it writes it, and at finish proves the count and
// the digest against what the caller expected before it makes the file durable. A file that
// is not finished removes itself: on abort, on any failure, and when the object is destroyed.
//
// One object serves one file on one thread. It is move-only; a moved-from object owns nothing
// and removes nothing.

#include <sys/types.h>

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>

#include "platform/Bytes.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/SHA256.hpp"
#include "recovery/export/RecoveryExporterError.hpp"

namespace galdrine::recovery {

class RecoveryOutputFile {
 public:
  // create makes the file at `path` with permissions 0600, never following a symbolic link and
  // never replacing anything: whatever stands there, a dangling link included, is left alone
  // and the call fails with outputWriteFailed.
  [[nodiscard]] static std::expected<RecoveryOutputFile, RecoveryExporterError> create(
      const std::filesystem::path& path);

  ~RecoveryOutputFile() { abort(); }
  RecoveryOutputFile(RecoveryOutputFile&& other) noexcept;
  RecoveryOutputFile& operator=(RecoveryOutputFile&& other) noexcept;
  RecoveryOutputFile(const RecoveryOutputFile&) = delete;
  RecoveryOutputFile& operator=(const RecoveryOutputFile&) = delete;

  // append writes all of `data` straight from the caller's buffer, resuming after short writes
  // and interruptions, and hashes it. A count past 2^64 - 1, a write error, a write that takes
  // nothing, or a file already finished or aborted fails with outputWriteFailed; the file is
  // then aborted, so every later call fails too.
  [[nodiscard]] std::expected<void, RecoveryExporterError> append(ByteView data);

  // appendProven writes `data` as the whole content of a file still empty, for a caller that
  // has already proved these very bytes to have the SHA-256 `sha256` (a payload reader checks
  // each plaintext against its authenticated digest): the bytes are written once and not
  // hashed a second time, and finish compares that digest. A file that is not empty, or any
  // append after this one, fails with outputWriteFailed and aborts the file.
  [[nodiscard]] std::expected<void, RecoveryExporterError> appendProven(ByteView data,
                                                                        const platform::SHA256Digest& sha256);

  // finish compares the bytes written with `expectedByteCount` and `expectedSHA256`. If either
  // differs, the file is aborted and nothing is given: that is a result, not a failure. If both
  // agree, the file is synchronised to stable storage, checked to be a regular file of that
  // size, and closed; then it stays for good and its digest is given. A file already finished
  // or aborted, or a failure of those steps, is outputWriteFailed, and a failed file is aborted.
  [[nodiscard]] std::expected<std::optional<platform::SHA256Digest>, RecoveryExporterError> finish(
      std::uint64_t expectedByteCount, ByteView expectedSHA256);

  // abort closes the file if it is open and, unless finish succeeded, removes it, provided the
  // name still leads to the file this object created. A failure to remove is ignored.
  void abort() noexcept;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::uint64_t byteCount() const { return byteCount_; }
  [[nodiscard]] bool isCompleted() const { return completed_; }

 private:
  RecoveryOutputFile(std::filesystem::path path, platform::FileDescriptor descriptor, dev_t device, ino_t inode)
      : path_(std::move(path)), descriptor_(std::move(descriptor)), device_(device), inode_(inode) {}

  [[nodiscard]] std::expected<void, RecoveryExporterError> writeAndHash(ByteView data);
  [[nodiscard]] std::expected<void, RecoveryExporterError> makeDurable();
  void removeIfStillOurs() const noexcept;

  std::filesystem::path path_;
  platform::FileDescriptor descriptor_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
  std::uint64_t byteCount_ = 0;
  platform::SHA256::Hasher hasher_;
  std::optional<platform::SHA256Digest> provenSHA256_;  // set by appendProven, in place of the hasher
  bool completed_ = false;
  bool owned_ = true;  // false once moved from: nothing of the file is this object's any more
};

}  // namespace galdrine::recovery
