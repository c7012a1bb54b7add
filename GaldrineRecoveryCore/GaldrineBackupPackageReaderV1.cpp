#include "GaldrineRecoveryCore/GaldrineBackupPackageReaderV1.hpp"

namespace GaldrineBackupPackageReaderV1 {

std::expected<GaldrineBackupPackageV1, GaldrineBackupPackageV1Failure> open(const std::filesystem::path& url) {
  return GaldrineBackupPackageV1::open(url);
}

}  // namespace GaldrineBackupPackageReaderV1
