#include "format/sealing/AESGCMFrameV1.hpp"

#include <gtest/gtest.h>

#include "format/cbor/DeterministicCBOR.hpp"

namespace galdrine::format {

namespace {

using Error = AESGCMFrameV1Error;
using Value = CBORValue;
namespace Frame = AESGCMFrameV1;

Bytes hex(std::string_view text) { return *ByteText::parseLowerHex(text); }

// AES-256-GCM known answer with authenticated data (the published GCM test case 16).
const Bytes kKey = hex("feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308");
const Bytes kNonce = hex("cafebabefacedbaddecaf888");
const Bytes kPlaintext =
    hex("d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a721c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de6"
        "57ba637b39");
const Bytes kAuthenticatedData = hex("feedfacedeadbeeffeedfacedeadbeefabaddad2");
const Bytes kCiphertext =
    hex("522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a"
        "0abcc9f662");
const Bytes kTag = hex("76fc6ece0f4e1768cddf8853bb2d551b");

Value::Map frameFields(const Bytes& nonce, const Bytes& ciphertext, const Bytes& tag,
                       std::uint64_t plaintextByteCount) {
  return {{0, Value::textString("com.galdrine.backup.sealed-frame.v1")},
          {1, Value::textString("aes-256-gcm")},
          {2, Value::byteString(nonce)},
          {3, Value::byteString(ciphertext)},
          {4, Value::byteString(tag)},
          {5, Value::unsignedInteger(plaintextByteCount)}};
}

// value() throws when a frame the test depends on cannot be made, which fails the test.
Bytes encodedFrame(const Value& value) {
  return DeterministicCBOR::encode(value, CBORLimits::sealedFrame(Frame::largestPlaintextLimit)).value();
}

Bytes knownAnswerFrame() { return encodedFrame(Value::map(frameFields(kNonce, kCiphertext, kTag, kPlaintext.size()))); }

Bytes sealedWithFixedNonce(const Bytes& plaintext, std::int64_t limit) {
  return Frame::seal(plaintext, kKey, kAuthenticatedData, limit, Frame::NonceSource::fixed(kNonce)).value();
}

}  // namespace

// The known answer, sealed with its fixed nonce, is the codec's encoding of the six-key map; the
// default source draws a fresh nonce for every seal (the graph tests open such frames).
TEST(AESGCMFrameV1, SealsTheKnownAnswerAsTheCodecEncodesTheSixKeyMap) {
  EXPECT_EQ(sealedWithFixedNonce(kPlaintext, 64), knownAnswerFrame());
  EXPECT_EQ(Frame::open(knownAnswerFrame(), kKey, kAuthenticatedData, 60), kPlaintext);
  const auto fresh = Frame::seal(kPlaintext, kKey, kAuthenticatedData, 60);
  EXPECT_NE(fresh, Frame::seal(kPlaintext, kKey, kAuthenticatedData, 60));
}

// The frame is laid out by hand so the cipher can write in place; at every head size of the
// ciphertext's length (an empty one under a limit of 0 included) its bytes must still be the
// codec's encoding of the six-key map.
TEST(AESGCMFrameV1, LaysOutTheCodecsBytesAtEveryLengthHeadSize) {
  for (const std::size_t byteCount : {0u, 1u, 23u, 24u, 255u, 256u, 65535u, 65536u, 16777216u}) {
    Bytes plaintext(byteCount);
    for (std::size_t index = 0; index < byteCount; ++index)
      plaintext[index] = static_cast<std::uint8_t>(index * 131 + 7);
    const auto limit = static_cast<std::int64_t>(byteCount);
    const Bytes frame = sealedWithFixedNonce(plaintext, limit);
    const auto decoded = DeterministicCBOR::decode(frame, CBORLimits::sealedFrame(Frame::largestPlaintextLimit));
    ASSERT_TRUE(decoded.has_value()) << byteCount;
    const Bytes ciphertext = *decoded->find(3)->asByteString();
    EXPECT_EQ(frame,
              encodedFrame(Value::map(frameFields(kNonce, ciphertext, *decoded->find(4)->asByteString(), byteCount))))
        << byteCount;
    EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, limit), plaintext) << byteCount;
  }
}

TEST(AESGCMFrameV1, SealChecksRunInOrder) {
  const struct {
    std::string_view name;
    std::size_t keyByteCount, authenticatedDataByteCount, plaintextByteCount;
    std::int64_t limit;
    std::size_t nonceByteCount;
    std::optional<Error> expected;
  } cases[] = {
      {"short key before everything", 31, 0, 100, -1, 11, Error::invalidKeyByteCount()},
      {"empty data before the limit", 32, 0, 100, -1, 11, Error::emptyAuthenticatedData()},
      {"negative limit", 32, 4, 0, -1, 12, Error::invalidPlaintextLimit()},
      {"limit above 16 MiB", 32, 4, 0, 16777217, 12, Error::invalidPlaintextLimit()},
      {"one byte over the limit before the nonce", 32, 4, 61, 60, 11, Error::plaintextLimitExceeded()},
      {"exactly at the limit", 32, 4, 60, 60, 12, std::nullopt},
      {"the largest limit", 32, 4, 0, 16777216, 12, std::nullopt},
  };
  for (const auto& row : cases) {
    const auto frame = Frame::seal(Bytes(row.plaintextByteCount, 1), Bytes(row.keyByteCount, 2),
                                   Bytes(row.authenticatedDataByteCount, 3), row.limit,
                                   Frame::NonceSource::fixed(Bytes(row.nonceByteCount, 4)));
    const auto expected = row.expected ? std::optional(AESGCMFrameV1Failure(*row.expected)) : std::nullopt;
    EXPECT_EQ(frame ? std::nullopt : std::optional(frame.error()), expected) << row.name;
  }
}

// Each row damages the known-answer frame's map (nullopt removes the key) and names the first
// failed check; rows with two faults pin the order.
TEST(AESGCMFrameV1, OpenNamesTheFirstFailedCheck) {
  const struct {
    std::string_view name;
    std::vector<std::pair<std::uint64_t, std::optional<Value>>> changes;
    Error expected;
    std::int64_t limit = 60;
  } cases[] = {
      {"seventh key", {{6, Value::null()}}, Error::invalidFrameFieldSet()},
      {"key 5 missing, schema wrong too",
       {{5, std::nullopt}, {0, Value::textString("x")}},
       Error::invalidFrameFieldSet()},
      {"other schema, algorithm as null",
       {{0, Value::textString("x")}, {1, Value::null()}},
       Error::unsupportedFrameSchema()},
      {"algorithm in upper case", {{1, Value::textString("AES-256-GCM")}}, Error::unsupportedAlgorithm()},
      {"nonce of 13 bytes", {{2, Value::byteString(Bytes(13, 0))}}, Error::invalidNonceByteCount()},
      {"nonce of 11 bytes, ciphertext as text",
       {{2, Value::byteString(Bytes(11, 0))}, {3, Value::textString("x")}},
       Error::invalidNonceByteCount()},
      {"ciphertext as array", {{3, Value::array({})}}, Error::invalidFrameFieldType(3)},
      {"tag of 17 bytes", {{4, Value::byteString(Bytes(17, 0))}}, Error::authenticationFailed()},
      {"tag of 15 bytes, count negative",
       {{4, Value::byteString(Bytes(15, 0))}, {5, Value::negative(0)}},
       Error::authenticationFailed()},
      // Counts above the limit with ciphertexts short enough to pass the codec's clamped bound.
      {"count above the limit", {{3, Value::byteString(Bytes(59, 0))}}, Error::plaintextLengthMismatch(), 59},
      {"count above a limit of zero",
       {{3, Value::byteString(Bytes(0))}, {5, Value::unsignedInteger(1)}},
       Error::plaintextLengthMismatch(),
       0},
      {"count one above the ciphertext", {{5, Value::unsignedInteger(61)}}, Error::plaintextLengthMismatch(), 61},
  };
  for (const auto& row : cases) {
    Value::Map fields = frameFields(kNonce, kCiphertext, kTag, kPlaintext.size());
    for (const auto& [key, replacement] : row.changes) {
      fields.erase(key);
      if (replacement) fields.emplace(key, *replacement);
    }
    EXPECT_EQ(Frame::open(encodedFrame(Value::map(fields)), kKey, kAuthenticatedData, row.limit),
              std::unexpected(row.expected))
        << row.name;
  }
}

// The caller's input is checked before the frame; then bytes that are no canonical item
// within the limits are malformed. (A wrong key or wrong data fail authentication: the graph
// and payload key tests cover both through their own keys and authenticated data.)
TEST(AESGCMFrameV1, OpenChecksItsInputThenTheBytes) {
  const Bytes frame = knownAnswerFrame();
  EXPECT_EQ(Frame::open({}, Bytes(31, 0), {}, -1), std::unexpected(Error::invalidKeyByteCount()));
  EXPECT_EQ(Frame::open({}, kKey, {}, -1), std::unexpected(Error::emptyAuthenticatedData()));
  EXPECT_EQ(Frame::open({}, kKey, kAuthenticatedData, -1), std::unexpected(Error::invalidPlaintextLimit()));
  EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, 16777217), std::unexpected(Error::invalidPlaintextLimit()));
  EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, 16777216), kPlaintext);
  Bytes longCount = frame;  // key 5's count 60 written in two bytes
  longCount.back() = 0x18;
  longCount.push_back(60);
  const struct {
    std::string_view name;
    Bytes frame;
    std::int64_t limit;
    Error expected;
  } cases[] = {
      {"count not in shortest form", longCount, 60, Error::malformedFrame()},
      // A ciphertext beyond the clamped bound fails in the codec, before the lengths are compared.
      {"ciphertext above the clamped bound of 16",
       encodedFrame(Value::map(frameFields(kNonce, Bytes(17, 0), kTag, 17))), 0, Error::malformedFrame()},
      {"ciphertext within the clamped bound of 16",
       encodedFrame(Value::map(frameFields(kNonce, Bytes(16, 0), kTag, 16))), 0, Error::plaintextLengthMismatch()},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Frame::open(row.frame, kKey, kAuthenticatedData, row.limit), std::unexpected(row.expected)) << row.name;
  }
}

TEST(AESGCMFrameV1, EveryFlippedBitAndEveryTruncationIsRefused) {
  const Bytes frame = knownAnswerFrame();
  for (std::size_t bit = 0; bit < frame.size() * 8; ++bit) {
    Bytes tampered = frame;
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    EXPECT_FALSE(Frame::open(tampered, kKey, kAuthenticatedData, 60).has_value()) << "bit " << bit;
  }
  for (std::size_t byteCount = 0; byteCount < frame.size(); ++byteCount) {
    EXPECT_EQ(Frame::open(ByteView(frame).first(byteCount), kKey, kAuthenticatedData, 60),
              std::unexpected(Error::malformedFrame()))
        << byteCount;
  }
}

}  // namespace galdrine::format
