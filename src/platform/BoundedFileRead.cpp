#include "platform/BoundedFileRead.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"

namespace galdrine::platform {

namespace {

using Kind = BoundedFileReadFault::Kind;

std::unexpected<BoundedFileReadFault> fault(Kind kind, std::int32_t errorNumber = 0) {
  return std::unexpected(BoundedFileReadFault{kind, errorNumber});
}

}  // namespace

namespace Files {

std::expected<Bytes, BoundedFileReadFault> readBoundedRegularFile(const std::filesystem::path& path,
                                                                        std::size_t minimumByteCount,
                                                                        std::size_t maximumByteCount) {
  // Non-blocking, so that a pipe put in the file's place cannot stall the open.
  const auto descriptor = FileDescriptor::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return fault(Kind::openFailed, descriptor.error().errorNumber);
  struct stat status {};
  if (::fstat(descriptor->get(), &status) != 0) return fault(Kind::statusFailed, errno);
  if (!S_ISREG(status.st_mode)) return fault(Kind::notRegularFile);
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (status.st_size < 0 || size < minimumByteCount || size > maximumByteCount) return fault(Kind::sizeOutOfRange);
  // One byte past the bound tells a file that grew after fstat from one that did not.
  const auto bytes = readUpTo(descriptor->get(), maximumByteCount + 1);
  if (!bytes) return fault(Kind::readFailed, bytes.error().errorNumber);
  if (bytes->size() != size) return fault(Kind::sizeChanged);
  return *bytes;
}

}  // namespace Files

}  // namespace galdrine::platform
