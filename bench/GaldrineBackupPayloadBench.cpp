// Opening payload files against the least work their checks need: reading a 16 MiB frame once,
// hashing it, decrypting it with AES-256-GCM and hashing the plaintext. The ratio of
// openResourceChunk (or openPackEntry) to that floor is what an export pays for the format.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"
#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrinePlatform/GaldrinePlatformAESGCM.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

namespace {

namespace fs = std::filesystem;
namespace Payload = GaldrineBackupPayloadV1;

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
    chunkURL = directory / *Payload::resourceChunkFileName(kChunkIdentifier);
    segmentURL = directory / *Payload::packSegmentFileName(kSegmentIdentifier);
    const auto written = Payload::writeResourceChunk(chunkURL, kPackage, kLibrary, kChunkIdentifier, 0, kKey,
                                                     pattern(kPartByteCount, 1));
    if (!written) std::abort();
    chunk = *written;
    for (std::uint8_t seed = 1; seed <= 4; ++seed) entries.push_back({Bytes(16, seed), pattern(kPartByteCount, seed)});
    if (!Payload::writePackSegment(segmentURL, kPackage, kLibrary, kSegmentIdentifier, kKey, entries)) std::abort();
  }
  ~Fixture() {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
  }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  fs::path directory;
  fs::path chunkURL;
  fs::path segmentURL;
  GaldrineBackupResourceChunkDescriptorV1 chunk;
  std::vector<GaldrineBackupPackEntryInputV1> entries;
};

const Fixture& fixture() {
  static const Fixture made;
  return made;
}

void BM_openResourceChunk(benchmark::State& state) {
  const Fixture& f = fixture();
  for (auto _ : state) {
    auto plaintext = Payload::openResourceChunk(f.chunkURL, f.chunk, kPackage, kLibrary, kKey);
    if (!plaintext) state.SkipWithError("open failed");
    benchmark::DoNotOptimize(plaintext);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kPartByteCount));
}

void BM_openPackEntry(benchmark::State& state) {
  const Fixture& f = fixture();
  for (auto _ : state) {
    auto plaintext = Payload::openPackEntry(f.entries[2].identifier, f.segmentURL, kPackage, kLibrary, kKey);
    if (!plaintext) state.SkipWithError("open failed");
    benchmark::DoNotOptimize(plaintext);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kPartByteCount));
}

// The floor: one read into one buffer, SHA-256 of the frame, AES-256-GCM into a second buffer,
// SHA-256 of the plaintext. Both buffers and the frame's fields are prepared once, outside the
// loop, so the floor pays for no allocation at all.
void BM_floorReadHashDecryptHash(benchmark::State& state) {
  const Fixture& f = fixture();
  const std::size_t frameByteCount = f.chunk.frameByteCount;
  auto located = std::make_unique_for_overwrite<std::uint8_t[]>(frameByteCount);
  const int probe = ::open(f.chunkURL.c_str(), O_RDONLY | O_CLOEXEC);
  if (::pread(probe, located.get(), frameByteCount, 0) != static_cast<ssize_t>(frameByteCount)) std::abort();
  ::close(probe);
  const auto frame = GaldrineDeterministicCBOR::decodeBorrowed(ByteView(located.get(), frameByteCount),
                                                               GaldrineCBORLimits::sealedFrame(kPartByteCount));
  const ByteView nonce = *frame->find(2)->asByteString();
  const ByteView ciphertext = *frame->find(3)->asByteString();
  const ByteView tag = *frame->find(4)->asByteString();
  const std::size_t ciphertextOffset = static_cast<std::size_t>(ciphertext.data() - located.get());
  const auto data = GaldrineBackupAuthenticatedDataV1::make(GaldrineBackupAADDomainV1::resourceChunk, kPackage,
                                                            kLibrary, kChunkIdentifier, 0, std::nullopt);
  const Bytes authenticatedData = *data->encoded();

  auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(frameByteCount);
  auto plaintext = std::make_unique_for_overwrite<std::uint8_t[]>(ciphertext.size());
  for (auto _ : state) {
    const int file = ::open(f.chunkURL.c_str(), O_RDONLY | O_CLOEXEC);
    if (::pread(file, buffer.get(), frameByteCount, 0) != static_cast<ssize_t>(frameByteCount)) std::abort();
    ::close(file);
    benchmark::DoNotOptimize(GaldrinePlatformSHA256::digest(ByteView(buffer.get(), frameByteCount)));
    if (!GaldrinePlatformAESGCM::open(kKey, nonce, authenticatedData,
                                      ByteView(buffer.get() + ciphertextOffset, ciphertext.size()), tag,
                                      std::span<std::uint8_t>(plaintext.get(), ciphertext.size())))
      state.SkipWithError("floor open failed");
    benchmark::DoNotOptimize(GaldrinePlatformSHA256::digest(ByteView(plaintext.get(), ciphertext.size())));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kPartByteCount));
}

}  // namespace

BENCHMARK(BM_floorReadHashDecryptHash)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_openResourceChunk)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_openPackEntry)->Unit(benchmark::kMillisecond)->MinTime(2.0);
