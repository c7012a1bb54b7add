#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "kdf/Argon2idParameters.hpp"

namespace galdrine::kdf {

namespace {

using Error = Argon2idError;
constexpr std::int64_t kMiB = 1'048'576;

// Rows at and around every bound. The range is tested before the alignment, so a value both
// out of range and unaligned reports the range.
struct RejectCase {
  std::uint64_t operationsLimit;
  std::int64_t memoryLimitBytes;
  Error expected;
};
const RejectCase kRejectCases[] = {
    {2, 64 * kMiB, Error::operationsLimitOutOfRange(3, 12, 2)},
    {13, 64 * kMiB, Error::operationsLimitOutOfRange(3, 12, 13)},
    {0, 64 * kMiB, Error::operationsLimitOutOfRange(3, 12, 0)},
    {std::numeric_limits<std::uint64_t>::max(), 64 * kMiB,
     Error::operationsLimitOutOfRange(3, 12, std::numeric_limits<std::uint64_t>::max())},
    {2, 1, Error::operationsLimitOutOfRange(3, 12, 2)},  // passes are judged before memory
    {3, 67'108'863, Error::memoryLimitOutOfRange(67'108'864, 268'435'456, 67'108'863)},
    {3, 268'435'457, Error::memoryLimitOutOfRange(67'108'864, 268'435'456, 268'435'457)},
    {3, 256 * kMiB + 1024, Error::memoryLimitOutOfRange(67'108'864, 268'435'456, 256 * kMiB + 1024)},
    {3, -64 * kMiB, Error::memoryLimitOutOfRange(67'108'864, 268'435'456, -64 * kMiB)},
    {3, 67'109'000, Error::memoryLimitMustBeKiBAligned(67'109'000)},
    {12, 256 * kMiB - 1, Error::memoryLimitMustBeKiBAligned(256 * kMiB - 1)},
};

TEST(Argon2idParameters, RefusesEveryValueOutsideTheBoundsWithTheFirstFailedCheck) {
  for (const RejectCase& rejected : kRejectCases) {
    SCOPED_TRACE(testing::Message() << rejected.operationsLimit << " passes, " << rejected.memoryLimitBytes << " bytes");
    const auto parameters = Argon2idParameters::make(rejected.operationsLimit, rejected.memoryLimitBytes);
    ASSERT_FALSE(parameters.has_value());
    EXPECT_EQ(parameters.error(), rejected.expected);
  }
}

TEST(Argon2idParameters, AcceptsTheBoundsThemselvesAndKiBSteps) {
  const std::pair<std::uint64_t, std::int64_t> accepted[] = {
      {3, 64 * kMiB}, {12, 256 * kMiB}, {3, 67'109'888}, {7, 256 * kMiB - 1024}, {12, 64 * kMiB}};
  for (const auto& [operationsLimit, memoryLimitBytes] : accepted) {
    const auto parameters = Argon2idParameters::make(operationsLimit, memoryLimitBytes);
    ASSERT_TRUE(parameters.has_value()) << operationsLimit << ", " << memoryLimitBytes;
    EXPECT_EQ(parameters->operationsLimit(), operationsLimit);
    EXPECT_EQ(parameters->memoryLimitBytes(), memoryLimitBytes);
  }
}

TEST(Argon2idParameters, DocumentRoundTripsWithBothKeys) {
  const auto parameters = Argon2idParameters::make(4, 128 * kMiB);
  ASSERT_TRUE(parameters.has_value());
  const nlohmann::json document = parameters->encodeDocument();
  EXPECT_EQ(document.dump(), R"({"memoryLimitBytes":134217728,"operationsLimit":4})");
  const auto decoded = Argon2idParameters::decodeDocument(document);
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(*decoded, *parameters);
}

// The JSON layer reads operationsLimit, then memoryLimitBytes, and only then validates: its own
// failures pass through unchanged, and a value it read goes to the same checks as make.
TEST(Argon2idParameters, DecodingFailsInTheJSONLayerFirstThenInValidation) {
  using JSON = platform::JSONDocumentError;
  struct Case {
    std::string_view document;
    Argon2idParametersDocumentFailure expected;
  };
  const Case cases[] = {
      {R"([3, 67108864])", JSON::typeMismatch},
      {R"({"memoryLimitBytes": 67108864})", JSON::keyNotFound},
      {R"({"operationsLimit": 2})", JSON::keyNotFound},  // both keys are read before validation
      {R"({"operationsLimit": null, "memoryLimitBytes": 67108864})", JSON::valueNotFound},
      {R"({"operationsLimit": "3", "memoryLimitBytes": 67108864})", JSON::typeMismatch},
      {R"({"operationsLimit": "3"})", JSON::typeMismatch},  // operationsLimit is read first
      {R"({"operationsLimit": 3, "memoryLimitBytes": true})", JSON::typeMismatch},
      {R"({"operationsLimit": -3, "memoryLimitBytes": 67108864})", JSON::dataCorrupted},
      {R"({"operationsLimit": 3.5, "memoryLimitBytes": 67108864})", JSON::dataCorrupted},
      {R"({"operationsLimit": 18446744073709551616, "memoryLimitBytes": 67108864})", JSON::dataCorrupted},
      {R"({"operationsLimit": 3, "memoryLimitBytes": 9223372036854775808})", JSON::dataCorrupted},
      {R"({"operationsLimit": 2, "memoryLimitBytes": 67108864})", Error::operationsLimitOutOfRange(3, 12, 2)},
      {R"({"operationsLimit": 18446744073709551615, "memoryLimitBytes": 67108864})",
       Error::operationsLimitOutOfRange(3, 12, std::numeric_limits<std::uint64_t>::max())},
      {R"({"operationsLimit": 3, "memoryLimitBytes": -67108864})",
       Error::memoryLimitOutOfRange(67'108'864, 268'435'456, -67'108'864)},
      {R"({"operationsLimit": 3, "memoryLimitBytes": 67109000})", Error::memoryLimitMustBeKiBAligned(67'109'000)},
  };
  for (const Case& rejected : cases) {
    SCOPED_TRACE(rejected.document);
    const auto decoded = Argon2idParameters::decodeDocument(nlohmann::json::parse(rejected.document));
    ASSERT_FALSE(decoded.has_value());
    EXPECT_EQ(decoded.error(), rejected.expected);
  }
}

TEST(Argon2idParameters, DecodingIgnoresOtherKeysAndAcceptsIntegralNumbersInAnyNotation) {
  const auto decoded = Argon2idParameters::decodeDocument(
      nlohmann::json::parse(R"({"note": [1], "operationsLimit": 3.0, "memoryLimitBytes": 6.7108864e7})"));
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(decoded->operationsLimit(), 3u);
  EXPECT_EQ(decoded->memoryLimitBytes(), 64 * kMiB);
}

}  // namespace

}  // namespace galdrine::kdf
