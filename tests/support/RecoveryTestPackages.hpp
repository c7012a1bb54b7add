#pragma once
// Shared by the recovery engine's suites: small libraries for the package writer, whose
// packages the suites read. Packages are made with the recovery key alone unless a test needs
// the passphrase, since each passphrase envelope costs an Argon2id run.

#include <stdexcept>

#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::testsupport::RecoveryTestPackages {

using namespace BackupWriterTestSupport;

inline const Bytes kPassphrase = ByteText::bytes("lantern orchard 47 quietly drifting");

[[nodiscard]] inline Bytes bytesOf(const format::BackupIdentifierV1& identifier) {
  return Bytes(identifier.begin(), identifier.end());
}

// library gives `photos` photos of 1,000 to 4,000 bytes (packed up to 3,000, chunked above)
// and `videos` videos of several chunks each, and nothing else.
[[nodiscard]] inline writer::BackupLibrarySnapshot library(std::uint64_t seed, std::size_t photos,
                                                           std::size_t videos = 0) {
  return BackupSampleLibrary::make({.seed = seed,
                                    .photoCount = photos,
                                    .livePhotoCount = 0,
                                    .videoCount = videos,
                                    .folderCount = 0,
                                    .albumCount = 0,
                                    .tombstoneCount = 0});
}

// createWithBothFactors makes a package that a passphrase and the recovery key both unlock. It
// also serves fixtures' member initializers, where no assertion can stop the test: a failure
// is thrown, and GoogleTest reports it as the failure of the one test that needed the package.
[[nodiscard]] inline Writer createWithBothFactors(const fs::path& path) {
  auto writer = Writer::create(path, {ByteView(kPassphrase), ByteView(kRecoveryKey)}, settings());
  if (!writer) throw std::runtime_error("creating a package with both factors failed");
  return std::move(*writer);
}

}  // namespace galdrine::testsupport::RecoveryTestPackages
