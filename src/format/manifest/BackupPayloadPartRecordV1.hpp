#pragma once
// BackupPayloadPartRecordV1 is one consecutive piece of a resource's plaintext and the
// place that holds it encrypted: a pack segment or a chunk file (`artifactIdentifier`), the
// position in it (`artifactOrdinal`), and that file's length and digest. It is stored inside
// its resource record as an array of 9 items, not as a record of its own.

#include <array>
#include <cstdint>
#include <expected>

#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestFieldReaderV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

// BackupPayloadContainerKindV1 is the kind of file that holds a resource's encrypted
// bytes: a pack segment shared by small resources, or one chunk file a part.
enum class BackupPayloadContainerKindV1 : std::uint8_t {
  pack,
  chunk,
};

class BackupPayloadPartRecordV1 {
 public:
  static constexpr std::uint64_t maximumPlaintextByteCount = 16777216;  // one frame's plaintext

  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    std::uint64_t ordinal;
    std::uint64_t plaintextOffset;
    std::uint64_t plaintextByteCount;
    ByteView plaintextSHA256;
    BackupPayloadContainerKindV1 container;
    ByteView artifactIdentifier;
    std::uint64_t artifactOrdinal;
    std::uint64_t artifactFileByteCount;
    ByteView artifactFileSHA256;
  };

  // make checks, in this order: `artifactIdentifier` is 16 bytes (invalidIdentifier); both
  // digests are 32 bytes (invalidDigest); `plaintextByteCount` is 1 to 16,777,216 and
  // `artifactFileByteCount` is not 0 (invalidResourceLayout).
  [[nodiscard]] static std::expected<BackupPayloadPartRecordV1, BackupManifestRecordV1Error> make(const Fields& fields);
  // readFields reads the 9-item array; faults go to the reader's record.
  [[nodiscard]] static Fields readFields(const BackupManifestFieldReaderV1& reader);

  [[nodiscard]] CBORValue cborValue() const;

  [[nodiscard]] std::uint64_t ordinal() const { return ordinal_; }
  [[nodiscard]] std::uint64_t plaintextOffset() const { return plaintextOffset_; }
  [[nodiscard]] std::uint64_t plaintextByteCount() const { return plaintextByteCount_; }
  [[nodiscard]] const platform::SHA256Digest& plaintextSHA256() const { return plaintextSHA256_; }
  [[nodiscard]] BackupPayloadContainerKindV1 container() const { return container_; }
  [[nodiscard]] const BackupIdentifierV1& artifactIdentifier() const { return artifactIdentifier_; }
  [[nodiscard]] std::uint64_t artifactOrdinal() const { return artifactOrdinal_; }
  [[nodiscard]] std::uint64_t artifactFileByteCount() const { return artifactFileByteCount_; }
  [[nodiscard]] const platform::SHA256Digest& artifactFileSHA256() const { return artifactFileSHA256_; }

  friend bool operator==(const BackupPayloadPartRecordV1&, const BackupPayloadPartRecordV1&) = default;

 private:
  BackupPayloadPartRecordV1() = default;

  std::uint64_t ordinal_ = 0;
  std::uint64_t plaintextOffset_ = 0;
  std::uint64_t plaintextByteCount_ = 0;
  platform::SHA256Digest plaintextSHA256_{};
  BackupPayloadContainerKindV1 container_{};
  BackupIdentifierV1 artifactIdentifier_{};
  std::uint64_t artifactOrdinal_ = 0;
  std::uint64_t artifactFileByteCount_ = 0;
  platform::SHA256Digest artifactFileSHA256_{};
};

}  // namespace galdrine::format

namespace galdrine {

template <>
struct RawValueTable<format::BackupPayloadContainerKindV1> {
  static constexpr std::array<std::uint64_t, 2> rawValues{0, 1};
};

}  // namespace galdrine
