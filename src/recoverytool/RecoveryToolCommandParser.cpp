#include "recoverytool/RecoveryToolCommandParser.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/FilePath.hpp"
#include "recoverytool/RecoveryToolSelectionCode.hpp"

namespace galdrine::recoverytool {

namespace RecoveryToolCommandParser {
namespace {

using Arguments = std::span<const std::string>;

std::unexpected<RecoveryToolError> invalidArguments() { return std::unexpected(RecoveryToolError::invalidArguments); }

// filePath: a current directory that cannot be named makes a relative path argument unusable.
std::expected<std::filesystem::path, RecoveryToolError> filePath(std::string_view argument) {
  auto path = platform::FilePath::fromArgument(argument);
  if (!path) return invalidArguments();
  return std::move(*path);
}

bool isOnly(Arguments arguments, std::string_view word) { return arguments.size() == 1 && arguments[0] == word; }

bool anyArgument(Arguments arguments, bool (*matches)(std::string_view)) {
  return std::ranges::any_of(arguments, [&](const std::string& argument) { return matches(argument); });
}

bool namesAppCode(std::string_view argument) { return argument == "--app-code" || argument.starts_with("--app-code="); }

// A bare "--backup-passphrase" or "--recovery-key" only selects the factor and passes here.
bool carriesCredential(std::string_view argument) {
  return argument.starts_with("--backup-passphrase=") || argument.starts_with("--recovery-key=") ||
         argument.starts_with("--credential=");
}

std::expected<std::filesystem::path, RecoveryToolError> parseSinglePath(Arguments rest) {
  if (rest.size() != 1) return invalidArguments();
  return filePath(rest[0]);
}

// parseRecoveryRequest takes the factor option, the optional stdin flag and one package path,
// in any order; each may stand once.
std::expected<RecoveryRequest, RecoveryToolError> parseRecoveryRequest(Arguments tokens) {
  std::optional<envelope::PortableKeyFactorV1> factor;
  bool standardInput = false;
  std::optional<std::string_view> packageArgument;
  for (const std::string& token : tokens) {
    if (token == "--backup-passphrase" || token == "--recovery-key") {
      if (factor) return invalidArguments();
      factor = token == "--backup-passphrase" ? envelope::PortableKeyFactorV1::backupPassphrase
                                              : envelope::PortableKeyFactorV1::recoveryKey;
    } else if (token == "--credential-stdin") {
      if (standardInput) return invalidArguments();
      standardInput = true;
    } else {
      if (token.starts_with("-") || packageArgument) return invalidArguments();
      packageArgument = token;
    }
  }
  if (!packageArgument || !factor) return invalidArguments();
  auto packagePath = filePath(*packageArgument);
  if (!packagePath) return std::unexpected(packagePath.error());
  return RecoveryRequest{
      *packagePath, *factor,
      standardInput ? credential::CredentialInput::standardInput : credential::CredentialInput::hiddenTerminal};
}

// parseExportRequest takes "--snapshot" and "--destination" with the token after each, whatever
// it is, and parses the tokens left over as a recovery request.
std::expected<ExportRequest, RecoveryToolError> parseExportRequest(Arguments tokens) {
  std::optional<std::string_view> snapshot;
  std::optional<std::string_view> destination;
  std::vector<std::string> remaining;
  for (std::size_t index = 0; index < tokens.size(); ++index) {
    const std::string& token = tokens[index];
    const bool isSnapshot = token == "--snapshot";
    if (isSnapshot || token == "--destination") {
      std::optional<std::string_view>& value = isSnapshot ? snapshot : destination;
      if (value || index + 1 == tokens.size()) return invalidArguments();
      value = tokens[++index];
    } else {
      remaining.push_back(token);
    }
  }
  if (!snapshot || !RecoveryTool::validSelectionCode(*snapshot)) return invalidArguments();
  if (!destination) return invalidArguments();
  auto recovery = parseRecoveryRequest(remaining);
  if (!recovery) return std::unexpected(recovery.error());
  auto destinationPath = filePath(*destination);
  if (!destinationPath) return std::unexpected(destinationPath.error());
  return ExportRequest{std::move(*recovery), std::string(*snapshot), std::move(*destinationPath)};
}

std::expected<Command, RecoveryToolError> parseCommandWord(Arguments arguments) {
  const std::string_view word = arguments[0];
  const Arguments rest = arguments.subspan(1);
  if (word == "verify-golden") {
    auto fixturePath = parseSinglePath(rest);
    if (!fixturePath) return std::unexpected(fixturePath.error());
    return Command{Command::VerifyGolden{std::move(*fixturePath)}};
  }
  if (word == "verify-fixtures") {
    auto indexPath = parseSinglePath(rest);
    if (!indexPath) return std::unexpected(indexPath.error());
    return Command{Command::VerifyFixtures{std::move(*indexPath)}};
  }
  if (word == "inspect") {
    auto request = parseRecoveryRequest(rest);
    if (!request) return std::unexpected(request.error());
    return Command{Command::Inspect{std::move(*request)}};
  }
  if (word == "export") {
    auto request = parseExportRequest(rest);
    if (!request) return std::unexpected(request.error());
    return Command{Command::Export{std::move(*request)}};
  }
  return invalidArguments();
}

}  // namespace

std::expected<Command, RecoveryToolError> parse(Arguments arguments) {
  // A bare invocation runs the self-test rather than printing the usage.
  if (arguments.empty() || isOnly(arguments, "self-test")) return Command{Command::SelfTest{}};
  if (isOnly(arguments, "help") || isOnly(arguments, "--help") || isOnly(arguments, "-h"))
    return Command{Command::Help{}};
  // The device-bound code is refused before anything else, wherever it stands.
  if (anyArgument(arguments, namesAppCode)) return std::unexpected(RecoveryToolError::appCodeForbidden);
  if (anyArgument(arguments, carriesCredential)) return std::unexpected(RecoveryToolError::credentialInArguments);
  return parseCommandWord(arguments);
}

}  // namespace RecoveryToolCommandParser

}  // namespace galdrine::recoverytool
