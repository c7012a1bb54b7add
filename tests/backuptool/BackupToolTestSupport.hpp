#pragma once
// Helpers of the backup command's tests: a credential reader that gives scripted entries and
// counts what it was asked, and a run of the command in this process.

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "backuptool/BackupToolCredentialReading.hpp"
#include "backuptool/BackupTool.hpp"

namespace galdrine::backuptool {

class ScriptedCredentialReader final : public BackupToolCredentialReading {
 public:
  // Each entry is given once, first for read and then for readRepeatedPassphrase; an absent
  // entry is a reader failure. `beforeRead` runs when the first credential is asked for.
  explicit ScriptedCredentialReader(std::vector<std::optional<std::string>> entries = {},
                                    std::function<void()> beforeRead = {})
      : entries_(entries.begin(), entries.end()), beforeRead_(std::move(beforeRead)) {}

  std::expected<Bytes, credential::CredentialReadingFailure> read(envelope::PortableKeyFactorV1 factor,
                                                                          credential::CredentialInput input,
                                                                          std::int64_t) override {
    if (beforeRead_) beforeRead_();
    reads.push_back({factor, input});
    return next();
  }
  std::expected<Bytes, credential::CredentialReadingFailure> readRepeatedPassphrase(std::int64_t) override {
    ++repeatedReadCount;
    return next();
  }

  struct Read {
    envelope::PortableKeyFactorV1 factor;
    credential::CredentialInput input;
    friend bool operator==(const Read&, const Read&) = default;
  };
  std::vector<Read> reads;
  int repeatedReadCount = 0;

 private:
  std::expected<Bytes, credential::CredentialReadingFailure> next() {
    if (entries_.empty() || !entries_.front()) {
      if (!entries_.empty()) entries_.pop_front();
      return std::unexpected(credential::CredentialReadingFailure{});
    }
    Bytes entry = ByteText::bytes(*entries_.front());
    entries_.pop_front();
    return entry;
  }

  std::deque<std::optional<std::string>> entries_;
  std::function<void()> beforeRead_;
};

struct BackupToolRun {
  int exitStatus = -1;
  std::string standardOutput;
  std::string standardError;
};

[[nodiscard]] inline BackupToolRun runBackupTool(const std::vector<std::string>& arguments,
                                                 BackupToolCredentialReading& reader) {
  const BackupToolExecution execution = BackupTool::execute(arguments, reader);
  return {execution.exitCode, std::string(ByteText::text(execution.standardOutput)),
          std::string(ByteText::text(execution.standardError))};
}

}  // namespace galdrine::backuptool
