// Writing a library of 1.3 GB (300 photos of 2 to 4 MiB, 4 videos of 60 to 120 MiB, read from
// files) into a new package, against the least work any writer must do with the same bytes:
// read each file in 16 MiB pieces, hash the plaintext, seal each piece with AES-256-GCM, hash
// the frame, write it to a new file and make that file durable. The ratio of the two is what
// the format's checks (the payload writers read every file back) and the manifest cost.

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "format/payload/BackupPayloadV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "platform/Files.hpp"
#include "platform/SHA256.hpp"
#include "support/BackupSampleLibrary.hpp"
#include "support/FileFixtures.hpp"
#include "writer/BackupPackageWriter.hpp"

namespace galdrine::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPieceByteCount = 16 * 1024 * 1024;
constexpr std::uint64_t kMebibyte = 1024 * 1024;
const Bytes kKey(32, 0x33);
const Bytes kAuthenticatedData(64, 0x44);
const Bytes kRecoveryKey(32, 0x55);

// materialized writes every resource's content into `directory` as "<hex identifier>.bin" and
// gives the library reading those files, as a real library's files are read.
writer::BackupLibrarySnapshot materialized(writer::BackupLibrarySnapshot library, const fs::path& directory) {
  for (auto& item : library.items) {
    for (auto& resource : item.resources) {
      auto reader = writer::BackupContentReader::open(resource.content);
      if (!reader) std::abort();
      Bytes content(static_cast<std::size_t>(reader->byteCount()));
      if (!reader->read(content)) std::abort();
      const fs::path file = directory / (ByteText::lowerHex(resource.identifier) + ".bin");
      testsupport::FileFixtures::writeFile(file, content);
      resource.content = writer::BackupContentSource::file(file);
    }
  }
  return library;
}

struct Fixture {
  Fixture() {
    std::string directoryPattern = (fs::temp_directory_path() / "galdrine-writer-bench-XXXXXX").string();
    if (::mkdtemp(directoryPattern.data()) == nullptr) std::abort();
    directory = directoryPattern;
    fs::create_directory(directory / "content");
    testsupport::BackupSampleLibraryShape shape;
    shape.seed = 2024;
    shape.photoCount = 300;
    shape.livePhotoCount = 0;
    shape.videoCount = 4;
    shape.photoByteRange = {2 * kMebibyte, 4 * kMebibyte};
    shape.videoByteRange = {60 * kMebibyte, 120 * kMebibyte};
    shape.albumCount = 4;
    library = materialized(testsupport::BackupSampleLibrary::make(shape), directory / "content");
    for (const auto& entry : fs::directory_iterator(directory / "content")) {
      files.push_back(entry.path());
      byteCount += fs::file_size(entry.path());
    }
  }
  ~Fixture() {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
  }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  fs::path directory;
  writer::BackupLibrarySnapshot library;
  std::vector<fs::path> files;
  std::uint64_t byteCount = 0;
};

const Fixture& fixture() {
  static const Fixture made;
  return made;
}

void sealFile(const fs::path& source, const fs::path& target, std::span<std::uint8_t> piece) {
  const int input = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
  const int output = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  if (input < 0 || output < 0) std::abort();
  platform::SHA256::Hasher plaintextHash;
  for (;;) {
    const ssize_t count = ::read(input, piece.data(), piece.size());
    if (count < 0) std::abort();
    if (count == 0) break;
    const ByteView plaintext(piece.data(), static_cast<std::size_t>(count));
    plaintextHash.update(plaintext);
    const auto frame = format::AESGCMFrameV1::seal(plaintext, kKey, kAuthenticatedData, kPieceByteCount);
    if (!frame) std::abort();
    benchmark::DoNotOptimize(platform::SHA256::digest(*frame));
    if (!platform::Files::writeAll(output, *frame)) std::abort();
  }
  if (!platform::Files::synchronizeFile(output)) std::abort();
  benchmark::DoNotOptimize(plaintextHash.finalize());
  ::close(input);
  ::close(output);
}

// The floor: every file read, hashed, sealed piece by piece, the frames hashed, written and synchronised.
void BM_floorReadHashSealHashWrite(benchmark::State& state) {
  const Fixture& f = fixture();
  auto piece = std::make_unique_for_overwrite<std::uint8_t[]>(kPieceByteCount);
  for (auto _ : state) {
    state.PauseTiming();
    const fs::path output = f.directory / "floor";
    fs::create_directory(output);
    state.ResumeTiming();
    for (std::size_t index = 0; index < f.files.size(); ++index)
      sealFile(f.files[index], output / std::to_string(index), std::span(piece.get(), kPieceByteCount));
    state.PauseTiming();
    fs::remove_all(output);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(static_cast<std::uint64_t>(state.iterations()) * f.byteCount));
}

// What the format's payload writers cost on the same bytes, each file read whole into memory:
// segments of up to 32 files and 64 MiB for the photos, 16 MiB chunks for the videos. Both
// writers seal, synchronise, and read every file back twice, before and after publishing it.
void BM_payloadWritersAlone(benchmark::State& state) {
  const Fixture& f = fixture();
  const Bytes package(16, 0x01);
  const Bytes library(16, 0x02);
  for (auto _ : state) {
    state.PauseTiming();
    const fs::path output = f.directory / "payloads";
    fs::create_directory(output);
    state.ResumeTiming();
    std::vector<format::BackupPackEntryInput> entries;
    std::uint64_t segmentByteCount = 0;
    std::uint8_t segment = 0;
    const auto flush = [&] {
      if (entries.empty()) return;
      const Bytes identifier(16, ++segment);
      const fs::path path = output / *format::BackupPayloadV1::packSegmentFileName(identifier);
      if (!format::BackupPayloadV1::writePackSegment(path, package, library, identifier, kKey, entries)) std::abort();
      benchmark::DoNotOptimize(platform::SHA256::digestOfFile(path));
      entries.clear();
      segmentByteCount = 0;
    };
    std::uint8_t chunk = 0;
    for (const fs::path& file : f.files) {
      auto content = platform::Files::readBoundedRegularFile(file, 1, 256 * kMebibyte);
      if (!content) std::abort();
      if (content->size() > kPieceByteCount) {
        for (std::size_t offset = 0, ordinal = 0; offset < content->size(); offset += kPieceByteCount, ++ordinal) {
          const Bytes identifier(16, ++chunk);
          const ByteView piece =
              ByteView(*content).subspan(offset, std::min(kPieceByteCount, content->size() - offset));
          const fs::path path =
              output / ("c" + std::to_string(chunk)) / *format::BackupPayloadV1::resourceChunkFileName(identifier);
          fs::create_directory(path.parent_path());
          if (!format::BackupPayloadV1::writeResourceChunk(path, package, library, identifier, ordinal, kKey, piece))
            std::abort();
        }
        continue;
      }
      if (entries.size() == 32 || segmentByteCount + content->size() > 64 * kMebibyte) flush();
      segmentByteCount += content->size();
      entries.push_back({Bytes(16, static_cast<std::uint8_t>(entries.size() + 1)), std::move(*content)});
    }
    flush();
    state.PauseTiming();
    fs::remove_all(output);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(static_cast<std::uint64_t>(state.iterations()) * f.byteCount));
}

void BM_writeCommit(benchmark::State& state) {
  const Fixture& f = fixture();
  for (auto _ : state) {
    state.PauseTiming();
    const fs::path path = f.directory / "Bench.galdrine";
    writer::BackupWriterSettings settings;
    settings.concurrentPayloadWriterCount = static_cast<std::size_t>(state.range(0));
    auto writer =
        writer::BackupPackageWriter::create(path, {std::nullopt, ByteView(kRecoveryKey)}, std::move(settings));
    if (!writer) std::abort();
    state.ResumeTiming();
    if (!writer->writeCommit(f.library)) state.SkipWithError("write failed");
    state.PauseTiming();
    fs::remove_all(path);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(static_cast<std::uint64_t>(state.iterations()) * f.byteCount));
}

}  // namespace

BENCHMARK(BM_floorReadHashSealHashWrite)
    ->Unit(benchmark::kSecond)
    ->Iterations(2)
    ->UseRealTime()
    ->MeasureProcessCPUTime();
BENCHMARK(BM_payloadWritersAlone)->Unit(benchmark::kSecond)->Iterations(2)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(BM_writeCommit)
    ->ArgName("writers")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kSecond)
    ->Iterations(2)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

}  // namespace galdrine::bench
