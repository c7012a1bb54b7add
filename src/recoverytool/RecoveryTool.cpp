#include "recoverytool/RecoveryTool.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>

#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "recoverytool/LiveBackend.hpp"
#include "recoverytool/RecoveryToolCommandParser.hpp"
#include "recoverytool/RecoveryToolDocumentOutput.hpp"
#include "recoverytool/RecoveryToolFailureOutput.hpp"
#include "recoverytool/RecoveryToolSelectionCode.hpp"
#include "recoverytool/RecoveryToolUsage.hpp"

namespace galdrine::recoverytool {

namespace RecoveryTool {
namespace {

using Outcome = std::expected<RecoveryToolExecution, RecoveryToolError>;

RecoveryToolExecution standardOutput(std::string_view text) { return {0, ByteText::bytes(text), {}}; }

// The one place where an error becomes output.
RecoveryToolExecution failure(RecoveryToolError error) {
  const RecoveryToolFailureOutput output = failureOutput(error);
  return {output.exitCode, {}, ByteText::bytes(output.standardError)};
}

template <typename Document>
Outcome documentOutput(const Document& document) {
  auto execution = success(document);
  if (!execution) return std::unexpected(RecoveryToolError::operationFailed);
  return std::move(*execution);
}

// selfTest makes a header round trip in memory: no file and no credential.
Outcome selfTest() {
  const Bytes zeroPackageIdentifier(static_cast<std::size_t>(format::BackupFormatV1::packageIdentifierByteCount), 0);
  const auto header = format::BackupFormatHeaderV1::make(zeroPackageIdentifier);
  if (!header) return std::unexpected(RecoveryToolError::operationFailed);
  const auto encoded = header->encoded();
  if (!encoded) return std::unexpected(RecoveryToolError::operationFailed);
  const auto decoded = format::BackupFormatHeaderV1::decode(*encoded);
  if (!decoded || *decoded != *header) return std::unexpected(RecoveryToolError::operationFailed);
  return standardOutput(std::string("Galdrine recovery self-test passed for ") +
                        std::string(format::BackupFormatV1::canonicalFormatIdentifier) + ".\n");
}

// Every failure of the fixture verifier reads as one compatibility failure: a fixture run only
// says whether this build still reads the format.
Outcome verifyGolden(const std::filesystem::path& fixturePath) {
  const auto vectorCount = fixtures::RecoveryFixtureVerifier::verifyGoldenFixture(fixturePath);
  if (!vectorCount) return std::unexpected(RecoveryToolError::compatibilityVerificationFailed);
  return standardOutput("Galdrine recovery verified " + std::to_string(*vectorCount) +
                        " synthetic V1 golden vectors.\n");
}

Outcome verifyFixtures(const std::filesystem::path& indexPath) {
  const auto result = fixtures::RecoveryFixtureVerifier::verifyFixtureIndex(indexPath);
  if (!result) return std::unexpected(RecoveryToolError::compatibilityVerificationFailed);
  return standardOutput("Galdrine recovery verified " + std::to_string(result->fixtureCount) +
                        " compatibility fixtures and " + std::to_string(result->productionVectorCount) +
                        " production vectors.\n");
}

// readCredential is the bounded read, its two outcomes named in this tool's terms.
std::expected<Bytes, RecoveryToolError> readCredential(credential::CredentialReading& reader,
                                                       const RecoveryRequest& request) {
  auto credential = credential::BoundedCredentialRead::read(reader, request.factor, request.credentialInput);
  if (credential) return std::move(*credential);
  switch (credential.error()) {
    case credential::BoundedCredentialReadError::unavailable:
      return std::unexpected(RecoveryToolError::credentialUnavailable);
    case credential::BoundedCredentialReadError::invalid:
      return std::unexpected(RecoveryToolError::invalidCredential);
  }
  std::unreachable();
}

Outcome inspect(const RecoveryRequest& request, credential::CredentialReading& reader, RecoveryToolBackend& backend) {
  auto credential = readCredential(reader, request);
  if (!credential) return std::unexpected(credential.error());
  ScopeGuard wipeCredential{[&] { platform::SecureMemory::wipe(*credential); }};
  const auto inspection = backend.inspect(request.packagePath, request.factor, *credential);
  if (!inspection) return std::unexpected(inspection.error());
  return documentOutput(InspectionDocument::from(*inspection));
}

// selectedSnapshot finds the one snapshot whose code is `selectionCode`; none, or more than
// one, is no selection.
const RecoveryToolSnapshot* selectedSnapshot(const RecoveryToolInspection& inspection, std::string_view selectionCode) {
  const RecoveryToolSnapshot* selected = nullptr;
  for (const RecoveryToolSnapshot& snapshot : inspection.snapshots) {
    if (RecoveryTool::selectionCode(inspection.packageIdentifier, snapshot.commitIdentifier) != selectionCode) continue;
    if (selected != nullptr) return nullptr;
    selected = &snapshot;
  }
  return selected;
}

Outcome exportSnapshot(const ExportRequest& request, credential::CredentialReading& reader,
                       RecoveryToolBackend& backend) {
  const RecoveryRequest& recovery = request.recovery;
  auto credential = readCredential(reader, recovery);
  if (!credential) return std::unexpected(credential.error());
  ScopeGuard wipeCredential{[&] { platform::SecureMemory::wipe(*credential); }};
  // Every export starts from a fresh authenticated inspection, so a code is only ever
  // matched against what the credential has just unlocked.
  const auto inspection = backend.inspect(recovery.packagePath, recovery.factor, *credential);
  if (!inspection) return std::unexpected(inspection.error());
  const RecoveryToolSnapshot* snapshot = selectedSnapshot(*inspection, request.selectionCode);
  if (snapshot == nullptr) return std::unexpected(RecoveryToolError::snapshotSelectionNotFound);
  const auto result = backend.exportSnapshot(recovery.packagePath, recovery.factor, *credential,
                                             snapshot->commitIdentifier, request.destinationPath);
  if (!result) return std::unexpected(result.error());
  return documentOutput(ExportDocument::from(*result, request.selectionCode));
}

Outcome run(const Command& command, credential::CredentialReading& reader, RecoveryToolBackend& backend) {
  struct Runner {
    credential::CredentialReading& reader;
    RecoveryToolBackend& backend;
    Outcome operator()(const Command::VerifyGolden& golden) const { return verifyGolden(golden.fixturePath); }
    Outcome operator()(const Command::VerifyFixtures& fixtures) const { return verifyFixtures(fixtures.indexPath); }
    Outcome operator()(const Command::Inspect& inspectCommand) const {
      return inspect(inspectCommand.request, reader, backend);
    }
    Outcome operator()(const Command::Export& exportCommand) const {
      return exportSnapshot(exportCommand.request, reader, backend);
    }
    Outcome operator()(const Command::Help&) const { return standardOutput(recoveryToolUsageText); }
    Outcome operator()(const Command::SelfTest&) const { return selfTest(); }
  };
  return std::visit(Runner{reader, backend}, command.value);
}

}  // namespace

RecoveryToolExecution execute(std::span<const std::string> arguments, credential::CredentialReading& credentialReader,
                              RecoveryToolBackend& backend) {
  auto command = RecoveryToolCommandParser::parse(arguments);
  Outcome outcome = command ? run(*command, credentialReader, backend) : std::unexpected(command.error());
  if (!outcome) return failure(outcome.error());
  return std::move(*outcome);
}

RecoveryToolExecution execute(std::span<const std::string> arguments, credential::CredentialReading& credentialReader) {
  LiveBackend backend;
  return execute(arguments, credentialReader, backend);
}

}  // namespace RecoveryTool

}  // namespace galdrine::recoverytool
