#pragma once
// GaldrineBackupRecoveryKeyV1 is a recovery key as a new package needs it: the 32 bytes its
// envelope is sealed under and the 24 words a person writes down, which give the same bytes
// back. Both are secrets; the value wipes them when it goes away and cannot be copied.

#include <expected>
#include <string>
#include <string_view>

#include "GaldrineBackupWriter/GaldrineBackupWriterSourcesV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterV1Failure.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupRecoveryKeyV1 {
 public:
  // generate draws 32 bytes from the sources (randomSourceFailed) and writes them as words
  // (the mnemonic's errors).
  [[nodiscard]] static std::expected<GaldrineBackupRecoveryKeyV1, GaldrineBackupWriterV1Failure> generate(
      const GaldrineBackupWriterSourcesV1& sources);
  // fromPhrase reads typed words back (the mnemonic's errors: word count, unknown word, checksum).
  [[nodiscard]] static std::expected<GaldrineBackupRecoveryKeyV1, GaldrineBackupWriterV1Failure> fromPhrase(
      std::string_view phrase);

  GaldrineBackupRecoveryKeyV1(GaldrineBackupRecoveryKeyV1&& other) noexcept
      : key_(std::move(other.key_)), phrase_(std::move(other.phrase_)) {}
  GaldrineBackupRecoveryKeyV1& operator=(GaldrineBackupRecoveryKeyV1&&) = delete;
  GaldrineBackupRecoveryKeyV1(const GaldrineBackupRecoveryKeyV1&) = delete;
  GaldrineBackupRecoveryKeyV1& operator=(const GaldrineBackupRecoveryKeyV1&) = delete;
  ~GaldrineBackupRecoveryKeyV1();

  [[nodiscard]] ByteView key() const { return key_; }
  [[nodiscard]] std::string_view phrase() const { return phrase_; }

 private:
  GaldrineBackupRecoveryKeyV1(Bytes key, std::string phrase) : key_(std::move(key)), phrase_(std::move(phrase)) {}

  Bytes key_;
  std::string phrase_;
};
