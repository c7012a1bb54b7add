#include "format/header/BackupFormatHeaderV1.hpp"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace {

using Error = BackupFormatHeaderV1Error;
namespace FormatV1 = BackupFormatV1;

// The keys of the header map.
enum HeaderKey : std::uint64_t {
  magicKey = 0,
  formatIdentifierKey = 1,
  headerSchemaKey = 2,
  formatVersionKey = 3,
  minimumReaderVersionKey = 4,
  packageIdentifierKey = 5,
  algorithmSuiteKey = 6,
  layoutKey = 7,
};
constexpr std::uint64_t lastHeaderKey = 11;

struct LayoutCeiling {
  std::uint64_t key;
  std::uint64_t value;
};

// The ceilings a reader of this version must be able to hold, in the order they are checked.
constexpr std::array<LayoutCeiling, 4> layoutCeilings{{
    {8, FormatV1::maximumPackedResourcePlaintextByteCount},
    {9, FormatV1::maximumSegmentPlaintextByteCount},
    {10, FormatV1::maximumSegmentResourceCount},
    {11, FormatV1::maximumStandaloneChunkPlaintextByteCount},
}};

std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

// The key set was checked before any field is read, so every lookup below finds its key.
const CBORBorrowedValue& field(const CBORBorrowedValue& header, std::uint64_t key) { return *header.find(key); }

std::expected<ByteView, Error> byteStringField(const CBORBorrowedValue& header, std::uint64_t key) {
  const auto bytes = field(header, key).asByteString();
  if (!bytes) return refuse(Error::invalidFieldType(key));
  return *bytes;
}

std::expected<void, Error> requireText(const CBORBorrowedValue& header, std::uint64_t key, std::string_view expected,
                                       Error mismatch) {
  const auto text = field(header, key).asTextString();
  if (!text) return refuse(Error::invalidFieldType(key));
  if (*text != expected) return refuse(mismatch);
  return {};
}

std::expected<void, Error> requireVersion(const CBORBorrowedValue& header, std::uint64_t key, std::uint64_t expected,
                                          Error (*mismatch)(std::uint64_t)) {
  const auto version = field(header, key).asUnsigned();
  if (!version) return refuse(Error::invalidFieldType(key));
  if (*version != expected) return refuse(mismatch(*version));
  return {};
}

// requireLimit: a header that declares another ceiling, smaller or larger, is refused alike;
// the ceilings say what a reader must hold, they are not negotiated.
std::expected<void, Error> requireLimit(const CBORBorrowedValue& header, const LayoutCeiling& ceiling) {
  const auto declared = field(header, ceiling.key).asUnsigned();
  if (!declared) return refuse(Error::invalidFieldType(ceiling.key));
  if (*declared != ceiling.value) return refuse(Error::incompatibleLayoutLimit(ceiling.key));
  return {};
}

std::expected<void, Error> requireMagic(const CBORBorrowedValue& header) {
  const auto magic = byteStringField(header, magicKey);
  if (!magic) return std::unexpected(magic.error());
  if (!ByteOrder::equal(*magic, FormatV1::magic)) return refuse(Error::invalidMagic());
  return {};
}

std::expected<ByteView, Error> packageIdentifierField(const CBORBorrowedValue& header) {
  const auto identifier = byteStringField(header, packageIdentifierKey);
  if (!identifier) return identifier;
  if (std::cmp_not_equal(identifier->size(), FormatV1::packageIdentifierByteCount))
    return refuse(Error::invalidPackageIdentifier());
  return *identifier;
}

// checkedPackageIdentifier runs every field check in the header's order and gives the one
// field that varies.
std::expected<ByteView, Error> checkedPackageIdentifier(const CBORBorrowedValue& header) {
  if (header.asMap() == nullptr) return refuse(Error::invalidTopLevel());
  if (!header.hasKeysZeroThrough(lastHeaderKey)) return refuse(Error::invalidFieldSet());
  if (auto checked = requireMagic(header); !checked) return std::unexpected(checked.error());
  if (auto checked = requireText(header, formatIdentifierKey, FormatV1::canonicalFormatIdentifier,
                                 Error::unsupportedFormatIdentifier());
      !checked)
    return std::unexpected(checked.error());
  if (auto checked =
          requireText(header, headerSchemaKey, FormatV1::headerSchemaIdentifier, Error::unsupportedHeaderSchema());
      !checked)
    return std::unexpected(checked.error());
  if (auto checked = requireVersion(header, formatVersionKey, FormatV1::formatVersion, Error::unsupportedFormatVersion);
      !checked)
    return std::unexpected(checked.error());
  if (auto checked = requireVersion(header, minimumReaderVersionKey, FormatV1::minimumReaderVersion,
                                    Error::unsupportedMinimumReaderVersion);
      !checked)
    return std::unexpected(checked.error());
  const auto packageIdentifier = packageIdentifierField(header);
  if (!packageIdentifier) return packageIdentifier;
  if (auto checked = requireText(header, algorithmSuiteKey, FormatV1::algorithmSuiteIdentifier,
                                 Error::unsupportedAlgorithmSuite());
      !checked)
    return std::unexpected(checked.error());
  if (auto checked = requireText(header, layoutKey, FormatV1::layoutIdentifier, Error::unsupportedLayout()); !checked)
    return std::unexpected(checked.error());
  for (const LayoutCeiling& ceiling : layoutCeilings) {
    if (auto checked = requireLimit(header, ceiling); !checked) return std::unexpected(checked.error());
  }
  return *packageIdentifier;
}

CBORValue text(std::string_view value) { return CBORValue::textString(std::string(value)); }

}  // namespace

std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Error> BackupFormatHeaderV1::make(ByteView packageIdentifier) {
  if (std::cmp_not_equal(packageIdentifier.size(), FormatV1::packageIdentifierByteCount))
    return refuse(Error::invalidPackageIdentifier());
  return BackupFormatHeaderV1(Bytes(packageIdentifier.begin(), packageIdentifier.end()));
}

std::expected<BackupFormatHeaderV1, BackupFormatHeaderV1Failure> BackupFormatHeaderV1::decode(ByteView bytes) {
  const auto header = DeterministicCBOR::decodeBorrowed(bytes, CBORLimits::formatHeader());
  if (!header) return std::unexpected(BackupFormatHeaderV1Failure(header.error()));
  const auto packageIdentifier = checkedPackageIdentifier(*header);
  if (!packageIdentifier) return std::unexpected(BackupFormatHeaderV1Failure(packageIdentifier.error()));
  return BackupFormatHeaderV1(Bytes(packageIdentifier->begin(), packageIdentifier->end()));
}

std::expected<Bytes, CBORError> BackupFormatHeaderV1::encoded() const {
  CBORValue::Map fields;
  fields.emplace(magicKey, CBORValue::byteString(ByteView(FormatV1::magic)));
  fields.emplace(formatIdentifierKey, text(FormatV1::canonicalFormatIdentifier));
  fields.emplace(headerSchemaKey, text(FormatV1::headerSchemaIdentifier));
  fields.emplace(formatVersionKey, CBORValue::unsignedInteger(FormatV1::formatVersion));
  fields.emplace(minimumReaderVersionKey, CBORValue::unsignedInteger(FormatV1::minimumReaderVersion));
  fields.emplace(packageIdentifierKey, CBORValue::byteString(packageIdentifier_));
  fields.emplace(algorithmSuiteKey, text(FormatV1::algorithmSuiteIdentifier));
  fields.emplace(layoutKey, text(FormatV1::layoutIdentifier));
  for (const LayoutCeiling& ceiling : layoutCeilings)
    fields.emplace(ceiling.key, CBORValue::unsignedInteger(ceiling.value));
  return DeterministicCBOR::encode(CBORValue::map(std::move(fields)), CBORLimits::formatHeader());
}

}  // namespace galdrine::format
