#pragma once
// ResourceRecovery brings one planned resource back as a file: it unwraps the resource's
// payload key, opens its parts one at a time, and writes each plaintext through a
// RecoveryOutputFile that proves the whole against the resource's authenticated length and
// digest. Peak memory is one part's frame and plaintext.
//
// A payload that is unavailable, does not open, or gives other bytes than recorded is an
// outcome with issues and leaves no file; the export goes on. Only a failure that makes the
// export itself untrustworthy (a record missing from the model, an output write) is an error.
// Every plaintext and the payload key are wiped on every way out.

#include <expected>
#include <filesystem>
#include <unordered_map>

#include "format/manifest/BackupMediaResourceRecordV1.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/export/ExportModel.hpp"
#include "recovery/export/PayloadAvailability.hpp"
#include "recovery/export/RecoveryExporterError.hpp"
#include "recovery/export/ResourceOutcome.hpp"
#include "recovery/export/ResourcePlan.hpp"

namespace galdrine::recovery {

using PayloadKeyMap = decltype(ExportModel::payloadKeys);

// recover writes `planned` to `root` joined with its relative path. In this order: the
// resource's payload key record must be in `payloadKeys` (integrityFailure); each artifact of
// its parts, once, must be in `availability` (integrityFailure), and each failed one becomes an
// issue with the artifact and its reason; with any issue nothing is written. Then the key is
// unwrapped (failure: one issue without artifact, payloadIntegrityFailure); the output file is
// created (outputWriteFailed); each part is opened (failure: the file is removed, one issue
// with the part's artifact, payloadIntegrityFailure) and appended (outputWriteFailed); the file
// is finished against the resource's length and digest (outputWriteFailed; a mismatch removes
// the file and is one issue without artifact, payloadIntegrityFailure). On success the outcome
// holds the digest and no issue.
[[nodiscard]] std::expected<ResourceOutcome, RecoveryExporterError> recover(
    const PlannedResource& planned, const std::filesystem::path& root, const format::BackupPackageV1& package,
    ByteView libraryDomainIdentifier, ByteView bpmk, const PayloadKeyMap& payloadKeys,
    const PayloadAvailabilityMap& availability);

// openPayloadPart gives the plaintext of `part` of `resource`, which the caller wipes. A chunk
// is opened through a descriptor made of the part: the artifact's identifier, ordinal, file
// length and digest, and the part's own plaintext length and digest. A packed part must be the
// resource's only one; its segment is inspected, must carry the part's artifact identifier and
// an entry under the resource's identifier whose ordinal, plaintext length and digest are the
// part's, and only then is that entry opened. Every failure is integrityFailure.
[[nodiscard]] std::expected<Bytes, RecoveryExporterError> openPayloadPart(
    const format::BackupPayloadPartRecordV1& part, const format::BackupMediaResourceRecordV1& resource,
    const format::BackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView payloadKey);

}  // namespace galdrine::recovery
