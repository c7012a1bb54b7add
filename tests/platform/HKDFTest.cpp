#include "platform/HKDF.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <string>

namespace galdrine::platform {

namespace {

Bytes counting(std::uint8_t first, std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

// RFC 5869, appendix A, test cases 1 to 3 (SHA-256).
const struct {
  std::string_view name;
  Bytes inputKeyMaterial, salt, info;
  std::string_view outputKeyMaterial;
} kKnownAnswers[] = {
    {"basic", Bytes(22, 0x0b), counting(0x00, 13), counting(0xf0, 10),
     "3cb25f25faacd57a90434f64d0362f2a 2d2d0a90cf1a5a4c5db02d56ecc4c5bf 34007208d5b887185865"},
    {"longer inputs and outputs", counting(0x00, 80), counting(0x60, 80), counting(0xb0, 80),
     "b11e398dc80327a1c8e7f78c596a4934 4f012eda2d4efad8a050cc4c19afa97c 59045a99cac7827271cb41c65e590e09"
     "da3275600c2f09b8367793a9aca3db71 cc30c58179ec3e87c14c01d5c1f3434f 1d87"},
    {"empty salt and info",
     Bytes(22, 0x0b),
     {},
     {},
     "8da4e775a563c18f715f802a063c5a31 b8a11f5c5ee1879ec3454e5f3c738d2d 9d201395faa4b61a96c8"},
};

TEST(HKDF, DerivesThePublishedVectors) {
  for (const auto& vector : kKnownAnswers) {
    std::string expected(vector.outputKeyMaterial);
    std::erase(expected, ' ');
    Bytes output(expected.size() / 2, 0xAA);
    ASSERT_TRUE(HKDF::deriveSHA256(vector.inputKeyMaterial, vector.salt, vector.info, output)) << vector.name;
    EXPECT_EQ(ByteText::lowerHex(output), expected) << vector.name;
  }
}

// A refused derivation (more than 255 blocks) leaves nothing of a key behind.
TEST(HKDF, ZeroesARefusedOutput) {
  Bytes tooLong(255 * 32 + 1, 0xAA);
  EXPECT_FALSE(HKDF::deriveSHA256(Bytes(32, 1), {}, {}, tooLong));
  EXPECT_EQ(tooLong, Bytes(tooLong.size(), 0));
}

}  // namespace

}  // namespace galdrine::platform
