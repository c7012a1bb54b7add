#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/SHA256.hpp"
#include "support/HexBytes.hpp"

namespace galdrine::platform {

namespace {

std::string hexOf(const SHA256Digest& digest) { return ByteText::lowerHex(digest); }

// The published SHA-256 examples (FIPS 180-2, appendix B) and the digest of the empty string.
struct KnownAnswer {
  std::string_view name;
  std::string message;
  std::string_view digest;
};

const KnownAnswer kKnownAnswers[] = {
    {"empty", "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
    {"one block", "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {"448-bit message", "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
     "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    {"one million a", std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
};

TEST(SHA256, OneShotGivesThePublishedDigests) {
  for (const KnownAnswer& vector : kKnownAnswers) {
    SCOPED_TRACE(vector.name);
    EXPECT_EQ(hexOf(SHA256::digest(ByteText::view(vector.message))), vector.digest);
  }
}

// Pieces of odd, growing lengths cross every block boundary in a different place, and empty
// pieces in between must change nothing.
TEST(SHA256, StreamingInOddPiecesGivesThePublishedDigests) {
  for (const KnownAnswer& vector : kKnownAnswers) {
    SCOPED_TRACE(vector.name);
    const ByteView message = ByteText::view(vector.message);
    SHA256::Hasher hasher;
    std::size_t offset = 0;
    for (std::size_t pieceByteCount = 1; offset < message.size(); pieceByteCount += 2) {
      const std::size_t taken = std::min(pieceByteCount, message.size() - offset);
      hasher.update(message.subspan(offset, taken));
      hasher.update({});
      offset += taken;
    }
    EXPECT_EQ(hexOf(hasher.finalize()), vector.digest);
  }
}

TEST(SHA256, AMovedHasherKeepsItsState) {
  SHA256::Hasher first;
  first.update(ByteText::view("ab"));
  SHA256::Hasher second = std::move(first);
  second.update(ByteText::view("c"));
  EXPECT_EQ(hexOf(second.finalize()), kKnownAnswers[1].digest);
}

}  // namespace

}  // namespace galdrine::platform
