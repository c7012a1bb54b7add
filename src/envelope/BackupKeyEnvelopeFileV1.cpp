#include "envelope/BackupKeyEnvelopeFileV1.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "format/header/BackupFormatV1.hpp"
#include "format/package/DirectorySynchronization.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"
#include "platform/Random.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::envelope {

namespace {

namespace fs = std::filesystem;
using Error = BackupKeyEnvelopeFileV1Error;
using Failure = BackupKeyEnvelopeFileV1Failure;
using FileRead = BackupKeyEnvelopeFileRead;
using FaultPoint = BackupKeyEnvelopeFileFaultPoint;
using FaultHook = BackupKeyEnvelopeFileFaultHook;
using Package = format::BackupPackageV1;
using Set = BackupKeyEnvelopeSetV1;
using BackupKeyEnvelopeFileV1::maximumFileByteCount;

// digestBytes is the SHA-256 of `bytes` as the byte string a file read carries.
[[nodiscard]] Bytes digestBytes(ByteView bytes) {
  const platform::SHA256Digest digest = platform::SHA256::digest(bytes);
  return Bytes(digest.begin(), digest.end());
}

constexpr std::string_view tmpDirectoryName = "tmp";

[[nodiscard]] std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

[[nodiscard]] bool somethingStandsAt(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

[[nodiscard]] bool stopsAt(const FaultHook& faultHook, FaultPoint point) { return faultHook && faultHook(point); }

// readBoundSet reads a set file and binds it to the package named by `header`.
[[nodiscard]] std::expected<FileRead, Failure> readBoundSet(const fs::path& path,
                                                            const format::BackupFormatHeaderV1& header) {
  const auto bytes = BackupKeyEnvelopeFileV1::readBoundedRegularFile(path);
  if (!bytes) return std::unexpected(Failure(bytes.error()));
  auto set = Set::decode(*bytes);
  if (!set) return std::unexpected(Failure(set.error()));
  if (set->packageIdentifier() != header.packageIdentifier())
    return std::unexpected(Failure(Error::packageBindingMismatch));
  return FileRead{std::move(*set), digestBytes(*bytes)};
}

[[nodiscard]] fs::path finalPathOf(const Package& package) { return package.packagePath() / Package::keyEnvelopesName; }

// reopenBound opens the package again and requires it to be the one the caller holds.
[[nodiscard]] std::expected<Package, Failure> reopenBound(const Package& package) {
  auto fresh = Package::open(package.packagePath());
  if (!fresh) return std::unexpected(Failure(fresh.error()));
  if (fresh->header() != package.header() || fresh->headerData() != package.headerData())
    return std::unexpected(Failure(Error::packageBindingMismatch));
  return std::move(*fresh);
}

// ---- Writing ----

// beforeRename keeps the file's own cases and reports any other failure as publicationFailed.
[[nodiscard]] Error beforeRename(const Failure& failure) {
  if (const auto* own = std::get_if<Error>(&failure)) return *own;
  return Error::publicationFailed;
}

// checkExpectedCurrent: no file and no digest passes; a file with a digest passes if its bytes
// still have that digest; a file where none was expected, or none where one was, is stale.
[[nodiscard]] std::expected<void, Error> checkExpectedCurrent(const Package& package,
                                                              std::optional<ByteView> expected) {
  const fs::path finalPath = finalPathOf(package);
  const bool fileExists = somethingStandsAt(finalPath);
  if (!fileExists && !expected) return {};
  if (fileExists != expected.has_value()) return refuse(Error::staleCurrentFile);
  const auto current = readBoundSet(finalPath, package.header());
  if (!current) return refuse(beforeRename(current.error()));
  if (!ByteOrder::equal(current->encodedSHA256, *expected)) return refuse(Error::staleCurrentFile);
  return {};
}

[[nodiscard]] std::expected<Package, Error> prepare(const Set& envelopeSet, const Package& package,
                                                    std::optional<ByteView> replacing) {
  if (replacing && std::ssize(*replacing) != format::BackupFormatV1::digestByteCount)
    return refuse(Error::invalidExpectedDigest);
  auto fresh = reopenBound(package);
  if (!fresh) return refuse(beforeRename(fresh.error()));
  if (envelopeSet.packageIdentifier() != fresh->header().packageIdentifier())
    return refuse(Error::packageBindingMismatch);
  if (auto current = checkExpectedCurrent(*fresh, replacing); !current) return std::unexpected(current.error());
  return std::move(*fresh);
}

[[nodiscard]] std::expected<fs::path, Error> stagedPathIn(const fs::path& tmp) {
  const std::optional<std::string> identifier = platform::Random::lowercaseUUIDText();
  if (!identifier) return refuse(Error::publicationFailed);
  std::string name(BackupKeyEnvelopeFileV1::stagedNamePrefix);
  name += *identifier;
  name += BackupKeyEnvelopeFileV1::stagedNameSuffix;
  return tmp / name;
}

// StagedFile removes the staged file when the write ends, unless it was published. It is armed
// only once this writer has created the file, so nothing of anyone else's is ever removed.
class StagedFile {
 public:
  explicit StagedFile(fs::path path) : path_(std::move(path)) {}
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  ~StagedFile() {
    if (created_) ::unlink(path_.c_str());  // a failed removal changes nothing about the result
  }

  [[nodiscard]] const fs::path& path() const { return path_; }

  // create writes `bytes` into a new file, refusing an existing one, and closes it.
  [[nodiscard]] bool create(ByteView bytes) {
    auto file = platform::FileDescriptor::open(path_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
    if (!file) return false;
    created_ = true;
    return platform::Files::writeAll(file->get(), bytes).has_value() && file->close().has_value();
  }

  [[nodiscard]] bool synchronize() const {
    auto file = platform::FileDescriptor::open(path_, O_WRONLY | O_NOFOLLOW);
    return file && platform::Files::synchronizeFile(file->get()).has_value() && file->close().has_value();
  }

  // publish renames the staged file over the final name; from then on it is no longer ours.
  [[nodiscard]] bool publish(const fs::path& finalPath) {
    if (std::rename(path_.c_str(), finalPath.c_str()) != 0) return false;
    created_ = false;
    return true;
  }

 private:
  fs::path path_;
  bool created_ = false;
};

[[nodiscard]] bool synchronizeDirectory(const fs::path& directory) {
  // A provider that takes durability over counts as success.
  return format::DirectorySynchronization::synchronizeAfterMutation(directory).has_value();
}

// matchesWritten: the bytes are the encoding that was written, and they decode to the same set.
[[nodiscard]] bool matchesWritten(const fs::path& path, ByteView encoded, const Set& envelopeSet) {
  const auto bytes = BackupKeyEnvelopeFileV1::readBoundedRegularFile(path);
  if (!bytes || !ByteOrder::equal(*bytes, encoded)) return false;
  const auto decoded = Set::decode(*bytes);
  return decoded && *decoded == envelopeSet;
}

// stage covers everything from the staged file's creation to its verification.
[[nodiscard]] std::expected<void, Error> stage(StagedFile& staged, const fs::path& tmp, ByteView encoded,
                                               const Set& envelopeSet, const FaultHook& faultHook) {
  if (somethingStandsAt(staged.path())) return refuse(Error::publicationFailed);
  if (!staged.create(encoded) || stopsAt(faultHook, FaultPoint::afterStagingWrite))
    return refuse(Error::publicationFailed);
  if (!staged.synchronize() || !synchronizeDirectory(tmp) || stopsAt(faultHook, FaultPoint::afterStagingSync))
    return refuse(Error::publicationFailed);
  if (!matchesWritten(staged.path(), encoded, envelopeSet) || stopsAt(faultHook, FaultPoint::afterStagingVerification))
    return refuse(Error::publicationFailed);
  return {};
}

// confirm runs after the rename: every failure here is publicationOutcomeUnknown, since the new
// file may already stand.
[[nodiscard]] std::expected<FileRead, Error> confirm(const Package& package, const fs::path& tmp,
                                                     const Set& envelopeSet, ByteView encodedSHA256,
                                                     const FaultHook& faultHook) {
  if (stopsAt(faultHook, FaultPoint::afterFinalRename) || !synchronizeDirectory(tmp) ||
      !synchronizeDirectory(package.packagePath()) || stopsAt(faultHook, FaultPoint::afterDirectorySync))
    return refuse(Error::publicationOutcomeUnknown);
  auto written = readBoundSet(finalPathOf(package), package.header());
  if (!written || written->envelopeSet != envelopeSet || !ByteOrder::equal(written->encodedSHA256, encodedSHA256))
    return refuse(Error::publicationOutcomeUnknown);
  return std::move(*written);
}

}  // namespace

namespace BackupKeyEnvelopeFileV1 {

std::expected<Bytes, Error> readBoundedRegularFile(const fs::path& path) {
  auto bytes = platform::Files::readBoundedRegularFile(path, 1, static_cast<std::size_t>(maximumFileByteCount));
  if (!bytes) return refuse(Error::invalidEnvelopeFile);
  return std::move(*bytes);
}

std::expected<FileRead, Failure> read(const Package& package) {
  const auto fresh = reopenBound(package);
  if (!fresh) return std::unexpected(fresh.error());
  const fs::path path = finalPathOf(*fresh);
  if (!somethingStandsAt(path)) return std::unexpected(Failure(Error::envelopeFileMissing));
  return readBoundSet(path, fresh->header());
}

std::expected<FileRead, Error> writeAtomically(const Set& envelopeSet, const Package& package,
                                               std::optional<ByteView> replacing) {
  return writeAtomically(envelopeSet, package, replacing, FaultHook{});
}

std::expected<FileRead, Error> writeAtomically(const Set& envelopeSet, const Package& package,
                                               std::optional<ByteView> replacing, const FaultHook& faultHook) {
  const auto fresh = prepare(envelopeSet, package, replacing);
  if (!fresh) return std::unexpected(fresh.error());
  const auto encoded = envelopeSet.encoded();
  if (!encoded) return refuse(Error::publicationFailed);
  const Bytes encodedSHA256 = digestBytes(*encoded);
  const auto tmp = fresh->directoryPath(tmpDirectoryName);
  if (!tmp) return refuse(Error::publicationFailed);
  const auto stagedPath = stagedPathIn(*tmp);
  if (!stagedPath) return std::unexpected(stagedPath.error());

  StagedFile staged(*stagedPath);
  if (auto stagedAndVerified = stage(staged, *tmp, *encoded, envelopeSet, faultHook); !stagedAndVerified)
    return std::unexpected(stagedAndVerified.error());
  // The current file may have changed while the new one was staged.
  if (auto current = checkExpectedCurrent(*fresh, replacing); !current) return std::unexpected(current.error());
  if (stopsAt(faultHook, FaultPoint::beforeFinalRename) || !staged.publish(finalPathOf(*fresh)))
    return refuse(Error::publicationFailed);
  return confirm(*fresh, *tmp, envelopeSet, encodedSHA256, faultHook);
}

}  // namespace BackupKeyEnvelopeFileV1

}  // namespace galdrine::envelope
