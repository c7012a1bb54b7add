#include "platform/SHA256.hpp"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::platform {

using testsupport::FileFixtures::writeFile;

// The published SHA-256 examples (FIPS 180-2, appendix B) and the digest of the empty string.
// Streaming is held to the one-shot digest by the file digests below.
TEST(SHA256, GivesThePublishedDigests) {
  const std::pair<std::string, std::string_view> knownAnswers[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& [message, digest] : knownAnswers) {
    EXPECT_EQ(ByteText::lowerHex(SHA256::digest(ByteText::view(message))), digest);
  }
}

// Every chunk size, from single bytes to more than the file and the buffer ceiling, meets block
// and buffer boundaries in a different place and must give the digest of the whole content.
TEST(SHA256, FileDigestDoesNotDependOnTheChunkSize) {
  const testsupport::TemporaryDirectory directory;
  const std::pair<std::size_t, std::vector<std::int64_t>> cases[] = {
      {0, {1, SHA256::defaultReadChunkByteCount}},
      {4099, {1, 3, 63, 64, 65, 4098, 4099, 4100}},
      {2 * 1'048'576 + 37,
       {1'048'575, SHA256::defaultReadChunkByteCount, SHA256::maximumReadBufferByteCount + 1, INT64_MAX}},
  };
  std::mt19937 generator(20240229);
  for (const auto& [byteCount, chunkByteCounts] : cases) {
    Bytes content(byteCount);
    for (auto& byte : content) byte = static_cast<std::uint8_t>(generator());
    writeFile(directory / "file", content);
    for (const std::int64_t chunkByteCount : chunkByteCounts) {
      EXPECT_EQ(SHA256::digestOfFile(directory / "file", chunkByteCount), SHA256::digest(content))
          << byteCount << " bytes in chunks of " << chunkByteCount;
    }
  }
}

// The chunk size is judged before the file is touched; then the open, the kind of file and the
// read each give their errno. None of them leaves a descriptor open.
TEST(SHA256, FileFailuresInTheirOrderAndWithTheirErrno) {
  const testsupport::TemporaryDirectory directory;
  writeFile(directory / "regular", "abc");
  testsupport::FileFixtures::makeSymbolicLink(directory / "regular", directory / "link");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  const struct {
    std::filesystem::path path;
    std::int64_t chunkByteCount;
    SHA256Failure expected;
  } cases[] = {
      {directory / "missing", 0, SHA256Error::invalidReadChunkByteCount},
      {directory / "regular", -1, SHA256Error::invalidReadChunkByteCount},
      {directory / "missing", 1, FileError{ENOENT}},
      {directory / "link", 1, FileError{ELOOP}},
      {directory / "pipe", 1, FileError{EINVAL}},  // refused before a read that would never end
      {"/proc/self/mem", 4096, FileError{EIO}},    // a regular file whose first read fails
  };
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  for (const auto& failing : cases) {
    EXPECT_EQ(SHA256::digestOfFile(failing.path, failing.chunkByteCount), std::unexpected(failing.expected))
        << failing.path << " in chunks of " << failing.chunkByteCount;
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

}  // namespace galdrine::platform
