#pragma once
// BackupRecoveryKey is a recovery key as a new package needs it: the 32 bytes its
// envelope is sealed under and the 24 words a person writes down, which give the same bytes
// back. Both are secrets; the value wipes them when it goes away and cannot be copied.

#include <expected>
#include <string>
#include <string_view>

#include "platform/Bytes.hpp"
#include "writer/BackupWriterFailure.hpp"
#include "writer/BackupWriterSources.hpp"

namespace galdrine::writer {

class BackupRecoveryKey {
 public:
  // generate draws 32 bytes from the sources (randomSourceFailed) and writes them as words
  // (the mnemonic's errors).
  [[nodiscard]] static std::expected<BackupRecoveryKey, BackupWriterFailure> generate(
      const BackupWriterSources& sources);
  // fromPhrase reads typed words back (the mnemonic's errors: word count, unknown word, checksum).
  [[nodiscard]] static std::expected<BackupRecoveryKey, BackupWriterFailure> fromPhrase(std::string_view phrase);

  BackupRecoveryKey(BackupRecoveryKey&& other) noexcept
      : key_(std::move(other.key_)), phrase_(std::move(other.phrase_)) {}
  BackupRecoveryKey& operator=(BackupRecoveryKey&&) = delete;
  BackupRecoveryKey(const BackupRecoveryKey&) = delete;
  BackupRecoveryKey& operator=(const BackupRecoveryKey&) = delete;
  ~BackupRecoveryKey();

  [[nodiscard]] ByteView key() const { return key_; }
  [[nodiscard]] std::string_view phrase() const { return phrase_; }

 private:
  BackupRecoveryKey(Bytes key, std::string phrase) : key_(std::move(key)), phrase_(std::move(phrase)) {}

  Bytes key_;
  std::string phrase_;
};

}  // namespace galdrine::writer
