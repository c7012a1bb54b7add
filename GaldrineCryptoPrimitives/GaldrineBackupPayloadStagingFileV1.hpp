#pragma once
// GaldrineBackupPayloadStagingFileV1 is a payload file being written: a new file beside its
// destination, named "<final name>.<lower-case UUID>.partial", which becomes the final file
// only through publish. Until then the value owns the staging name and removes it when it goes
// away, on every way out; after publish it removes nothing. The parent directory is held open
// from the start, so every step, the move included, acts on that one directory.

#include <expected>
#include <filesystem>
#include <string>

#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"

class GaldrineBackupPayloadStagingFileV1 {
 public:
  // create checks that the destination's parent is a directory and no symbolic link
  // (invalidParentDirectory), opens it, and creates the staging file empty, refusing one that
  // exists, open for writing. A failed open, a failed random source (EIO) and a failed creation
  // give the file call's error; nothing is left behind.
  [[nodiscard]] static std::expected<GaldrineBackupPayloadStagingFileV1, GaldrineBackupPayloadV1Failure> create(
      const std::filesystem::path& destination);

  GaldrineBackupPayloadStagingFileV1(GaldrineBackupPayloadStagingFileV1&& other) noexcept;
  GaldrineBackupPayloadStagingFileV1& operator=(GaldrineBackupPayloadStagingFileV1&&) = delete;
  GaldrineBackupPayloadStagingFileV1(const GaldrineBackupPayloadStagingFileV1&) = delete;
  GaldrineBackupPayloadStagingFileV1& operator=(const GaldrineBackupPayloadStagingFileV1&) = delete;
  ~GaldrineBackupPayloadStagingFileV1();

  // append writes `bytes` at the present end of what was written.
  [[nodiscard]] std::expected<void, GaldrineBackupPayloadV1Failure> append(ByteView bytes);
  // overwriteStart writes `bytes` over the first bytes of the file.
  [[nodiscard]] std::expected<void, GaldrineBackupPayloadV1Failure> overwriteStart(ByteView bytes);
  // makeDurable synchronises the file, closes it (a failed close counts: the data may be lost),
  // and synchronises the directory (invalidParentDirectory if that fails).
  [[nodiscard]] std::expected<void, GaldrineBackupPayloadV1Failure> makeDurable();
  // publish moves the staging file to the final name unless something stands there
  // (destinationAlreadyExists, also when the move itself finds the name taken), and then
  // synchronises the directory (invalidParentDirectory). Once moved, the file is no longer
  // removed, whatever follows.
  [[nodiscard]] std::expected<void, GaldrineBackupPayloadV1Failure> publish();

  [[nodiscard]] int directory() const { return directory_.get(); }
  [[nodiscard]] const std::string& stagingName() const { return stagingName_; }
  [[nodiscard]] const std::string& finalName() const { return finalName_; }

 private:
  GaldrineBackupPayloadStagingFileV1(GaldrineFileDescriptor directory, GaldrineFileDescriptor file,
                                     std::string finalName, std::string stagingName);

  [[nodiscard]] std::expected<void, GaldrineBackupPayloadV1Failure> synchronizeDirectory() const;

  GaldrineFileDescriptor directory_;
  GaldrineFileDescriptor file_;
  std::string finalName_;
  std::string stagingName_;
  bool ownsStagingName_;
};
