// Looking at one payload file: streaming in 1 MiB pieces, a file that changes while it is
// hashed, and the shapes that only this suite can make.

#include "recovery/inspection/PayloadObservation.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/SHA256.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace fs = std::filesystem;
using namespace testsupport::FileFixtures;
using Observation = PayloadObservation;
constexpr std::size_t kPiece = PayloadFileExaminations::readPieceByteCount;

[[nodiscard]] Bytes patterned(std::size_t byteCount) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index)
    bytes[index] = static_cast<std::uint8_t>(index * 7 + index / 251);
  return bytes;
}

class PayloadObservationTest : public testing::Test {
 protected:
  [[nodiscard]] Observation observe(const fs::path& path, ByteView expected,
                                    const RecoveryPayloadReadObserver& observer = {}) {
    const auto digest = platform::SHA256::digest(expected);
    return PayloadObservations::observation(
        PayloadFileExaminations::examine(path, expected.size(), digest, buffer_, observer));
  }

  testsupport::TemporaryDirectory directory_;
  std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(kPiece);
};

// The inspector's suite damages payload files in every other way; what it cannot make is a
// fifo, which must be judged without waiting for a writer, or an expectation of no bytes.
TEST_F(PayloadObservationTest, AFifoAndAnExpectationOfNoBytesAreMismatched) {
  ASSERT_EQ(::mkfifo((directory_ / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(observe(directory_ / "fifo", patterned(10)), Observation::mismatched);
  writeFile(directory_ / "empty", "");
  EXPECT_EQ(observe(directory_ / "empty", {}), Observation::mismatched);
}

TEST_F(PayloadObservationTest, AFileIsStreamedInWholePiecesUntilAReadGivesNothing) {
  for (const std::size_t byteCount : {std::size_t{1}, kPiece - 1, kPiece, kPiece + 1, 2 * kPiece + kPiece / 2}) {
    const Bytes content = patterned(byteCount);
    writeFile(directory_ / "file", content);
    std::vector<std::size_t> reads;
    const auto observation =
        observe(directory_ / "file", content, [&](const fs::path&, std::size_t read) { reads.push_back(read); });
    EXPECT_EQ(observation, Observation::matching) << byteCount;
    std::vector<std::size_t> expected(byteCount / kPiece, kPiece);
    if (byteCount % kPiece != 0) expected.push_back(byteCount % kPiece);
    expected.push_back(0);
    EXPECT_EQ(reads, expected) << byteCount;
  }
}

TEST_F(PayloadObservationTest, AFileThatChangesWhileItIsHashedIsUnreadable) {
  const Bytes content = patterned(2 * kPiece);
  const fs::path path = directory_ / "file";
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"rewritten with a new time",
       [&] {
         const timespec times[2] = {{0, UTIME_OMIT}, {12345, 678}};
         ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
       }},
      {"grown", [&] { fs::resize_file(path, content.size() + 10); }},
      {"shrunk", [&] { fs::resize_file(path, content.size() - 10); }},
  };
  for (const auto& [name, change] : changes) {
    writeFile(path, content);
    int readCount = 0;
    EXPECT_EQ(observe(path, content,
                      [&](const fs::path&, std::size_t) {
                        if (++readCount == 1) change();
                      }),
              Observation::unreadable)
        << name;
  }
}

}  // namespace

}  // namespace galdrine::recovery
