#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "platform/AESGCM.hpp"
#include "support/HexBytes.hpp"

namespace galdrine::platform {

namespace {

struct KnownAnswer {
  std::string_view name;
  std::string_view key, nonce, authenticatedData, plaintext, ciphertext, tag;
};

// The AES-256 cases of the published GCM test vectors (McGrew and Viega, test cases 13 to 16).
// Cases 17 and 18 use 8- and 60-byte IVs, which this layer refuses by design.
constexpr std::string_view kZeroKey = "0000000000000000000000000000000000000000000000000000000000000000";
constexpr std::string_view kKey = "feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308";
constexpr std::string_view kPlaintext =
    "d9313225f88406e5a55909c5aff5269a 86a7a9531534f7da2e4c303d8a318a72"
    "1c3c0c95956809532fcf0e2449a6b525 b16aedf5aa0de657ba637b391aafd255";
constexpr std::string_view kCiphertext =
    "522dc1f099567d07f47f37a32a84427d 643a8cdcbfe5c0c97598a2bd2555d1aa"
    "8cb08e48590dbb3da7b08b1056828838 c5f61e6393ba7a0abcc9f662898015ad";

const KnownAnswer kKnownAnswers[] = {
    {"case 13: empty plaintext", kZeroKey, "000000000000000000000000", "", "", "",
     "530f8afbc74536b9a963b4f1c4cb738b"},
    {"case 14: one zero block", kZeroKey, "000000000000000000000000", "", "00000000000000000000000000000000",
     "cea7403d4d606b6e074ec5d3baf39d18", "d0d1c8a799996bf0265b98b5d48ab919"},
    {"case 15: four blocks", kKey, "cafebabefacedbaddecaf888", "", kPlaintext, kCiphertext,
     "b094dac5d93471bdec1a502270e3cc6c"},
    {"case 16: partial block with authenticated data", kKey, "cafebabefacedbaddecaf888",
     "feedfacedeadbeeffeedfacedeadbeefabaddad2",
     "d9313225f88406e5a55909c5aff5269a 86a7a9531534f7da2e4c303d8a318a72"
     "1c3c0c95956809532fcf0e2449a6b525 b16aedf5aa0de657ba637b39",
     "522dc1f099567d07f47f37a32a84427d 643a8cdcbfe5c0c97598a2bd2555d1aa"
     "8cb08e48590dbb3da7b08b1056828838 c5f61e6393ba7a0abcc9f662",
     "76fc6ece0f4e1768cddf8853bb2d551b"},
};

TEST(AESGCM, SealsAndOpensThePublishedVectors) {
  for (const KnownAnswer& vector : kKnownAnswers) {
    SCOPED_TRACE(vector.name);
    const Bytes key = testsupport::hexBytes(vector.key), nonce = testsupport::hexBytes(vector.nonce);
    const Bytes authenticatedData = testsupport::hexBytes(vector.authenticatedData), plaintext = testsupport::hexBytes(vector.plaintext);
    const Bytes expectedCiphertext = testsupport::hexBytes(vector.ciphertext), expectedTag = testsupport::hexBytes(vector.tag);

    Bytes ciphertext(plaintext.size()), tag(AESGCM::tagByteCount);
    ASSERT_TRUE(AESGCM::seal(key, nonce, authenticatedData, plaintext, ciphertext, tag));
    EXPECT_EQ(ciphertext, expectedCiphertext);
    EXPECT_EQ(tag, expectedTag);

    Bytes opened(expectedCiphertext.size(), 0xAA);
    ASSERT_TRUE(AESGCM::open(key, nonce, authenticatedData, expectedCiphertext, expectedTag, opened));
    EXPECT_EQ(opened, plaintext);
  }
}

bool isZero(const Bytes& bytes) {
  return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

// Flips every bit of `target` in turn and expects open to refuse each variant and leave the
// plaintext buffer all zero, although decryption writes into it before the tag is checked.
template <typename OpenWith>
void expectEveryBitFlipRefused(Bytes target, std::size_t plaintextByteCount, OpenWith openWith) {
  for (std::size_t bit = 0; bit < target.size() * 8; ++bit) {
    target[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    Bytes plaintext(plaintextByteCount, 0xAA);
    EXPECT_FALSE(openWith(target, plaintext)) << "bit " << bit;
    EXPECT_TRUE(isZero(plaintext)) << "bit " << bit;
    target[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
  }
}

TEST(AESGCM, EveryTamperedBitIsRefusedAndLeavesNoPlaintext) {
  const KnownAnswer& vector = kKnownAnswers[3];
  const Bytes key = testsupport::hexBytes(vector.key), nonce = testsupport::hexBytes(vector.nonce);
  const Bytes authenticatedData = testsupport::hexBytes(vector.authenticatedData);
  const Bytes ciphertext = testsupport::hexBytes(vector.ciphertext), tag = testsupport::hexBytes(vector.tag);
  const std::size_t length = ciphertext.size();

  expectEveryBitFlipRefused(ciphertext, length, [&](const Bytes& tampered, Bytes& plaintext) {
    return AESGCM::open(key, nonce, authenticatedData, tampered, tag, plaintext);
  });
  expectEveryBitFlipRefused(tag, length, [&](const Bytes& tampered, Bytes& plaintext) {
    return AESGCM::open(key, nonce, authenticatedData, ciphertext, tampered, plaintext);
  });
  expectEveryBitFlipRefused(authenticatedData, length, [&](const Bytes& tampered, Bytes& plaintext) {
    return AESGCM::open(key, nonce, tampered, ciphertext, tag, plaintext);
  });
  expectEveryBitFlipRefused(nonce, length, [&](const Bytes& tampered, Bytes& plaintext) {
    return AESGCM::open(key, tampered, authenticatedData, ciphertext, tag, plaintext);
  });
  expectEveryBitFlipRefused(key, length, [&](const Bytes& tampered, Bytes& plaintext) {
    return AESGCM::open(tampered, nonce, authenticatedData, ciphertext, tag, plaintext);
  });
}

TEST(AESGCM, DroppedOrAddedAuthenticatedDataIsRefused) {
  const KnownAnswer& vector = kKnownAnswers[3];
  const Bytes key = testsupport::hexBytes(vector.key), nonce = testsupport::hexBytes(vector.nonce);
  Bytes authenticatedData = testsupport::hexBytes(vector.authenticatedData);
  const Bytes ciphertext = testsupport::hexBytes(vector.ciphertext), tag = testsupport::hexBytes(vector.tag);
  Bytes plaintext(ciphertext.size(), 0xAA);
  EXPECT_FALSE(AESGCM::open(key, nonce, {}, ciphertext, tag, plaintext));
  EXPECT_TRUE(isZero(plaintext));
  authenticatedData.push_back(0);
  std::ranges::fill(plaintext, 0xAA);
  EXPECT_FALSE(AESGCM::open(key, nonce, authenticatedData, ciphertext, tag, plaintext));
  EXPECT_TRUE(isZero(plaintext));
}

TEST(AESGCM, WrongSizesAreRefusedAndZeroThePlaintext) {
  const KnownAnswer& vector = kKnownAnswers[2];
  const Bytes key = testsupport::hexBytes(vector.key), nonce = testsupport::hexBytes(vector.nonce);
  const Bytes ciphertext = testsupport::hexBytes(vector.ciphertext), tag = testsupport::hexBytes(vector.tag);
  const Bytes shortKey(key.begin(), key.end() - 1), longNonce = [&] {
    Bytes longer = nonce;
    longer.push_back(0);
    return longer;
  }();
  const Bytes shortTag(tag.begin(), tag.end() - 1), shortCiphertext(ciphertext.begin(), ciphertext.end() - 1);

  struct Case {
    std::string_view name;
    const Bytes& key;
    const Bytes& nonce;
    const Bytes& ciphertext;
    const Bytes& tag;
    std::size_t plaintextByteCount;
  };
  const Case cases[] = {
      {"31-byte key", shortKey, nonce, ciphertext, tag, ciphertext.size()},
      {"13-byte nonce", key, longNonce, ciphertext, tag, ciphertext.size()},
      {"15-byte tag", key, nonce, ciphertext, shortTag, ciphertext.size()},
      {"plaintext buffer longer than the ciphertext", key, nonce, shortCiphertext, tag, ciphertext.size()},
      {"plaintext buffer shorter than the ciphertext", key, nonce, ciphertext, tag, ciphertext.size() - 1},
  };
  for (const Case& rejected : cases) {
    SCOPED_TRACE(rejected.name);
    Bytes plaintext(rejected.plaintextByteCount, 0xAA);
    EXPECT_FALSE(AESGCM::open(rejected.key, rejected.nonce, {}, rejected.ciphertext, rejected.tag,
                                              plaintext));
    EXPECT_TRUE(isZero(plaintext));
  }

  const Bytes plaintext = testsupport::hexBytes(vector.plaintext);
  Bytes sealed(plaintext.size()), sealedTag(AESGCM::tagByteCount), shortSealedTag(15);
  EXPECT_FALSE(AESGCM::seal(shortKey, nonce, {}, plaintext, sealed, sealedTag));
  EXPECT_FALSE(AESGCM::seal(key, longNonce, {}, plaintext, sealed, sealedTag));
  EXPECT_FALSE(AESGCM::seal(key, nonce, {}, plaintext, sealed, shortSealedTag));
  Bytes shortSealed(plaintext.size() - 1);
  EXPECT_FALSE(AESGCM::seal(key, nonce, {}, plaintext, shortSealed, sealedTag));
}

}  // namespace

}  // namespace galdrine::platform
