#pragma once
// GaldrineBackupPackageReaderV1 opens a package directory for the recovery engine. It is the
// package's own open, with its checks in their order and its failure passed on unchanged; the
// engine's callers translate that failure at their own edge.

#include <expected>
#include <filesystem>

#include "GaldrineCore/GaldrineBackupPackageV1.hpp"

namespace GaldrineBackupPackageReaderV1 {

// open checks the package at `url` (see GaldrineBackupPackageV1::open) and writes nothing.
[[nodiscard]] std::expected<GaldrineBackupPackageV1, GaldrineBackupPackageV1Failure> open(const std::filesystem::path& url);

}  // namespace GaldrineBackupPackageReaderV1
