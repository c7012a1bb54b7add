#include "GaldrineBackupWriter/GaldrineBackupRecoveryKeyV1.hpp"

#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrineKeyManagement/GaldrineRecoveryKeyMnemonicV1.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"

GaldrineBackupRecoveryKeyV1::~GaldrineBackupRecoveryKeyV1() {
  GaldrineSecureMemory::wipe(key_);
  GaldrineSecureMemory::wipe(phrase_);
}

std::expected<GaldrineBackupRecoveryKeyV1, GaldrineBackupWriterV1Failure> GaldrineBackupRecoveryKeyV1::generate(
    const GaldrineBackupWriterSourcesV1& sources) {
  auto key = sources.key();
  if (!key) return galdrineBackupWriterFailure(key.error());
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(*key); }};
  auto phrase = GaldrineRecoveryKeyMnemonicV1::phrase(*key);
  if (!phrase) return galdrineBackupWriterFailure(phrase.error());
  wipeKey.dismiss();
  return GaldrineBackupRecoveryKeyV1(std::move(*key), std::move(*phrase));
}

std::expected<GaldrineBackupRecoveryKeyV1, GaldrineBackupWriterV1Failure> GaldrineBackupRecoveryKeyV1::fromPhrase(
    std::string_view phrase) {
  auto key = GaldrineRecoveryKeyMnemonicV1::entropy(phrase);
  if (!key) return galdrineBackupWriterFailure(key.error());
  return GaldrineBackupRecoveryKeyV1(std::move(*key), std::string(phrase));
}
