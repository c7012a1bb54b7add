#include "kdf/Argon2idParameters.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace galdrine::kdf {

using Error = Argon2idError;
using JSON = platform::JSONDocumentError;
constexpr std::int64_t kMiB = 1'048'576;

// Rows at and around every bound. A document goes through make, which judges passes before
// memory and the memory range before its alignment; but first it fails in the JSON layer on the
// first bad key, operationsLimit first, before any value is judged.
TEST(Argon2idParameters, RefusesEveryValueOutsideTheBoundsWithTheFirstFailedCheck) {
  const auto memory = [](std::int64_t actual) { return Error::memoryLimitOutOfRange(64 * kMiB, 256 * kMiB, actual); };
  const std::pair<std::string_view, Argon2idParametersDocumentFailure> cases[] = {
      {R"({"operationsLimit": 2, "memoryLimitBytes": 1})", Error::operationsLimitOutOfRange(3, 12, 2)},
      {R"({"operationsLimit": 13, "memoryLimitBytes": 67108864})", Error::operationsLimitOutOfRange(3, 12, 13)},
      {R"({"operationsLimit": 3, "memoryLimitBytes": 67108863})", memory(67'108'863)},
      {R"({"operationsLimit": 3, "memoryLimitBytes": 268435457})", memory(268'435'457)},  // not the alignment
      {R"({"operationsLimit": 3, "memoryLimitBytes": 67109000})", Error::memoryLimitMustBeKiBAligned(67'109'000)},
      {R"([3, 67108864])", JSON::typeMismatch},
      {R"({"memoryLimitBytes": 67108864})", JSON::keyNotFound},
      {R"({"operationsLimit": 2})", JSON::keyNotFound},  // both keys are read before validation
      {R"({"operationsLimit": null, "memoryLimitBytes": 67108864})", JSON::valueNotFound},
      {R"({"operationsLimit": "3"})", JSON::typeMismatch},  // operationsLimit is read first
      {R"({"operationsLimit": -3, "memoryLimitBytes": 67108864})", JSON::dataCorrupted},
      {R"({"operationsLimit": 3.5, "memoryLimitBytes": 67108864})", JSON::dataCorrupted},
      {R"({"operationsLimit": 18446744073709551616, "memoryLimitBytes": 67108864})", JSON::dataCorrupted},
      {R"({"operationsLimit": 3, "memoryLimitBytes": 9223372036854775808})", JSON::dataCorrupted},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Argon2idParameters::decodeDocument(nlohmann::json::parse(text)), std::unexpected(expected)) << text;
  }
}

// The bounds themselves pass; a document, in any notation of an exact integer and with other
// keys beside it, decodes to the value it encodes.
TEST(Argon2idParameters, AcceptsTheBoundsAndRoundTripsItsDocument) {
  for (const auto& [operationsLimit, memoryLimitBytes] :
       {std::pair<std::uint64_t, std::int64_t>{3, 64 * kMiB}, {12, 256 * kMiB}, {4, 64 * kMiB + 1024}}) {
    const auto made = Argon2idParameters::make(operationsLimit, memoryLimitBytes);
    ASSERT_TRUE(made.has_value()) << operationsLimit << ", " << memoryLimitBytes;
    EXPECT_EQ(Argon2idParameters::decodeDocument(made->encodeDocument()), *made);
  }
  const auto made = Argon2idParameters::make(4, 128 * kMiB);
  ASSERT_TRUE(made.has_value());
  EXPECT_EQ(made->encodeDocument().dump(), R"({"memoryLimitBytes":134217728,"operationsLimit":4})");
  EXPECT_EQ(Argon2idParameters::decodeDocument(
                nlohmann::json::parse(R"({"note": [1], "operationsLimit": 4.0, "memoryLimitBytes": 1.34217728e8})")),
            *made);
}

}  // namespace galdrine::kdf
