#pragma once
// GaldrineBackupHeadV1 is a writer's pointer at the commit it considers current. Heads are
// only ever added, so a package may hold many; the commit graph decides what they add up to.

#include <cstdint>
#include <expected>

#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupHeadV1 {
 public:
  // make checks, in this order: identifier and libraryDomainIdentifier are 16 bytes
  // (invalidIdentifier); the commit reference does not bear the head's own identifier
  // (invalidReference).
  [[nodiscard]] static std::expected<GaldrineBackupHeadV1, GaldrineBackupGraphV1Error> make(
      Bytes identifier, Bytes libraryDomainIdentifier, GaldrineBackupArtifactReferenceV1 commit,
      std::int64_t createdAtUTCMilliseconds);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const GaldrineBackupArtifactReferenceV1& commit() const { return commit_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }

  // encoded gives the canonical CBOR map under the graph descriptor limits.
  [[nodiscard]] std::expected<Bytes, GaldrineBackupGraphV1Error> encoded() const;
  // decode checks the shape of every field (malformedArtifact), reads the timestamp and the
  // commit reference, then applies the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupHeadV1, GaldrineBackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const GaldrineBackupHeadV1&, const GaldrineBackupHeadV1&) = default;

 private:
  GaldrineBackupHeadV1(Bytes identifier, Bytes libraryDomainIdentifier, GaldrineBackupArtifactReferenceV1 commit,
                       std::int64_t createdAtUTCMilliseconds);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  GaldrineBackupArtifactReferenceV1 commit_;
  std::int64_t createdAtUTCMilliseconds_;
};
