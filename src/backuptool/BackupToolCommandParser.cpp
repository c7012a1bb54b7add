#include "backuptool/BackupToolCommandParser.hpp"

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform/FilePath.hpp"

namespace galdrine::backuptool {

namespace BackupToolCommandParser {
namespace {

using Arguments = std::span<const std::string>;
using Factor = envelope::PortableKeyFactorV1;
using Input = credential::CredentialInput;

std::unexpected<BackupToolError> invalidArguments() { return std::unexpected(BackupToolError::invalidArguments); }

bool isOnly(Arguments arguments, std::string_view word) { return arguments.size() == 1 && arguments[0] == word; }

bool anyArgument(Arguments arguments, bool (*matches)(std::string_view)) {
  return std::ranges::any_of(arguments, [&](const std::string& argument) { return matches(argument); });
}

bool namesAppCode(std::string_view argument) { return argument == "--app-code" || argument.starts_with("--app-code="); }

// A bare factor option only says which credential is wanted and passes here.
bool carriesCredential(std::string_view argument) {
  return argument.starts_with("--backup-passphrase=") || argument.starts_with("--recovery-key=") ||
         argument.starts_with("--new-recovery-key=") || argument.starts_with("--credential=");
}

// setOnce records a flag that may stand once; a second sight is a misuse.
bool setOnce(bool& flag) {
  if (flag) return false;
  flag = true;
  return true;
}

// Tokens is what both commands share: one package path, "--from" and its value, the options.
struct Tokens {
  std::optional<std::string_view> packageArgument;
  std::optional<std::string_view> sourceArgument;
  bool backupPassphrase = false;
  bool recoveryKey = false;
  bool newRecoveryKey = false;
  bool credentialStandardInput = false;
};

// collect visits the tokens by index; "--from" takes the token after it, whatever it is.
std::expected<Tokens, BackupToolError> collect(Arguments tokens) {
  Tokens collected;
  for (std::size_t index = 0; index < tokens.size(); ++index) {
    const std::string_view token = tokens[index];
    bool accepted = true;
    if (token == "--from") {
      accepted = !collected.sourceArgument && index + 1 < tokens.size();
      if (accepted) collected.sourceArgument = tokens[++index];
    } else if (token == "--backup-passphrase") {
      accepted = setOnce(collected.backupPassphrase);
    } else if (token == "--recovery-key") {
      accepted = setOnce(collected.recoveryKey);
    } else if (token == "--new-recovery-key") {
      accepted = setOnce(collected.newRecoveryKey);
    } else if (token == "--credential-stdin") {
      accepted = setOnce(collected.credentialStandardInput);
    } else {
      accepted = !token.starts_with("-") && !collected.packageArgument;
      if (accepted) collected.packageArgument = token;
    }
    if (!accepted) return invalidArguments();
  }
  if (!collected.packageArgument || !collected.sourceArgument) return invalidArguments();
  return collected;
}

struct Locations {
  std::filesystem::path packagePath;
  std::filesystem::path sourcePath;
};

std::expected<Locations, BackupToolError> locations(const Tokens& tokens) {
  auto packagePath = platform::FilePath::fromArgument(*tokens.packageArgument);
  auto sourcePath = platform::FilePath::fromArgument(*tokens.sourceArgument);
  if (!packagePath || !sourcePath) return invalidArguments();
  return Locations{std::move(*packagePath), std::move(*sourcePath)};
}

Input inputOf(const Tokens& tokens) {
  return tokens.credentialStandardInput ? Input::standardInput : Input::hiddenTerminal;
}

std::expected<BackupToolCommand, BackupToolError> parseCreate(Arguments rest) {
  const auto tokens = collect(rest);
  if (!tokens) return std::unexpected(tokens.error());
  if (tokens->recoveryKey || (!tokens->backupPassphrase && !tokens->newRecoveryKey)) return invalidArguments();
  if (tokens->credentialStandardInput && !tokens->backupPassphrase) return invalidArguments();
  auto paths = locations(*tokens);
  if (!paths) return std::unexpected(paths.error());
  return BackupToolCommand{BackupToolCommand::Create{std::move(paths->packagePath), std::move(paths->sourcePath),
                                                     tokens->backupPassphrase, tokens->newRecoveryKey,
                                                     inputOf(*tokens)}};
}

std::expected<BackupToolCommand, BackupToolError> parseAdd(Arguments rest) {
  const auto tokens = collect(rest);
  if (!tokens) return std::unexpected(tokens.error());
  if (tokens->newRecoveryKey || tokens->backupPassphrase == tokens->recoveryKey) return invalidArguments();
  auto paths = locations(*tokens);
  if (!paths) return std::unexpected(paths.error());
  const Factor factor = tokens->backupPassphrase ? Factor::backupPassphrase : Factor::recoveryKey;
  return BackupToolCommand{
      BackupToolCommand::Add{std::move(paths->packagePath), std::move(paths->sourcePath), factor, inputOf(*tokens)}};
}

}  // namespace

std::expected<BackupToolCommand, BackupToolError> parse(Arguments arguments) {
  if (isOnly(arguments, "help") || isOnly(arguments, "--help") || isOnly(arguments, "-h")) {
    return BackupToolCommand{BackupToolCommand::Help{}};
  }
  // The device-bound code is refused before anything else, wherever it stands.
  if (anyArgument(arguments, namesAppCode)) return std::unexpected(BackupToolError::appCodeForbidden);
  if (anyArgument(arguments, carriesCredential)) return std::unexpected(BackupToolError::credentialInArguments);
  if (arguments.empty()) return invalidArguments();
  const std::string_view word = arguments[0];
  if (word == "create") return parseCreate(arguments.subspan(1));
  if (word == "add") return parseAdd(arguments.subspan(1));
  return invalidArguments();
}

}  // namespace BackupToolCommandParser

}  // namespace galdrine::backuptool
