#pragma once
// BackupCommitV1 is one step of a writer's history: it names its snapshot, its parent
// commit (none for a root), the writer's epoch and generation within it, and the tips of other
// branches that the writer had seen and so settles.

#include <cstdint>
#include <expected>
#include <optional>
#include <vector>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupCommitV1 {
 public:
  // make checks, in this order: identifier, libraryDomainIdentifier, manifestIdentifier and
  // writerDeviceIdentifier are 16 bytes (invalidIdentifier); requiredPayloadSetSHA256 is 32
  // bytes (invalidDigest); then, each failure invalidReference: there is a parent exactly when
  // generation is not 0; the parent is not the commit itself; at most 256 acknowledged tips;
  // their identifiers strictly ascend in byte order; none is the commit itself.
  [[nodiscard]] static std::expected<BackupCommitV1, BackupGraphV1Error> make(
      Bytes identifier, Bytes libraryDomainIdentifier, std::optional<BackupArtifactReferenceV1> parent,
      BackupArtifactReferenceV1 snapshot, Bytes manifestIdentifier, Bytes writerDeviceIdentifier,
      std::uint64_t writerEpoch, std::uint64_t generation, std::int64_t createdAtUTCMilliseconds,
      Bytes requiredPayloadSetSHA256, std::vector<BackupArtifactReferenceV1> acknowledgedAlternateTips);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const std::optional<BackupArtifactReferenceV1>& parent() const { return parent_; }
  [[nodiscard]] const BackupArtifactReferenceV1& snapshot() const { return snapshot_; }
  [[nodiscard]] const Bytes& manifestIdentifier() const { return manifestIdentifier_; }
  [[nodiscard]] const Bytes& writerDeviceIdentifier() const { return writerDeviceIdentifier_; }
  [[nodiscard]] std::uint64_t writerEpoch() const { return writerEpoch_; }
  [[nodiscard]] std::uint64_t generation() const { return generation_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }
  [[nodiscard]] const Bytes& requiredPayloadSetSHA256() const { return requiredPayloadSetSHA256_; }
  [[nodiscard]] const std::vector<BackupArtifactReferenceV1>& acknowledgedAlternateTips() const {
    return acknowledgedAlternateTips_;
  }

  // encoded gives the canonical CBOR map under the graph descriptor limits; key 3 is null for
  // a commit without a parent.
  [[nodiscard]] std::expected<Bytes, BackupGraphV1Error> encoded() const;
  // decode checks the shape of every field (malformedArtifact), reads the timestamp, the
  // parent, the snapshot and each acknowledged tip, then applies the rules of make. More than
  // 256 tips exceed the CBOR limits and so read as malformedArtifact.
  [[nodiscard]] static std::expected<BackupCommitV1, BackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const BackupCommitV1&, const BackupCommitV1&) = default;

 private:
  BackupCommitV1(Bytes identifier, Bytes libraryDomainIdentifier, std::optional<BackupArtifactReferenceV1> parent,
                 BackupArtifactReferenceV1 snapshot, Bytes manifestIdentifier, Bytes writerDeviceIdentifier,
                 std::uint64_t writerEpoch, std::uint64_t generation, std::int64_t createdAtUTCMilliseconds,
                 Bytes requiredPayloadSetSHA256, std::vector<BackupArtifactReferenceV1> acknowledgedAlternateTips);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  std::optional<BackupArtifactReferenceV1> parent_;
  BackupArtifactReferenceV1 snapshot_;
  Bytes manifestIdentifier_;
  Bytes writerDeviceIdentifier_;
  std::uint64_t writerEpoch_;
  std::uint64_t generation_;
  std::int64_t createdAtUTCMilliseconds_;
  Bytes requiredPayloadSetSHA256_;
  std::vector<BackupArtifactReferenceV1> acknowledgedAlternateTips_;
};

}  // namespace galdrine::format
