#pragma once
// GaldrineBackupWriterSettingsV1 is what a package writer is opened with besides the package and
// the credential: where its randomness and time come from, how it lays payloads out, which
// device it writes as, and the Argon2id cost of a passphrase envelope it creates.

#include <optional>

#include "GaldrineBackupWriter/GaldrineBackupPayloadLayoutV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterSourcesV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupPassphraseKDFProfileV1.hpp"

struct GaldrineBackupWriterSettingsV1 {
  GaldrineBackupWriterSourcesV1 sources = GaldrineBackupWriterSourcesV1::system();
  GaldrineBackupPayloadLayoutV1 layout;
  // The device named in every commit this writer makes; drawn from the sources when absent.
  std::optional<GaldrineBackupIdentifierV1> writerDeviceIdentifier;
  // How many payload files are sealed and verified at once. Each one in flight holds up to a
  // segment's plaintexts (64 MiB by default) or one chunk. One, the default, writes them one
  // after the other: measured on two cores, a second writer spent more processor time and
  // gained no wall time, the payload writers' own reading back being bound by memory and the
  // page cache rather than by the cipher.
  std::size_t concurrentPayloadWriterCount = 1;
  // The cost of a new passphrase envelope; absent means 3 passes over 64 MiB.
  std::optional<GaldrineBackupPassphraseKDFProfileV1> passphraseProfile;
};
