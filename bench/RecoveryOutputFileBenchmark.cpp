// Writing a recovered resource through RecoveryOutputFile against the least work the disk
// needs: the same bytes written from memory in 16 MiB parts and synchronised once, as a plain
// copy would. The export writes up to 1.4 GB this way, so each run writes one file of that
// size and removes it again. Two variants show what the choices inside the file cost or save:
// hashing in 1 MiB slices right behind the write rather than a whole part after it, and
// starting write-back after every part rather than leaving it all to the final fsync.

#include "recovery/export/RecoveryOutputFile.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/Files.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPartByteCount = 16 * 1024 * 1024;
constexpr std::size_t kPartCount = 88;  // 1,476,395,008 bytes: the largest export the tool is sized for

struct Fixture {
  Fixture() : part(kPartByteCount) {
    for (std::size_t index = 0; index < part.size(); ++index) part[index] = static_cast<std::uint8_t>(index * 131 + 7);
    // The disk under the working directory is the one an export writes to; /tmp may be memory.
    std::string directoryPattern = (fs::current_path() / "galdrine-output-bench-XXXXXX").string();
    if (::mkdtemp(directoryPattern.data()) == nullptr) std::abort();
    directory = directoryPattern;
    platform::SHA256::Hasher hasher;
    for (std::size_t index = 0; index < kPartCount; ++index) hasher.update(part);
    digest = hasher.finalize();
  }
  ~Fixture() {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
  }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  Bytes part;
  fs::path directory;
  platform::SHA256Digest digest{};
};

Fixture& fixture() {
  static Fixture shared;
  return shared;
}

void finishRun(benchmark::State& state, const fs::path& file) {
  state.PauseTiming();
  fs::remove(file);
  ::sync();  // the next run starts with no dirty pages of this one
  state.ResumeTiming();
}

int createPlainFile(const fs::path& file) {
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) std::abort();
  return descriptor;
}

void plainWriteAndSynchronize(benchmark::State& state) {
  const fs::path file = fixture().directory / "plain";
  for (auto _ : state) {
    const int descriptor = createPlainFile(file);
    for (std::size_t index = 0; index < kPartCount; ++index) {
      if (!platform::Files::writeAll(descriptor, fixture().part)) std::abort();
    }
    if (!platform::Files::synchronizeFile(descriptor) || ::close(descriptor) != 0) std::abort();
    finishRun(state, file);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartCount * kPartByteCount));
}

void recoveryOutputFile(benchmark::State& state) {
  const fs::path file = fixture().directory / "output";
  for (auto _ : state) {
    auto output = recovery::RecoveryOutputFile::create(file);
    if (!output) std::abort();
    for (std::size_t index = 0; index < kPartCount; ++index) {
      if (!output->append(fixture().part)) std::abort();
    }
    const auto finished = output->finish(kPartCount * kPartByteCount, fixture().digest);
    if (!finished || !*finished) std::abort();
    finishRun(state, file);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartCount * kPartByteCount));
}

// writeAndHash is the work of the output file without its object: `sliceByteCount` bytes are
// written and then hashed at a time, and write-back is started after every part or not at all.
void writeAndHash(benchmark::State& state, const char* name, std::size_t sliceByteCount, bool startsWriteBack) {
  const fs::path file = fixture().directory / name;
  for (auto _ : state) {
    const int descriptor = createPlainFile(file);
    platform::SHA256::Hasher hasher;
    for (std::size_t index = 0; index < kPartCount; ++index) {
      for (std::size_t offset = 0; offset < kPartByteCount; offset += sliceByteCount) {
        const ByteView slice = ByteView(fixture().part).subspan(offset, sliceByteCount);
        if (!platform::Files::writeAll(descriptor, slice)) std::abort();
        hasher.update(slice);
      }
      if (startsWriteBack) platform::Files::startWriteBack(descriptor, index * kPartByteCount, kPartByteCount);
    }
    benchmark::DoNotOptimize(hasher.finalize());
    if (!platform::Files::synchronizeFile(descriptor) || ::close(descriptor) != 0) std::abort();
    finishRun(state, file);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartCount * kPartByteCount));
}

void slicedHashingWithoutEarlyWriteBack(benchmark::State& state) { writeAndHash(state, "late", 1 << 20, false); }
void wholePartHashingWithEarlyWriteBack(benchmark::State& state) { writeAndHash(state, "whole", kPartByteCount, true); }

// Plain writes that ask the kernel to start writing each part back as soon as it is written.
void plainWriteWithEarlyWriteBack(benchmark::State& state) {
  const fs::path file = fixture().directory / "early";
  for (auto _ : state) {
    const int descriptor = createPlainFile(file);
    for (std::size_t index = 0; index < kPartCount; ++index) {
      if (!platform::Files::writeAll(descriptor, fixture().part)) std::abort();
      platform::Files::startWriteBack(descriptor, index * kPartByteCount, kPartByteCount);
    }
    if (!platform::Files::synchronizeFile(descriptor) || ::close(descriptor) != 0) std::abort();
    finishRun(state, file);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPartCount * kPartByteCount));
}

}  // namespace

BENCHMARK(plainWriteAndSynchronize)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(recoveryOutputFile)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainWriteWithEarlyWriteBack)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(slicedHashingWithoutEarlyWriteBack)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(wholePartHashingWithEarlyWriteBack)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace galdrine::bench
