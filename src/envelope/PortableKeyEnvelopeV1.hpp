#pragma once
// PortableKeyEnvelopeV1 holds the backup package master key (BPMK) sealed under a
// portable credential: the backup passphrase (Argon2id) or the 32-byte recovery key
// (HKDF-SHA-256). An envelope is a twelve-entry deterministic CBOR map whose sealed frame is
// bound to the package header, library domain, artifact, key slot, generation and every
// derivation parameter, so changing any of them makes the key unopenable.
//
// Every operation is a pure function of its arguments and the secure random source. It writes
// nothing; on every way out the derived key, the drawn salt and nonce are wiped. The returned
// BPMK is the caller's to wipe; passphrase and recovery key stay the caller's.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <string_view>

#include "envelope/BackupPassphraseKDFProfileV1.hpp"
#include "envelope/PortableKeyEnvelopeContextV1.hpp"
#include "envelope/PortableKeyEnvelopeMetadataV1.hpp"
#include "envelope/PortableKeyEnvelopeV1Error.hpp"
#include "format/cbor/CBORLimits.hpp"
#include "format/header/BackupAlgorithmV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

namespace PortableKeyEnvelopeV1 {

inline constexpr std::string_view schemaIdentifier = "com.galdrine.backup.bpmk-envelope.v1";
inline constexpr std::uint64_t schemaVersion = 1;
inline constexpr std::string_view algorithmIdentifier = rawValue(format::BackupAlgorithmV1::payloadAEAD);
inline constexpr std::size_t keyByteCount = 32;
inline constexpr std::size_t derivationSaltByteCount = 16;
inline constexpr std::size_t nonceByteCount = 12;

// The limits under which an envelope is written and read.
inline constexpr format::CBORLimits encodingLimits{
    .maximumEncodedByteCount = 2048,
    .maximumByteStringByteCount = 512,
    .maximumTextStringByteCount = 128,
    .maximumContainerItemCount = 16,
    .maximumTotalItemCount = 32,
    .maximumDepth = 2,
};

// sealWithBackupPassphrase seals `backupPackageMasterKey` under a key that Argon2id derives
// from `passphrase`, byte for byte, with a fresh salt and the profile's cost. In this order: a
// salt and then a nonce are drawn (randomGenerationFailed with the source's status); the BPMK
// is 32 bytes (invalidBackupPackageMasterKeyByteCount); the backup passphrase policy accepts
// the passphrase (invalidCredential); the metadata is valid; the key is derived and the BPMK
// sealed. A failure of the derivation or the cipher, which valid input does not cause, is
// authenticationFailed.
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeV1Error> sealWithBackupPassphrase(
    ByteView backupPackageMasterKey, ByteView passphrase, const BackupPassphraseKDFProfileV1& profile,
    const PortableKeyEnvelopeContextV1& context);

// openWithBackupPassphrase gives the 32-byte BPMK. In this order: a non-empty passphrase
// (invalidCredential); the envelope read as by metadata, expecting the backupPassphrase
// factor (unexpectedFactor otherwise); artifact, key slot and generation equal to the
// context's (contextMismatch); the limits within the Argon2id bounds (invalidDerivationProfile).
// Only then does Argon2id run, so none of these failures spends a derivation. Then key 11 must
// be a byte string (invalidFieldType(11)), and the frame must open under the derived key and
// the authenticated data rebuilt from metadata and context (authenticationFailed, whatever the
// frame's own reason) to exactly 32 bytes (invalidBackupPackageMasterKeyByteCount).
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeV1Error> openWithBackupPassphrase(
    ByteView envelope, ByteView passphrase, const PortableKeyEnvelopeContextV1& context);

// sealWithRecoveryKey is sealWithBackupPassphrase for the 32 recovery key bytes, expanded with
// HKDF-SHA-256: after the draw, the BPMK (invalidBackupPackageMasterKeyByteCount) and then the
// recovery key (invalidRecoveryKeyByteCount) must be 32 bytes; no policy applies; both limits
// are 0.
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeV1Error> sealWithRecoveryKey(
    ByteView backupPackageMasterKey, ByteView recoveryKey, const PortableKeyEnvelopeContextV1& context);

// openWithRecoveryKey is openWithBackupPassphrase for the recovery key, which must be 32 bytes
// (invalidRecoveryKeyByteCount) before the envelope is read at all.
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeV1Error> openWithRecoveryKey(
    ByteView envelope, ByteView recoveryKey, const PortableKeyEnvelopeContextV1& context);

// metadata reads the public fields of an envelope of either factor without opening it. In
// this order: one canonical CBOR map within encodingLimits (malformedEnvelope); the keys
// exactly 0 to 11 (invalidFieldSet); then keys 0, 1, 2, 3, 4, 7, 5, 6, 8, 9, 10, each of its
// CBOR type (invalidFieldType(key)) and, where fixed, of its value: the schema
// (unsupportedSchema), version 1 (unsupportedVersion), the algorithm (unsupportedAlgorithm), a
// known factor (unsupportedFactor), a known derivation (unsupportedDerivation), a memory limit
// that fits a signed 64-bit integer (invalidDerivationProfile); last, the metadata's own
// checks. Key 11 is not looked at.
[[nodiscard]] std::expected<PortableKeyEnvelopeMetadataV1, PortableKeyEnvelopeV1Error> metadata(ByteView envelope);

}  // namespace PortableKeyEnvelopeV1

}  // namespace galdrine::envelope
