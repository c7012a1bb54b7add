// ExportBenchmark is the program bench/export.sh drives beside the real command. It is
// no Google Benchmark: the script times whole processes, and this program says where the time
// of one export goes.
//
//   ExportBenchmark phrase
//     prints the 24 words of the recovery key the benchmark packages are written with.
//   ExportBenchmark phases PACKAGE DESTINATION
//     exports the package's first snapshot to DESTINATION in-process with that recovery key
//     and prints one JSON object with the wall, user and system seconds of each phase: the
//     session (unlock, the whole inspection, the snapshot's records, the plan and the
//     availability), the availability alone, every part opened alone (read, frame digest,
//     decryption, plaintext digest), and the whole writing of the export. The phases "alone"
//     are measured apart, so their sum is more than the export.

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "BenchmarkMoment.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "platform/SecureMemory.hpp"
#include "recovery/export/ExportWriting.hpp"
#include "recovery/export/RecoveryExporter.hpp"
#include "recovery/export/ResourceRecovery.hpp"
#include "recovery/inspection/RecoveryPackageInspector.hpp"

namespace {

namespace fs = std::filesystem;
namespace recovery = galdrine::recovery;

// The recovery key InspectBenchmark writes its packages with.
const galdrine::Bytes kRecoveryKey(32, 0x5A);

[[nodiscard]] std::string phaseJSON(std::string_view name, const galdrine::bench::Moment& start,
                                    const galdrine::bench::Moment& end) {
  char text[256];
  std::snprintf(text, sizeof text, "\"%.*s\": {\"wall\": %.4f, \"user\": %.4f, \"system\": %.4f}",
                static_cast<int>(name.size()), name.data(), end.wallSeconds - start.wallSeconds,
                end.userSeconds - start.userSeconds, end.systemSeconds - start.systemSeconds);
  return text;
}

int printPhrase() {
  const auto phrase = galdrine::keys::RecoveryKeyMnemonicV1::phrase(kRecoveryKey);
  if (!phrase) return 1;
  std::printf("%s\n", phrase->c_str());
  return 0;
}

// openEveryPart opens each part of the plan the way the export does, and drops the plaintext.
[[nodiscard]] bool openEveryPart(const recovery::RestoreSession& session) {
  const auto& package = session.reader().package();
  for (const recovery::PlannedResource& planned : session.plan()) {
    const auto record = session.model().payloadKeys.find(planned.resource->payloadKeyIdentifier());
    if (record == session.model().payloadKeys.end()) return false;
    auto key = galdrine::format::BackupManifestRecordCodecV1::unwrapPayloadKey(
        record->second, session.packageIdentifier(), session.libraryDomainIdentifier(), session.bpmk());
    if (!key) return false;
    for (const auto& part : planned.resource->parts()) {
      auto plaintext =
          recovery::openPayloadPart(part, *planned.resource, package, session.libraryDomainIdentifier(), *key);
      if (!plaintext) return false;
      galdrine::platform::SecureMemory::wipe(*plaintext);
    }
    galdrine::platform::SecureMemory::wipe(*key);
  }
  return true;
}

int measurePhases(const fs::path& packagePath, const fs::path& destinationPath) {
  const auto inspection = galdrine::recovery::inspectWithRecoveryKey(packagePath, kRecoveryKey);
  if (!inspection || inspection->authenticatedSnapshots.empty()) return 1;
  const galdrine::Bytes& selected = inspection->authenticatedSnapshots.front().commitIdentifier;

  const galdrine::bench::Moment start = galdrine::bench::Moment::now();
  const auto session = recovery::restoreSessionWithRecoveryKey(packagePath, kRecoveryKey, selected);
  if (!session) return 1;
  const galdrine::bench::Moment built = galdrine::bench::Moment::now();
  const auto availability = recovery::payloadAvailability((*session)->plan(), (*session)->reader().package());
  const galdrine::bench::Moment examined = galdrine::bench::Moment::now();
  if (!openEveryPart(**session)) return 1;
  const galdrine::bench::Moment opened = galdrine::bench::Moment::now();
  const auto result = recovery::writeExport(destinationPath, **session, std::nullopt);
  if (!result) return 1;
  const galdrine::bench::Moment written = galdrine::bench::Moment::now();
  std::printf("{%s, %s, %s, %s, \"resourceCount\": %lld}\n", phaseJSON("session", start, built).c_str(),
              phaseJSON("availability", built, examined).c_str(), phaseJSON("openParts", examined, opened).c_str(),
              phaseJSON("writeExport", opened, written).c_str(), static_cast<long long>(result->totalResourceCount));
  return availability.size() > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  if (arguments.size() == 1 && arguments[0] == "phrase") return printPhrase();
  if (arguments.size() == 3 && arguments[0] == "phases") return measurePhases(arguments[1], arguments[2]);
  std::fprintf(stderr, "usage: %s phrase | phases PACKAGE DESTINATION\n", argv[0]);
  return 2;
}
