#pragma once
// BackupPayloadWriting writes the payload files a plan calls for, through the payload
// writers of the format, and puts the real digests and part records into the plan in place of
// the stand-ins. Content is read in pieces: a segment holds its resources' plaintexts (at most
// the layout's segment size) while it is sealed, a chunked resource one chunk at a time; each
// concurrent writer holds one such piece, in buffers it keeps from file to file.

#include <expected>
#include <vector>

#include "format/package/BackupPackageV1.hpp"
#include "writer/BackupPayloadPlan.hpp"

namespace galdrine::writer {

namespace BackupPayloadWriting {

// writePayloads writes every segment and every chunked resource, `concurrentWriterCount` files
// at a time (1: one after the other, in plan order), and gives the identifiers of the files
// written, in plan order. A source that gives other bytes than planned is contentChanged or
// contentUnavailable; the payload writer's and file calls' errors pass on. After a failure no
// new file is started; files written before it stay, unreferenced. Which failure is reported
// when several writers fail at once is the first to be noted.
[[nodiscard]] std::expected<std::vector<format::BackupIdentifierV1>, BackupWriterFailure> writePayloads(
    BackupPayloadPlan& plan, const format::BackupPackageV1& package, const BackupPayloadLayout& layout,
    const BackupKeyScope& scope, std::size_t concurrentWriterCount);

}  // namespace BackupPayloadWriting

}  // namespace galdrine::writer
