// Opens any bytes as a frame under a fixed key and authenticated data, with a plaintext limit
// chosen by the first byte. Every input must end in plaintext or in one of the frame's twelve
// errors; plaintext must be exactly the declared length, and sealing it again with the
// frame's own nonce must give back the very same frame.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"

namespace {

// The key and authenticated data of the published GCM test case 16, so that a seed
// made from that vector authenticates.
constexpr std::uint8_t kKey[32] = {0xfe, 0xff, 0xe9, 0x92, 0x86, 0x65, 0x73, 0x1c, 0x6d, 0x6a, 0x8f,
                                   0x94, 0x67, 0x30, 0x83, 0x08, 0xfe, 0xff, 0xe9, 0x92, 0x86, 0x65,
                                   0x73, 0x1c, 0x6d, 0x6a, 0x8f, 0x94, 0x67, 0x30, 0x83, 0x08};
constexpr std::uint8_t kAuthenticatedData[20] = {0xfe, 0xed, 0xfa, 0xce, 0xde, 0xad, 0xbe, 0xef, 0xfe, 0xed,
                                                 0xfa, 0xce, 0xde, 0xad, 0xbe, 0xef, 0xab, 0xad, 0xda, 0xd2};

std::int64_t limitFor(std::uint8_t selector) {
  static constexpr std::int64_t limits[] = {0, 16, 60, 4096, 16777216, -1, 16777217, 59};
  return limits[selector % 8];
}

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::int64_t limit = limitFor(data[0]);
  const galdrine::ByteView frame(data + 1, size - 1);
  const auto plaintext = galdrine::format::AESGCMFrameV1::open(frame, kKey, kAuthenticatedData, limit);
  if (!plaintext) {
    using Code = galdrine::format::AESGCMFrameV1Error::Code;
    const Code code = plaintext.error().code;
    require(code >= Code::invalidFrameFieldType && code <= Code::authenticationFailed);
    require(plaintext.error().payload == 0 || (code == Code::invalidFrameFieldType && plaintext.error().payload <= 5));
    return 0;
  }
  const auto decoded =
      galdrine::format::DeterministicCBOR::decodeBorrowed(frame, galdrine::format::CBORLimits::sealedFrame(limit));
  require(decoded.has_value());
  require(decoded->find(5)->asUnsigned() == plaintext->size());
  const auto resealed = galdrine::format::AESGCMFrameV1::seal(
      *plaintext, kKey, kAuthenticatedData, limit,
      galdrine::format::AESGCMFrameV1::NonceSource::fixed(*decoded->find(2)->asByteString()));
  require(resealed.has_value() && galdrine::ByteOrder::equal(*resealed, frame));
  return 0;
}
