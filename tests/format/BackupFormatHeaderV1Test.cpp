#include "format/header/BackupFormatHeaderV1.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "format/cbor/DeterministicCBOR.hpp"
#include "support/HexBytes.hpp"

namespace galdrine::format {

namespace {

using Error = BackupFormatHeaderV1Error;
using Failure = BackupFormatHeaderV1Failure;
using Value = CBORValue;
using testsupport::hexBytes;

const Bytes kIdentifier = hexBytes("000102030405060708090a0b0c0d0e0f");

// The header file as the byte table lays it out, written independently of the encoder.
Bytes expectedHeaderBytes(ByteView identifier) {
  const auto text = [](std::string_view value) { return ByteText::lowerHex(ByteText::view(value)); };
  std::string hex = "ac0048" + text("GALDRINE") + "0176" + text("com.galdrine.backup.v1");
  hex += "02781d" + text("com.galdrine.backup.header.v1") + "0301" + "0401" + "0550" + ByteText::lowerHex(identifier);
  hex += "067826" + text("com.galdrine.backup.algorithm-suite.v1") + "0766" + text("hybrid");
  return hexBytes(hex + "081a01000000" + "091a04000000" + "0a1820" + "0b1a01000000");
}

}  // namespace

TEST(BackupFormatHeaderV1, EncodesTheFixedLayoutAndDecodesItBack) {
  const auto header = BackupFormatHeaderV1::make(kIdentifier);
  ASSERT_TRUE(header.has_value());
  EXPECT_EQ(header->encoded(), expectedHeaderBytes(kIdentifier));
  EXPECT_EQ(BackupFormatHeaderV1::decode(expectedHeaderBytes(kIdentifier)), *header);
  for (const std::size_t byteCount : {0u, 15u, 17u}) {
    EXPECT_EQ(BackupFormatHeaderV1::make(Bytes(byteCount, 7)), std::unexpected(Error::invalidPackageIdentifier()));
  }
}

// Every bit of a valid header matters except those of the package identifier: a flip
// outside offsets 73 to 88 is refused, one inside decodes to another identifier.
TEST(BackupFormatHeaderV1, EveryBitOutsideTheIdentifierIsChecked) {
  const Bytes valid = expectedHeaderBytes(kIdentifier);
  for (std::size_t bit = 0; bit < valid.size() * 8; ++bit) {
    Bytes flipped = valid;
    flipped[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    const auto decoded = BackupFormatHeaderV1::decode(flipped);
    EXPECT_EQ(decoded.has_value(), bit / 8 >= 73 && bit / 8 < 89) << "bit " << bit;
    if (decoded) {
      EXPECT_EQ(decoded->encoded(), flipped);
    }
  }
}

// One change to a valid header per row (a key replaced or, with nullopt, removed), or other
// bytes altogether. Where a row makes several changes, the check that runs first decides.
TEST(BackupFormatHeaderV1, DecodeNamesTheFirstFailedCheck) {
  using Changes = std::vector<std::pair<std::uint64_t, std::optional<Value>>>;
  const auto valid = DeterministicCBOR::decode(expectedHeaderBytes(kIdentifier), CBORLimits::formatHeader());
  ASSERT_TRUE(valid.has_value());
  const auto changed = [&](const Changes& changes) {
    Value::Map fields = *valid->asMap();
    for (const auto& [key, replacement] : changes) {
      fields.erase(key);
      if (replacement) fields.emplace(key, *replacement);
    }
    return DeterministicCBOR::encode(Value::map(std::move(fields)), CBORLimits::formatHeader()).value_or(Bytes{});
  };
  const auto text = [](std::string_view value) { return Value::textString(std::string(value)); };
  const auto number = [](std::uint64_t value) { return Value::unsignedInteger(value); };
  Bytes trailing = expectedHeaderBytes(kIdentifier);
  trailing.push_back(0x00);
  const struct {
    std::string_view name;
    Bytes input;
    Failure expected;
  } cases[] = {
      {"trailing byte", trailing, CBORError{CBORError::Code::trailingBytes}},
      {"empty", {}, CBORError{CBORError::Code::unexpectedEnd}},
      {"4097 bytes", Bytes(4097, 0), CBORError{CBORError::Code::encodedByteLimitExceeded}},
      {"array at the root", hexBytes("80"), Error::invalidTopLevel()},
      {"empty map", hexBytes("a0"), Error::invalidFieldSet()},
      {"thirteenth key", changed({{12, Value::null()}}), Error::invalidFieldSet()},
      {"key 11 missing, key 0 wrong too", changed({{11, std::nullopt}, {0, text("GALDRINE")}}),
       Error::invalidFieldSet()},
      {"magic as text", changed({{0, text("GALDRINE")}}), Error::invalidFieldType(0)},
      {"other magic", changed({{0, Value::byteString(ByteText::bytes("GALDRINF"))}}), Error::invalidMagic()},
      {"format identifier in upper case", changed({{1, text("COM.GALDRINE.BACKUP.V1")}}),
       Error::unsupportedFormatIdentifier()},
      {"header schema of another version", changed({{2, text("com.galdrine.backup.header.v2")}}),
       Error::unsupportedHeaderSchema()},
      {"format version as text", changed({{3, text("1")}}), Error::invalidFieldType(3)},
      {"format version 2, a limit wrong too", changed({{3, number(2)}, {10, number(64)}}),
       Error::unsupportedFormatVersion(2)},
      {"reader version 2", changed({{4, number(2)}}), Error::unsupportedMinimumReaderVersion(2)},
      {"identifier of 15 bytes, suite wrong too", changed({{5, Value::byteString(Bytes(15, 1))}, {6, text("x")}}),
       Error::invalidPackageIdentifier()},
      {"other suite", changed({{6, text("com.galdrine.backup.algorithm-suite.v2")}}),
       Error::unsupportedAlgorithmSuite()},
      {"layout as array", changed({{7, Value::array({})}}), Error::invalidFieldType(7)},
      {"other layout", changed({{7, text("flat")}}), Error::unsupportedLayout()},
      {"smaller packed resource ceiling", changed({{8, number(1024)}}), Error::incompatibleLayoutLimit(8)},
      {"larger segment ceiling", changed({{9, number(67108865)}}), Error::incompatibleLayoutLimit(9)},
      {"segment resource count 64, key 11 as text", changed({{10, number(64)}, {11, text("x")}}),
       Error::incompatibleLayoutLimit(10)},
      {"standalone chunk ceiling negative", changed({{11, Value::negative(16777215)}}), Error::invalidFieldType(11)},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(BackupFormatHeaderV1::decode(row.input), std::unexpected(row.expected)) << row.name;
  }
}

}  // namespace galdrine::format
