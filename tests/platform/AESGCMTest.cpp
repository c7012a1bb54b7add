#include "platform/AESGCM.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/HexBytes.hpp"

namespace galdrine::platform {

namespace {

using testsupport::hexBytes;

struct Vector {
  Bytes key, nonce, authenticatedData, plaintext, ciphertext, tag;
};

// The AES-256 cases of the published GCM test vectors (McGrew and Viega, test cases 13 to 16;
// 16 is 15 cut to 60 bytes, with authenticated data). Cases 17 and 18 use 8- and 60-byte IVs,
// which this layer refuses by design.
std::vector<Vector> publishedVectors() {
  const Bytes zeroKey(32, 0), zeroNonce(12, 0);
  const Bytes key = hexBytes("feffe9928665731c6d6a8f9467308308 feffe9928665731c6d6a8f9467308308");
  const Bytes nonce = hexBytes("cafebabefacedbaddecaf888");
  const std::string plaintext =
      "d9313225f88406e5a55909c5aff5269a 86a7a9531534f7da2e4c303d8a318a72 "
      "1c3c0c95956809532fcf0e2449a6b525 b16aedf5aa0de657ba637b39";
  const std::string ciphertext =
      "522dc1f099567d07f47f37a32a84427d 643a8cdcbfe5c0c97598a2bd2555d1aa "
      "8cb08e48590dbb3da7b08b1056828838 c5f61e6393ba7a0abcc9f662";
  return {
      {zeroKey, zeroNonce, {}, {}, {}, hexBytes("530f8afbc74536b9a963b4f1c4cb738b")},
      {zeroKey,
       zeroNonce,
       {},
       Bytes(16, 0),
       hexBytes("cea7403d4d606b6e074ec5d3baf39d18"),
       hexBytes("d0d1c8a799996bf0265b98b5d48ab919")},
      {key,
       nonce,
       {},
       hexBytes(plaintext + "1aafd255"),
       hexBytes(ciphertext + "898015ad"),
       hexBytes("b094dac5d93471bdec1a502270e3cc6c")},
      {key, nonce, hexBytes("feedfacedeadbeeffeedfacedeadbeefabaddad2"), hexBytes(plaintext), hexBytes(ciphertext),
       hexBytes("76fc6ece0f4e1768cddf8853bb2d551b")},
  };
}

// refusedLeavingNothing tells whether open refuses `vector` and leaves the plaintext buffer all
// zero, although decryption writes into it before the tag is checked.
bool refusedLeavingNothing(const Vector& vector) {
  Bytes plaintext(vector.plaintext.size(), 0xAA);
  const bool opened =
      AESGCM::open(vector.key, vector.nonce, vector.authenticatedData, vector.ciphertext, vector.tag, plaintext);
  return !opened && std::ranges::all_of(plaintext, [](std::uint8_t byte) { return byte == 0; });
}

TEST(AESGCM, SealsAndOpensThePublishedVectors) {
  for (const Vector& vector : publishedVectors()) {
    Bytes ciphertext(vector.plaintext.size()), tag(AESGCM::tagByteCount);
    ASSERT_TRUE(AESGCM::seal(vector.key, vector.nonce, vector.authenticatedData, vector.plaintext, ciphertext, tag));
    EXPECT_EQ(ciphertext, vector.ciphertext);
    EXPECT_EQ(tag, vector.tag);
    Bytes opened(vector.ciphertext.size(), 0xAA);
    ASSERT_TRUE(
        AESGCM::open(vector.key, vector.nonce, vector.authenticatedData, vector.ciphertext, vector.tag, opened));
    EXPECT_EQ(opened, vector.plaintext);
  }
}

TEST(AESGCM, EveryTamperedBitIsRefusedLeavingNoPlaintext) {
  const Vector original = publishedVectors()[3];
  for (Bytes Vector::*input :
       {&Vector::key, &Vector::nonce, &Vector::authenticatedData, &Vector::ciphertext, &Vector::tag}) {
    Vector tampered = original;
    Bytes& bytes = tampered.*input;
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
      bytes[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
      EXPECT_TRUE(refusedLeavingNothing(tampered)) << "bit " << bit << " of a " << bytes.size() << "-byte input";
      bytes[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    }
  }
}

// Key, nonce and tag a byte short or long, and a plaintext that differs from the ciphertext in
// length, are refused by both directions before the library sees them; authenticated data a
// byte short or long fails only the tag.
TEST(AESGCM, AlteredLengthsAreRefused) {
  for (Bytes Vector::*input :
       {&Vector::key, &Vector::nonce, &Vector::tag, &Vector::plaintext, &Vector::authenticatedData}) {
    for (const bool longer : {false, true}) {
      Vector vector = publishedVectors()[3];
      longer ? (vector.*input).push_back(0) : (vector.*input).pop_back();
      EXPECT_TRUE(refusedLeavingNothing(vector)) << (vector.*input).size() << " bytes";
      Bytes ciphertext(vector.ciphertext.size()), tag(vector.tag.size());
      EXPECT_EQ(AESGCM::seal(vector.key, vector.nonce, vector.authenticatedData, vector.plaintext, ciphertext, tag),
                input == &Vector::authenticatedData);
    }
  }
}

}  // namespace

}  // namespace galdrine::platform
