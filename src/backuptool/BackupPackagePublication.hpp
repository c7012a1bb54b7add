#pragma once
// BackupPackagePublication is how galdrine-backup create leaves either a whole package at its
// path or nothing: the package is built under a hidden name beside its target and moved to the
// target with one rename that refuses an existing entry. A run that is killed part way leaves
// only the hidden ".<name>.staging-<uuid>.galdrine" directory, never a package at the target.

#include <expected>
#include <filesystem>

#include "backuptool/BackupToolError.hpp"

namespace galdrine::backuptool {

namespace BackupPackagePublication {

// checkNewPackageLocation looks before any work starts, in this order: the name must be fit for
// a package (packageLocationUnavailable); nothing may stand at the path, a dangling link
// included (packageExists); the parent must be a directory and no link
// (packageLocationUnavailable). The rename checks the target again.
[[nodiscard]] std::expected<void, BackupToolError> checkNewPackageLocation(const std::filesystem::path& packagePath);

// stagingPath gives a fresh hidden sibling of `packagePath` to build the package in; a failed
// random source is operationFailed.
[[nodiscard]] std::expected<std::filesystem::path, BackupToolError> stagingPath(
    const std::filesystem::path& packagePath);

// publish moves the staged package to `packagePath`, refusing an existing target
// (packageExists; another failed rename is outputWriteFailed), and makes the move durable by
// synchronising the parent. If that fails, the published package is removed again and the
// result is outputWriteFailed: the caller reports no success for a package it cannot vouch for.
// On failure the staged package stays where it was, for the caller to remove.
[[nodiscard]] std::expected<void, BackupToolError> publish(const std::filesystem::path& stagingPath,
                                                           const std::filesystem::path& packagePath);

}  // namespace BackupPackagePublication

}  // namespace galdrine::backuptool
