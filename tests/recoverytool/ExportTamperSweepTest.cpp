// One byte altered at a time in every file of a small package, then a whole export through
// the engine: damaged metadata always ends in an engine failure that the tool reports with
// status 3 or 4 and leaves nothing beside the package; damaged media always ends in a
// published export with issues that holds only files proved against their records.
//
// Small files are swept at every byte and larger ones at a seeded sample of offsets; with
// GALDRINE_TAMPER_SWEEP_EVERY_BYTE=1 every byte of every file is swept. Unlocking uses the
// recovery key, whose derivation is cheap, except where the altered byte lies inside the
// passphrase envelope: only the passphrase can notice that damage.

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/BackupPackageDamage.hpp"
#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "support/ExportTestSupport.hpp"
#include "recovery/export/RecoveryExporter.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "recoverytool/LiveBackendErrorMapping.hpp"
#include "recoverytool/RecoveryToolFailureOutput.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recoverytool {

namespace {

using namespace testsupport::RecoveryTestPackages;
using namespace testsupport::ExportTestSupport;
using Written = writer::BackupWrittenCommit;

constexpr std::size_t everyByteUpTo = 512;   // files up to this size are swept whole
constexpr std::size_t metadataSample = 40;   // offsets drawn in a larger metadata file
constexpr std::size_t payloadSample = 6;     // offsets drawn in each payload file
constexpr std::size_t passphraseSample = 4;  // offsets drawn in the passphrase envelope

[[nodiscard]] bool sweepsEveryByte() {
  const char* setting = std::getenv("GALDRINE_TAMPER_SWEEP_EVERY_BYTE");
  return setting != nullptr && std::string(setting) == "1";
}

// maskAt alternates a whole-byte flip with single-bit flips, so that both a garbled field and
// a value one bit away are met.
[[nodiscard]] std::uint8_t maskAt(std::size_t offset) {
  return offset % 2 == 0 ? 0xFF : static_cast<std::uint8_t>(1u << (offset / 2 % 8));
}

// offsetsIn gives every offset of [begin, end) when the range holds at most `wholeUpTo` bytes
// or every byte is asked for, else the range's ends and `sample` offsets drawn from a seeded
// stream.
[[nodiscard]] std::vector<std::size_t> offsetsIn(std::size_t begin, std::size_t end, std::size_t sample,
                                                 std::uint64_t seed, std::size_t wholeUpTo = everyByteUpTo) {
  std::vector<std::size_t> offsets;
  if (end <= begin) return offsets;
  if (sweepsEveryByte() || end - begin <= wholeUpTo) {
    for (std::size_t offset = begin; offset < end; ++offset) offsets.push_back(offset);
    return offsets;
  }
  std::mt19937_64 draw(seed);
  offsets = {begin, end - 1};
  for (std::size_t index = 0; index < sample; ++index) offsets.push_back(begin + draw() % (end - begin));
  return offsets;
}

// FlippedByte alters one byte of a file for as long as it lives.
class FlippedByte {
 public:
  FlippedByte(const fs::path& file, std::size_t offset) : file_(file), offset_(offset) { flip(); }
  ~FlippedByte() { flip(); }
  FlippedByte(const FlippedByte&) = delete;
  FlippedByte& operator=(const FlippedByte&) = delete;

 private:
  void flip() const {
    const int descriptor = ::open(file_.c_str(), O_RDWR | O_CLOEXEC);
    std::uint8_t byte = 0;
    const auto position = static_cast<off_t>(offset_);
    bool flipped = descriptor >= 0 && ::pread(descriptor, &byte, 1, position) == 1;
    byte ^= maskAt(offset_);
    flipped = flipped && ::pwrite(descriptor, &byte, 1, position) == 1;
    if (descriptor >= 0) ::close(descriptor);
    if (!flipped) ADD_FAILURE() << "cannot alter " << file_ << " at " << offset_;
  }

  fs::path file_;
  std::size_t offset_;
};

class ExportTamperSweepTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }
  [[nodiscard]] fs::path destination() const { return directory_ / "Recovered"; }

  [[nodiscard]] std::expected<recovery::RecoveryExportResult, recovery::RecoveryExporterError> exportWith(
      envelope::PortableKeyFactorV1 factor) const {
    const Bytes selected = bytesOf(written_.commitIdentifier);
    return factor == envelope::PortableKeyFactorV1::recoveryKey
               ? recovery::exportWithRecoveryKey(packagePath(), kRecoveryKey, selected, destination())
               : recovery::exportWithBackupPassphrase(packagePath(), kPassphrase, selected, destination());
  }

  void expectRefused(const fs::path& file, std::size_t offset, envelope::PortableKeyFactorV1 factor) const {
    const FlippedByte flipped(file, offset);
    const auto result = exportWith(factor);
    ASSERT_FALSE(result.has_value()) << file.filename() << " at " << offset;
    const int status = failureOutput(LiveBackendErrorMapping::mapExportError(result.error())).exitCode;
    EXPECT_TRUE(status == 3 || status == 4) << file.filename() << " at " << offset << ": " << status;
    EXPECT_EQ(entryNames(directory_.path()), std::vector<std::string>{"Library.galdrine"}) << file.filename() << " at " << offset;
  }

  void expectCompletedWithIssues(const fs::path& file, std::size_t offset) const {
    {
      const FlippedByte flipped(file, offset);
      const auto result = exportWith(envelope::PortableKeyFactorV1::recoveryKey);
      ASSERT_TRUE(result.has_value()) << file.filename() << " at " << offset << ": " << static_cast<int>(result.error());
      EXPECT_EQ(result->status, recovery::RecoveryExportStatus::completedWithIssues) << file.filename() << " at " << offset;
      EXPECT_GE(result->failedResourceCount, 1);
      const auto exported = readExport(destination());
      ASSERT_TRUE(exported.has_value());
      expectEveryRecoveredFileIsItsResource(*exported, contents_);
    }
    fs::remove_all(destination());
  }

  // passphraseEnvelopeRange is where the passphrase envelope's own bytes stand in the file.
  [[nodiscard]] std::pair<std::size_t, std::size_t> passphraseEnvelopeRange(const Bytes& file) const {
    const auto read = envelope::BackupKeyEnvelopeFileV1::read(writer_.package());
    if (!read) return {0, 0};
    for (const auto& entry : read->envelopeSet.entries()) {
      if (entry.metadata().factor() != envelope::PortableKeyFactorV1::backupPassphrase) continue;
      const auto found = std::ranges::search(file, entry.envelope());
      const auto begin = static_cast<std::size_t>(found.begin() - file.begin());
      return {begin, begin + found.size()};
    }
    return {0, 0};
  }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithBothFactors(packagePath());
  writer::BackupLibrarySnapshot library_ = library(31, 2, 1);
  Written written_ = [&] {
    auto written = writer_.writeCommit(library_);
    if (!written) std::abort();
    return std::move(*written);
  }();
  std::map<std::string, Bytes> contents_ = contentsByIdentifier(library_);
};

TEST_F(ExportTamperSweepTest, DamagedMetadataIsAlwaysRefusedAndLeavesNothing) {
  ASSERT_TRUE(written_.head.has_value());
  std::vector<fs::path> files{packagePath() / "format-header.cbor", written_.head->file, written_.commitFile,
                              written_.snapshotFile, written_.manifestRootFile};
  files.insert(files.end(), written_.sectionFiles.begin(), written_.sectionFiles.end());
  std::uint64_t seed = 1;
  for (const fs::path& file : files) {
    for (const std::size_t offset : offsetsIn(0, fs::file_size(file), metadataSample, seed++)) {
      expectRefused(file, offset, envelope::PortableKeyFactorV1::recoveryKey);
    }
  }

  const fs::path envelopes = packagePath() / "key-envelopes.cbor";
  const Bytes envelopeBytes = testsupport::FileFixtures::readFile(envelopes);
  const auto [begin, end] = passphraseEnvelopeRange(envelopeBytes);
  ASSERT_LT(begin, end);
  for (const std::size_t offset : offsetsIn(0, envelopeBytes.size(), metadataSample, seed++)) {
    if (offset < begin || offset >= end) expectRefused(envelopes, offset, envelope::PortableKeyFactorV1::recoveryKey);
  }
  for (const std::size_t offset : offsetsIn(begin, end, passphraseSample, seed++, 0)) {
    expectRefused(envelopes, offset, envelope::PortableKeyFactorV1::backupPassphrase);
  }
}

TEST_F(ExportTamperSweepTest, DamagedMediaCompleteWithIssuesHoldingOnlyProvedFiles) {
  ASSERT_GE(written_.payloadFiles.size(), 3u);
  std::uint64_t seed = 100;
  for (const auto& payload : written_.payloadFiles) {
    for (const std::size_t offset : offsetsIn(0, payload.fileByteCount, payloadSample, seed++)) {
      expectCompletedWithIssues(payload.path, offset);
    }
  }
}

}  // namespace

}  // namespace galdrine::recoverytool
