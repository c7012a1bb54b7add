// Looking at one payload file: every shape a file can take in its place, streaming in 1 MiB
// pieces, a file that changes while it is hashed, and the evidence counted from it all.

#include "recovery/inspection/PayloadObservation.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
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
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(index * 7 + index / 251);
  return bytes;
}

class PayloadObservationTest : public testing::Test {
 protected:
  [[nodiscard]] Observation observe(const fs::path& path, ByteView expected, const RecoveryPayloadReadObserver& observer = {}) {
    const auto digest = platform::SHA256::digest(expected);
    return PayloadObservations::observation(PayloadFileExaminations::examine(path, expected.size(), digest, buffer_, observer));
  }

  testsupport::TemporaryDirectory directory_;
  std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(kPiece);
};

TEST_F(PayloadObservationTest, EachShapeInAPayloadFilesPlaceHasItsObservation) {
  const Bytes content = patterned(5000);
  Bytes altered = content;
  altered[4321] ^= 0x40;
  writeFile(directory_ / "matching", content);
  writeFile(directory_ / "altered", altered);
  writeFile(directory_ / "shorter", ByteView(content).first(4999));
  writeFile(directory_ / "empty", "");
  makeDirectory(directory_ / "directory");
  makeSymbolicLink(directory_ / "matching", directory_ / "link");
  makeSymbolicLink(directory_ / "nowhere", directory_ / "dangling");
  ASSERT_EQ(::mkfifo((directory_ / "fifo").c_str(), 0600), 0);
  const std::map<std::string, Observation> cases{
      {"matching", Observation::matching},  {"absent", Observation::missing},       {"altered", Observation::mismatched},
      {"shorter", Observation::mismatched}, {"empty", Observation::mismatched},     {"directory", Observation::mismatched},
      {"fifo", Observation::mismatched},    {"link", Observation::unreadable},      {"dangling", Observation::unreadable}};
  for (const auto& [name, observation] : cases) EXPECT_EQ(observe(directory_ / name, content), observation) << name;
  // An expectation of zero bytes never matches, even an empty file.
  EXPECT_EQ(observe(directory_ / "empty", {}), Observation::mismatched);
}

TEST_F(PayloadObservationTest, AFileIsStreamedInWholePiecesUntilAReadGivesNothing) {
  for (const std::size_t byteCount : {std::size_t{1}, kPiece - 1, kPiece, kPiece + 1, 2 * kPiece + kPiece / 2}) {
    const Bytes content = patterned(byteCount);
    writeFile(directory_ / "file", content);
    std::vector<std::size_t> reads;
    const auto observation = observe(directory_ / "file", content, [&](const fs::path&, std::size_t read) { reads.push_back(read); });
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
    EXPECT_EQ(observe(path, content, [&](const fs::path&, std::size_t) { if (++readCount == 1) change(); }),
              Observation::unreadable)
        << name;
  }
}

TEST(PayloadFileEvidenceTest, CountsAddUpAndAFileNotObservedIsUnreadable) {
  PayloadExpectationMap expectations;
  PayloadObservationMap observations;
  const Observation kinds[] = {Observation::matching, Observation::missing, Observation::mismatched, Observation::unreadable};
  for (std::uint8_t index = 0; index < 11; ++index) {
    expectations.emplace(Bytes(16, index), PayloadExpectation{format::BackupPayloadContainerKindV1::pack, 1, Bytes(32, 0)});
    if (index < 8) observations.emplace(Bytes(16, index), kinds[index % 4]);
  }
  observations.emplace(Bytes(16, 0xEE), Observation::matching);  // required by another snapshot only
  EXPECT_EQ(payloadFileEvidence(expectations, observations), (RecoveryPayloadFileEvidence{11, 2, 2, 2, 5}));
  EXPECT_EQ(payloadFileEvidence({}, observations), RecoveryPayloadFileEvidence{});
}

}  // namespace

}  // namespace galdrine::recovery
