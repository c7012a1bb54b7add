#pragma once
// Test doubles for the driver: a credential reader that hands out a chosen credential and a
// backend that answers with chosen results. Both record how they were called, and both
// watch the credential's bytes so a test can see that the driver wiped them.

#include <expected>
#include <filesystem>
#include <optional>
#include <vector>

#include "credential/CredentialReading.hpp"
#include "recoverytool/RecoveryToolBackend.hpp"
#include "ReleasedBlockWatch.hpp"

namespace galdrine::recoverytool {

class FakeCredentialReader final : public credential::CredentialReading {
 public:
  std::optional<Bytes> credential = Bytes{'p', 'w'};  // nothing: the read fails
  int readCount = 0;
  std::optional<envelope::PortableKeyFactorV1> factor;
  std::optional<credential::CredentialInput> input;
  std::int64_t maximumByteCount = 0;

  std::expected<Bytes, credential::CredentialReadingFailure> read(envelope::PortableKeyFactorV1 readFactor,
                                                                          credential::CredentialInput readInput,
                                                                          std::int64_t readMaximum) override {
    ++readCount;
    factor = readFactor;
    input = readInput;
    maximumByteCount = readMaximum;
    if (!credential) return std::unexpected(credential::CredentialReadingFailure{});
    Bytes handedOut = *credential;
    ReleasedBlockWatch::watch(handedOut.data(), handedOut.size());
    return handedOut;
  }
};

class FakeBackend final : public RecoveryToolBackend {
 public:
  std::expected<RecoveryToolInspection, RecoveryToolError> inspection = RecoveryToolInspection{};
  std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportResult = recovery::RecoveryExportResult{};
  int inspectCount = 0;
  int exportCount = 0;
  std::vector<Bytes> credentialsSeen;
  std::filesystem::path packagePath;
  std::optional<envelope::PortableKeyFactorV1> factor;
  Bytes selectedCommitIdentifier;
  std::filesystem::path destinationPath;

  std::expected<RecoveryToolInspection, RecoveryToolError> inspect(const std::filesystem::path& path,
                                                                   envelope::PortableKeyFactorV1 usedFactor,
                                                                   ByteView credential) override {
    ++inspectCount;
    see(path, usedFactor, credential);
    return inspection;
  }

  std::expected<recovery::RecoveryExportResult, RecoveryToolError> exportSnapshot(
      const std::filesystem::path& path, envelope::PortableKeyFactorV1 usedFactor, ByteView credential,
      ByteView commitIdentifier, const std::filesystem::path& destination) override {
    ++exportCount;
    see(path, usedFactor, credential);
    selectedCommitIdentifier.assign(commitIdentifier.begin(), commitIdentifier.end());
    destinationPath = destination;
    return exportResult;
  }

 private:
  void see(const std::filesystem::path& path, envelope::PortableKeyFactorV1 usedFactor, ByteView credential) {
    packagePath = path;
    factor = usedFactor;
    credentialsSeen.emplace_back(credential.begin(), credential.end());
    ReleasedBlockWatch::watch(credential.data(), credential.size());
  }
};

}  // namespace galdrine::recoverytool
