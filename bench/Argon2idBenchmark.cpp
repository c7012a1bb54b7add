// The cost of one passphrase derivation at the two ends of the allowed range: the fixed profile
// that new envelopes use (3 passes, 64 MiB) and the ceiling a stored record may demand
// (12 passes, 256 MiB). bench/argon2id.sh runs this beside the argon2 command-line tool.

#include "kdf/Argon2id.hpp"

#include <benchmark/benchmark.h>

#include "platform/SecureMemory.hpp"

namespace galdrine::bench {

namespace {

constexpr std::int64_t kMiB = 1'048'576;

void deriveKey(benchmark::State& state) {
  const auto parameters =
      kdf::Argon2idParameters::make(static_cast<std::uint64_t>(state.range(0)), state.range(1) * kMiB);
  if (!parameters) {
    state.SkipWithError("parameters outside the allowed range");
    return;
  }
  const Bytes passphrase = ByteText::bytes("correct horse battery staple");
  const Bytes salt = ByteText::bytes("somesaltsomesalt");
  for (auto _ : state) {
    auto key = kdf::Argon2id::deriveKey(passphrase, salt, *parameters);
    if (!key) {
      state.SkipWithError("derivation failed");
      return;
    }
    benchmark::DoNotOptimize(key->data());
    platform::SecureMemory::wipe(*key);
  }
}

BENCHMARK(deriveKey)
    ->ArgNames({"passes", "MiB"})
    ->Args({3, 64})
    ->Args({12, 256})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

}  // namespace galdrine::bench
