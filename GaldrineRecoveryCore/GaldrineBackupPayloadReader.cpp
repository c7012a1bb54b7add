#include "GaldrineRecoveryCore/GaldrineBackupPayloadReader.hpp"

#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"

namespace GaldrineBackupPayloadReader {

std::expected<Bytes, GaldrineBackupPayloadReaderOpenFailure> open(ByteView frame, ByteView key,
                                                                  const GaldrineBackupAuthenticatedDataV1& authenticatedData,
                                                                  std::int64_t maximumPlaintextByteCount) {
  const auto encodedData = authenticatedData.encoded();
  if (!encodedData) return std::unexpected(GaldrineBackupPayloadReaderOpenFailure(encodedData.error()));
  auto plaintext = GaldrineAESGCMFrameV1::open(frame, key, *encodedData, maximumPlaintextByteCount);
  if (!plaintext) return std::unexpected(GaldrineBackupPayloadReaderOpenFailure(plaintext.error()));
  return std::move(*plaintext);
}

std::expected<GaldrineBackupPackSegmentDescriptorV1, GaldrineBackupPayloadV1Error> inspectPackSegment(
    const std::filesystem::path& url, ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView segmentKey) {
  return GaldrineBackupPayloadV1::inspectPackSegment(url, packageIdentifier, libraryDomainIdentifier, segmentKey);
}

std::expected<Bytes, GaldrineBackupPayloadV1Error> openPackEntry(ByteView identifier, const std::filesystem::path& url,
                                                                 ByteView packageIdentifier,
                                                                 ByteView libraryDomainIdentifier, ByteView segmentKey) {
  return GaldrineBackupPayloadV1::openPackEntry(identifier, url, packageIdentifier, libraryDomainIdentifier, segmentKey);
}

std::expected<Bytes, GaldrineBackupPayloadV1Error> openResourceChunk(
    const std::filesystem::path& url, const GaldrineBackupResourceChunkDescriptorV1& descriptor,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView resourceKey) {
  return GaldrineBackupPayloadV1::openResourceChunk(url, descriptor, packageIdentifier, libraryDomainIdentifier,
                                                    resourceKey);
}

}  // namespace GaldrineBackupPayloadReader
