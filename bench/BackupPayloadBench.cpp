// Opening payload files against the least work their checks need: reading a 16 MiB frame once,
// hashing it, decrypting it with AES-256-GCM and hashing the plaintext. The ratio of
// openResourceChunk (or openPackEntry) to that floor is what an export pays for the format.

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/AESGCM.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::bench {

namespace {

namespace fs = std::filesystem;
namespace Payload = format::BackupPayloadV1;

constexpr std::size_t kPartByteCount = 16 * 1024 * 1024;
const Bytes kPackage(16, 0x11);
const Bytes kLibrary(16, 0x22);
const Bytes kKey(32, 0x33);
const Bytes kChunkIdentifier(16, 0x44);
const Bytes kSegmentIdentifier(16, 0x55);

Bytes pattern(std::size_t byteCount, std::uint8_t seed) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(index * 131 + seed);
  return bytes;
}

// Fixture writes one 16 MiB chunk and a segment of four 16 MiB entries once per run, and
// removes them at exit.
struct Fixture {
  Fixture() {
    std::string directoryPattern = (fs::temp_directory_path() / "galdrine-bench-XXXXXX").string();
    if (::mkdtemp(directoryPattern.data()) == nullptr) std::abort();
    directory = directoryPattern;
    chunkPath = directory / *Payload::resourceChunkFileName(kChunkIdentifier);
    segmentPath = directory / *Payload::packSegmentFileName(kSegmentIdentifier);
    const auto written = Payload::writeResourceChunk(chunkPath, kPackage, kLibrary, kChunkIdentifier, 0, kKey,
                                                     pattern(kPartByteCount, 1));
    if (!written) std::abort();
    chunk = *written;
    for (std::uint8_t seed = 1; seed <= 4; ++seed) entries.push_back({Bytes(16, seed), pattern(kPartByteCount, seed)});
    if (!Payload::writePackSegment(segmentPath, kPackage, kLibrary, kSegmentIdentifier, kKey, entries)) std::abort();
  }
  ~Fixture() {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
  }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  fs::path directory;
  fs::path chunkPath;
  fs::path segmentPath;
  format::BackupResourceChunkDescriptorV1 chunk;
  std::vector<format::BackupPackEntryInput> entries;
};

const Fixture& fixture() {
  static const Fixture made;
  return made;
}

void BM_openResourceChunk(benchmark::State& state) {
  const Fixture& f = fixture();
  for (auto _ : state) {
    auto plaintext = Payload::openResourceChunk(f.chunkPath, f.chunk, kPackage, kLibrary, kKey);
    if (!plaintext) state.SkipWithError("open failed");
    benchmark::DoNotOptimize(plaintext);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartByteCount));
}

void BM_openPackEntry(benchmark::State& state) {
  const Fixture& f = fixture();
  for (auto _ : state) {
    auto plaintext = Payload::openPackEntry(f.entries[2].identifier, f.segmentPath, kPackage, kLibrary, kKey);
    if (!plaintext) state.SkipWithError("open failed");
    benchmark::DoNotOptimize(plaintext);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartByteCount));
}

// The floor: one read into one buffer, SHA-256 of the frame, AES-256-GCM into a second buffer,
// SHA-256 of the plaintext. Both buffers and the frame's fields are prepared once, outside the
// loop, so the floor pays for no allocation at all.
void BM_floorReadHashDecryptHash(benchmark::State& state) {
  const Fixture& f = fixture();
  const std::size_t frameByteCount = f.chunk.frameByteCount;
  auto located = std::make_unique_for_overwrite<std::uint8_t[]>(frameByteCount);
  const int probe = ::open(f.chunkPath.c_str(), O_RDONLY | O_CLOEXEC);
  if (::pread(probe, located.get(), frameByteCount, 0) != static_cast<ssize_t>(frameByteCount)) std::abort();
  ::close(probe);
  const auto frame = format::DeterministicCBOR::decodeBorrowed(ByteView(located.get(), frameByteCount),
                                                               format::CBORLimits::sealedFrame(kPartByteCount));
  const ByteView nonce = *frame->find(2)->asByteString();
  const ByteView ciphertext = *frame->find(3)->asByteString();
  const ByteView tag = *frame->find(4)->asByteString();
  const std::size_t ciphertextOffset = static_cast<std::size_t>(ciphertext.data() - located.get());
  const auto data = format::BackupAuthenticatedDataV1::make(format::BackupAADDomainV1::resourceChunk, kPackage,
                                                            kLibrary, kChunkIdentifier, 0, std::nullopt);
  const Bytes authenticatedData = *data->encoded();

  auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(frameByteCount);
  auto plaintext = std::make_unique_for_overwrite<std::uint8_t[]>(ciphertext.size());
  for (auto _ : state) {
    const int file = ::open(f.chunkPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (::pread(file, buffer.get(), frameByteCount, 0) != static_cast<ssize_t>(frameByteCount)) std::abort();
    ::close(file);
    benchmark::DoNotOptimize(platform::SHA256::digest(ByteView(buffer.get(), frameByteCount)));
    if (!platform::AESGCM::open(kKey, nonce, authenticatedData,
                                ByteView(buffer.get() + ciphertextOffset, ciphertext.size()), tag,
                                std::span<std::uint8_t>(plaintext.get(), ciphertext.size())))
      state.SkipWithError("floor open failed");
    benchmark::DoNotOptimize(platform::SHA256::digest(ByteView(plaintext.get(), ciphertext.size())));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartByteCount));
}

}  // namespace

BENCHMARK(BM_floorReadHashDecryptHash)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_openResourceChunk)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_openPackEntry)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace galdrine::bench
