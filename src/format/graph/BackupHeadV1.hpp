#pragma once
// BackupHeadV1 is a writer's pointer at the commit it considers current. Heads are
// only ever added, so a package may hold many; the commit graph decides what they add up to.

#include <cstdint>
#include <expected>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupHeadV1 {
 public:
  // make checks, in this order: identifier and libraryDomainIdentifier are 16 bytes
  // (invalidIdentifier); the commit reference does not bear the head's own identifier
  // (invalidReference).
  [[nodiscard]] static std::expected<BackupHeadV1, BackupGraphV1Error> make(Bytes identifier,
                                                                            Bytes libraryDomainIdentifier,
                                                                            BackupArtifactReferenceV1 commit,
                                                                            std::int64_t createdAtUTCMilliseconds);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const BackupArtifactReferenceV1& commit() const { return commit_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }

  // encoded gives the canonical CBOR map under the graph descriptor limits.
  [[nodiscard]] std::expected<Bytes, BackupGraphV1Error> encoded() const;
  // decode checks the shape of every field (malformedArtifact), reads the timestamp and the
  // commit reference, then applies the rules of make.
  [[nodiscard]] static std::expected<BackupHeadV1, BackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const BackupHeadV1&, const BackupHeadV1&) = default;

 private:
  BackupHeadV1(Bytes identifier, Bytes libraryDomainIdentifier, BackupArtifactReferenceV1 commit,
               std::int64_t createdAtUTCMilliseconds);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  BackupArtifactReferenceV1 commit_;
  std::int64_t createdAtUTCMilliseconds_;
};

}  // namespace galdrine::format
