#pragma once
// CBORBorrowedValue is a decoded value whose byte and text strings are views into
// the input it was decoded from. It lets a large ciphertext or a manifest's records be read
// without a copy; it must not outlive that input. owned() makes an independent value.

#include <cstdint>
#include <expected>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "format/cbor/CBORValue.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class CBORBorrowedValue {
 public:
  using Array = std::vector<CBORBorrowedValue>;
  using Map = std::vector<std::pair<std::uint64_t, CBORBorrowedValue>>;  // keys strictly ascending

  static CBORBorrowedValue unsignedInteger(std::uint64_t value) {
    return CBORBorrowedValue(std::in_place_index<0>, value);
  }
  static CBORBorrowedValue byteString(ByteView bytes) { return CBORBorrowedValue(std::in_place_index<1>, bytes); }
  static CBORBorrowedValue textString(std::string_view text) { return CBORBorrowedValue(std::in_place_index<2>, text); }
  static CBORBorrowedValue array(Array items) { return CBORBorrowedValue(std::in_place_index<3>, std::move(items)); }
  static CBORBorrowedValue map(Map entries) { return CBORBorrowedValue(std::in_place_index<4>, std::move(entries)); }
  static CBORBorrowedValue boolean(bool value) { return CBORBorrowedValue(std::in_place_index<5>, value); }
  static CBORBorrowedValue negative(std::uint64_t argument) {
    return CBORBorrowedValue(std::in_place_index<6>, Negative{argument});
  }
  static CBORBorrowedValue null() { return CBORBorrowedValue(std::in_place_index<7>, Null{}); }

  [[nodiscard]] CBORKind kind() const { return static_cast<CBORKind>(storage_.index()); }

  [[nodiscard]] std::optional<std::uint64_t> asUnsigned() const;
  [[nodiscard]] std::optional<ByteView> asByteString() const;
  [[nodiscard]] std::optional<std::string_view> asTextString() const;
  [[nodiscard]] const Array* asArray() const { return std::get_if<3>(&storage_); }
  [[nodiscard]] const Map* asMap() const { return std::get_if<4>(&storage_); }
  [[nodiscard]] std::optional<bool> asBoolean() const;
  [[nodiscard]] std::optional<std::uint64_t> asNegativeArgument() const;
  [[nodiscard]] bool isNull() const { return storage_.index() == 7; }
  [[nodiscard]] std::expected<std::int64_t, CBORSignedIntegerFault> asSignedInteger() const {
    return signedIntegerFrom(asUnsigned(), asNegativeArgument());
  }

  [[nodiscard]] const CBORBorrowedValue* find(std::uint64_t key) const;
  [[nodiscard]] bool hasKeysZeroThrough(std::uint64_t lastKey) const;

  [[nodiscard]] CBORValue owned() const;

 private:
  struct Negative {
    std::uint64_t argument;
  };
  struct Null {};
  using Storage = std::variant<std::uint64_t, ByteView, std::string_view, Array, Map, bool, Negative, Null>;

  // Built in place: a moved temporary variant trips a false uninitialised-use warning of g++ 12.
  template <std::size_t Index, typename... Arguments>
  explicit CBORBorrowedValue(std::in_place_index_t<Index> index, Arguments&&... arguments)
      : storage_(index, std::forward<Arguments>(arguments)...) {}

  Storage storage_;
};

}  // namespace galdrine::format
