// The cost of one passphrase derivation at the two ends of the allowed range: the fixed profile
// that new envelopes use (3 passes, 64 MiB) and the ceiling a stored record may demand
// (12 passes, 256 MiB). bench/argon2id.sh runs this beside the argon2 command-line tool.

#include <benchmark/benchmark.h>

#include "GaldrineCryptoSupport/GaldrineArgon2id.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"

namespace {

constexpr std::int64_t kMiB = 1'048'576;

void deriveKey(benchmark::State& state) {
  const auto parameters = GaldrineArgon2idParameters::make(static_cast<std::uint64_t>(state.range(0)), state.range(1) * kMiB);
  if (!parameters) {
    state.SkipWithError("parameters outside the allowed range");
    return;
  }
  const Bytes passphrase = GaldrineByteText::bytes("correct horse battery staple");
  const Bytes salt = GaldrineByteText::bytes("somesaltsomesalt");
  for (auto _ : state) {
    auto key = GaldrineArgon2id::deriveKey(passphrase, salt, *parameters);
    if (!key) {
      state.SkipWithError("derivation failed");
      return;
    }
    benchmark::DoNotOptimize(key->data());
    GaldrineSecureMemory::wipe(*key);
  }
}

BENCHMARK(deriveKey)
    ->ArgNames({"passes", "MiB"})
    ->Args({3, 64})
    ->Args({12, 256})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
