#pragma once
// BackupKeyEnvelopeFileFaultPoint names the places where a replacement of
// key-envelopes.cbor can be stopped on purpose, in the order in which the writer passes them.
// Only a caller's fault hook stops a write; the ordinary writer has none. A stop before the
// final rename fails with publicationFailed and leaves the old file; a stop after it fails
// with publicationOutcomeUnknown and leaves the new one.

#include <cstdint>
#include <functional>

namespace galdrine::envelope {

enum class BackupKeyEnvelopeFileFaultPoint : std::uint8_t {
  afterStagingWrite,         // the staged file holds the new bytes, not yet durable
  afterStagingSync,          // staged file and tmp directory synchronised
  afterStagingVerification,  // the staged file was read back and matched
  beforeFinalRename,         // the current file was checked a second time
  afterFinalRename,          // the new file stands at the final name
  afterDirectorySync,        // tmp and package directories synchronised
};

// The hook is asked at each point; true stops the write there. It may also change the file
// system, standing in for another writer.
using BackupKeyEnvelopeFileFaultHook = std::function<bool(BackupKeyEnvelopeFileFaultPoint)>;

}  // namespace galdrine::envelope
