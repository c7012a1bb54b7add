#include <gtest/gtest.h>

#include <string>

#include "GaldrineCore/GaldrinePrototypeFormatHeader.hpp"

namespace {

using Error = GaldrinePrototypeFormatHeaderError;

TEST(GaldrinePrototypeFormatHeader, RoundTripsWithoutJudgingValues) {
  const GaldrinePrototypeFormatHeader headers[] = {
      {"GALDRINE-DRAFT", 0}, {"something else", -7}, {"", INT64_MIN}, {"\u00E9/\"\n", INT64_MAX}};
  for (const auto& header : headers) {
    const auto encoded = header.encodeJSON();
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(GaldrinePrototypeFormatHeader::decodeJSON(*encoded), header) << *encoded;
  }
  EXPECT_EQ(GaldrinePrototypeFormatHeader({"GALDRINE-DRAFT", 0}).encodeJSON(),
            R"({"formatVersion":0,"magic":"GALDRINE-DRAFT"})");
  EXPECT_EQ(GaldrinePrototypeFormatHeader({"a\xFF", 0}).encodeJSON(), std::unexpected(Error::invalidValue));
}

TEST(GaldrinePrototypeFormatHeader, DecodesAsAKeyedDecoderDoes) {
  struct DecodeCase { std::string_view json; std::expected<GaldrinePrototypeFormatHeader, Error> expected; };
  const DecodeCase cases[] = {
      {R"({"magic":"M","formatVersion":1,"extra":[1]})", GaldrinePrototypeFormatHeader{"M", 1}},
      {R"({"formatVersion":1.0,"magic":"M"})", GaldrinePrototypeFormatHeader{"M", 1}},
      {R"({"magic":"M","formatVersion":-9223372036854775808})", GaldrinePrototypeFormatHeader{"M", INT64_MIN}},
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
    EXPECT_EQ(GaldrinePrototypeFormatHeader::decodeJSON(decodeCase.json), decodeCase.expected) << decodeCase.json;
  }
}

TEST(GaldrinePrototypeFormatHeader, SurvivesDeepNesting) {
  const std::size_t depth = 100000;
  const std::string nested = std::string(depth, '[') + std::string(depth, ']');
  EXPECT_EQ(GaldrinePrototypeFormatHeader::decodeJSON(nested), std::unexpected(Error::typeMismatch));
}

}  // namespace
