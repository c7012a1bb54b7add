#pragma once
// BackupPackageReader opens a package directory for the recovery engine. It is the
// package's own open, with its checks in their order and its failure passed on unchanged; the
// engine's callers translate that failure at their own edge.

#include <expected>
#include <filesystem>

#include "format/package/BackupPackageV1.hpp"

namespace galdrine::reader {

namespace BackupPackageReader {

// open checks the package at `path` (see BackupPackageV1::open) and writes nothing.
[[nodiscard]] std::expected<format::BackupPackageV1, format::BackupPackageV1Failure> open(
    const std::filesystem::path& path);

}  // namespace BackupPackageReader

}  // namespace galdrine::reader
