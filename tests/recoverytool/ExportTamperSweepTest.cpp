// One byte altered at a time in every file of a small package, then a whole export through
// the engine: damaged metadata always ends in an engine failure that the tool reports with
// status 3 or 4 and leaves nothing beside the package; damaged media always ends in a
// published export with issues that holds only files proved against their records.
//
// Small files are swept at every byte and larger ones at a seeded sample of offsets; with
// GALDRINE_TAMPER_SWEEP_EVERY_BYTE=1 every byte of every file is swept. Unlocking uses the
// recovery key, whose derivation is cheap, except where the altered byte lies inside the
// passphrase envelope: only the passphrase can notice that damage.

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "recovery/export/RecoveryExporter.hpp"
#include "recoverytool/LiveBackend.hpp"
#include "recoverytool/RecoveryToolFailureOutput.hpp"
#include "support/ExportTestSupport.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recoverytool {

namespace {

using namespace testsupport::RecoveryTestPackages;
using namespace testsupport::ExportTestSupport;
using Factor = envelope::PortableKeyFactorV1;

// offsetsIn gives every offset of [begin, end) when the range holds at most `wholeUpTo` bytes
// or every byte is asked for, else the range's ends and `sample` offsets drawn from a seeded
// stream: 40 in a larger metadata file, 6 in each payload file, 4 in the passphrase envelope.
std::vector<std::size_t> offsetsIn(std::size_t begin, std::size_t end, std::size_t sample, std::uint64_t seed,
                                   std::size_t wholeUpTo = 512) {
  const char* everyByte = std::getenv("GALDRINE_TAMPER_SWEEP_EVERY_BYTE");
  std::vector<std::size_t> offsets;
  if ((everyByte != nullptr && std::string_view(everyByte) == "1") || end - begin <= wholeUpTo) {
    for (std::size_t offset = begin; offset < end; ++offset) offsets.push_back(offset);
    return offsets;
  }
  std::mt19937_64 draw(seed);
  offsets = {begin, end - 1};
  for (std::size_t index = 0; index < sample; ++index) offsets.push_back(begin + draw() % (end - begin));
  return offsets;
}

// flip alters one byte of `file`, the whole byte at even offsets and a single bit at odd ones,
// so that both a garbled field and a value one bit away are met. A second flip restores it.
void flip(const fs::path& file, std::size_t offset) {
  Bytes bytes = testsupport::FileFixtures::readFile(file);
  ASSERT_LT(offset, bytes.size()) << file;
  bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ (offset % 2 == 0 ? 0xFFu : 1u << (offset / 2 % 8)));
  testsupport::FileFixtures::writeFile(file, bytes);
}

class ExportTamperSweepTest : public testing::Test {
 protected:
  void SetUp() override {
    auto written = writer_.writeCommit(library_);
    ASSERT_TRUE(written.has_value());
    written_ = std::move(*written);
  }

  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }

  [[nodiscard]] std::expected<recovery::RecoveryExportResult, recovery::RecoveryExporterError> exportFlipped(
      const fs::path& file, std::size_t offset, Factor factor) const {
    flip(file, offset);
    ScopeGuard restore{[&] { flip(file, offset); }};
    const Bytes selected = bytesOf(written_->commitIdentifier);
    return factor == Factor::recoveryKey
               ? recovery::exportWithRecoveryKey(packagePath(), kRecoveryKey, selected, directory_ / "Recovered")
               : recovery::exportWithBackupPassphrase(packagePath(), kPassphrase, selected, directory_ / "Recovered");
  }

  void expectRefused(const fs::path& file, std::size_t offset, Factor factor = Factor::recoveryKey) const {
    const auto result = exportFlipped(file, offset, factor);
    ASSERT_FALSE(result.has_value()) << file.filename() << " at " << offset;
    const int status = failureOutput(LiveBackend::mapExportError(result.error())).exitCode;
    EXPECT_TRUE(status == 3 || status == 4) << file.filename() << " at " << offset << ": " << status;
    EXPECT_EQ(entryNames(directory_.path()), std::vector<std::string>{"Library.galdrine"})
        << file.filename() << " at " << offset;
  }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithBothFactors(packagePath());
  writer::BackupLibrarySnapshot library_ = library(31, 2, 1);
  std::optional<writer::BackupWrittenCommit> written_;
};

TEST_F(ExportTamperSweepTest, DamagedMetadataIsAlwaysRefusedAndLeavesNothing) {
  ASSERT_TRUE(written_->head.has_value());
  std::vector<fs::path> files{packagePath() / "format-header.cbor", written_->head->file, written_->commitFile,
                              written_->snapshotFile, written_->manifestRootFile};
  files.insert(files.end(), written_->sectionFiles.begin(), written_->sectionFiles.end());
  std::uint64_t seed = 1;
  for (const fs::path& file : files) {
    for (const std::size_t offset : offsetsIn(0, fs::file_size(file), 40, seed++)) expectRefused(file, offset);
  }

  // The passphrase envelope's own bytes are damage only the passphrase can notice.
  const fs::path envelopes = packagePath() / "key-envelopes.cbor";
  const Bytes envelopeBytes = testsupport::FileFixtures::readFile(envelopes);
  const auto set = envelope::BackupKeyEnvelopeFileV1::read(writer_.package());
  ASSERT_TRUE(set.has_value());
  const auto entry = std::ranges::find(set->envelopeSet.entries(), Factor::backupPassphrase,
                                       [](const auto& candidate) { return candidate.metadata().factor(); });
  ASSERT_NE(entry, set->envelopeSet.entries().end());
  const auto found = std::ranges::search(envelopeBytes, entry->envelope());
  const auto begin = static_cast<std::size_t>(found.begin() - envelopeBytes.begin());
  const std::size_t end = begin + found.size();
  ASSERT_LT(begin, end);
  for (const std::size_t offset : offsetsIn(0, envelopeBytes.size(), 40, seed++)) {
    if (offset < begin || offset >= end) expectRefused(envelopes, offset);
  }
  for (const std::size_t offset : offsetsIn(begin, end, 4, seed++, 0))
    expectRefused(envelopes, offset, Factor::backupPassphrase);
}

TEST_F(ExportTamperSweepTest, DamagedMediaCompleteWithIssuesHoldingOnlyProvedFiles) {
  ASSERT_GE(written_->payloadFiles.size(), 3u);
  std::uint64_t seed = 100;
  for (const auto& payload : written_->payloadFiles) {
    for (const std::size_t offset : offsetsIn(0, payload.fileByteCount, 6, seed++)) {
      const auto result = exportFlipped(payload.path, offset, Factor::recoveryKey);
      ASSERT_TRUE(result.has_value()) << payload.path.filename() << " at " << offset;
      EXPECT_EQ(result->status, recovery::RecoveryExportStatus::completedWithIssues)
          << payload.path << " at " << offset;
      EXPECT_GE(result->failedResourceCount, 1);
      const auto exported = readExport(directory_ / "Recovered");
      ASSERT_TRUE(exported.has_value());
      expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(library_));
      fs::remove_all(directory_ / "Recovered");
    }
  }
}

}  // namespace

}  // namespace galdrine::recoverytool
