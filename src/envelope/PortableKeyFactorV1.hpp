#pragma once
// PortableKeyFactorV1 is the credential a portable envelope is sealed under. Its raw
// value is what an envelope stores, and the text order is the order of envelopes in a set.

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/RawValue.hpp"

namespace galdrine::envelope {

enum class PortableKeyFactorV1 : std::uint8_t {
  backupPassphrase,
  recoveryKey,
};

}  // namespace galdrine::envelope

namespace galdrine {

template <>
struct RawValueTable<envelope::PortableKeyFactorV1> {
  static constexpr std::array<std::string_view, 2> rawValues{"backup-passphrase", "recovery-key"};
};

}  // namespace galdrine
