#pragma once
// PortableKeyDerivationV1 is how a portable envelope turns its credential into the
// frame key. Each factor has exactly one derivation.

#include <array>
#include <cstdint>
#include <string_view>

#include "format/header/BackupAlgorithmV1.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::envelope {

enum class PortableKeyDerivationV1 : std::uint8_t {
  argon2idV13,
  hkdfSHA256,
};

}  // namespace galdrine::envelope

namespace galdrine {

template <>
struct RawValueTable<envelope::PortableKeyDerivationV1> {
  static constexpr std::array<std::string_view, 2> rawValues{rawValue(format::BackupAlgorithmV1::passphraseKDF),
                                                             rawValue(format::BackupAlgorithmV1::recoveryKDF)};
};

}  // namespace galdrine

