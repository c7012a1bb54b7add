#include "backuptool/BackupSourceScan.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "format/manifest/BackupManifestFieldRulesV1.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/FileNameParts.hpp"
#include "platform/UTF8.hpp"
#include "platform/UniformType.hpp"

namespace galdrine::backuptool {

namespace BackupSourceScan {
namespace {

namespace fs = std::filesystem;
using Error = BackupSourceScanError;

struct DirectoryStreamClose {
  void operator()(DIR* stream) const { ::closedir(stream); }
};
using DirectoryStream = std::unique_ptr<DIR, DirectoryStreamClose>;

[[nodiscard]] std::string joined(std::string_view parent, std::string_view name) {
  return parent.empty() ? std::string(name) : std::string(parent) + "/" + std::string(name);
}

// millisecondsOf turns a modification time into milliseconds, clamped to the signed range so
// that an absurd clock value gives an extreme date rather than an overflow.
[[nodiscard]] std::int64_t millisecondsOf(const timespec& time) {
  constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 1000 - 1;
  const std::int64_t seconds = std::clamp<std::int64_t>(time.tv_sec, -limit, limit);
  return seconds * 1000 + time.tv_nsec / 1000000;
}

// mediaType gives the registered image or movie type of a file name's extension.
[[nodiscard]] std::optional<platform::UniformType> mediaType(std::string_view name) {
  const auto type = platform::UniformType::fromFileNameExtension(platform::FileNameParts::split(name).extension);
  if (!type || !(type->conformsToImage() || type->conformsToMovie())) return std::nullopt;
  return type;
}

// Walk carries the scan's budget and fills the source as it descends. Directories are entered
// through the descriptor of their parent, so no path is resolved twice.
class Walk {
 public:
  explicit Walk(BackupSource& source) : source_(source) {}

  [[nodiscard]] std::expected<void, Error> directory(int descriptor, const fs::path& path, std::size_t index) {
    auto names = visibleNames(descriptor);
    if (!names) return std::unexpected(names.error());
    for (const std::string& name : *names) {
      if (auto done = entry(descriptor, path, index, name); !done) return done;
    }
    return {};
  }

 private:
  // visibleNames lists the directory's names, hidden ones left out, ascending by bytes.
  [[nodiscard]] std::expected<std::vector<std::string>, Error> visibleNames(int descriptor) {
    const int duplicate = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) return std::unexpected(Error::unavailable);
    DirectoryStream stream(::fdopendir(duplicate));
    if (!stream) {
      ::close(duplicate);
      return std::unexpected(Error::unavailable);
    }
    std::vector<std::string> names;
    while (true) {
      errno = 0;
      const dirent* found = ::readdir(stream.get());
      if (found == nullptr) break;
      const std::string_view name(found->d_name);
      if (name.starts_with(".")) continue;
      if (++entryCount_ > maximumEntryCount) return std::unexpected(Error::tooLarge);
      names.emplace_back(name);
    }
    if (errno != 0) return std::unexpected(Error::unavailable);
    std::ranges::sort(names);
    return names;
  }

  [[nodiscard]] std::expected<void, Error> entry(int descriptor, const fs::path& path, std::size_t index,
                                                 const std::string& name) {
    struct stat status {};
    if (::fstatat(descriptor, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return skip();  // gone meanwhile
    if (S_ISDIR(status.st_mode)) return subdirectory(descriptor, path, index, name);
    if (S_ISREG(status.st_mode)) return file(path, index, name, status);
    return skip();
  }

  [[nodiscard]] std::expected<void, Error> subdirectory(int descriptor, const fs::path& path, std::size_t parent,
                                                        const std::string& name) {
    const std::size_t depth = source_.directories[parent].depth + 1;
    if (depth > maximumDirectoryDepth) return std::unexpected(Error::tooLarge);
    if (!format::BackupManifestFieldRulesV1::isName(name)) return skip();
    auto opened = platform::FileDescriptor::openAt(descriptor, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (!opened) return skip();
    const std::size_t index = source_.directories.size();
    source_.directories.push_back({name, joined(source_.directories[parent].relativePath, name), depth, {}, {}});
    source_.directories[parent].subdirectories.push_back(index);
    return directory(opened->get(), path / name, index);
  }

  [[nodiscard]] std::expected<void, Error> file(const fs::path& path, std::size_t index, const std::string& name,
                                                const struct stat& status) {
    if (!platform::UTF8::isValid(name)) return skip();
    const auto type = mediaType(name);
    if (!type) return skip();
    if (status.st_size <= 0) return skip();
    const auto byteCount = static_cast<std::uint64_t>(status.st_size);
    if (byteCount > format::BackupFormatV1::maximumBackupResourcePlaintextByteCount) return skip();
    totalByteCount_ += byteCount;  // at most 10^6 files below 2^36 bytes each: no overflow
    if (totalByteCount_ > maximumTotalByteCount) return std::unexpected(Error::tooLarge);
    BackupSourceDirectory& directory = source_.directories[index];
    directory.files.push_back({name, joined(directory.relativePath, name), path / name, std::string(type->identifier()),
                               type->conformsToMovie(), byteCount, millisecondsOf(status.st_mtim)});
    return {};
  }

  [[nodiscard]] std::expected<void, Error> skip() {
    ++source_.skippedEntryCount;
    return {};
  }

  BackupSource& source_;
  std::uint64_t entryCount_ = 0;
  std::uint64_t totalByteCount_ = 0;
};

}  // namespace

std::expected<BackupSource, BackupSourceScanError> scan(const fs::path& sourcePath) {
  // The source itself may be a link the user named; O_DIRECTORY still refuses anything else.
  auto root = platform::FileDescriptor::open(sourcePath, O_RDONLY | O_DIRECTORY);
  if (!root) return std::unexpected(Error::unavailable);
  BackupSource source;
  source.directories.push_back({});
  Walk walk(source);
  if (auto done = walk.directory(root->get(), sourcePath, 0); !done) return std::unexpected(done.error());
  return source;
}

}  // namespace BackupSourceScan

}  // namespace galdrine::backuptool
