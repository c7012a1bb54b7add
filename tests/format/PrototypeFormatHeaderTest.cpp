#include <gtest/gtest.h>

#include <string>

#include "format/header/PrototypeFormatHeader.hpp"

namespace galdrine::format {

namespace {

using Error = PrototypeFormatHeaderError;

TEST(PrototypeFormatHeader, RoundTripsWithoutJudgingValues) {
  const PrototypeFormatHeader headers[] = {
      {"GALDRINE-DRAFT", 0}, {"something else", -7}, {"", INT64_MIN}, {"\u00E9/\"\n", INT64_MAX}};
  for (const auto& header : headers) {
    const auto encoded = header.encodeJSON();
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(PrototypeFormatHeader::decodeJSON(*encoded), header) << *encoded;
  }
  EXPECT_EQ(PrototypeFormatHeader({"GALDRINE-DRAFT", 0}).encodeJSON(),
            R"({"formatVersion":0,"magic":"GALDRINE-DRAFT"})");
  EXPECT_EQ(PrototypeFormatHeader({"a\xFF", 0}).encodeJSON(), std::unexpected(Error::invalidValue));
}

TEST(PrototypeFormatHeader, DecodesAsAKeyedDecoderDoes) {
  struct DecodeCase { std::string_view json; std::expected<PrototypeFormatHeader, Error> expected; };
  const DecodeCase cases[] = {
      {R"({"magic":"M","formatVersion":1,"extra":[1]})", PrototypeFormatHeader{"M", 1}},
      {R"({"formatVersion":1.0,"magic":"M"})", PrototypeFormatHeader{"M", 1}},
      {R"({"magic":"M","formatVersion":-9223372036854775808})", PrototypeFormatHeader{"M", INT64_MIN}},
      {"", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":1)", std::unexpected(Error::dataCorrupted)},
      {"{\"magic\":\"\xC0\x80\",\"formatVersion\":1}", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":1.5})", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":9223372036854775808})", std::unexpected(Error::dataCorrupted)},
      {R"({"magic":"M","formatVersion":1e300})", std::unexpected(Error::dataCorrupted)},
      {R"(["M",1])", std::unexpected(Error::typeMismatch)},
      {R"({"formatVersion":1})", std::unexpected(Error::keyNotFound)},
      {R"({"magic":"M"})", std::unexpected(Error::keyNotFound)},
      {R"({"magic":null,"formatVersion":"x"})", std::unexpected(Error::valueNotFound)},
      {R"({"magic":"M","formatVersion":null})", std::unexpected(Error::valueNotFound)},
      {R"({"magic":1,"formatVersion":1})", std::unexpected(Error::typeMismatch)},
      {R"({"magic":"M","formatVersion":"1"})", std::unexpected(Error::typeMismatch)},
      {R"({"magic":"M","formatVersion":true})", std::unexpected(Error::typeMismatch)},
  };
  for (const DecodeCase& decodeCase : cases) {
    EXPECT_EQ(PrototypeFormatHeader::decodeJSON(decodeCase.json), decodeCase.expected) << decodeCase.json;
  }
}

TEST(PrototypeFormatHeader, SurvivesDeepNesting) {
  const std::size_t depth = 100000;
  const std::string nested = std::string(depth, '[') + std::string(depth, ']');
  EXPECT_EQ(PrototypeFormatHeader::decodeJSON(nested), std::unexpected(Error::typeMismatch));
}

}  // namespace

}  // namespace galdrine::format
