#include "format/cbor/DeterministicCBOR.hpp"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/ByteCursor.hpp"
#include "platform/UTF8.hpp"

namespace galdrine::format {

namespace {

using Code = CBORError::Code;

constexpr std::uint64_t lengthOverflowBound = std::uint64_t{1} << 63;

std::unexpected<CBORError> failure(Code code) { return std::unexpected(CBORError{code, 0}); }
std::unexpected<CBORError> failure(CBORError error) { return std::unexpected(error); }

// ---- Encoding ----

class Encoder {
 public:
  explicit Encoder(const CBORLimits& limits) : limits_(limits) {}

  std::expected<void, CBORError> append(const CBORValue& value, std::int64_t depth) {
    if (depth > limits_.maximumDepth) return failure(Code::depthLimitExceeded);
    if (++totalItemCount_ > limits_.maximumTotalItemCount) return failure(Code::totalItemLimitExceeded);
    if (auto appended = appendByKind(value, depth); !appended) return appended;
    if (std::cmp_greater(output_.size(), limits_.maximumEncodedByteCount))
      return failure(Code::encodedByteLimitExceeded);
    return {};
  }

  Bytes takeOutput() { return std::move(output_); }

 private:
  std::expected<void, CBORError> appendByKind(const CBORValue& value, std::int64_t depth) {
    switch (value.kind()) {
      case CBORKind::unsignedInteger:
        appendHead(0, *value.asUnsigned());
        return {};
      case CBORKind::negative:
        appendHead(1, *value.asNegativeArgument());
        return {};
      case CBORKind::byteString: {
        const Bytes& bytes = *value.asByteString();
        if (std::cmp_greater(bytes.size(), limits_.maximumByteStringByteCount))
          return failure(Code::byteStringLimitExceeded);
        return appendString(2, bytes);
      }
      case CBORKind::textString: {
        const std::string& text = *value.asTextString();
        if (std::cmp_greater(text.size(), limits_.maximumTextStringByteCount))
          return failure(Code::textStringLimitExceeded);
        if (!platform::UTF8::isValid(text)) return failure(Code::invalidUTF8);
        return appendString(3, ByteText::view(text));
      }
      case CBORKind::array:
        return appendArray(*value.asArray(), depth);
      case CBORKind::map:
        return appendMap(*value.asMap(), depth);
      case CBORKind::boolean:
        output_.push_back(*value.asBoolean() ? 0xF5 : 0xF4);
        return {};
      case CBORKind::null:
        output_.push_back(0xF6);
        return {};
    }
    std::unreachable();
  }

  std::expected<void, CBORError> appendArray(const CBORValue::Array& items, std::int64_t depth) {
    if (std::cmp_greater(items.size(), limits_.maximumContainerItemCount))
      return failure(Code::containerItemLimitExceeded);
    appendHead(4, items.size());
    for (const auto& item : items) {
      if (auto appended = append(item, depth + 1); !appended) return appended;
    }
    return {};
  }

  std::expected<void, CBORError> appendMap(const CBORValue::Map& entries, std::int64_t depth) {
    if (std::cmp_greater(entries.size(), limits_.maximumContainerItemCount))
      return failure(Code::containerItemLimitExceeded);
    appendHead(5, entries.size());
    for (const auto& [key, entryValue] : entries) {  // std::map iterates in ascending key order
      if (auto appended = append(CBORValue::unsignedInteger(key), depth + 1); !appended) return appended;
      if (auto appended = append(entryValue, depth + 1); !appended) return appended;
    }
    return {};
  }

  // appendString refuses, before copying, a string that would carry the output past its bound.
  std::expected<void, CBORError> appendString(std::uint8_t majorType, ByteView bytes) {
    appendHead(majorType, bytes.size());
    if (std::cmp_greater(output_.size() + bytes.size(), limits_.maximumEncodedByteCount))
      return failure(Code::encodedByteLimitExceeded);
    output_.insert(output_.end(), bytes.begin(), bytes.end());
    return {};
  }

  void appendHead(std::uint8_t majorType, std::uint64_t argument) {
    DeterministicCBOR::appendHead(output_, majorType, argument);
  }

  const CBORLimits& limits_;
  Bytes output_;
  std::int64_t totalItemCount_ = 0;
};

// ---- Decoding ----

class Decoder {
 public:
  Decoder(ByteView input, const CBORLimits& limits) : cursor_(input), limits_(limits) {}

  std::expected<CBORBorrowedValue, CBORError> decodeValue(std::int64_t depth) {
    if (depth > limits_.maximumDepth) return failure(Code::depthLimitExceeded);
    if (++totalItemCount_ > limits_.maximumTotalItemCount) return failure(Code::totalItemLimitExceeded);
    const auto initial = cursor_.take(1);
    if (!initial) return failure(Code::unexpectedEnd);
    const auto majorType = static_cast<std::uint8_t>((*initial)[0] >> 5);
    const auto additional = static_cast<std::uint8_t>((*initial)[0] & 0x1F);
    switch (majorType) {
      case 0:
      case 1: {
        const auto argument = readArgument(additional);
        if (!argument) return failure(argument.error());
        return majorType == 0 ? CBORBorrowedValue::unsignedInteger(*argument) : CBORBorrowedValue::negative(*argument);
      }
      case 2:
        return decodeByteString(additional);
      case 3:
        return decodeTextString(additional);
      case 4:
        return decodeArray(additional, depth);
      case 5:
        return decodeMap(additional, depth);
      case 6:
        if (additional == 31) return failure(Code::indefiniteLengthNotAllowed);
        return failure(CBORError::unsupportedMajorType(6));
      default:
        return decodeSimple(additional);
    }
  }

  bool atEnd() const { return cursor_.atEnd(); }

 private:
  std::expected<std::uint64_t, CBORError> readArgument(std::uint8_t additional) {
    if (additional < 24) return additional;
    if (additional == 31) return failure(Code::indefiniteLengthNotAllowed);
    if (additional > 27) return failure(CBORError::unsupportedSimpleValue(additional));
    static constexpr std::size_t byteCounts[] = {1, 2, 4, 8};
    static constexpr std::uint64_t smallestArguments[] = {24, 256, 65536, 4294967296};
    const auto argument = cursor_.takeBigEndian(byteCounts[additional - 24]);
    if (!argument) return failure(Code::unexpectedEnd);
    if (*argument < smallestArguments[additional - 24]) return failure(Code::nonMinimalIntegerOrLength);
    return *argument;
  }

  // readLength reads a string length or a container count and checks it against its limit
  // before anything is taken for it.
  std::expected<std::uint64_t, CBORError> readLength(std::uint8_t additional, std::int64_t limit, Code limitCode) {
    const auto length = readArgument(additional);
    if (!length) return length;
    if (*length >= lengthOverflowBound) return failure(Code::integerOverflow);
    if (std::cmp_greater(*length, limit)) return failure(limitCode);
    return *length;
  }

  std::expected<ByteView, CBORError> readStringBytes(std::uint8_t additional, std::int64_t limit, Code limitCode) {
    const auto length = readLength(additional, limit, limitCode);
    if (!length) return failure(length.error());
    const auto bytes = cursor_.take(static_cast<std::size_t>(*length));
    if (!bytes) return failure(Code::unexpectedEnd);
    return *bytes;
  }

  std::expected<CBORBorrowedValue, CBORError> decodeByteString(std::uint8_t additional) {
    const auto bytes = readStringBytes(additional, limits_.maximumByteStringByteCount, Code::byteStringLimitExceeded);
    if (!bytes) return failure(bytes.error());
    return CBORBorrowedValue::byteString(*bytes);
  }

  std::expected<CBORBorrowedValue, CBORError> decodeTextString(std::uint8_t additional) {
    const auto bytes = readStringBytes(additional, limits_.maximumTextStringByteCount, Code::textStringLimitExceeded);
    if (!bytes) return failure(bytes.error());
    if (!platform::UTF8::isValid(*bytes)) return failure(Code::invalidUTF8);
    return CBORBorrowedValue::textString(ByteText::text(*bytes));
  }

  // reservationFor never reserves more than the input could still hold: each item takes a byte.
  std::size_t reservationFor(std::uint64_t count) const {
    return static_cast<std::size_t>(std::min<std::uint64_t>(count, cursor_.remainingByteCount()));
  }

  std::expected<CBORBorrowedValue, CBORError> decodeArray(std::uint8_t additional, std::int64_t depth) {
    const auto count = readLength(additional, limits_.maximumContainerItemCount, Code::containerItemLimitExceeded);
    if (!count) return failure(count.error());
    CBORBorrowedValue::Array items;
    items.reserve(reservationFor(*count));
    for (std::uint64_t index = 0; index < *count; ++index) {
      auto item = decodeValue(depth + 1);
      if (!item) return item;
      items.push_back(std::move(*item));
    }
    return CBORBorrowedValue::array(std::move(items));
  }

  std::expected<CBORBorrowedValue, CBORError> decodeMap(std::uint8_t additional, std::int64_t depth) {
    const auto count = readLength(additional, limits_.maximumContainerItemCount, Code::containerItemLimitExceeded);
    if (!count) return failure(count.error());
    CBORBorrowedValue::Map entries;
    entries.reserve(reservationFor(*count));
    ByteView previousKeyBytes;
    for (std::uint64_t index = 0; index < *count; ++index) {
      const std::size_t keyStart = cursor_.offset();
      const auto key = decodeValue(depth + 1);
      if (!key) return key;
      const auto keyValue = key->asUnsigned();
      if (!keyValue) return failure(Code::mapKeyMustBeUnsignedInteger);
      const ByteView keyBytes = cursor_.consumedSince(keyStart);
      if (index > 0 && !keyBytesFollow(previousKeyBytes, keyBytes)) {
        if (holdsKey(entries, *keyValue)) return failure(CBORError::duplicateMapKey(*keyValue));
        return failure(Code::mapKeysOutOfOrder);
      }
      if (holdsKey(entries, *keyValue)) return failure(CBORError::duplicateMapKey(*keyValue));
      previousKeyBytes = keyBytes;
      auto entryValue = decodeValue(depth + 1);
      if (!entryValue) return entryValue;
      entries.emplace_back(*keyValue, std::move(*entryValue));
    }
    return CBORBorrowedValue::map(std::move(entries));
  }

  // Encoded keys in shortest form order numerically when shorter ones come first and equal
  // lengths compare byte by byte.
  static bool keyBytesFollow(ByteView previous, ByteView current) {
    if (previous.size() != current.size()) return previous.size() < current.size();
    return std::ranges::lexicographical_compare(previous, current);
  }

  // Keys so far are ascending, so a binary search finds a repeated one.
  static bool holdsKey(const CBORBorrowedValue::Map& entries, std::uint64_t key) {
    const auto found = std::ranges::lower_bound(entries, key, {}, &CBORBorrowedValue::Map::value_type::first);
    return found != entries.end() && found->first == key;
  }

  static std::expected<CBORBorrowedValue, CBORError> decodeSimple(std::uint8_t additional) {
    switch (additional) {
      case 20:
        return CBORBorrowedValue::boolean(false);
      case 21:
        return CBORBorrowedValue::boolean(true);
      case 22:
        return CBORBorrowedValue::null();
      default:
        return failure(CBORError::unsupportedSimpleValue(additional));
    }
  }

  platform::ByteCursor cursor_;
  const CBORLimits& limits_;
  std::int64_t totalItemCount_ = 0;
};

}  // namespace

namespace DeterministicCBOR {

void appendHead(Bytes& output, std::uint8_t majorType, std::uint64_t argument) {
  const auto first = static_cast<std::uint8_t>(majorType << 5);
  if (argument < 24) {
    output.push_back(static_cast<std::uint8_t>(first | argument));
    return;
  }
  std::size_t followingByteCount = 8;
  std::uint8_t additional = 27;
  if (argument <= 0xFF) {
    followingByteCount = 1;
    additional = 24;
  } else if (argument <= 0xFFFF) {
    followingByteCount = 2;
    additional = 25;
  } else if (argument <= 0xFFFFFFFF) {
    followingByteCount = 4;
    additional = 26;
  }
  output.push_back(static_cast<std::uint8_t>(first | additional));
  for (std::size_t index = followingByteCount; index-- > 0;)
    output.push_back(static_cast<std::uint8_t>(argument >> (8 * index)));
}

std::expected<Bytes, CBORError> encode(const CBORValue& value, const CBORLimits& limits) {
  if (!limits.isValid()) return failure(Code::invalidLimits);
  Encoder encoder(limits);
  if (auto appended = encoder.append(value, 0); !appended) return failure(appended.error());
  return encoder.takeOutput();
}

std::expected<CBORBorrowedValue, CBORError> decodeBorrowed(ByteView bytes, const CBORLimits& limits) {
  if (!limits.isValid()) return failure(Code::invalidLimits);
  if (std::cmp_greater(bytes.size(), limits.maximumEncodedByteCount)) return failure(Code::encodedByteLimitExceeded);
  Decoder decoder(bytes, limits);
  auto value = decoder.decodeValue(0);
  if (!value) return value;
  if (!decoder.atEnd()) return failure(Code::trailingBytes);
  return value;
}

std::expected<CBORValue, CBORError> decode(ByteView bytes, const CBORLimits& limits) {
  const auto borrowed = decodeBorrowed(bytes, limits);
  if (!borrowed) return failure(borrowed.error());
  return borrowed->owned();
}

}  // namespace DeterministicCBOR

}  // namespace galdrine::format
