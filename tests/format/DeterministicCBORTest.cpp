#include "format/cbor/DeterministicCBOR.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "support/HexBytes.hpp"

namespace galdrine::format {

namespace {

using Value = CBORValue;
using Limits = CBORLimits;
using testsupport::hexBytes;

constexpr Limits kHeader = Limits::formatHeader();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

constexpr CBORError failure(CBORError::Code code) { return {code, 0}; }

// decodeBoth decodes with both decoders and insists that they agree, value for value and
// error for error.
std::expected<Value, CBORError> decodeBoth(ByteView input, const Limits& limits) {
  const auto owned = DeterministicCBOR::decode(input, limits);
  const auto borrowed = DeterministicCBOR::decodeBorrowed(input, limits);
  EXPECT_EQ(owned, (borrowed ? std::expected<Value, CBORError>(borrowed->owned()) : std::unexpected(borrowed.error())))
      << ByteText::lowerHex(input);
  return owned;
}

// expectCanonical: whatever decode accepts, encode gives back byte for byte; returns whether
// the input was accepted.
bool expectCanonical(ByteView input, const Limits& limits) {
  const auto decoded = decodeBoth(input, limits);
  if (decoded) {
    EXPECT_EQ(DeterministicCBOR::encode(*decoded, limits), Bytes(input.begin(), input.end()))
        << ByteText::lowerHex(input);
  }
  return decoded.has_value();
}

}  // namespace

// One row per fault; where a row holds several, the check that runs first decides.
TEST(DeterministicCBOR, DecodeNamesTheFirstFailedCheck) {
  using enum CBORError::Code;
  struct RejectCase {
    std::string_view name;
    Bytes input;
    CBORError expected;
    Limits limits = kHeader;
  };
  const auto x = [](std::string_view hex) { return hexBytes(hex); };
  const RejectCase cases[] = {
      {"tag", x("c0"), CBORError::unsupportedMajorType(6)},
      {"undefined", x("f7"), CBORError::unsupportedSimpleValue(23)},
      {"one-byte simple value cut off", x("f8"), CBORError::unsupportedSimpleValue(24)},
      {"break", x("ff"), CBORError::unsupportedSimpleValue(31)},
      {"unsigned with additional value 28", x("1c"), CBORError::unsupportedSimpleValue(28)},
      {"repeated large key", x("a21b0102030405060708f61b0102030405060708f6"),
       CBORError::duplicateMapKey(0x0102030405060708)},
      {"descending keys", x("a202000100"), failure(mapKeysOutOfOrder)},
      {"256 before 255", x("a2190100 0018ff00"), failure(mapKeysOutOfOrder)},
      {"text key", x("a1616100"), failure(mapKeyMustBeUnsignedInteger)},
      {"no encoded bytes allowed", {}, failure(invalidLimits), {0, 1, 1, 1, 1, 1}},
      {"no items allowed", x("00"), failure(invalidLimits), {1, 1, 1, 1, 0, 1}},
      {"negative byte string bound", x("00"), failure(invalidLimits), {1, -1, 1, 1, 1, 1}},
      {"byte string over its bound", x("5841"), failure(byteStringLimitExceeded)},
      {"text over its bound", x("790101"), failure(textStringLimitExceeded)},
      {"array over its bound", x("9821"), failure(containerItemLimitExceeded)},
      {"map of one entry counts three items", x("a10000"), failure(totalItemLimitExceeded), {16, 0, 0, 4, 2, 4}},
      {"map key under depth zero", x("a10000"), failure(depthLimitExceeded), {16, 0, 0, 4, 16, 0}},
      {"empty input", {}, failure(unexpectedEnd)},
      {"eight-byte argument cut short", x("1b00000000000000"), failure(unexpectedEnd)},
      {"map value missing", x("a100"), failure(unexpectedEnd)},
      {"two items", x("0000"), failure(trailingBytes)},
      {"23 in two bytes", x("1817"), failure(nonMinimalIntegerOrLength)},
      {"255 in three bytes", x("1900ff"), failure(nonMinimalIntegerOrLength)},
      {"65535 in five bytes", x("1a0000ffff"), failure(nonMinimalIntegerOrLength)},
      {"2^32 - 1 in nine bytes", x("1b00000000ffffffff"), failure(nonMinimalIntegerOrLength)},
      {"map key in two bytes", x("a1180100"), failure(nonMinimalIntegerOrLength)},
      {"indefinite unsigned", x("1f"), failure(indefiniteLengthNotAllowed)},
      {"indefinite array", x("9fff"), failure(indefiniteLengthNotAllowed)},
      {"indefinite tag", x("df"), failure(indefiniteLengthNotAllowed)},
      {"overlong NUL", x("62c080"), failure(invalidUTF8)},
      {"sequence cut inside the text", x("6261c3"), failure(invalidUTF8)},
      {"byte string of 2^63", x("5b8000000000000000"), failure(integerOverflow)},
      {"map of 2^63", x("bb8000000000000000"), failure(integerOverflow)},
      {"invalid limits before an oversized input", Bytes(8, 0xFF), failure(invalidLimits), {4, 1, 1, 1, 1, -1}},
      {"encoded bound before the content", x("ffff"), failure(encodedByteLimitExceeded), {1, 1, 1, 1, 1, 1}},
      {"depth before the item count", x("8100"), failure(depthLimitExceeded), {16, 0, 0, 4, 1, 0}},
      {"item count before reading", x("81"), failure(totalItemLimitExceeded), {16, 0, 0, 4, 1, 4}},
      {"overflow before the bound", x("5b8000000000000000"), failure(integerOverflow), {16, 0, 0, 0, 1, 0}},
      {"largest length below overflow meets the bound", x("5b7fffffffffffffff"), failure(byteStringLimitExceeded)},
      {"non-minimal before the bound", x("5810"), failure(nonMinimalIntegerOrLength), {16, 0, 0, 0, 1, 0}},
      {"length within the bound beyond the input", x("5840"), failure(unexpectedEnd)},
      {"key kind before order", x("a201002000"), failure(mapKeyMustBeUnsignedInteger)},
      {"key error before the key kind", x("a1c0"), CBORError::unsupportedMajorType(6)},
      {"out of order and held is a repeat", x("a3000005000000"), CBORError::duplicateMapKey(0)},
      {"order before the value", x("a2020001c0"), failure(mapKeysOutOfOrder)},
      {"inner failure before trailing bytes", x("81f700"), CBORError::unsupportedSimpleValue(23)},
      // A declared count never reserves memory the input cannot back.
      {"four billion elements declared",
       x("9affffffff"),
       failure(unexpectedEnd),
       {kMost, kMost, kMost, kMost, kMost, 4}},
      {"four billion entries declared",
       x("baffffffff"),
       failure(unexpectedEnd),
       {kMost, kMost, kMost, kMost, kMost, 4}},
  };
  for (const RejectCase& row : cases) {
    EXPECT_EQ(decodeBoth(row.input, row.limits), std::unexpected(row.expected)) << row.name;
  }
}

TEST(DeterministicCBOR, DecodesTheShortestFormsAndEncodesThemBack) {
  const struct {
    std::string_view hex;
    Value expected;
    Limits limits = kHeader;
  } cases[] = {
      {"1818", Value::unsignedInteger(24)},
      {"190100", Value::unsignedInteger(256)},
      {"1a00010000", Value::unsignedInteger(65536)},
      {"1b0000000100000000", Value::unsignedInteger(4294967296)},
      {"1bffffffffffffffff", Value::unsignedInteger(UINT64_MAX)},
      {"20", Value::negative(0)},
      {"3bffffffffffffffff", Value::negative(UINT64_MAX)},
      {"83f4f5f6", Value::array({Value::boolean(false), Value::boolean(true), Value::null()})},
      {"64f48fbfbf", Value::textString("\U0010FFFF")},
      {"80", Value::array({}), {1, 0, 0, 0, 1, 0}},
      {"a10000", Value::map({{0, Value::unsignedInteger(0)}}), {3, 0, 0, 1, 3, 1}},
      {"a317f61818f6190100f6", Value::map({{23, Value::null()}, {24, Value::null()}, {256, Value::null()}})},
      {"a30238181818 3b7fffffffffffffff 19012c20",
       Value::map(
           {{300, Value::signedInteger(-1)}, {2, Value::signedInteger(-25)}, {24, Value::signedInteger(INT64_MIN)}})},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(decodeBoth(hexBytes(row.hex), row.limits), row.expected) << row.hex;
    EXPECT_EQ(DeterministicCBOR::encode(row.expected, row.limits), hexBytes(row.hex)) << row.hex;
  }
}

TEST(DeterministicCBOR, EncodeChecksRunInOrderAndStopAtTheFirstItemPastABound) {
  using enum CBORError::Code;
  const Value tenBytes = Value::byteString(Bytes(10, 0));
  const Value nested = Value::array({Value::array({})});
  const struct {
    std::string_view name;
    Value value;
    Limits limits;
    CBORError expected;
  } cases[] = {
      {"invalid limits", Value::null(), {1, 0, 0, 0, 0, 0}, failure(invalidLimits)},
      {"map key under depth zero", Value::map({{0, Value::null()}}), {16, 0, 0, 4, 16, 0}, failure(depthLimitExceeded)},
      {"text", Value::textString(std::string(257, 'a')), kHeader, failure(textStringLimitExceeded)},
      {"text that is not UTF-8", Value::textString("\xC0\x80"), kHeader, failure(invalidUTF8)},
      {"output past the bound",
       Value::array({tenBytes, tenBytes}),
       {12, 16, 0, 4, 16, 1},
       failure(encodedByteLimitExceeded)},
      {"output bound before a later depth fault",
       Value::array({tenBytes, nested}),
       {5, 16, 0, 4, 16, 1},
       failure(encodedByteLimitExceeded)},
      {"depth before the item count", Value::array({Value::null()}), {16, 0, 0, 4, 1, 0}, failure(depthLimitExceeded)},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(DeterministicCBOR::encode(row.value, row.limits), std::unexpected(row.expected)) << row.name;
  }
  EXPECT_EQ(DeterministicCBOR::encode(Value::map({{0, Value::null()}, {1, Value::null()}}), {16, 0, 0, 4, 5, 1}),
            hexBytes("a200f601f6"));
}

TEST(DeterministicCBOR, EveryShortInputThatDecodesEncodesBackByteForByte) {
  std::array<std::size_t, 2> accepted{};
  for (unsigned value = 0; value < 0x10000; ++value) {
    const Bytes pair{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    if (value < 0x100) accepted[0] += expectCanonical(ByteView(pair).last(1), kHeader) ? 1u : 0u;
    accepted[1] += expectCanonical(pair, kHeader) ? 1u : 0u;
  }
  // One byte: 24 + 24 small integers, four empty strings and containers, false, true, null. Two bytes:
  // 232 + 232 one-byte arguments, 256 one-byte strings, 128 one-byte texts, 55 one-item arrays.
  EXPECT_EQ(accepted, (std::array<std::size_t, 2>{55, 903}));
}

}  // namespace galdrine::format
