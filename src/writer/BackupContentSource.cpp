#include "writer/BackupContentSource.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace galdrine::writer {

namespace {

using Error = BackupWriterError;

[[nodiscard]] std::expected<std::uint64_t, Error> regularFileSize(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0)
    return std::unexpected(Error::contentUnavailable);
  return static_cast<std::uint64_t>(status.st_size);
}

}  // namespace

BackupContentSource BackupContentSource::bytes(Bytes content) {
  return BackupContentSource(std::make_shared<const Bytes>(std::move(content)));
}

BackupContentSource BackupContentSource::file(std::filesystem::path path) {
  return BackupContentSource(std::move(path));
}

BackupContentSource BackupContentSource::generated(std::uint64_t byteCount, Generator generator) {
  return BackupContentSource(Generated{byteCount, std::move(generator)});
}

BackupContentSource BackupContentSource::retained() {
  return BackupContentSource(Retained{});
}

std::expected<BackupContentReader, BackupWriterError> BackupContentReader::open(
    const BackupContentSource& source) {
  using Source = BackupContentSource;
  if (const auto* buffer = std::get_if<std::shared_ptr<const Bytes>>(&source.content_))
    return BackupContentReader(source, platform::FileDescriptor(), (*buffer)->size());
  if (const auto* generated = std::get_if<Source::Generated>(&source.content_))
    return BackupContentReader(source, platform::FileDescriptor(), generated->byteCount);
  const auto* path = std::get_if<std::filesystem::path>(&source.content_);
  if (path == nullptr) return std::unexpected(Error::contentUnavailable);
  auto file = platform::FileDescriptor::open(*path, O_RDONLY);
  if (!file) return std::unexpected(Error::contentUnavailable);
  const auto size = regularFileSize(file->get());
  if (!size) return std::unexpected(size.error());
  ::posix_fadvise(file->get(), 0, 0, POSIX_FADV_SEQUENTIAL);  // a hint only; its result changes nothing
  return BackupContentReader(source, std::move(*file), *size);
}

std::expected<void, BackupWriterError> BackupContentReader::read(std::span<std::uint8_t> into) {
  using Source = BackupContentSource;
  if (into.size() > byteCount_ - position_) return std::unexpected(Error::contentChanged);
  if (const auto* buffer = std::get_if<std::shared_ptr<const Bytes>>(&source_.content_)) {
    std::copy_n((*buffer)->begin() + static_cast<std::ptrdiff_t>(position_), into.size(), into.begin());
  } else if (const auto* generated = std::get_if<Source::Generated>(&source_.content_)) {
    generated->generator(position_, into);
  } else if (auto done = readFile(into); !done) {
    return done;
  }
  position_ += into.size();
  return {};
}

std::expected<void, BackupWriterError> BackupContentReader::readFile(std::span<std::uint8_t> into) {
  std::size_t filled = 0;
  while (filled < into.size()) {
    const ssize_t count = ::read(file_.get(), into.data() + filled, into.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::unexpected(Error::contentUnavailable);
    if (count == 0) return std::unexpected(Error::contentChanged);  // the file ended before its length
    filled += static_cast<std::size_t>(count);
  }
  return {};
}

std::expected<void, BackupWriterError> BackupContentReader::finish() {
  if (position_ != byteCount_) return std::unexpected(Error::contentChanged);
  if (!file_.isOpen()) return {};
  std::uint8_t beyond = 0;
  ssize_t count = 0;
  do {
    count = ::read(file_.get(), &beyond, 1);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::unexpected(Error::contentUnavailable);
  const auto size = regularFileSize(file_.get());
  if (count != 0 || !size || *size != byteCount_) return std::unexpected(Error::contentChanged);
  return {};
}

}  // namespace galdrine::writer
