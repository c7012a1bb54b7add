// InspectBenchmark is the program bench/inspect.sh drives. It is no Google Benchmark:
// one whole inspection of a large package is the measurement, and the script times the process.
//
//   InspectBenchmark write MEDIA_DIRECTORY PACKAGE PASSPHRASE_FILE
//     writes every regular file of MEDIA_DIRECTORY, one item each, as one commit of a new
//     package with a backup passphrase envelope (3 passes over 64 MiB) and a recovery key.
//   InspectBenchmark inspect PACKAGE PASSPHRASE_FILE
//     inspects the package with the passphrase through the engine's own steps (open the reader,
//     unlock, inspect) and prints one JSON object: the phases' wall and CPU times, the payload
//     bytes hashed, and the evidence. The peak resident memory after unlocking is reset, so the
//     inspection's own peak is reported apart from Argon2id's.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "BenchmarkMoment.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "recovery/inspection/RecoveryPackageInspector.hpp"
#include "writer/BackupPackageWriter.hpp"

namespace {

namespace fs = std::filesystem;

const galdrine::Bytes kRecoveryKey(32, 0x5A);

[[nodiscard]] std::string fileText(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

[[nodiscard]] galdrine::format::BackupIdentifierV1 identifierOf(std::uint32_t kind, std::uint32_t index) {
  galdrine::format::BackupIdentifierV1 identifier{};
  for (std::size_t position = 0; position < 4; ++position) {
    identifier[position] = static_cast<std::uint8_t>(kind >> (24 - 8 * position));
    identifier[12 + position] = static_cast<std::uint8_t>(index >> (24 - 8 * position));
  }
  return identifier;
}

[[nodiscard]] galdrine::writer::BackupLibrarySnapshot libraryOf(const fs::path& mediaDirectory) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(mediaDirectory)) {
    if (entry.is_regular_file() && entry.path().filename().string().front() != '.') files.push_back(entry.path());
  }
  std::ranges::sort(files);
  galdrine::writer::BackupLibrarySnapshot library;
  for (std::uint32_t index = 0; index < files.size(); ++index) {
    const bool isMovie = files[index].extension() == ".mov";
    galdrine::writer::BackupResourceDescription resource;
    resource.identifier = identifierOf(2, index);
    resource.uniformTypeIdentifier = isMovie ? "com.apple.quicktime-movie" : "public.jpeg";
    if (isMovie) resource.durationSeconds = 30.0;
    resource.content = galdrine::writer::BackupContentSource::file(files[index]);
    galdrine::writer::BackupItemDescription item;
    item.identifier = identifierOf(1, index);
    item.kind = isMovie ? galdrine::format::BackupMediaKindV1::video : galdrine::format::BackupMediaKindV1::photo;
    item.displayDateUTCMilliseconds = 1'700'000'000'000 + index;
    item.importDateUTCMilliseconds = 1'700'000'000'000;
    item.originalFilename = files[index].filename().string();
    item.resources.push_back(std::move(resource));
    library.items.push_back(std::move(item));
  }
  return library;
}

int writePackage(const fs::path& mediaDirectory, const fs::path& packagePath, const fs::path& passphraseFile) {
  std::string passphrase = fileText(passphraseFile);
  galdrine::ScopeGuard wipePassphrase{[&] { galdrine::platform::SecureMemory::wipe(passphrase); }};
  auto writer = galdrine::writer::BackupPackageWriter::create(
      packagePath,
      {.backupPassphrase = galdrine::ByteText::view(passphrase), .recoveryKey = galdrine::ByteView(kRecoveryKey)});
  if (!writer) {
    std::fprintf(stderr, "cannot create the package\n");
    return 1;
  }
  const auto written = writer->writeCommit(libraryOf(mediaDirectory));
  if (!written) {
    std::fprintf(stderr, "cannot write the commit\n");
    return 1;
  }
  std::printf("%zu payload files\n", written->payloadFiles.size());
  return 0;
}

// resetPeakResidentMemory makes the kernel's high-water mark start again from the current size.
void resetPeakResidentMemory() {
  std::ofstream clearReferences("/proc/self/clear_refs");
  clearReferences << "5";
}

[[nodiscard]] long peakResidentBytes() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with("VmHWM:")) return std::stol(line.substr(6)) * 1024;
  }
  return -1;
}

int inspectPackage(const fs::path& packagePath, const fs::path& passphraseFile) {
  std::string passphrase = fileText(passphraseFile);
  galdrine::ScopeGuard wipePassphrase{[&] { galdrine::platform::SecureMemory::wipe(passphrase); }};
  const galdrine::bench::Moment start = galdrine::bench::Moment::now();
  const auto reader = galdrine::recovery::openEnvelopeReader(packagePath);
  if (!reader) return 1;
  auto bpmk = reader->openWithBackupPassphrase(galdrine::ByteText::view(passphrase));
  if (!bpmk) return 1;
  galdrine::ScopeGuard wipeKey{[&] { galdrine::platform::SecureMemory::wipe(*bpmk); }};
  const galdrine::bench::Moment unlocked = galdrine::bench::Moment::now();
  const long peakWithUnlock = peakResidentBytes();
  resetPeakResidentMemory();

  std::optional<galdrine::bench::Moment> firstRead;
  galdrine::bench::Moment lastRead = unlocked;
  std::uint64_t payloadByteCount = 0;
  std::uint64_t payloadFileCount = 0;
  const auto observer = [&](const fs::path&, std::size_t byteCount) {
    if (!firstRead) firstRead = galdrine::bench::Moment::now();
    payloadByteCount += byteCount;
    if (byteCount == 0) {
      ++payloadFileCount;
      lastRead = galdrine::bench::Moment::now();
    }
  };
  const auto inspection = galdrine::recovery::inspect(
      *reader, *bpmk, galdrine::envelope::PortableKeyFactorV1::backupPassphrase, {}, observer);
  if (!inspection) return 1;
  const galdrine::bench::Moment finished = galdrine::bench::Moment::now();
  const galdrine::bench::Moment hashingStart = firstRead.value_or(lastRead);

  std::int64_t matching = 0;
  for (const auto& snapshot : inspection->authenticatedSnapshots)
    matching += snapshot.payloadFileEvidence.matchingFileCount;
  std::printf(
      "{\"payloadFileCount\": %llu, \"payloadByteCount\": %llu, \"matchingFileCount\": %lld, "
      "\"unlockWallSeconds\": %.4f, \"inspectWallSeconds\": %.4f, \"payloadWallSeconds\": %.4f, "
      "\"payloadUserSeconds\": %.4f, \"payloadSystemSeconds\": %.4f, \"peakResidentBytesWithUnlock\": %ld, "
      "\"peakResidentBytesOfInspection\": %ld}\n",
      static_cast<unsigned long long>(payloadFileCount), static_cast<unsigned long long>(payloadByteCount),
      static_cast<long long>(matching), unlocked.wallSeconds - start.wallSeconds,
      finished.wallSeconds - unlocked.wallSeconds, lastRead.wallSeconds - hashingStart.wallSeconds,
      lastRead.userSeconds - hashingStart.userSeconds, lastRead.systemSeconds - hashingStart.systemSeconds,
      peakWithUnlock, peakResidentBytes());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  if (arguments.size() == 4 && arguments[0] == "write") return writePackage(arguments[1], arguments[2], arguments[3]);
  if (arguments.size() == 3 && arguments[0] == "inspect") return inspectPackage(arguments[1], arguments[2]);
  std::fprintf(stderr, "usage: %s write MEDIA PACKAGE PASSPHRASE_FILE | inspect PACKAGE PASSPHRASE_FILE\n", argv[0]);
  return 2;
}
