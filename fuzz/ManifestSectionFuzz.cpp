// Any bytes given to the manifest decoders end in a record or in one error, never in a crash,
// a hang or an unbounded allocation; and whatever decodes is exactly its record's canonical
// form. The first byte chooses what the rest is:
//   even: the plaintext of a section, whose records are read and then checked together;
//   odd:  one record's canonical bytes, of the kind given by the second byte.
// Run with, for example:
//   build-fuzz/fuzz/ManifestSectionFuzz -max_total_time=600 fuzz/corpus/ManifestSectionFuzz

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"

namespace {

namespace Codec = galdrine::format::BackupManifestRecordCodecV1;

void require(bool condition) {
  if (!condition) std::abort();
}

const galdrine::Bytes kPackage(16, 0x11);
const galdrine::Bytes kDomain(16, 0x22);
const galdrine::Bytes kMasterKey(32, 0x33);

// A record that decodes must be its own canonical form and sort key, and decode again to itself.
void checkRecord(galdrine::format::BackupManifestSectionKindV1 kind, galdrine::ByteView bytes) {
  const auto record = Codec::decodeRecord(kind, bytes);
  if (!record) return;
  require(record->kind() == kind);
  const auto blob = Codec::recordBlob(*record);
  require(blob.has_value());
  require(galdrine::ByteOrder::equal(blob->canonicalRecord(), bytes));
  require(galdrine::ByteOrder::equal(blob->sortKey(), record->sortKey()));
  require(Codec::decodeRecord(kind, blob->canonicalRecord()) == *record);
  if (const auto* key = record->payloadKey()) {
    (void)Codec::unwrapPayloadKey(*key, kPackage, kDomain, kMasterKey);
  }
}

void checkSection(galdrine::ByteView plaintext) {
  const auto section = galdrine::format::BackupManifestSectionV1::decode(plaintext);
  if (!section) return;
  const auto records = Codec::records(*section);
  if (records) {
    require(records->size() == section->records().size());
    for (std::size_t index = 0; index < records->size(); ++index) {
      require(Codec::recordBlob((*records)[index]) == section->records()[index]);
    }
  }
  const auto summary = Codec::validateAndSummarize({&*section, 1}, kPackage, kDomain, kMasterKey);
  if (summary) require(records.has_value());  // a manifest passes only when its records were read
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const galdrine::ByteView input(data, size);
  if ((input[0] & 1) == 0) {
    checkSection(input.subspan(1));
  } else {
    checkRecord(static_cast<galdrine::format::BackupManifestSectionKindV1>(input[1] % 7), input.subspan(2));
  }
  return 0;
}
