#include <gtest/gtest.h>

#include <cctype>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "format/header/BackupFormatHeaderV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"

namespace galdrine::format {

namespace {

using Error = BackupFormatHeaderV1Error;
using Value = CBORValue;

Bytes sequentialIdentifier() {
  Bytes identifier(16);
  for (std::size_t index = 0; index < identifier.size(); ++index) identifier[index] = static_cast<std::uint8_t>(index);
  return identifier;
}

Bytes concatenated(std::initializer_list<Bytes> pieces) {
  Bytes result;
  for (const Bytes& piece : pieces) result.insert(result.end(), piece.begin(), piece.end());
  return result;
}

// The header file as the byte table lays it out, written independently of the encoder.
Bytes expectedHeaderBytes(const Bytes& identifier) {
  using ByteText::bytes;
  return concatenated({
      {0xAC},
      {0x00, 0x48}, bytes("GALDRINE"),
      {0x01, 0x76}, bytes("com.galdrine.backup.v1"),
      {0x02, 0x78, 0x1D}, bytes("com.galdrine.backup.header.v1"),
      {0x03, 0x01},
      {0x04, 0x01},
      {0x05, 0x50}, identifier,
      {0x06, 0x78, 0x26}, bytes("com.galdrine.backup.algorithm-suite.v1"),
      {0x07, 0x66}, bytes("hybrid"),
      {0x08, 0x1A, 0x01, 0x00, 0x00, 0x00},
      {0x09, 0x1A, 0x04, 0x00, 0x00, 0x00},
      {0x0A, 0x18, 0x20},
      {0x0B, 0x1A, 0x01, 0x00, 0x00, 0x00},
  });
}

Value::Map validFields() {
  const auto decoded = DeterministicCBOR::decode(expectedHeaderBytes(sequentialIdentifier()), CBORLimits::formatHeader());
  return *decoded->asMap();
}

Value text(std::string_view value) { return Value::textString(std::string(value)); }

std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Failure> decodeValue(const Value& value) {
  const auto bytes = DeterministicCBOR::encode(value, CBORLimits::formatHeader());
  EXPECT_TRUE(bytes.has_value());
  return BackupFormatHeaderV1::decode(bytes ? *bytes : Bytes{});
}

}  // namespace

TEST(BackupFormatHeaderV1, EncodesTheFixedLayoutOf159Bytes) {
  const auto header = BackupFormatHeaderV1::make(sequentialIdentifier());
  ASSERT_TRUE(header.has_value());
  const auto encoded = header->encoded();
  ASSERT_TRUE(encoded.has_value());
  EXPECT_EQ(*encoded, expectedHeaderBytes(sequentialIdentifier()));
  EXPECT_EQ(encoded->size(), BackupFormatHeaderV1::encodedByteCount);
  EXPECT_EQ(Bytes(encoded->begin() + 73, encoded->begin() + 89), sequentialIdentifier());
}

TEST(BackupFormatHeaderV1, DecodesWhatItEncodesAndEncodesItBackByteForByte) {
  const auto decoded = BackupFormatHeaderV1::decode(expectedHeaderBytes(sequentialIdentifier()));
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(decoded->packageIdentifier(), sequentialIdentifier());
  EXPECT_EQ(decoded->encoded(), expectedHeaderBytes(sequentialIdentifier()));
  const auto zeroIdentifier = BackupFormatHeaderV1::make(Bytes(16, 0));
  ASSERT_TRUE(zeroIdentifier.has_value());
  const auto zeroDecoded = BackupFormatHeaderV1::decode(*zeroIdentifier->encoded());
  ASSERT_TRUE(zeroDecoded.has_value());
  EXPECT_EQ(*zeroDecoded, *zeroIdentifier);
}

TEST(BackupFormatHeaderV1, RefusesAnIdentifierThatIsNotSixteenBytes) {
  for (const std::size_t byteCount : {0u, 15u, 17u, 32u}) {
    EXPECT_EQ(BackupFormatHeaderV1::make(Bytes(byteCount, 7)), std::unexpected(Error::invalidPackageIdentifier())) << byteCount;
  }
}

// Every bit of a valid header matters except those of the package identifier: a flip
// outside offsets 73 to 88 is refused, one inside decodes to another identifier.
TEST(BackupFormatHeaderV1, EveryBitOutsideTheIdentifierIsChecked) {
  const Bytes valid = expectedHeaderBytes(sequentialIdentifier());
  for (std::size_t bit = 0; bit < valid.size() * 8; ++bit) {
    Bytes flipped = valid;
    flipped[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    const bool insideIdentifier = bit / 8 >= 73 && bit / 8 < 89;
    const auto decoded = BackupFormatHeaderV1::decode(flipped);
    EXPECT_EQ(decoded.has_value(), insideIdentifier) << "bit " << bit;
    if (decoded) {
      EXPECT_EQ(decoded->encoded(), flipped);
    }
  }
}

TEST(BackupFormatHeaderV1, PassesCodecErrorsOnUnchanged) {
  Bytes trailing = expectedHeaderBytes(sequentialIdentifier());
  trailing.push_back(0x00);
  EXPECT_EQ(BackupFormatHeaderV1::decode(trailing),
            std::unexpected(BackupFormatHeaderV1Failure(CBORError{CBORError::Code::trailingBytes})));
  EXPECT_EQ(BackupFormatHeaderV1::decode(Bytes{}),
            std::unexpected(BackupFormatHeaderV1Failure(CBORError{CBORError::Code::unexpectedEnd})));
  const Bytes tooLarge(4097, 0x00);
  EXPECT_EQ(BackupFormatHeaderV1::decode(tooLarge),
            std::unexpected(BackupFormatHeaderV1Failure(CBORError{CBORError::Code::encodedByteLimitExceeded})));
}

namespace {

struct HeaderRejectCase {
  std::string_view name;
  std::vector<std::pair<std::uint64_t, std::optional<Value>>> changes;  // nullopt removes the key
  Error expected;
};

const HeaderRejectCase kHeaderRejectCases[] = {
    {"thirteenth key", {{12, Value::null()}}, Error::invalidFieldSet()},
    {"key 11 missing", {{11, std::nullopt}}, Error::invalidFieldSet()},
    {"key 11 missing, key 0 wrong too", {{11, std::nullopt}, {0, text("GALDRINE")}}, Error::invalidFieldSet()},
    {"magic as text", {{0, text("GALDRINE")}}, Error::invalidFieldType(0)},
    {"magic as text and a later fault", {{0, text("GALDRINE")}, {3, Value::unsignedInteger(2)}}, Error::invalidFieldType(0)},
    {"other magic", {{0, Value::byteString(ByteText::bytes("GALDRINF"))}}, Error::invalidMagic()},
    {"format identifier as bytes", {{1, Value::byteString(ByteText::bytes("com.galdrine.backup.v1"))}}, Error::invalidFieldType(1)},
    {"format identifier in upper case", {{1, text("COM.GALDRINE.BACKUP.V1")}}, Error::unsupportedFormatIdentifier()},
    {"header schema as unsigned", {{2, Value::unsignedInteger(1)}}, Error::invalidFieldType(2)},
    {"header schema of another version", {{2, text("com.galdrine.backup.header.v2")}}, Error::unsupportedHeaderSchema()},
    {"format version as text", {{3, text("1")}}, Error::invalidFieldType(3)},
    {"format version 2", {{3, Value::unsignedInteger(2)}}, Error::unsupportedFormatVersion(2)},
    {"format version 2, layout limit wrong too", {{3, Value::unsignedInteger(2)}, {10, Value::unsignedInteger(64)}}, Error::unsupportedFormatVersion(2)},
    {"reader version as boolean", {{4, Value::boolean(true)}}, Error::invalidFieldType(4)},
    {"reader version 2", {{4, Value::unsignedInteger(2)}}, Error::unsupportedMinimumReaderVersion(2)},
    {"identifier as text", {{5, text("0123456789abcdef")}}, Error::invalidFieldType(5)},
    {"identifier of 15 bytes", {{5, Value::byteString(Bytes(15, 1))}}, Error::invalidPackageIdentifier()},
    {"identifier of 15 bytes, suite wrong too", {{5, Value::byteString(Bytes(15, 1))}, {6, text("x")}}, Error::invalidPackageIdentifier()},
    {"suite as null", {{6, Value::null()}}, Error::invalidFieldType(6)},
    {"other suite", {{6, text("com.galdrine.backup.algorithm-suite.v2")}}, Error::unsupportedAlgorithmSuite()},
    {"layout as array", {{7, Value::array({})}}, Error::invalidFieldType(7)},
    {"other layout", {{7, text("flat")}}, Error::unsupportedLayout()},
    {"packed resource ceiling as text", {{8, text("16777216")}}, Error::invalidFieldType(8)},
    {"smaller packed resource ceiling", {{8, Value::unsignedInteger(1024)}}, Error::incompatibleLayoutLimit(8)},
    {"larger segment ceiling", {{9, Value::unsignedInteger(67108865)}}, Error::incompatibleLayoutLimit(9)},
    {"segment resource count 64", {{10, Value::unsignedInteger(64)}}, Error::incompatibleLayoutLimit(10)},
    {"segment resource count 64, key 11 as text", {{10, Value::unsignedInteger(64)}, {11, text("x")}}, Error::incompatibleLayoutLimit(10)},
    {"standalone chunk ceiling negative", {{11, Value::negative(16777215)}}, Error::invalidFieldType(11)},
};

void PrintTo(const HeaderRejectCase& testCase, std::ostream* stream) { *stream << testCase.name; }

class BackupFormatHeaderV1Reject : public testing::TestWithParam<HeaderRejectCase> {};

}  // namespace

TEST_P(BackupFormatHeaderV1Reject, NamesTheFirstFailedCheck) {
  Value::Map fields = validFields();
  for (const auto& [key, replacement] : GetParam().changes) {
    fields.erase(key);
    if (replacement) fields.emplace(key, *replacement);
  }
  EXPECT_EQ(decodeValue(Value::map(fields)), std::unexpected(BackupFormatHeaderV1Failure(GetParam().expected)));
}

INSTANTIATE_TEST_SUITE_P(Cases, BackupFormatHeaderV1Reject, testing::ValuesIn(kHeaderRejectCases),
                         [](const auto& testCase) {
                           std::string name(testCase.param.name);
                           for (char& character : name)
                             if (!std::isalnum(static_cast<unsigned char>(character))) character = '_';
                           return name;
                         });

TEST(BackupFormatHeaderV1, RefusesARootThatIsNotAMap) {
  for (const Value& root : {Value::array({}), Value::unsignedInteger(0), Value::byteString(Bytes(16, 0))}) {
    EXPECT_EQ(decodeValue(root), std::unexpected(BackupFormatHeaderV1Failure(Error::invalidTopLevel())));
  }
  EXPECT_EQ(decodeValue(Value::map({})), std::unexpected(BackupFormatHeaderV1Failure(Error::invalidFieldSet())));
}

}  // namespace galdrine::format
