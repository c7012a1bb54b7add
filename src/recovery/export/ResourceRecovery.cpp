#include "recovery/export/ResourceRecovery.hpp"

#include <set>
#include <utility>
#include <vector>

#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "reader/BackupPayloadReader.hpp"
#include "recovery/export/RecoveryOutputFile.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;
using Part = format::BackupPayloadPartRecordV1;
using Resource = format::BackupMediaResourceRecordV1;
using Reason = ResourceFailureReason;
using Container = format::BackupPayloadContainerKindV1;

[[nodiscard]] std::unexpected<Error> failure(Error error) { return std::unexpected(error); }

[[nodiscard]] ResourceOutcome withIssue(std::optional<format::BackupIdentifierV1> artifact, Reason reason) {
  return ResourceOutcome{std::nullopt, {ResourceIssue{artifact, reason}}};
}

// availabilityIssues gives one issue for each failed artifact of the resource, in part order,
// looking at each artifact once.
[[nodiscard]] std::expected<std::vector<ResourceIssue>, Error> availabilityIssues(
    const Resource& resource, const PayloadAvailabilityMap& availability) {
  std::vector<ResourceIssue> issues;
  std::set<format::BackupIdentifierV1> looked;
  for (const Part& part : resource.parts()) {
    if (!looked.insert(part.artifactIdentifier()).second) continue;
    const auto found = availability.find(part.artifactIdentifier());
    if (found == availability.end()) return failure(Error::integrityFailure);
    if (const auto reason = found->second.failureReason()) issues.push_back({part.artifactIdentifier(), *reason});
  }
  return issues;
}

[[nodiscard]] Bytes bytesOf(const format::BackupIdentifierV1& identifier) {
  return Bytes(identifier.begin(), identifier.end());
}

[[nodiscard]] std::expected<Bytes, Error> openChunk(const Part& part, const std::filesystem::path& path,
                                                    ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                                    ByteView payloadKey) {
  const format::BackupResourceChunkDescriptorV1 descriptor{
      bytesOf(part.artifactIdentifier()), part.artifactOrdinal(), part.artifactFileByteCount(),
      part.plaintextByteCount(),          part.plaintextSHA256(), part.artifactFileSHA256()};
  auto plaintext = reader::BackupPayloadReader::openResourceChunk(path, descriptor, packageIdentifier,
                                                                  libraryDomainIdentifier, payloadKey);
  if (!plaintext) return failure(Error::integrityFailure);
  return std::move(*plaintext);
}

// packEntryAgrees: the segment is the part's artifact and holds the resource under the part's
// ordinal, plaintext length and digest.
[[nodiscard]] bool packEntryAgrees(const format::BackupPackSegmentDescriptorV1& segment, const Part& part,
                                   const Resource& resource) {
  if (!ByteOrder::equal(segment.identifier, part.artifactIdentifier())) return false;
  const format::BackupPackEntryDescriptorV1* entry = segment.entry(resource.identifier());
  return entry != nullptr && entry->ordinal == part.artifactOrdinal() &&
         entry->plaintextByteCount == part.plaintextByteCount() && entry->plaintextSHA256 == part.plaintextSHA256();
}

[[nodiscard]] std::expected<Bytes, Error> openPacked(const Part& part, const Resource& resource,
                                                     const std::filesystem::path& path, ByteView packageIdentifier,
                                                     ByteView libraryDomainIdentifier, ByteView payloadKey) {
  if (resource.parts().size() != 1) return failure(Error::integrityFailure);
  const auto segment =
      reader::BackupPayloadReader::inspectPackSegment(path, packageIdentifier, libraryDomainIdentifier, payloadKey);
  if (!segment || !packEntryAgrees(*segment, part, resource)) return failure(Error::integrityFailure);
  auto plaintext = reader::BackupPayloadReader::openPackEntry(resource.identifier(), path, packageIdentifier,
                                                              libraryDomainIdentifier, payloadKey);
  if (!plaintext) return failure(Error::integrityFailure);
  return std::move(*plaintext);
}

// isWholeResource: the part holds the resource's every byte, so the reader's check of the
// part's length and digest is the check of the resource's.
[[nodiscard]] bool isWholeResource(const Part& part, const Resource& resource) {
  return resource.parts().size() == 1 && part.plaintextByteCount() == resource.plaintextByteCount() &&
         part.plaintextSHA256() == resource.plaintextSHA256();
}

// writeParts appends each part's plaintext in order. A part that does not open is an outcome
// with its issue (the file is aborted); a write that fails is outputWriteFailed. The reader has
// proved every plaintext against its part's digest, so a part that is the whole resource is
// written without being hashed once more; the output file hashes the parts of any other.
[[nodiscard]] std::expected<std::optional<ResourceOutcome>, Error> writeParts(RecoveryOutputFile& output,
                                                                              const Resource& resource,
                                                                              const format::BackupPackageV1& package,
                                                                              ByteView libraryDomainIdentifier,
                                                                              ByteView payloadKey) {
  for (const Part& part : resource.parts()) {
    auto plaintext = openPayloadPart(part, resource, package, libraryDomainIdentifier, payloadKey);
    if (!plaintext) {
      output.abort();
      return withIssue(part.artifactIdentifier(), Reason::payloadIntegrityFailure);
    }
    ScopeGuard wipePlaintext{[&] { platform::SecureMemory::wipe(*plaintext); }};
    const auto appended = isWholeResource(part, resource) ? output.appendProven(*plaintext, part.plaintextSHA256())
                                                          : output.append(*plaintext);
    if (!appended) return failure(Error::outputWriteFailed);
  }
  return std::optional<ResourceOutcome>{};
}

}  // namespace

std::expected<Bytes, Error> openPayloadPart(const Part& part, const Resource& resource,
                                            const format::BackupPackageV1& package, ByteView libraryDomainIdentifier,
                                            ByteView payloadKey) {
  const auto path = payloadFilePath(package, part.artifactIdentifier(), part.container());
  if (!path) return failure(Error::integrityFailure);
  const ByteView packageIdentifier = package.header().packageIdentifier();
  if (part.container() == Container::chunk) {
    return openChunk(part, *path, packageIdentifier, libraryDomainIdentifier, payloadKey);
  }
  return openPacked(part, resource, *path, packageIdentifier, libraryDomainIdentifier, payloadKey);
}

std::expected<ResourceOutcome, Error> recover(const PlannedResource& planned, const std::filesystem::path& root,
                                              const format::BackupPackageV1& package, ByteView libraryDomainIdentifier,
                                              ByteView bpmk, const PayloadKeyMap& payloadKeys,
                                              const PayloadAvailabilityMap& availability) {
  const Resource& resource = *planned.resource;
  const auto keyRecord = payloadKeys.find(resource.payloadKeyIdentifier());
  if (keyRecord == payloadKeys.end()) return failure(Error::integrityFailure);
  auto issues = availabilityIssues(resource, availability);
  if (!issues) return std::unexpected(issues.error());
  if (!issues->empty()) return ResourceOutcome{std::nullopt, std::move(*issues)};

  auto payloadKey = format::BackupManifestRecordCodecV1::unwrapPayloadKey(
      keyRecord->second, package.header().packageIdentifier(), libraryDomainIdentifier, bpmk);
  if (!payloadKey) return withIssue(std::nullopt, Reason::payloadIntegrityFailure);
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*payloadKey); }};

  auto output = RecoveryOutputFile::create(root / planned.relativePath);
  if (!output) return failure(Error::outputWriteFailed);
  auto partFailure = writeParts(*output, resource, package, libraryDomainIdentifier, *payloadKey);
  if (!partFailure) return std::unexpected(partFailure.error());
  if (*partFailure) return std::move(**partFailure);
  const auto digest = output->finish(resource.plaintextByteCount(), resource.plaintextSHA256());
  if (!digest) return failure(Error::outputWriteFailed);
  if (!*digest) return withIssue(std::nullopt, Reason::payloadIntegrityFailure);
  return ResourceOutcome{**digest, {}};
}

}  // namespace galdrine::recovery
