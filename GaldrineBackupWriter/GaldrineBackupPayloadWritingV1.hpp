#pragma once
// GaldrineBackupPayloadWritingV1 writes the payload files a plan calls for, through the payload
// writers of the format, and puts the real digests and part records into the plan in place of
// the stand-ins. Content is read in pieces: a segment holds its resources' plaintexts (at most
// the layout's segment size) while it is sealed, a chunked resource one chunk at a time; each
// concurrent writer holds one such piece, in buffers it keeps from file to file.

#include <expected>
#include <vector>

#include "GaldrineBackupWriter/GaldrineBackupPayloadPlanV1.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"

namespace GaldrineBackupPayloadWritingV1 {

// writePayloads writes every segment and every chunked resource, `concurrentWriterCount` files
// at a time (1: one after the other, in plan order), and gives the identifiers of the files
// written, in plan order. A source that gives other bytes than planned is contentChanged or
// contentUnavailable; the payload writer's and file calls' errors pass on. After a failure no
// new file is started; files written before it stay, unreferenced. Which failure is reported
// when several writers fail at once is the first to be noted.
[[nodiscard]] std::expected<std::vector<GaldrineBackupIdentifierV1>, GaldrineBackupWriterV1Failure> writePayloads(
    GaldrineBackupPayloadPlanV1& plan, const GaldrineBackupPackageV1& package, const GaldrineBackupPayloadLayoutV1& layout,
    const GaldrineBackupKeyScopeV1& scope, std::size_t concurrentWriterCount);

}  // namespace GaldrineBackupPayloadWritingV1
