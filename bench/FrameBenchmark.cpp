// Throughput of the two hot loops of a recovery: opening 16 MiB frames and hashing payload
// files piece by piece. bench/frame-and-digest.sh sets these beside OpenSSL's own figures.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>

#include "format/sealing/AESGCMFrameV1.hpp"
#include "platform/AESGCM.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::bench {

namespace {

constexpr std::size_t kFramePlaintextByteCount = 16777216;
constexpr std::size_t kPieceByteCount = 1048576;
constexpr std::size_t kPiecesPerDigest = 64;

Bytes patterned(std::size_t byteCount) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(index * 7 + 3);
  return bytes;
}

const Bytes kKey(32, 0x42);
const Bytes kAuthenticatedData(100, 0x17);

void frameOpen16MiB(benchmark::State& state) {
  const auto frame = format::AESGCMFrameV1::seal(patterned(kFramePlaintextByteCount), kKey, kAuthenticatedData,
                                                 format::AESGCMFrameV1::largestPlaintextLimit);
  if (!frame) std::abort();
  for (auto _ : state) {
    auto plaintext =
        format::AESGCMFrameV1::open(*frame, kKey, kAuthenticatedData, format::AESGCMFrameV1::largestPlaintextLimit);
    if (!plaintext) std::abort();
    benchmark::DoNotOptimize(plaintext->data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFramePlaintextByteCount));
}

// The cipher alone into a buffer that is reused: what the frame adds is decoding and the
// one plaintext allocation.
void platformOpen16MiB(benchmark::State& state) {
  const Bytes plaintext = patterned(kFramePlaintextByteCount);
  const Bytes nonce(12, 0x01);
  Bytes ciphertext(kFramePlaintextByteCount);
  Bytes tag(16);
  if (!platform::AESGCM::seal(kKey, nonce, kAuthenticatedData, plaintext, ciphertext, tag)) std::abort();
  Bytes opened(kFramePlaintextByteCount);
  for (auto _ : state) {
    if (!platform::AESGCM::open(kKey, nonce, kAuthenticatedData, ciphertext, tag, opened)) std::abort();
    benchmark::DoNotOptimize(opened.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kFramePlaintextByteCount));
}

void streamingSHA256Over1MiBPieces(benchmark::State& state) {
  const Bytes piece = patterned(kPieceByteCount);
  for (auto _ : state) {
    platform::SHA256::Hasher hasher;
    for (std::size_t count = 0; count < kPiecesPerDigest; ++count) hasher.update(piece);
    benchmark::DoNotOptimize(hasher.finalize());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPiecesPerDigest * kPieceByteCount));
}

}  // namespace

BENCHMARK(frameOpen16MiB)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(platformOpen16MiB)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(streamingSHA256Over1MiBPieces)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace galdrine::bench
