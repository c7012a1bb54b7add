#include "recovery/export/RecoveryOutputFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/Files.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;

// O_CLOEXEC is added by FileDescriptor. O_EXCL with O_CREAT refuses anything that
// stands at the path, a dangling symbolic link included, and O_NOFOLLOW refuses to go through
// a link in the last component.
constexpr int outputFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
constexpr mode_t outputFileMode = 0600;

// Bytes go to the file and into the hash in slices of this size, so that the hash reads each
// slice while the write has just brought it into the cache, instead of reading a whole part
// of up to 16 MiB from memory a second time.
constexpr std::size_t hashingSliceByteCount = std::size_t{1} << 20;

[[nodiscard]] std::unexpected<Error> writeFailed() { return std::unexpected(Error::outputWriteFailed); }

}  // namespace

std::expected<RecoveryOutputFile, Error> RecoveryOutputFile::create(const std::filesystem::path& path) {
  auto descriptor = platform::FileDescriptor::open(path, outputFileFlags, outputFileMode);
  if (!descriptor) return writeFailed();
  struct stat status {};
  if (::fstat(descriptor->get(), &status) != 0) {
    // The file was created by this call a moment ago and cannot be told apart any more.
    ::unlink(path.c_str());
    return writeFailed();
  }
  return RecoveryOutputFile(path, std::move(*descriptor), status.st_dev, status.st_ino);
}

RecoveryOutputFile::RecoveryOutputFile(RecoveryOutputFile&& other) noexcept
    : path_(std::move(other.path_)),
      descriptor_(std::move(other.descriptor_)),
      device_(other.device_),
      inode_(other.inode_),
      byteCount_(other.byteCount_),
      hasher_(std::move(other.hasher_)),
      provenSHA256_(other.provenSHA256_),
      completed_(other.completed_),
      owned_(std::exchange(other.owned_, false)) {}

RecoveryOutputFile& RecoveryOutputFile::operator=(RecoveryOutputFile&& other) noexcept {
  if (this != &other) {
    abort();
    path_ = std::move(other.path_);
    descriptor_ = std::move(other.descriptor_);
    device_ = other.device_;
    inode_ = other.inode_;
    byteCount_ = other.byteCount_;
    hasher_ = std::move(other.hasher_);
    provenSHA256_ = other.provenSHA256_;
    completed_ = other.completed_;
    owned_ = std::exchange(other.owned_, false);
  }
  return *this;
}

std::expected<void, Error> RecoveryOutputFile::append(ByteView data) {
  const bool fits = data.size() <= std::numeric_limits<std::uint64_t>::max() - byteCount_;
  if (!descriptor_.isOpen() || !fits || provenSHA256_ || !writeAndHash(data)) {
    abort();
    return writeFailed();
  }
  // Write-back starts now rather than at finish, so the disk works while the next part is
  // decrypted and the final fsync waits for little.
  platform::Files::startWriteBack(descriptor_.get(), byteCount_, data.size());
  byteCount_ += data.size();
  return {};
}

std::expected<void, Error> RecoveryOutputFile::appendProven(ByteView data, const platform::SHA256Digest& sha256) {
  if (!descriptor_.isOpen() || byteCount_ != 0 || provenSHA256_ ||
      !platform::Files::writeAll(descriptor_.get(), data)) {
    abort();
    return writeFailed();
  }
  provenSHA256_ = sha256;
  platform::Files::startWriteBack(descriptor_.get(), 0, data.size());
  byteCount_ = data.size();
  return {};
}

std::expected<void, Error> RecoveryOutputFile::writeAndHash(ByteView data) {
  for (std::size_t offset = 0; offset < data.size(); offset += hashingSliceByteCount) {
    const ByteView slice = data.subspan(offset, std::min(hashingSliceByteCount, data.size() - offset));
    if (!platform::Files::writeAll(descriptor_.get(), slice)) return writeFailed();
    hasher_.update(slice);
  }
  return {};
}

std::expected<std::optional<platform::SHA256Digest>, Error> RecoveryOutputFile::finish(std::uint64_t expectedByteCount,
                                                                                       ByteView expectedSHA256) {
  if (!descriptor_.isOpen()) return writeFailed();
  // Every way out of here closes the file for good, so the hash state is finalised only once.
  const platform::SHA256Digest digest = provenSHA256_ ? *provenSHA256_ : hasher_.finalize();
  if (byteCount_ != expectedByteCount || !ByteOrder::equal(digest, expectedSHA256)) {
    abort();
    return std::optional<platform::SHA256Digest>{};
  }
  if (!makeDurable()) {
    abort();
    return writeFailed();
  }
  completed_ = true;
  return std::optional<platform::SHA256Digest>{digest};
}

std::expected<void, Error> RecoveryOutputFile::makeDurable() {
  if (!platform::Files::synchronizeFile(descriptor_.get())) return writeFailed();
  struct stat status {};
  if (::fstat(descriptor_.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      static_cast<std::uint64_t>(status.st_size) != byteCount_) {
    return writeFailed();
  }
  if (!descriptor_.close()) return writeFailed();
  return {};
}

void RecoveryOutputFile::abort() noexcept {
  if (!owned_) return;
  static_cast<void>(descriptor_.close());  // an unfinished file is removed below; a finished one was closed already
  if (!completed_) removeIfStillOurs();
  owned_ = false;  // done for good: a later inode of the same number is never taken for ours
}

void RecoveryOutputFile::removeIfStillOurs() const noexcept {
  // Only the file this object created is removed: if something else took its name meanwhile,
  // it is not ours to delete.
  struct stat status {};
  if (::lstat(path_.c_str(), &status) != 0) return;
  if (!S_ISREG(status.st_mode) || status.st_dev != device_ || status.st_ino != inode_) return;
  ::unlink(path_.c_str());
}

}  // namespace galdrine::recovery
