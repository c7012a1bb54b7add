#include "support/FileFixtures.hpp"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <system_error>

namespace galdrine::testsupport {

namespace FileFixtures {

void writeFile(const std::filesystem::path& path, ByteView bytes) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!stream) ADD_FAILURE() << "cannot write " << path;
}

Bytes readFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

void makeDirectory(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::create_directory(path, error)) ADD_FAILURE() << "cannot create " << path;
}

void makeSymbolicLink(const std::filesystem::path& target, const std::filesystem::path& link) {
  std::error_code error;
  std::filesystem::create_symlink(target, link, error);
  if (error) ADD_FAILURE() << "cannot link " << link;
}

bool isDescriptorOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) != -1; }

ExhaustedDescriptors::ExhaustedDescriptors() {
  ::getrlimit(RLIMIT_NOFILE, &saved_);
  const int lowestFree = ::open("/dev/null", O_RDONLY);  // the kernel hands out the lowest free number
  ::close(lowestFree);
  rlimit lowered = saved_;
  lowered.rlim_cur = static_cast<rlim_t>(lowestFree);
  if (lowestFree < 0 || ::setrlimit(RLIMIT_NOFILE, &lowered) != 0) ADD_FAILURE() << "cannot lower the descriptor limit";
}

ExhaustedDescriptors::~ExhaustedDescriptors() { ::setrlimit(RLIMIT_NOFILE, &saved_); }

LimitedFileSize::LimitedFileSize(rlim_t byteCount) {
  ::getrlimit(RLIMIT_FSIZE, &saved_);
  savedHandler_ = ::signal(SIGXFSZ, SIG_IGN);
  rlimit lowered = saved_;
  lowered.rlim_cur = byteCount;
  if (::setrlimit(RLIMIT_FSIZE, &lowered) != 0) ADD_FAILURE() << "cannot lower the file size limit";
}

LimitedFileSize::~LimitedFileSize() {
  ::setrlimit(RLIMIT_FSIZE, &saved_);
  ::signal(SIGXFSZ, savedHandler_);
}

}  // namespace FileFixtures

}  // namespace galdrine::testsupport
