#pragma once
// BackupWriterSettings is what a package writer is opened with besides the package and
// the credential: where its randomness and time come from, how it lays payloads out, which
// device it writes as, and the Argon2id cost of a passphrase envelope it creates.

#include <optional>

#include "writer/BackupPayloadLayout.hpp"
#include "writer/BackupWriterSources.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "envelope/BackupPassphraseKDFProfileV1.hpp"

namespace galdrine::writer {

struct BackupWriterSettings {
  BackupWriterSources sources = BackupWriterSources::system();
  BackupPayloadLayout layout;
  // The device named in every commit this writer makes; drawn from the sources when absent.
  std::optional<format::BackupIdentifierV1> writerDeviceIdentifier;
  // How many payload files are sealed and verified at once. Each one in flight holds up to a
  // segment's plaintexts (64 MiB by default) or one chunk. One, the default, writes them one
  // after the other: measured on two cores, a second writer spent more processor time and
  // gained no wall time, the payload writers' own reading back being bound by memory and the
  // page cache rather than by the cipher.
  std::size_t concurrentPayloadWriterCount = 1;
  // The cost of a new passphrase envelope; absent means 3 passes over 64 MiB.
  std::optional<envelope::BackupPassphraseKDFProfileV1> passphraseProfile;
};

}  // namespace galdrine::writer
