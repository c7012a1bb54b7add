#include "writer/BackupContentSource.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

BackupContentSource BackupContentSource::file(std::filesystem::path filePath) {
  return BackupContentSource(std::move(filePath));
}

BackupContentSource BackupContentSource::generated(std::uint64_t byteCount, Generator generator) {
  return BackupContentSource(Generated{byteCount, std::move(generator)});
}

std::expected<BackupContentReader, BackupWriterError> BackupContentReader::open(const BackupContentSource& source) {
  if (const auto* generated = std::get_if<BackupContentSource::Generated>(&source.content_))
    return BackupContentReader(source, platform::FileDescriptor(), generated->byteCount);
  const auto& filePath = std::get<std::filesystem::path>(source.content_);
  auto file = platform::FileDescriptor::open(filePath, O_RDONLY);
  if (!file) return std::unexpected(Error::contentUnavailable);
  const auto size = regularFileSize(file->get());
  if (!size) return std::unexpected(size.error());
  ::posix_fadvise(file->get(), 0, 0, POSIX_FADV_SEQUENTIAL);  // a hint only; its result changes nothing
  return BackupContentReader(source, std::move(*file), *size);
}

std::expected<void, BackupWriterError> BackupContentReader::read(std::span<std::uint8_t> into) {
  if (into.size() > byteCount_ - position_) return std::unexpected(Error::contentChanged);
  if (const auto* generated = std::get_if<BackupContentSource::Generated>(&source_.content_)) {
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
