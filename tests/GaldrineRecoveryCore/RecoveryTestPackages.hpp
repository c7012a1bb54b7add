#pragma once
// Packages for the recovery engine's tests that need no graph: an empty package whose key
// envelope file holds an envelope for the recovery key (HKDF, cheap) and, on request, one for
// a backup passphrase (one Argon2id run at the lowest cost).

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1Error.hpp"

inline void PrintTo(GaldrineRecoveryPackageInspectorV1Error error, std::ostream* out) {
  constexpr const char* names[] = {"invalidPackage", "unlockFailed", "packageUnavailable", "resourceLimitExceeded",
                                   "integrityFailure"};
  *out << names[static_cast<int>(error)];
}

namespace RecoveryTestPackages {

inline const Bytes kBpmk(32, 0x3C);
inline const Bytes kRecoveryKey(32, 0x5A);
inline const Bytes kLibraryDomainIdentifier(16, 0x11);
inline constexpr std::string_view kPassphrase = "lantern orchard 47 quietly drifting";

// identifier gives 16 bytes that differ for each seed.
[[nodiscard]] Bytes identifier(std::uint8_t seed);

enum class Factors { recoveryKeyOnly, both };

// envelopeSet seals kBpmk for the package `packageIdentifier` whose header bytes are
// `headerData`, under kRecoveryKey and, with Factors::both, under kPassphrase.
[[nodiscard]] GaldrineBackupKeyEnvelopeSetV1 envelopeSet(ByteView packageIdentifier, Factors factors);

// createPackage creates an empty package at `url` and writes its key envelope file.
void createPackage(const std::filesystem::path& url, ByteView packageIdentifier, Factors factors = Factors::recoveryKeyOnly);

}  // namespace RecoveryTestPackages
