#include "recovery/inspection/PayloadExpectation.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;
using Container = format::BackupPayloadContainerKindV1;

[[nodiscard]] std::uint64_t ceilingOf(Container container) {
  switch (container) {
    case Container::chunk:
      return PayloadExpectations::maximumChunkFileByteCount;
    case Container::pack:
      return PayloadExpectations::maximumPackFileByteCount;
  }
  std::unreachable();
}

}  // namespace

namespace PayloadExpectations {

std::expected<void, Error> add(PayloadExpectationMap& expectations, const Bytes& artifactIdentifier,
                               const PayloadExpectation& expectation) {
  const auto [position, inserted] = expectations.try_emplace(artifactIdentifier, expectation);
  if (!inserted && position->second != expectation) return std::unexpected(Error::integrityFailure);
  return {};
}

std::expected<void, Error> merge(PayloadExpectationMap& into, const PayloadExpectationMap& from) {
  for (const auto& [artifactIdentifier, expectation] : from) {
    const auto added = add(into, artifactIdentifier, expectation);
    if (!added) return added;
  }
  return {};
}

std::expected<PayloadExpectationMap, Error> collect(std::span<const format::BackupManifestRecordV1> records) {
  PayloadExpectationMap expectations;
  for (const auto& record : records) {
    const auto* resource = record.resource();
    if (resource == nullptr) continue;
    for (const auto& part : resource->parts()) {
      const std::uint64_t byteCount = part.artifactFileByteCount();
      if (byteCount < 1 || byteCount > ceilingOf(part.container())) return std::unexpected(Error::integrityFailure);
      const auto& digest = part.artifactFileSHA256();
      const Bytes identifier(part.artifactIdentifier().begin(), part.artifactIdentifier().end());
      const auto added =
          add(expectations, identifier, {part.container(), byteCount, Bytes(digest.begin(), digest.end())});
      if (!added) return std::unexpected(added.error());
    }
  }
  return expectations;
}

}  // namespace PayloadExpectations

}  // namespace galdrine::recovery
