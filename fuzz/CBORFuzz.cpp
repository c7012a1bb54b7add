// Decodes any bytes under one of several limit records (chosen by the first byte) and checks
// the codec's two promises: the owning and the borrowing decoder agree exactly, and whatever
// is accepted encodes back to the same bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "format/cbor/DeterministicCBOR.hpp"

namespace {

galdrine::format::CBORLimits limitsFor(std::uint8_t selector) {
  switch (selector % 5) {
    case 0:
      return galdrine::format::CBORLimits::formatHeader();
    case 1:
      return galdrine::format::CBORLimits::authenticatedData();
    case 2:
      return galdrine::format::CBORLimits::sealedFrame(selector);
    case 3:
      return {1 << 16, 1 << 12, 1 << 12, 64, 1024, 16};
    default:
      return {64, 8, 8, 4, 12, 3};
  }
}

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const galdrine::format::CBORLimits limits = limitsFor(data[0]);
  const galdrine::ByteView input(data + 1, size - 1);
  const auto owned = galdrine::format::DeterministicCBOR::decode(input, limits);
  const auto borrowed = galdrine::format::DeterministicCBOR::decodeBorrowed(input, limits);
  require(owned.has_value() == borrowed.has_value());
  if (!owned) {
    require(owned.error() == borrowed.error());
    return 0;
  }
  require(*owned == borrowed->owned());
  const auto encoded = galdrine::format::DeterministicCBOR::encode(*owned, limits);
  require(encoded.has_value() && galdrine::ByteOrder::equal(*encoded, input));
  return 0;
}
