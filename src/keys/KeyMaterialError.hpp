#pragma once
// KeyMaterialError is the failure of key storages, identifiers and the key hierarchy
// factory. Cases stand in contract order; the payloads are zero where a case has none.

#include <cstdint>

namespace galdrine::keys {

struct KeyMaterialError {
  enum class Code : std::uint8_t {
    invalidKeyByteCount,                    // expected, actual
    invalidIdentifierByteCount,             // expected, actual
    randomGenerationFailed,                 // status of the random source
    randomGeneratorReturnedWrongByteCount,  // expected, actual
    invalidated,
    duplicateKeyMaterial,
  };

  Code code;
  std::int64_t expected = 0;
  std::int64_t actual = 0;
  std::int32_t status = 0;

  static constexpr KeyMaterialError invalidKeyByteCount(std::int64_t expected, std::int64_t actual) {
    return {Code::invalidKeyByteCount, expected, actual};
  }
  static constexpr KeyMaterialError invalidIdentifierByteCount(std::int64_t expected, std::int64_t actual) {
    return {Code::invalidIdentifierByteCount, expected, actual};
  }
  static constexpr KeyMaterialError randomGenerationFailed(std::int32_t status) {
    return {Code::randomGenerationFailed, 0, 0, status};
  }
  static constexpr KeyMaterialError randomGeneratorReturnedWrongByteCount(std::int64_t expected, std::int64_t actual) {
    return {Code::randomGeneratorReturnedWrongByteCount, expected, actual};
  }
  static constexpr KeyMaterialError invalidated() { return {Code::invalidated}; }
  static constexpr KeyMaterialError duplicateKeyMaterial() { return {Code::duplicateKeyMaterial}; }

  friend constexpr bool operator==(const KeyMaterialError&, const KeyMaterialError&) = default;
};

}  // namespace galdrine::keys
