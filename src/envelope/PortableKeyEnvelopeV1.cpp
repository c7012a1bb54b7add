#include "envelope/PortableKeyEnvelopeV1.hpp"

#include <array>

#include "envelope/BackupPassphrasePolicy.hpp"
#include "envelope/PortableKeyEnvelopeBindingV1.hpp"
#include "envelope/PortableKeyEnvelopeEncodingV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "kdf/Argon2id.hpp"
#include "platform/HKDF.hpp"
#include "platform/Random.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::envelope {

namespace {

using Error = PortableKeyEnvelopeV1Error;
using Factor = PortableKeyFactorV1;
using Derivation = PortableKeyDerivationV1;
using Metadata = PortableKeyEnvelopeMetadataV1;
using Context = PortableKeyEnvelopeContextV1;
using ReadEnvelope = PortableKeyEnvelopeEncodingV1::ReadEnvelope;
using namespace PortableKeyEnvelopeV1;

// DrawnSaltAndNonce holds the random bytes of one seal and wipes them when the seal ends,
// whichever way it ends. It is never copied, so no unwiped copy can exist.
struct DrawnSaltAndNonce {
  std::array<std::uint8_t, derivationSaltByteCount> salt{};
  std::array<std::uint8_t, nonceByteCount> nonce{};

  DrawnSaltAndNonce() = default;
  DrawnSaltAndNonce(const DrawnSaltAndNonce&) = delete;
  DrawnSaltAndNonce& operator=(const DrawnSaltAndNonce&) = delete;
  ~DrawnSaltAndNonce() {
    platform::SecureMemory::wipe(salt);
    platform::SecureMemory::wipe(nonce);
  }

  // draw takes the salt, then the nonce; the nonce is not drawn when the salt failed.
  [[nodiscard]] std::expected<void, Error> draw() {
    if (const std::int32_t status = platform::Random::fill(salt); status != 0)
      return std::unexpected(Error::randomGenerationFailed(status));
    if (const std::int32_t status = platform::Random::fill(nonce); status != 0)
      return std::unexpected(Error::randomGenerationFailed(status));
    return {};
  }
};

[[nodiscard]] bool matchesContext(const Metadata& metadata, const Context& context) {
  return metadata.artifactIdentifier() == context.artifactIdentifier() &&
         metadata.keySlotIdentifier() == context.keySlotIdentifier() && metadata.generation() == context.generation();
}

// The frame key exists in this one buffer only; its holder wipes it.
[[nodiscard]] std::expected<Bytes, Error> passphraseFrameKey(ByteView passphrase, const Metadata& metadata) {
  const auto parameters = kdf::Argon2idParameters::make(metadata.operationsLimit(), metadata.memoryLimitBytes());
  if (!parameters) return std::unexpected(Error::invalidDerivationProfile());
  auto frameKey = kdf::Argon2id::deriveKey(passphrase, metadata.derivationSalt(), *parameters);
  if (!frameKey) return std::unexpected(Error::authenticationFailed());  // the library wiped what it had
  return std::move(*frameKey);
}

[[nodiscard]] std::expected<Bytes, Error> recoveryFrameKey(ByteView recoveryKey, const Metadata& metadata,
                                                           const Context& context) {
  const auto info = PortableKeyEnvelopeBindingV1::recoveryKeyDerivationInfo(metadata, context);
  if (!info) return std::unexpected(Error::authenticationFailed());
  Bytes frameKey(keyByteCount);
  // A failed derivation leaves the buffer zeroed.
  if (!platform::HKDF::deriveSHA256(recoveryKey, metadata.derivationSalt(), *info, frameKey))
    return std::unexpected(Error::authenticationFailed());
  return frameKey;
}

[[nodiscard]] std::expected<Bytes, Error> sealFrame(ByteView backupPackageMasterKey, ByteView frameKey, ByteView nonce,
                                                    const Metadata& metadata, const Context& context) {
  if (nonce.size() != nonceByteCount) return std::unexpected(Error::invalidNonceByteCount());
  const auto authenticatedData = PortableKeyEnvelopeBindingV1::authenticatedData(metadata, context);
  if (!authenticatedData) return std::unexpected(Error::authenticationFailed());
  // The nonce was drawn for this seal alone, so a fixed source uses it once.
  const auto frame = format::AESGCMFrameV1::seal(backupPackageMasterKey, frameKey, *authenticatedData, keyByteCount,
                                                 format::AESGCMFrameV1::NonceSource::fixed(nonce));
  if (!frame) return std::unexpected(Error::authenticationFailed());
  return PortableKeyEnvelopeEncodingV1::encode(metadata, *frame);
}

// openFrame maps every failure of the frame to authenticationFailed, so a wrong credential
// and a tampered envelope cannot be told apart.
[[nodiscard]] std::expected<Bytes, Error> openFrame(const ReadEnvelope& envelope, ByteView frameKey,
                                                    const Context& context) {
  if (!envelope.sealedFrame) return std::unexpected(Error::invalidFieldType(11));
  const auto authenticatedData = PortableKeyEnvelopeBindingV1::authenticatedData(envelope.metadata, context);
  if (!authenticatedData) return std::unexpected(Error::authenticationFailed());
  auto plaintext = format::AESGCMFrameV1::open(*envelope.sealedFrame, frameKey, *authenticatedData, keyByteCount);
  if (!plaintext) return std::unexpected(Error::authenticationFailed());
  if (plaintext->size() != keyByteCount) {
    platform::SecureMemory::wipe(*plaintext);
    return std::unexpected(Error::invalidBackupPackageMasterKeyByteCount());
  }
  return std::move(*plaintext);
}

[[nodiscard]] std::expected<ReadEnvelope, Error> readForContext(ByteView envelope, Factor factor,
                                                                const Context& context) {
  auto read = PortableKeyEnvelopeEncodingV1::read(envelope, factor);
  if (!read) return std::unexpected(read.error());
  if (!matchesContext(read->metadata, context)) return std::unexpected(Error::contextMismatch());
  return read;
}

}  // namespace

namespace PortableKeyEnvelopeV1 {

std::expected<Bytes, Error> sealWithBackupPassphrase(ByteView backupPackageMasterKey, ByteView passphrase,
                                                     const BackupPassphraseKDFProfileV1& profile,
                                                     const Context& context) {
  DrawnSaltAndNonce drawn;
  if (auto status = drawn.draw(); !status) return std::unexpected(status.error());
  if (backupPackageMasterKey.size() != keyByteCount)
    return std::unexpected(Error::invalidBackupPackageMasterKeyByteCount());
  // Judged only when a passphrase is set; opening never asks, so older passphrases keep working.
  if (!BackupPassphrasePolicy::accepts(passphrase)) return std::unexpected(Error::invalidCredential());
  const auto metadata = Metadata::make(Factor::backupPassphrase, Derivation::argon2idV13, drawn.salt,
                                       profile.operationsLimit(), profile.memoryLimitBytes(),
                                       context.artifactIdentifier(), context.keySlotIdentifier(), context.generation());
  if (!metadata) return std::unexpected(metadata.error());
  auto frameKey = passphraseFrameKey(passphrase, *metadata);
  if (!frameKey) return std::unexpected(frameKey.error());
  ScopeGuard wipeFrameKey{[&frameKey] { platform::SecureMemory::wipe(*frameKey); }};
  return sealFrame(backupPackageMasterKey, *frameKey, drawn.nonce, *metadata, context);
}

std::expected<Bytes, Error> openWithBackupPassphrase(ByteView envelope, ByteView passphrase, const Context& context) {
  if (passphrase.empty()) return std::unexpected(Error::invalidCredential());
  const auto read = readForContext(envelope, Factor::backupPassphrase, context);
  if (!read) return std::unexpected(read.error());
  auto frameKey = passphraseFrameKey(passphrase, read->metadata);
  if (!frameKey) return std::unexpected(frameKey.error());
  ScopeGuard wipeFrameKey{[&frameKey] { platform::SecureMemory::wipe(*frameKey); }};
  return openFrame(*read, *frameKey, context);
}

std::expected<Bytes, Error> sealWithRecoveryKey(ByteView backupPackageMasterKey, ByteView recoveryKey,
                                                const Context& context) {
  DrawnSaltAndNonce drawn;
  if (auto status = drawn.draw(); !status) return std::unexpected(status.error());
  if (backupPackageMasterKey.size() != keyByteCount)
    return std::unexpected(Error::invalidBackupPackageMasterKeyByteCount());
  if (recoveryKey.size() != keyByteCount) return std::unexpected(Error::invalidRecoveryKeyByteCount());
  const auto metadata = Metadata::make(Factor::recoveryKey, Derivation::hkdfSHA256, drawn.salt, 0, 0,
                                       context.artifactIdentifier(), context.keySlotIdentifier(), context.generation());
  if (!metadata) return std::unexpected(metadata.error());
  auto frameKey = recoveryFrameKey(recoveryKey, *metadata, context);
  if (!frameKey) return std::unexpected(frameKey.error());
  ScopeGuard wipeFrameKey{[&frameKey] { platform::SecureMemory::wipe(*frameKey); }};
  return sealFrame(backupPackageMasterKey, *frameKey, drawn.nonce, *metadata, context);
}

std::expected<Bytes, Error> openWithRecoveryKey(ByteView envelope, ByteView recoveryKey, const Context& context) {
  if (recoveryKey.size() != keyByteCount) return std::unexpected(Error::invalidRecoveryKeyByteCount());
  const auto read = readForContext(envelope, Factor::recoveryKey, context);
  if (!read) return std::unexpected(read.error());
  auto frameKey = recoveryFrameKey(recoveryKey, read->metadata, context);
  if (!frameKey) return std::unexpected(frameKey.error());
  ScopeGuard wipeFrameKey{[&frameKey] { platform::SecureMemory::wipe(*frameKey); }};
  return openFrame(*read, *frameKey, context);
}

std::expected<Metadata, Error> metadata(ByteView envelope) {
  auto read = PortableKeyEnvelopeEncodingV1::read(envelope, std::nullopt);
  if (!read) return std::unexpected(read.error());
  return std::move(read->metadata);
}

}  // namespace PortableKeyEnvelopeV1

}  // namespace galdrine::envelope
