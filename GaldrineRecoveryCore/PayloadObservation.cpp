#include "GaldrineRecoveryCore/PayloadObservation.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrineRecoveryCore/InspectorErrorTranslation.hpp"

namespace {

namespace fs = std::filesystem;
using Error = GaldrineRecoveryPackageInspectorV1Error;
using Container = GaldrineBackupPayloadContainerKindV1;

// sameFile tells whether two fstat results describe one file that did not change in between.
[[nodiscard]] bool sameFile(const struct stat& before, const struct stat& after) {
  return before.st_dev == after.st_dev && before.st_ino == after.st_ino && before.st_size == after.st_size &&
         before.st_mtim.tv_sec == after.st_mtim.tv_sec && before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
}

// readPiece reads once into `buffer`, resuming after an interruption.
[[nodiscard]] ssize_t readPiece(int descriptor, std::span<std::uint8_t> buffer) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer.data(), buffer.size());
  } while (count < 0 && errno == EINTR);
  return count;
}

// streamedDigest hashes the file from its current position to its end, one piece at a time.
// It gives nothing for a failed read or for more bytes than `expectedByteCount`, so that a
// file that keeps growing cannot keep the loop going.
[[nodiscard]] std::optional<GaldrineSHA256Digest> streamedDigest(int descriptor, const fs::path& path,
                                                                 std::uint64_t expectedByteCount,
                                                                 std::span<std::uint8_t> buffer,
                                                                 const GaldrineRecoveryPayloadReadObserverV1& observer) {
  GaldrinePlatformSHA256::Hasher hasher;
  std::uint64_t readByteCount = 0;
  while (true) {
    const ssize_t count = readPiece(descriptor, buffer);
    if (count < 0) return std::nullopt;
    if (observer) observer(path, static_cast<std::size_t>(count));
    if (count == 0) break;
    readByteCount += static_cast<std::uint64_t>(count);
    if (readByteCount > expectedByteCount) return std::nullopt;
    hasher.update(buffer.first(static_cast<std::size_t>(count)));
  }
  if (readByteCount != expectedByteCount) return std::nullopt;
  return hasher.finalize();
}

[[nodiscard]] std::expected<fs::path, Error> payloadFileURL(const GaldrineBackupPackageV1& package, const Bytes& identifier,
                                                            Container container) {
  const bool isChunk = container == Container::chunk;
  const auto directory = package.directoryURL(isChunk ? "objects" : "packs");
  if (!directory) return std::unexpected(inspectorError(directory.error()));
  const auto name = isChunk ? GaldrineBackupPayloadV1::resourceChunkFileName(identifier)
                            : GaldrineBackupPayloadV1::packSegmentFileName(identifier);
  if (!name) return std::unexpected(inspectorError(name.error()));
  return *directory / *name;
}

}  // namespace

namespace PayloadObservations {

PayloadObservation observePayloadFile(const fs::path& path, const PayloadExpectation& expectation,
                                      std::span<std::uint8_t> buffer, const GaldrineRecoveryPayloadReadObserverV1& observer) {
  struct stat linkStatus {};
  if (::lstat(path.c_str(), &linkStatus) != 0) {
    return errno == ENOENT ? PayloadObservation::missing : PayloadObservation::unreadable;
  }
  // Non-blocking, so that a pipe put in the file's place cannot stall the open.
  const auto descriptor = GaldrineFileDescriptor::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return PayloadObservation::unreadable;
  struct stat before {};
  if (::fstat(descriptor->get(), &before) != 0) return PayloadObservation::mismatched;
  if (!S_ISREG(before.st_mode)) return PayloadObservation::mismatched;
  if (before.st_size < 1 || static_cast<std::uint64_t>(before.st_size) != expectation.byteCount) {
    return PayloadObservation::mismatched;
  }
  static_cast<void>(::posix_fadvise(descriptor->get(), 0, 0, POSIX_FADV_SEQUENTIAL));
  const auto digest = streamedDigest(descriptor->get(), path, expectation.byteCount, buffer, observer);
  if (!digest) return PayloadObservation::unreadable;
  struct stat after {};
  if (::fstat(descriptor->get(), &after) != 0 || !sameFile(before, after)) return PayloadObservation::unreadable;
  return GaldrineByteOrder::equal(*digest, expectation.sha256) ? PayloadObservation::matching
                                                               : PayloadObservation::mismatched;
}

std::expected<PayloadObservationMap, Error> observePayloadFiles(const PayloadExpectationMap& expectations,
                                                               const GaldrineBackupPackageV1& package,
                                                               const GaldrineRecoveryPayloadReadObserverV1& observer) {
  // One piece buffer for the whole operation, left uninitialised: every byte is read before use.
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(readPieceByteCount);
  PayloadObservationMap observations;
  for (const auto& [identifier, expectation] : expectations) {
    const auto url = payloadFileURL(package, identifier, expectation.container);
    if (!url) return std::unexpected(url.error());
    observations.emplace(identifier,
                         observePayloadFile(*url, expectation, std::span(buffer.get(), readPieceByteCount), observer));
  }
  return observations;
}

}  // namespace PayloadObservations
