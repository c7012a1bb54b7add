#include "backuptool/BackupTool.hpp"

#include <utility>
#include <variant>

#include "backuptool/BackupToolAddition.hpp"
#include "backuptool/BackupToolCommandParser.hpp"
#include "backuptool/BackupToolCreation.hpp"
#include "backuptool/BackupToolFailureOutput.hpp"
#include "backuptool/BackupToolUsage.hpp"

namespace galdrine::backuptool {

namespace BackupTool {
namespace {

using Outcome = std::expected<Bytes, BackupToolError>;

Outcome run(const BackupToolCommand& command, BackupToolCredentialReading& reader) {
  struct Runner {
    BackupToolCredentialReading& reader;
    Outcome operator()(const BackupToolCommand::Create& create) const {
      return BackupToolCreation::run(create, reader);
    }
    Outcome operator()(const BackupToolCommand::Add& add) const { return BackupToolAddition::run(add, reader); }
    Outcome operator()(const BackupToolCommand::Help&) const { return ByteText::bytes(backupToolUsageText); }
  };
  return std::visit(Runner{reader}, command.value);
}

}  // namespace

BackupToolExecution execute(std::span<const std::string> arguments, BackupToolCredentialReading& credentialReader) {
  const auto command = BackupToolCommandParser::parse(arguments);
  Outcome outcome = command ? run(*command, credentialReader) : std::unexpected(command.error());
  if (outcome) return {0, std::move(*outcome), {}};
  // The one place where an error becomes output.
  const BackupToolFailureOutput output = failureOutput(outcome.error());
  return {output.exitCode, {}, ByteText::bytes(output.standardError)};
}

}  // namespace BackupTool

}  // namespace galdrine::backuptool
