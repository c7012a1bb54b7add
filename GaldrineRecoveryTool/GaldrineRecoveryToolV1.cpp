#include "GaldrineRecoveryTool/GaldrineRecoveryToolV1.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>

#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolDocumentOutput.hpp"
#include "GaldrineRecoveryTool/GaldrineRecoveryToolSelectionCode.hpp"
#include "GaldrineRecoveryTool/LiveBackend.hpp"
#include "GaldrineRecoveryTool/RecoveryToolCommandParser.hpp"
#include "GaldrineRecoveryTool/RecoveryToolFailureOutput.hpp"
#include "GaldrineRecoveryTool/RecoveryToolUsage.hpp"

namespace GaldrineRecoveryToolV1 {
namespace {

using Outcome = std::expected<GaldrineRecoveryToolExecutionV1, RecoveryToolError>;

GaldrineRecoveryToolExecutionV1 standardOutput(std::string_view text) {
  return {0, GaldrineByteText::bytes(text), {}};
}

// The one place where an error becomes output.
GaldrineRecoveryToolExecutionV1 failure(RecoveryToolError error) {
  const RecoveryToolFailureOutput output = failureOutput(error);
  return {output.exitCode, {}, GaldrineByteText::bytes(output.standardError)};
}

template <typename Document>
Outcome documentOutput(const Document& document) {
  auto execution = success(document);
  if (!execution) return std::unexpected(RecoveryToolError::operationFailed);
  return std::move(*execution);
}

// selfTest makes a header round trip in memory: no file and no credential.
Outcome selfTest() {
  const Bytes zeroPackageIdentifier(static_cast<std::size_t>(GaldrineBackupFormatV1::packageIdentifierByteCount), 0);
  const auto header = GaldrineBackupFormatHeaderV1::make(zeroPackageIdentifier);
  if (!header) return std::unexpected(RecoveryToolError::operationFailed);
  const auto encoded = header->encoded();
  if (!encoded) return std::unexpected(RecoveryToolError::operationFailed);
  const auto decoded = GaldrineBackupFormatHeaderV1::decode(*encoded);
  if (!decoded || *decoded != *header) return std::unexpected(RecoveryToolError::operationFailed);
  return standardOutput(std::string("Galdrine recovery self-test passed for ") +
                        std::string(GaldrineBackupFormatV1::canonicalFormatIdentifier) + ".\n");
}

// Every failure of the fixture verifier reads as one compatibility failure: a fixture run only
// says whether this build still reads the format.
Outcome verifyGolden(const std::filesystem::path& fixtureURL) {
  const auto vectorCount = GaldrineRecoveryFixtureVerifier::verifyGoldenFixture(fixtureURL);
  if (!vectorCount) return std::unexpected(RecoveryToolError::compatibilityVerificationFailed);
  return standardOutput("Galdrine recovery verified " + std::to_string(*vectorCount) + " synthetic V1 golden vectors.\n");
}

Outcome verifyFixtures(const std::filesystem::path& indexURL) {
  const auto result = GaldrineRecoveryFixtureVerifier::verifyFixtureIndex(indexURL);
  if (!result) return std::unexpected(RecoveryToolError::compatibilityVerificationFailed);
  return standardOutput("Galdrine recovery verified " + std::to_string(result->fixtureCount) +
                        " compatibility fixtures and " + std::to_string(result->productionVectorCount) +
                        " production vectors.\n");
}

Outcome inspect(const RecoveryRequest& request, GaldrineRecoveryToolCredentialReading& reader, RecoveryToolBackend& backend) {
  auto credential = readCredential(reader, request);
  if (!credential) return std::unexpected(credential.error());
  GaldrineScopeGuard wipeCredential{[&] { GaldrineSecureMemory::wipe(*credential); }};
  const auto inspection = backend.inspect(request.packageURL, request.factor, *credential);
  if (!inspection) return std::unexpected(inspection.error());
  return documentOutput(InspectionDocument::from(*inspection));
}

// selectedSnapshot finds the one snapshot whose code is `selectionCode`; none, or more than
// one, is no selection.
const RecoveryToolSnapshot* selectedSnapshot(const RecoveryToolInspection& inspection, std::string_view selectionCode) {
  const RecoveryToolSnapshot* selected = nullptr;
  for (const RecoveryToolSnapshot& snapshot : inspection.snapshots) {
    if (GaldrineRecoveryToolV1::selectionCode(inspection.packageIdentifier, snapshot.commitIdentifier) != selectionCode) continue;
    if (selected != nullptr) return nullptr;
    selected = &snapshot;
  }
  return selected;
}

Outcome exportSnapshot(const ExportRequest& request, GaldrineRecoveryToolCredentialReading& reader,
                       RecoveryToolBackend& backend) {
  const RecoveryRequest& recovery = request.recovery;
  auto credential = readCredential(reader, recovery);
  if (!credential) return std::unexpected(credential.error());
  GaldrineScopeGuard wipeCredential{[&] { GaldrineSecureMemory::wipe(*credential); }};
  // Every export starts from a fresh authenticated inspection, so a code is only ever
  // matched against what the credential has just unlocked.
  const auto inspection = backend.inspect(recovery.packageURL, recovery.factor, *credential);
  if (!inspection) return std::unexpected(inspection.error());
  const RecoveryToolSnapshot* snapshot = selectedSnapshot(*inspection, request.selectionCode);
  if (snapshot == nullptr) return std::unexpected(RecoveryToolError::snapshotSelectionNotFound);
  const auto result = backend.exportSnapshot(recovery.packageURL, recovery.factor, *credential,
                                             snapshot->commitIdentifier, request.destinationURL);
  if (!result) return std::unexpected(result.error());
  return documentOutput(ExportDocument::from(*result, request.selectionCode));
}

Outcome run(const Command& command, GaldrineRecoveryToolCredentialReading& reader, RecoveryToolBackend& backend) {
  struct Runner {
    GaldrineRecoveryToolCredentialReading& reader;
    RecoveryToolBackend& backend;
    Outcome operator()(const Command::VerifyGolden& golden) const { return verifyGolden(golden.fixtureURL); }
    Outcome operator()(const Command::VerifyFixtures& fixtures) const { return verifyFixtures(fixtures.indexURL); }
    Outcome operator()(const Command::Inspect& inspectCommand) const { return inspect(inspectCommand.request, reader, backend); }
    Outcome operator()(const Command::Export& exportCommand) const { return exportSnapshot(exportCommand.request, reader, backend); }
    Outcome operator()(const Command::Help&) const { return standardOutput(recoveryToolUsageText); }
    Outcome operator()(const Command::SelfTest&) const { return selfTest(); }
  };
  return std::visit(Runner{reader, backend}, command.value);
}

}  // namespace

std::expected<Bytes, RecoveryToolError> readCredential(GaldrineRecoveryToolCredentialReading& credentialReader,
                                                       const RecoveryRequest& request) {
  auto read = credentialReader.read(request.factor, request.credentialInput, maximumCredentialByteCount);
  if (!read) return std::unexpected(RecoveryToolError::credentialUnavailable);
  Bytes credential = std::move(*read);
  // The reader is trusted with nothing, not even with its own bound.
  if (credential.empty() || credential.size() > static_cast<std::size_t>(maximumCredentialByteCount)) {
    GaldrineSecureMemory::wipe(credential);
    return std::unexpected(RecoveryToolError::invalidCredential);
  }
  return credential;
}

GaldrineRecoveryToolExecutionV1 execute(std::span<const std::string> arguments,
                                        GaldrineRecoveryToolCredentialReading& credentialReader,
                                        RecoveryToolBackend& backend) {
  auto command = RecoveryToolCommandParser::parse(arguments);
  Outcome outcome = command ? run(*command, credentialReader, backend) : std::unexpected(command.error());
  if (!outcome) return failure(outcome.error());
  return std::move(*outcome);
}

GaldrineRecoveryToolExecutionV1 execute(std::span<const std::string> arguments,
                                        GaldrineRecoveryToolCredentialReading& credentialReader) {
  LiveBackend backend;
  return execute(arguments, credentialReader, backend);
}

}  // namespace GaldrineRecoveryToolV1
