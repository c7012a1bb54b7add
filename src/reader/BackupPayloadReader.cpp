#include "reader/BackupPayloadReader.hpp"

#include <utility>

#include "format/payload/BackupPayloadV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"

namespace galdrine::reader {

namespace BackupPayloadReader {

std::expected<Bytes, BackupPayloadReaderOpenFailure> open(ByteView frame, ByteView key,
                                                          const format::BackupAuthenticatedDataV1& authenticatedData,
                                                          std::int64_t maximumPlaintextByteCount) {
  const auto encodedData = authenticatedData.encoded();
  if (!encodedData) return std::unexpected(BackupPayloadReaderOpenFailure(encodedData.error()));
  auto plaintext = format::AESGCMFrameV1::open(frame, key, *encodedData, maximumPlaintextByteCount);
  if (!plaintext) return std::unexpected(BackupPayloadReaderOpenFailure(plaintext.error()));
  return std::move(*plaintext);
}

std::expected<format::BackupPackSegmentDescriptorV1, format::BackupPayloadV1Error> inspectPackSegment(
    const std::filesystem::path& path, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView segmentKey) {
  return format::BackupPayloadV1::inspectPackSegment(path, packageIdentifier, libraryDomainIdentifier, segmentKey);
}

std::expected<Bytes, format::BackupPayloadV1Error> openPackEntry(ByteView identifier, const std::filesystem::path& path,
                                                                 ByteView packageIdentifier,
                                                                 ByteView libraryDomainIdentifier,
                                                                 ByteView segmentKey) {
  return format::BackupPayloadV1::openPackEntry(identifier, path, packageIdentifier, libraryDomainIdentifier,
                                                segmentKey);
}

std::expected<Bytes, format::BackupPayloadV1Error> openResourceChunk(
    const std::filesystem::path& path, const format::BackupResourceChunkDescriptorV1& descriptor,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView resourceKey) {
  return format::BackupPayloadV1::openResourceChunk(path, descriptor, packageIdentifier, libraryDomainIdentifier,
                                                    resourceKey);
}

}  // namespace BackupPayloadReader

}  // namespace galdrine::reader
