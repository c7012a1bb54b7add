#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"

namespace galdrine::format {

namespace {

using Error = AESGCMFrameV1Error;
using Value = CBORValue;
namespace Frame = AESGCMFrameV1;

Bytes hex(std::string_view text) { return *ByteText::parseLowerHex(text); }

// AES-256-GCM known answer with authenticated data (the published GCM test case 16).
const Bytes kKey = hex("feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308");
const Bytes kNonce = hex("cafebabefacedbaddecaf888");
const Bytes kPlaintext = hex(
    "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a721c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b39");
const Bytes kAuthenticatedData = hex("feedfacedeadbeeffeedfacedeadbeefabaddad2");
const Bytes kCiphertext = hex(
    "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662");
const Bytes kTag = hex("76fc6ece0f4e1768cddf8853bb2d551b");

Value::Map frameFields(const Bytes& nonce, const Bytes& ciphertext, const Bytes& tag, std::uint64_t plaintextByteCount) {
  return {
      {0, Value::textString("com.galdrine.backup.sealed-frame.v1")},
      {1, Value::textString("aes-256-gcm")},
      {2, Value::byteString(nonce)},
      {3, Value::byteString(ciphertext)},
      {4, Value::byteString(tag)},
      {5, Value::unsignedInteger(plaintextByteCount)},
  };
}

Bytes encodedFrame(const Value& value) {
  const auto bytes = DeterministicCBOR::encode(value, CBORLimits::sealedFrame(Frame::largestPlaintextLimit));
  EXPECT_TRUE(bytes.has_value());
  return bytes ? *bytes : Bytes{};
}

Bytes knownAnswerFrame() { return encodedFrame(Value::map(frameFields(kNonce, kCiphertext, kTag, kPlaintext.size()))); }

Bytes sealedWithFixedNonce(const Bytes& plaintext, std::int64_t limit) {
  const auto frame = Frame::sealDeterministicFixture(plaintext, kKey, kAuthenticatedData, limit, kNonce);
  EXPECT_TRUE(frame.has_value());
  return frame ? *frame : Bytes{};
}

Bytes patternOfByteCount(std::size_t byteCount) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(index * 131 + 7);
  return bytes;
}

}  // namespace

TEST(AESGCMFrameV1, SealsTheKnownAnswerAsTheCodecEncodesTheSixKeyMap) {
  EXPECT_EQ(sealedWithFixedNonce(kPlaintext, 64), knownAnswerFrame());
  EXPECT_EQ(Frame::open(knownAnswerFrame(), kKey, kAuthenticatedData, 60), kPlaintext);
}

// The frame is laid out by hand so the cipher can write in place; at every head size of the
// ciphertext's length its bytes must still be the codec's encoding of the six-key map.
TEST(AESGCMFrameV1, LaysOutTheCodecsBytesAtEveryLengthHeadSize) {
  for (const std::size_t byteCount : {0u, 1u, 23u, 24u, 255u, 256u, 65535u, 65536u, 16777216u}) {
    const Bytes plaintext = patternOfByteCount(byteCount);
    const Bytes frame = sealedWithFixedNonce(plaintext, Frame::largestPlaintextLimit);
    const auto decoded = DeterministicCBOR::decode(frame, CBORLimits::sealedFrame(Frame::largestPlaintextLimit));
    ASSERT_TRUE(decoded.has_value()) << byteCount;
    const Bytes ciphertext = *decoded->find(3)->asByteString();
    const Bytes tag = *decoded->find(4)->asByteString();
    EXPECT_EQ(frame, encodedFrame(Value::map(frameFields(kNonce, ciphertext, tag, byteCount)))) << byteCount;
    EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, static_cast<std::int64_t>(byteCount)), plaintext) << byteCount;
  }
}

TEST(AESGCMFrameV1, AnEmptyPlaintextSealsAndOpensWithALimitOfZero) {
  const Bytes frame = sealedWithFixedNonce({}, 0);
  const auto decoded = DeterministicCBOR::decode(frame, CBORLimits::sealedFrame(0));
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(*decoded->find(3), Value::byteString(Bytes{}));
  EXPECT_EQ(*decoded->find(5), Value::unsignedInteger(0));
  EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, 0), Bytes{});
}

TEST(AESGCMFrameV1, SealDrawsAFreshNonceEachTime) {
  const auto first = Frame::seal(kPlaintext, kKey, kAuthenticatedData, 60);
  const auto second = Frame::seal(kPlaintext, kKey, kAuthenticatedData, 60);
  ASSERT_TRUE(first.has_value() && second.has_value());
  EXPECT_NE(*first, *second);
  EXPECT_EQ(Frame::open(*first, kKey, kAuthenticatedData, 60), kPlaintext);
  EXPECT_EQ(Frame::open(*second, kKey, kAuthenticatedData, 60), kPlaintext);
}

TEST(AESGCMFrameV1, SealChecksRunInOrder) {
  struct SealCase {
    std::string_view name;
    std::size_t keyByteCount, authenticatedDataByteCount, plaintextByteCount;
    std::int64_t limit;
    std::size_t nonceByteCount;
    std::optional<Error> expected;
  };
  const SealCase cases[] = {
      {"short key before everything", 31, 0, 100, -1, 11, Error::invalidKeyByteCount()},
      {"long key", 33, 4, 1, 1, 12, Error::invalidKeyByteCount()},
      {"empty data before the limit", 32, 0, 100, -1, 11, Error::emptyAuthenticatedData()},
      {"negative limit", 32, 4, 0, -1, 12, Error::invalidPlaintextLimit()},
      {"limit above 16 MiB", 32, 4, 0, 16777217, 12, Error::invalidPlaintextLimit()},
      {"smallest limit", 32, 4, 0, std::numeric_limits<std::int64_t>::min(), 12, Error::invalidPlaintextLimit()},
      {"one byte over the limit before the nonce", 32, 4, 61, 60, 11, Error::plaintextLimitExceeded()},
      {"any byte over a limit of zero", 32, 4, 1, 0, 12, Error::plaintextLimitExceeded()},
      {"short nonce", 32, 4, 60, 60, 11, Error::invalidNonceByteCount()},
      {"long nonce", 32, 4, 60, 60, 13, Error::invalidNonceByteCount()},
      {"exactly at the limit", 32, 4, 60, 60, 12, std::nullopt},
      {"the largest limit", 32, 4, 0, 16777216, 12, std::nullopt},
  };
  for (const SealCase& testCase : cases) {
    const auto frame = Frame::sealDeterministicFixture(Bytes(testCase.plaintextByteCount, 1), Bytes(testCase.keyByteCount, 2),
                                                       Bytes(testCase.authenticatedDataByteCount, 3), testCase.limit,
                                                       Bytes(testCase.nonceByteCount, 4));
    if (testCase.expected) {
      EXPECT_EQ(frame, std::unexpected(AESGCMFrameV1Failure(*testCase.expected))) << testCase.name;
    } else {
      EXPECT_TRUE(frame.has_value()) << testCase.name;
    }
  }
  EXPECT_EQ(Frame::seal({}, Bytes(32, 0), Bytes(1, 0), 16777217),
            std::unexpected(AESGCMFrameV1Failure(Error::invalidPlaintextLimit())));
}

namespace {

// One way to damage the known-answer frame (or the call that opens it), and what must result.
struct OpenRejectCase {
  std::string_view name;
  std::vector<std::pair<std::uint64_t, std::optional<Value>>> changes;  // nullopt removes the key
  Error expected;
  std::int64_t limit = 60;
};

const OpenRejectCase kOpenRejectCases[] = {
    {"seventh key", {{6, Value::null()}}, Error::invalidFrameFieldSet()},
    {"key 5 missing", {{5, std::nullopt}}, Error::invalidFrameFieldSet()},
    {"key 5 missing, schema wrong too", {{5, std::nullopt}, {0, Value::textString("x")}}, Error::invalidFrameFieldSet()},
    {"schema as bytes", {{0, Value::byteString(Bytes{1})}}, Error::invalidFrameFieldType(0)},
    {"other schema", {{0, Value::textString("com.galdrine.backup.sealed-frame.v2")}}, Error::unsupportedFrameSchema()},
    {"other schema, algorithm as null", {{0, Value::textString("x")}, {1, Value::null()}}, Error::unsupportedFrameSchema()},
    {"algorithm as unsigned", {{1, Value::unsignedInteger(1)}}, Error::invalidFrameFieldType(1)},
    {"algorithm in upper case", {{1, Value::textString("AES-256-GCM")}}, Error::unsupportedAlgorithm()},
    {"nonce as text", {{2, Value::textString("cafebabefaced")}}, Error::invalidFrameFieldType(2)},
    {"nonce of 11 bytes", {{2, Value::byteString(Bytes(11, 0))}}, Error::invalidNonceByteCount()},
    {"nonce of 13 bytes", {{2, Value::byteString(Bytes(13, 0))}}, Error::invalidNonceByteCount()},
    {"nonce of 11 bytes, ciphertext as text", {{2, Value::byteString(Bytes(11, 0))}, {3, Value::textString("x")}}, Error::invalidNonceByteCount()},
    {"ciphertext as array", {{3, Value::array({})}}, Error::invalidFrameFieldType(3)},
    {"tag as null", {{4, Value::null()}}, Error::invalidFrameFieldType(4)},
    {"tag of 15 bytes", {{4, Value::byteString(Bytes(15, 0))}}, Error::authenticationFailed()},
    {"tag of 17 bytes", {{4, Value::byteString(Bytes(17, 0))}}, Error::authenticationFailed()},
    {"tag of 15 bytes, count negative", {{4, Value::byteString(Bytes(15, 0))}, {5, Value::negative(0)}}, Error::authenticationFailed()},
    {"count negative", {{5, Value::negative(59)}}, Error::invalidFrameFieldType(5)},
    {"count as boolean", {{5, Value::boolean(true)}}, Error::invalidFrameFieldType(5)},
    // Counts above the limit with ciphertexts short enough to pass the codec's clamped bound.
    {"count above the limit", {{3, Value::byteString(Bytes(59, 0))}}, Error::plaintextLengthMismatch(), 59},
    {"count above a limit of zero", {{3, Value::byteString(Bytes(0))}, {5, Value::unsignedInteger(1)}}, Error::plaintextLengthMismatch(), 0},
    {"count one below the ciphertext", {{5, Value::unsignedInteger(59)}}, Error::plaintextLengthMismatch()},
    {"count one above the ciphertext", {{5, Value::unsignedInteger(61)}}, Error::plaintextLengthMismatch(), 61},
    {"ciphertext one byte short", {{3, Value::byteString(Bytes(kCiphertext.begin(), kCiphertext.end() - 1))}}, Error::plaintextLengthMismatch()},
    {"ciphertext changed", {{3, Value::byteString(Bytes(60, 0))}}, Error::authenticationFailed()},
    {"nonce changed", {{2, Value::byteString(Bytes(12, 0))}}, Error::authenticationFailed()},
    {"tag changed", {{4, Value::byteString(Bytes(16, 0))}}, Error::authenticationFailed()},
};

void PrintTo(const OpenRejectCase& testCase, std::ostream* stream) { *stream << testCase.name; }

class AESGCMFrameV1OpenReject : public testing::TestWithParam<OpenRejectCase> {};

std::string caseName(std::string_view name) {
  std::string result(name);
  for (char& character : result)
    if (!std::isalnum(static_cast<unsigned char>(character))) character = '_';
  return result;
}

}  // namespace

TEST_P(AESGCMFrameV1OpenReject, NamesTheFirstFailedCheck) {
  Value::Map fields = frameFields(kNonce, kCiphertext, kTag, kPlaintext.size());
  for (const auto& [key, replacement] : GetParam().changes) {
    fields.erase(key);
    if (replacement) fields.emplace(key, *replacement);
  }
  EXPECT_EQ(Frame::open(encodedFrame(Value::map(fields)), kKey, kAuthenticatedData, GetParam().limit),
            std::unexpected(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Cases, AESGCMFrameV1OpenReject, testing::ValuesIn(kOpenRejectCases),
                         [](const auto& testCase) { return caseName(testCase.param.name); });

TEST(AESGCMFrameV1, OpenChecksItsInputBeforeTheFrame) {
  const Bytes frame = knownAnswerFrame();
  EXPECT_EQ(Frame::open({}, Bytes(31, 0), {}, -1), std::unexpected(Error::invalidKeyByteCount()));
  EXPECT_EQ(Frame::open({}, kKey, {}, -1), std::unexpected(Error::emptyAuthenticatedData()));
  EXPECT_EQ(Frame::open({}, kKey, kAuthenticatedData, -1), std::unexpected(Error::invalidPlaintextLimit()));
  EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, 16777217), std::unexpected(Error::invalidPlaintextLimit()));
  EXPECT_EQ(Frame::open(frame, kKey, kAuthenticatedData, 16777216), kPlaintext);
  Bytes otherData = kAuthenticatedData;
  otherData.back() ^= 1;
  EXPECT_EQ(Frame::open(frame, kKey, otherData, 60), std::unexpected(Error::authenticationFailed()));
  Bytes otherKey = kKey;
  otherKey.front() ^= 1;
  EXPECT_EQ(Frame::open(frame, otherKey, kAuthenticatedData, 60), std::unexpected(Error::authenticationFailed()));
}

TEST(AESGCMFrameV1, BytesThatAreNoCanonicalItemWithinTheLimitsAreMalformed) {
  const Bytes frame = knownAnswerFrame();
  Bytes trailing = frame;
  trailing.push_back(0x00);
  Bytes longCount = frame;  // key 5's count 60 written in two bytes
  longCount.back() = 0x18;
  longCount.push_back(60);
  Bytes indefinite = frame;
  indefinite.front() = 0xBF;
  const Bytes notAMap = encodedFrame(Value::array({}));
  // A ciphertext beyond the clamped bound fails in the codec, before the lengths are compared.
  const Bytes oversized = encodedFrame(Value::map(frameFields(kNonce, Bytes(17, 0), kTag, 17)));
  struct MalformedCase {
    std::string_view name;
    const Bytes& frame;
    std::int64_t limit;
    Error expected;
  };
  const MalformedCase cases[] = {
      {"empty", {}, 60, Error::malformedFrame()},
      {"trailing byte", trailing, 60, Error::malformedFrame()},
      {"count not in shortest form", longCount, 60, Error::malformedFrame()},
      {"indefinite-length map", indefinite, 60, Error::malformedFrame()},
      {"ciphertext above the clamped bound of 16", oversized, 0, Error::malformedFrame()},
      {"ciphertext within the clamped bound of 16", encodedFrame(Value::map(frameFields(kNonce, Bytes(16, 0), kTag, 16))), 0,
       Error::plaintextLengthMismatch()},
      {"an array at the root", notAMap, 60, Error::invalidFrameFieldSet()},
  };
  for (const MalformedCase& testCase : cases) {
    EXPECT_EQ(Frame::open(testCase.frame, kKey, kAuthenticatedData, testCase.limit), std::unexpected(testCase.expected))
        << testCase.name;
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
    EXPECT_EQ(Frame::open(ByteView(frame).first(byteCount), kKey, kAuthenticatedData, 60), std::unexpected(Error::malformedFrame()))
        << byteCount;
  }
}

}  // namespace galdrine::format
