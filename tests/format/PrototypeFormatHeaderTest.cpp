#include "format/header/PrototypeFormatHeader.hpp"

#include <gtest/gtest.h>

#include <string>

namespace galdrine::format {

namespace {

using Error = PrototypeFormatHeaderError;

}  // namespace

TEST(PrototypeFormatHeader, RoundTripsWithoutJudgingValues) {
  for (const PrototypeFormatHeader& header :
       {PrototypeFormatHeader{"", INT64_MIN}, PrototypeFormatHeader{"\u00E9/\"\n", INT64_MAX}}) {
    const auto encoded = header.encodeJSON();
    EXPECT_EQ(encoded ? PrototypeFormatHeader::decodeJSON(*encoded) : std::unexpected(encoded.error()), header);
  }
  EXPECT_EQ(PrototypeFormatHeader({"GALDRINE-DRAFT", 0}).encodeJSON(),
            R"({"formatVersion":0,"magic":"GALDRINE-DRAFT"})");
  EXPECT_EQ(PrototypeFormatHeader({"a\xFF", 0}).encodeJSON(), std::unexpected(Error::invalidValue));
}

TEST(PrototypeFormatHeader, DecodesAsAKeyedDecoderDoes) {
  const struct {
    std::string json;
    std::expected<PrototypeFormatHeader, Error> expected;
  } cases[] = {
      {R"({"magic":"M","formatVersion":1,"extra":[1]})", PrototypeFormatHeader{"M", 1}},
      {R"({"formatVersion":1.0,"magic":"M"})", PrototypeFormatHeader{"M", 1}},
      {"", std::unexpected(Error::dataCorrupted)},
      {"{\"magic\":\"\xC0\x80\",\"formatVersion\":1}", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":1.5})", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":9223372036854775808})", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":1e300})", std::unexpected(Error::dataCorrupted)},
      {R"(["M",1])", std::unexpected(Error::typeMismatch)},
      {std::string(100000, '[') + std::string(100000, ']'), std::unexpected(Error::typeMismatch)},  // no stack overflow
      {R"({"formatVersion":1})", std::unexpected(Error::keyNotFound)},
      {R"({"magic":"M"})", std::unexpected(Error::keyNotFound)},
      {R"({"magic":null,"formatVersion":"x"})", std::unexpected(Error::valueNotFound)},
      {R"({"magic":"M","formatVersion":null})", std::unexpected(Error::valueNotFound)},
      {R"({"magic":1,"formatVersion":1})", std::unexpected(Error::typeMismatch)},
      {R"({"magic":"M","formatVersion":"1"})", std::unexpected(Error::typeMismatch)},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(PrototypeFormatHeader::decodeJSON(row.json), row.expected) << row.json.substr(0, 80);
  }
}

}  // namespace galdrine::format
