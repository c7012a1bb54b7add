#include "backuptool/BackupToolReport.hpp"

namespace galdrine::backuptool {

namespace BackupToolReport {
namespace {

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::string contents(const BackupToolCounts& counts) {
  return counted(counts.itemCount, "item", "items") + ", " + counted(counts.albumCount, "album", "albums") + " and " +
         counted(counts.folderCount, "folder", "folders");
}

std::string skipped(const BackupToolCounts& counts) {
  return counted(counts.skippedEntryCount, "entry skipped", "entries skipped");
}

}  // namespace

std::string createdLine(const BackupToolCounts& counts) {
  return "Created the backup package with " + contents(counts) + "; " + skipped(counts) + ".\n";
}

std::string addedLine(const BackupToolCounts& counts) {
  return "Added a snapshot with " + contents(counts) + "; " +
         counted(counts.unchangedFileCount, "file unchanged", "files unchanged") + ", " + skipped(counts) + ".\n";
}

Bytes withRecoveryKey(std::string_view phrase, std::string_view summary) {
  Bytes output;
  output.reserve(recoveryKeyOpening.size() + phrase.size() + 1 + recoveryKeyClosing.size() + summary.size());
  for (const std::string_view part :
       {recoveryKeyOpening, phrase, std::string_view("\n"), recoveryKeyClosing, summary}) {
    output.insert(output.end(), part.begin(), part.end());
  }
  return output;
}

}  // namespace BackupToolReport

}  // namespace galdrine::backuptool
