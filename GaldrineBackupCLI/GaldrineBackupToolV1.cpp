#include "GaldrineBackupCLI/GaldrineBackupToolV1.hpp"

#include <utility>
#include <variant>

#include "GaldrineBackupCLI/BackupToolAddition.hpp"
#include "GaldrineBackupCLI/BackupToolCommandParser.hpp"
#include "GaldrineBackupCLI/BackupToolCreation.hpp"
#include "GaldrineBackupCLI/BackupToolFailureOutput.hpp"
#include "GaldrineBackupCLI/BackupToolUsage.hpp"

namespace GaldrineBackupToolV1 {
namespace {

using Outcome = std::expected<Bytes, BackupToolError>;

Outcome run(const BackupToolCommand& command, BackupToolCredentialReading& reader,
            const GaldrineBackupWriterSettingsV1& settings) {
  struct Runner {
    BackupToolCredentialReading& reader;
    const GaldrineBackupWriterSettingsV1& settings;
    Outcome operator()(const BackupToolCommand::Create& create) const {
      return BackupToolCreation::run(create, reader, settings);
    }
    Outcome operator()(const BackupToolCommand::Add& add) const { return BackupToolAddition::run(add, reader, settings); }
    Outcome operator()(const BackupToolCommand::Help&) const { return GaldrineByteText::bytes(backupToolUsageText); }
  };
  return std::visit(Runner{reader, settings}, command.value);
}

}  // namespace

BackupToolExecution execute(std::span<const std::string> arguments, BackupToolCredentialReading& credentialReader,
                            const GaldrineBackupWriterSettingsV1& settings) {
  const auto command = BackupToolCommandParser::parse(arguments);
  Outcome outcome = command ? run(*command, credentialReader, settings) : std::unexpected(command.error());
  if (outcome) return {0, std::move(*outcome), {}};
  // The one place where an error becomes output.
  const BackupToolFailureOutput output = failureOutput(outcome.error());
  return {output.exitCode, {}, GaldrineByteText::bytes(output.standardError)};
}

}  // namespace GaldrineBackupToolV1
