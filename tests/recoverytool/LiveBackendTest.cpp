// The live backend: typed words into recovery key bytes, the engine's inspection in the
// tool's records, and the two tables from engine failures to what the user sees.

#include "recoverytool/LiveBackend.hpp"

#include <gtest/gtest.h>

#include <string>

#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "recoverytool/LiveBackendErrorMapping.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recoverytool {

namespace {

using namespace testsupport::RecoveryTestPackages;
using ToolError = RecoveryToolError;
using Factor = envelope::PortableKeyFactorV1;

[[nodiscard]] Bytes bytesOfText(const std::string& text) { return Bytes(text.begin(), text.end()); }

TEST(LiveBackend, RecoveryKeyWordsBecomeTheirBytesAndAnythingElseIsAnInvalidCredential) {
  const auto phrase = keys::RecoveryKeyMnemonicV1::phrase(kRecoveryKey);
  ASSERT_TRUE(phrase.has_value());
  EXPECT_EQ(LiveBackend::recoveryKey(bytesOfText("  " + *phrase + "\n")), kRecoveryKey);

  std::string wrongWord = *phrase;
  wrongWord.replace(0, wrongWord.find(' '), "zzzz");
  Bytes notText = bytesOfText(*phrase);
  notText[3] = 0xC0;  // a lead byte with nothing after it
  const std::string refused[] = {wrongWord, phrase->substr(phrase->find(' ') + 1), "", std::string(notText.begin(), notText.end())};
  for (const std::string& credential : refused) {
    EXPECT_EQ(LiveBackend::recoveryKey(bytesOfText(credential)), std::unexpected(RecoveryToolBackendError::invalidCredential))
        << credential;
  }
}

TEST(LiveBackend, EngineFailuresMapToTheUsersOutcomes) {
  using Inspector = recovery::RecoveryPackageInspectorError;
  const std::pair<Inspector, ToolError> inspection[] = {
      {Inspector::invalidPackage, ToolError::invalidPackage},
      {Inspector::unlockFailed, ToolError::unlockFailed},
      {Inspector::packageUnavailable, ToolError::packageUnavailable},
      {Inspector::resourceLimitExceeded, ToolError::resourceLimitExceeded},
      {Inspector::integrityFailure, ToolError::integrityFailure},
  };
  for (const auto& [engine, tool] : inspection) EXPECT_EQ(LiveBackendErrorMapping::mapInspectionError(engine), tool);
  EXPECT_EQ(LiveBackendErrorMapping::mapInspectionError(keys::RecoveryKeyMnemonicV1Error::checksumMismatch()),
            ToolError::invalidCredential);
  EXPECT_EQ(LiveBackendErrorMapping::mapInspectionError(RecoveryToolBackendError::invalidCredential),
            ToolError::invalidCredential);

  using Exporter = recovery::RecoveryExporterError;
  const std::pair<Exporter, ToolError> exports[] = {
      {Exporter::invalidPackage, ToolError::invalidPackage},
      {Exporter::unlockFailed, ToolError::unlockFailed},
      {Exporter::snapshotNotFound, ToolError::snapshotSelectionNotFound},
      {Exporter::destinationExists, ToolError::destinationExists},
      {Exporter::destinationUnavailable, ToolError::destinationUnavailable},
      {Exporter::resourceLimitExceeded, ToolError::resourceLimitExceeded},
      {Exporter::integrityFailure, ToolError::integrityFailure},
      {Exporter::outputWriteFailed, ToolError::outputWriteFailed},
  };
  for (const auto& [engine, tool] : exports) EXPECT_EQ(LiveBackendErrorMapping::mapExportError(engine), tool);
}

TEST(LiveBackend, InspectionReachesTheToolAsItsOwnRecords) {
  testsupport::TemporaryDirectory directory;
  const fs::path package = directory / "Library.galdrine";
  Writer writer = createWithRecoveryKey(package);
  const auto first = writer.writeCommit(library(41, 2, 1));
  const auto second = writer.writeCommit(library(42, 1));
  ASSERT_TRUE(first.has_value() && second.has_value());
  const auto phrase = keys::RecoveryKeyMnemonicV1::phrase(kRecoveryKey);
  ASSERT_TRUE(phrase.has_value());

  LiveBackend backend;
  const auto inspection = backend.inspect(package, Factor::recoveryKey, bytesOfText(*phrase));
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  EXPECT_EQ(inspection->packageIdentifier, writer.package().header().packageIdentifier());
  EXPECT_EQ(inspection->unlockedFactor, Factor::recoveryKey);
  EXPECT_EQ(inspection->branchDisposition, RecoveryToolBranchDisposition::singleBranch());
  ASSERT_EQ(inspection->branches.size(), 1u);
  EXPECT_EQ(inspection->branches.front().tipCommitIdentifier, bytesOf(second->commitIdentifier));
  EXPECT_EQ(inspection->branches.front().commitIdentifiers,
            (std::vector<Bytes>{bytesOf(second->commitIdentifier), bytesOf(first->commitIdentifier)}));
  ASSERT_EQ(inspection->snapshots.size(), 2u);
  const auto& snapshot = *std::ranges::find(inspection->snapshots, bytesOf(first->commitIdentifier),
                                            &RecoveryToolSnapshot::commitIdentifier);
  const auto& counts = first->snapshot.counts();
  EXPECT_EQ((std::vector<std::uint64_t>{snapshot.itemCount, snapshot.resourceCount, snapshot.folderCount, snapshot.albumCount,
                                        snapshot.membershipCount, snapshot.tombstoneCount}),
            (std::vector<std::uint64_t>{counts.itemCount(), counts.resourceCount(), counts.folderCount(), counts.albumCount(),
                                        counts.membershipCount(), counts.tombstoneCount()}));
  const auto files = static_cast<std::int64_t>(first->payloadFiles.size());
  EXPECT_EQ(snapshot.payloadFileEvidence, (RecoveryToolPayloadEvidence{files, files, 0, 0, 0}));

  EXPECT_EQ(backend.inspect(package, Factor::recoveryKey, bytesOfText("abandon")).error(), ToolError::invalidCredential);
  EXPECT_EQ(backend.exportSnapshot(package, Factor::recoveryKey, bytesOfText("abandon"), bytesOf(first->commitIdentifier),
                                   directory / "Out")
                .error(),
            ToolError::invalidCredential);
}

}  // namespace

}  // namespace galdrine::recoverytool
