// Reading resource chunks: the frame is read once, into one buffer, hashed, and decrypted
// straight into the plaintext that is given back.

#include <fcntl.h>

#include "format/payload/BackupPayloadV1.hpp"
#include "format/payload/BackupPayloadV1Detail.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
using Error = BackupPayloadV1Error;
using Descriptor = BackupResourceChunkDescriptorV1;

[[nodiscard]] std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

}  // namespace

namespace BackupPayloadV1Detail {

std::expected<Bytes, Error> openResourceChunkAt(int directory, const fs::path& name, const Descriptor& descriptor,
                                                const KeyScope& scope) {
  if (auto checked = validateKeyAndDomains(scope); !checked) return std::unexpected(checked.error());
  if (descriptor.frameByteCount > BackupPayloadV1::maximumChunkFrameByteCount ||
      descriptor.plaintextByteCount > BackupFormatV1::maximumStandaloneChunkPlaintextByteCount)
    return refuse(Error::invalidArtifact());
  if (!BackupPayloadV1::resourceChunkFileName(descriptor.identifier)) return refuse(Error::invalidIdentifier());
  const auto nameIdentifier =
      identifierSpelledBy(name.filename().native(), BackupFormatV1::resourceChunkFileExtension);
  if (!nameIdentifier || *nameIdentifier != descriptor.identifier) return refuse(Error::invalidArtifactName());

  // The descriptor's frame byte count bounds the file, so a longer file fails before any read.
  const auto file = BackupPayloadFileV1::open(directory, name, descriptor.frameByteCount);
  if (!file) return std::unexpected(file.error());
  const auto frame = file->readHashed(0, descriptor.frameByteCount);
  if (!frame) return std::unexpected(frame.error());
  const auto authenticatedData = BackupPayloadV1Detail::authenticatedData(
      BackupAADDomainV1::resourceChunk, scope, descriptor.identifier, descriptor.ordinal);
  if (!authenticatedData) return std::unexpected(authenticatedData.error());
  return openExpectedFrame(*frame, scope.key, *authenticatedData,
                           BackupFormatV1::maximumStandaloneChunkPlaintextByteCount,
                           {descriptor.frameSHA256, descriptor.plaintextByteCount, descriptor.plaintextSHA256});
}

}  // namespace BackupPayloadV1Detail

namespace BackupPayloadV1 {

std::expected<Bytes, Error> openResourceChunk(const fs::path& path, const Descriptor& descriptor,
                                              ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                              ByteView resourceKey) {
  return BackupPayloadV1Detail::openResourceChunkAt(AT_FDCWD, path, descriptor,
                                                            {packageIdentifier, libraryDomainIdentifier, resourceKey});
}

}  // namespace BackupPayloadV1

}  // namespace galdrine::format
