#pragma once
// CBORValue is the one value model of the deterministic CBOR profile: unsigned and
// negative integers, byte and text strings, arrays, maps under unsigned keys, booleans and
// null. The value owns its payloads; its map has no order of its own (the encoder orders).

#include <cstdint>
#include <expected>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/Bytes.hpp"

namespace galdrine::format {

enum class CBORKind : std::uint8_t { unsignedInteger, byteString, textString, array, map, boolean, negative, null };

// What reading a signed 64-bit integer found instead of one.
enum class CBORSignedIntegerFault : std::uint8_t { notAnInteger, outOfRange };

// signedIntegerFrom reads a signed 64-bit integer from the payload of an unsigned or a
// negative item (at most one of the two is present).
[[nodiscard]] std::expected<std::int64_t, CBORSignedIntegerFault> signedIntegerFrom(
    std::optional<std::uint64_t> unsignedValue, std::optional<std::uint64_t> negativeArgument);

class CBORValue {
 public:
  using Array = std::vector<CBORValue>;
  using Map = std::map<std::uint64_t, CBORValue>;

  static CBORValue unsignedInteger(std::uint64_t value) { return CBORValue(std::in_place_index<0>, value); }
  static CBORValue byteString(Bytes bytes) { return CBORValue(std::in_place_index<1>, std::move(bytes)); }
  static CBORValue byteString(ByteView bytes) { return byteString(Bytes(bytes.begin(), bytes.end())); }
  static CBORValue textString(std::string text) { return CBORValue(std::in_place_index<2>, std::move(text)); }
  static CBORValue array(Array items) { return CBORValue(std::in_place_index<3>, std::move(items)); }
  static CBORValue map(Map entries) { return CBORValue(std::in_place_index<4>, std::move(entries)); }
  static CBORValue boolean(bool value) { return CBORValue(std::in_place_index<5>, value); }
  // negative stands for the integer -1 - argument, so the whole range down to -2^64 exists.
  static CBORValue negative(std::uint64_t argument) { return CBORValue(std::in_place_index<6>, Negative{argument}); }
  static CBORValue null() { return CBORValue(std::in_place_index<7>, Null{}); }
  // signedInteger writes a non-negative value as unsigned and a negative one as negative.
  static CBORValue signedInteger(std::int64_t value);

  [[nodiscard]] CBORKind kind() const { return static_cast<CBORKind>(storage_.index()); }

  [[nodiscard]] std::optional<std::uint64_t> asUnsigned() const;
  [[nodiscard]] const Bytes* asByteString() const { return std::get_if<1>(&storage_); }
  [[nodiscard]] const std::string* asTextString() const { return std::get_if<2>(&storage_); }
  [[nodiscard]] const Array* asArray() const { return std::get_if<3>(&storage_); }
  [[nodiscard]] const Map* asMap() const { return std::get_if<4>(&storage_); }
  [[nodiscard]] std::optional<bool> asBoolean() const;
  [[nodiscard]] std::optional<std::uint64_t> asNegativeArgument() const;
  [[nodiscard]] bool isNull() const { return storage_.index() == 7; }
  [[nodiscard]] std::expected<std::int64_t, CBORSignedIntegerFault> asSignedInteger() const {
    return signedIntegerFrom(asUnsigned(), asNegativeArgument());
  }

  // find gives the value under `key` of a map, or nothing for an absent key or a non-map.
  [[nodiscard]] const CBORValue* find(std::uint64_t key) const;
  // hasKeysZeroThrough is true for a map whose key set is exactly {0, ..., lastKey}.
  [[nodiscard]] bool hasKeysZeroThrough(std::uint64_t lastKey) const;

  friend bool operator==(const CBORValue&, const CBORValue&) = default;

 private:
  struct Negative {
    std::uint64_t argument;
    friend bool operator==(const Negative&, const Negative&) = default;
  };
  struct Null {
    friend bool operator==(const Null&, const Null&) = default;
  };
  using Storage = std::variant<std::uint64_t, Bytes, std::string, Array, Map, bool, Negative, Null>;

  // Built in place: a moved temporary variant trips a false uninitialised-use warning of g++ 12.
  template <std::size_t Index, typename... Arguments>
  explicit CBORValue(std::in_place_index_t<Index> index, Arguments&&... arguments)
      : storage_(index, std::forward<Arguments>(arguments)...) {}

  Storage storage_;
};

}  // namespace galdrine::format
