// Decodes any bytes as a format header. A header that is accepted must encode back to the
// same 159 bytes, with its identifier at offset 73.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "format/header/BackupFormatHeaderV1.hpp"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const galdrine::ByteView input(data, size);
  const auto header = galdrine::format::BackupFormatHeaderV1::decode(input);
  if (!header) return 0;
  const auto encoded = header->encoded();
  require(encoded.has_value() && galdrine::ByteOrder::equal(*encoded, input));
  require(input.size() == galdrine::format::BackupFormatHeaderV1::encodedByteCount);
  require(galdrine::ByteOrder::equal(input.subspan(73, 16), header->packageIdentifier()));
  return 0;
}
