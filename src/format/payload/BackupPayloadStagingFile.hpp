#pragma once
// BackupPayloadStagingFile is a payload file being written: a new file beside its
// destination, named "<final name>.<lower-case UUID>.partial", which becomes the final file
// only through publish. Until then the value owns the staging name and removes it when it goes
// away, on every way out; after publish it removes nothing. The parent directory is held open
// from the start, so every step, the move included, acts on that one directory.

#include <expected>
#include <filesystem>
#include <string>

#include "format/payload/BackupPayloadV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/FileDescriptor.hpp"

namespace galdrine::format {

class BackupPayloadStagingFile {
 public:
  // create checks that the destination's parent is a directory and no symbolic link
  // (invalidParentDirectory), opens it, and creates the staging file empty, refusing one that
  // exists, open for writing. A failed open, a failed random source (EIO) and a failed creation
  // give the file call's error; nothing is left behind.
  [[nodiscard]] static std::expected<BackupPayloadStagingFile, BackupPayloadV1Failure> create(
      const std::filesystem::path& destination);

  BackupPayloadStagingFile(BackupPayloadStagingFile&& other) noexcept;
  BackupPayloadStagingFile& operator=(BackupPayloadStagingFile&&) = delete;
  BackupPayloadStagingFile(const BackupPayloadStagingFile&) = delete;
  BackupPayloadStagingFile& operator=(const BackupPayloadStagingFile&) = delete;
  ~BackupPayloadStagingFile();

  // append writes `bytes` at the present end of what was written.
  [[nodiscard]] std::expected<void, BackupPayloadV1Failure> append(ByteView bytes);
  // overwriteStart writes `bytes` over the first bytes of the file.
  [[nodiscard]] std::expected<void, BackupPayloadV1Failure> overwriteStart(ByteView bytes);
  // makeDurable synchronises the file, closes it (a failed close counts: the data may be lost),
  // and synchronises the directory (invalidParentDirectory if that fails).
  [[nodiscard]] std::expected<void, BackupPayloadV1Failure> makeDurable();
  // publish moves the staging file to the final name unless something stands there
  // (destinationAlreadyExists, also when the move itself finds the name taken), and then
  // synchronises the directory (invalidParentDirectory). Once moved, the file is no longer
  // removed, whatever follows.
  [[nodiscard]] std::expected<void, BackupPayloadV1Failure> publish();

  [[nodiscard]] int directory() const { return directory_.get(); }
  [[nodiscard]] const std::string& stagingName() const { return stagingName_; }
  [[nodiscard]] const std::string& finalName() const { return finalName_; }

 private:
  BackupPayloadStagingFile(platform::FileDescriptor directory, platform::FileDescriptor file, std::string finalName,
                           std::string stagingName);

  [[nodiscard]] std::expected<void, BackupPayloadV1Failure> synchronizeDirectory() const;

  platform::FileDescriptor directory_;
  platform::FileDescriptor file_;
  std::string finalName_;
  std::string stagingName_;
  bool ownsStagingName_;
};

}  // namespace galdrine::format
