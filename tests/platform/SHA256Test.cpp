#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <random>

#include "platform/SHA256File.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

namespace {

void writeFile(const std::filesystem::path& path, const Bytes& content) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}

Bytes pseudoRandomBytes(std::size_t count) {
  std::mt19937 generator(20240229);
  Bytes bytes(count);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(generator());
  return bytes;
}

SHA256FileFailure failureOf(const std::expected<Bytes, SHA256FileFailure>& result) {
  EXPECT_FALSE(result.has_value());
  return result.has_value() ? SHA256FileFailure{} : result.error();
}

TEST(SHA256File, DigestOfBytesIsThe32ByteSHA256) {
  EXPECT_EQ(ByteText::lowerHex(SHA256File::digest(ByteText::view("abc"))),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

// Every chunk size, from single bytes to more than the file, meets block and buffer boundaries
// in a different place and must give the digest of the whole content.
TEST(SHA256File, FileDigestDoesNotDependOnTheChunkSize) {
  testsupport::TemporaryDirectory directory;
  struct Case {
    std::size_t fileByteCount;
    std::vector<std::int64_t> chunkByteCounts;
  };
  const Case cases[] = {
      {0, {1, 64, SHA256File::defaultReadChunkByteCount}},
      {4099, {1, 3, 63, 64, 65, 4098, 4099, 4100, SHA256File::defaultReadChunkByteCount}},
      {2 * 1'048'576 + 37, {1'048'575, SHA256File::defaultReadChunkByteCount, 3 * 1'048'576, INT64_MAX}},
  };
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  for (const Case& fileCase : cases) {
    const Bytes content = pseudoRandomBytes(fileCase.fileByteCount);
    const auto path = directory / ("file-" + std::to_string(fileCase.fileByteCount));
    writeFile(path, content);
    for (const std::int64_t chunkByteCount : fileCase.chunkByteCounts) {
      SCOPED_TRACE(testing::Message() << fileCase.fileByteCount << " bytes in chunks of " << chunkByteCount);
      const auto digest = SHA256File::digest(path, chunkByteCount);
      ASSERT_TRUE(digest.has_value());
      EXPECT_EQ(*digest, SHA256File::digest(content));
    }
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
  EXPECT_EQ(ByteText::lowerHex(*SHA256File::digest(directory / "file-0")),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

// Each failure names its exact value, and none of them leaves a descriptor open.
TEST(SHA256File, FileFailuresInTheirOrderAndWithTheirErrno) {
  testsupport::TemporaryDirectory directory;
  writeFile(directory / "regular", {1, 2, 3});
  std::filesystem::create_symlink(directory / "regular", directory / "link");
  std::filesystem::create_directory(directory / "folder");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);

  struct Case {
    std::string_view name;
    std::filesystem::path path;
    std::int64_t chunkByteCount;
    SHA256FileFailure expected;
  };
  const Case cases[] = {
      {"chunk 0 on a missing file", directory / "missing", 0, SHA256FileError::invalidReadChunkByteCount},
      {"chunk -1 on a regular file", directory / "regular", -1, SHA256FileError::invalidReadChunkByteCount},
      {"chunk minimum on a regular file", directory / "regular", INT64_MIN,
       SHA256FileError::invalidReadChunkByteCount},
      {"missing file", directory / "missing", 1, FileError{ENOENT}},
      {"symbolic link to a regular file", directory / "link", 1, FileError{ELOOP}},
      {"directory", directory / "folder", 1, FileError{EINVAL}},
      {"pipe without a writer", directory / "pipe", 1, FileError{EINVAL}},
      {"character device", "/dev/zero", 1, FileError{EINVAL}},
      // A regular file of the process filesystem whose first read fails.
      {"unreadable content", "/proc/self/mem", 4096, FileError{EIO}},
  };
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  for (const Case& failing : cases) {
    SCOPED_TRACE(failing.name);
    EXPECT_EQ(failureOf(SHA256File::digest(failing.path, failing.chunkByteCount)), failing.expected);
    EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
  }
}

}  // namespace

}  // namespace galdrine::platform
