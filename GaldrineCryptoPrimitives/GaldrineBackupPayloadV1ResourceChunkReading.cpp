// Reading resource chunks: the frame is read once, into one buffer, hashed, and decrypted
// straight into the plaintext that is given back.

#include <fcntl.h>

#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1Detail.hpp"

namespace {

namespace fs = std::filesystem;
using Error = GaldrineBackupPayloadV1Error;
using Descriptor = GaldrineBackupResourceChunkDescriptorV1;

[[nodiscard]] std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

}  // namespace

namespace GaldrineBackupPayloadV1Detail {

std::expected<Bytes, Error> openResourceChunkAt(int directory, const fs::path& name, const Descriptor& descriptor,
                                                const KeyScope& scope) {
  if (auto checked = validateKeyAndDomains(scope); !checked) return std::unexpected(checked.error());
  if (descriptor.frameByteCount > GaldrineBackupPayloadV1::maximumChunkFrameByteCount ||
      descriptor.plaintextByteCount > GaldrineBackupFormatV1::maximumStandaloneChunkPlaintextByteCount)
    return refuse(Error::invalidArtifact());
  if (!GaldrineBackupPayloadV1::resourceChunkFileName(descriptor.identifier)) return refuse(Error::invalidIdentifier());
  const auto nameIdentifier =
      identifierSpelledBy(name.filename().native(), GaldrineBackupFormatV1::resourceChunkFileExtension);
  if (!nameIdentifier || *nameIdentifier != descriptor.identifier) return refuse(Error::invalidArtifactName());

  // The descriptor's frame byte count bounds the file, so a longer file fails before any read.
  const auto file = GaldrineBackupPayloadFileV1::open(directory, name, descriptor.frameByteCount);
  if (!file) return std::unexpected(file.error());
  const auto frame = file->readHashed(0, descriptor.frameByteCount);
  if (!frame) return std::unexpected(frame.error());
  const auto authenticatedData = GaldrineBackupPayloadV1Detail::authenticatedData(
      GaldrineBackupAADDomainV1::resourceChunk, scope, descriptor.identifier, descriptor.ordinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  return openExpectedFrame(*frame, scope.key, *authenticatedData,
                           GaldrineBackupFormatV1::maximumStandaloneChunkPlaintextByteCount,
                           {descriptor.frameSHA256, descriptor.plaintextByteCount, descriptor.plaintextSHA256});
}

}  // namespace GaldrineBackupPayloadV1Detail

namespace GaldrineBackupPayloadV1 {

std::expected<Bytes, Error> openResourceChunk(const fs::path& url, const Descriptor& descriptor,
                                              ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                              ByteView resourceKey) {
  return GaldrineBackupPayloadV1Detail::openResourceChunkAt(AT_FDCWD, url, descriptor,
                                                            {packageIdentifier, libraryDomainIdentifier, resourceKey});
}

}  // namespace GaldrineBackupPayloadV1
