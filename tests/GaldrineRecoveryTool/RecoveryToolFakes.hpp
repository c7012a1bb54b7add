#pragma once
// Test doubles for the driver: a credential reader that hands out a chosen credential and a
// backend that answers with chosen results. Both record how they were called, and both
// watch the credential's bytes so a test can see that the driver wiped them.

#include <expected>
#include <filesystem>
#include <optional>
#include <vector>

#include "GaldrineRecoveryTool/GaldrineRecoveryToolCredentialReading.hpp"
#include "GaldrineRecoveryTool/RecoveryToolBackend.hpp"
#include "ReleasedBlockWatch.hpp"

class FakeCredentialReader final : public GaldrineRecoveryToolCredentialReading {
 public:
  std::optional<Bytes> credential = Bytes{'p', 'w'};  // nothing: the read fails
  int readCount = 0;
  std::optional<GaldrineRecoveryToolCredentialFactorV1> factor;
  std::optional<GaldrineRecoveryToolCredentialInputV1> input;
  std::int64_t maximumByteCount = 0;

  std::expected<Bytes, GaldrineRecoveryToolCredentialReadingFailure> read(GaldrineRecoveryToolCredentialFactorV1 readFactor,
                                                                          GaldrineRecoveryToolCredentialInputV1 readInput,
                                                                          std::int64_t readMaximum) override {
    ++readCount;
    factor = readFactor;
    input = readInput;
    maximumByteCount = readMaximum;
    if (!credential) return std::unexpected(GaldrineRecoveryToolCredentialReadingFailure{});
    Bytes handedOut = *credential;
    ReleasedBlockWatch::watch(handedOut.data(), handedOut.size());
    return handedOut;
  }
};

class FakeBackend final : public RecoveryToolBackend {
 public:
  std::expected<RecoveryToolInspection, RecoveryToolError> inspection = RecoveryToolInspection{};
  std::expected<GaldrineRecoveryExportResultV1, RecoveryToolError> exportResult = GaldrineRecoveryExportResultV1{};
  int inspectCount = 0;
  int exportCount = 0;
  std::vector<Bytes> credentialsSeen;
  std::filesystem::path packageURL;
  std::optional<GaldrineRecoveryToolCredentialFactorV1> factor;
  Bytes selectedCommitIdentifier;
  std::filesystem::path destinationURL;

  std::expected<RecoveryToolInspection, RecoveryToolError> inspect(const std::filesystem::path& url,
                                                                   GaldrineRecoveryToolCredentialFactorV1 usedFactor,
                                                                   ByteView credential) override {
    ++inspectCount;
    see(url, usedFactor, credential);
    return inspection;
  }

  std::expected<GaldrineRecoveryExportResultV1, RecoveryToolError> exportSnapshot(
      const std::filesystem::path& url, GaldrineRecoveryToolCredentialFactorV1 usedFactor, ByteView credential,
      ByteView commitIdentifier, const std::filesystem::path& destination) override {
    ++exportCount;
    see(url, usedFactor, credential);
    selectedCommitIdentifier.assign(commitIdentifier.begin(), commitIdentifier.end());
    destinationURL = destination;
    return exportResult;
  }

 private:
  void see(const std::filesystem::path& url, GaldrineRecoveryToolCredentialFactorV1 usedFactor, ByteView credential) {
    packageURL = url;
    factor = usedFactor;
    credentialsSeen.emplace_back(credential.begin(), credential.end());
    ReleasedBlockWatch::watch(credential.data(), credential.size());
  }
};
