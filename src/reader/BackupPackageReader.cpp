#include "reader/BackupPackageReader.hpp"

namespace galdrine::reader {

namespace BackupPackageReader {

std::expected<format::BackupPackageV1, format::BackupPackageV1Failure> open(const std::filesystem::path& path) {
  return format::BackupPackageV1::open(path);
}

}  // namespace BackupPackageReader

}  // namespace galdrine::reader
