#pragma once
// FixtureScratchDirectory is a private directory in the user's temporary location, named by a
// prefix and a fresh UUID, that lives for one fixture verification: the payload files of a
// fixture are written into it so that the payload readers can open them as they would in a
// package. It and everything in it are removed when the value goes out of scope, on every way
// out. Only synthetic data is ever written there.

#include <expected>
#include <filesystem>
#include <string_view>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationError.hpp"

class FixtureScratchDirectory {
 public:
  // create makes "<temporary location>/<prefix><UUID>" with owner-only permissions. Any
  // failure, of the random source or the file system, is invalidFixture and leaves nothing.
  [[nodiscard]] static std::expected<FixtureScratchDirectory, GaldrineRecoveryFixtureVerificationError> create(
      std::string_view prefix);

  FixtureScratchDirectory(FixtureScratchDirectory&& other) noexcept;
  FixtureScratchDirectory& operator=(FixtureScratchDirectory&&) = delete;
  FixtureScratchDirectory(const FixtureScratchDirectory&) = delete;
  FixtureScratchDirectory& operator=(const FixtureScratchDirectory&) = delete;
  ~FixtureScratchDirectory();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  // write creates the new file `name` in the directory with exactly `bytes`; an existing name
  // or any failure is invalidFixture.
  [[nodiscard]] std::expected<std::filesystem::path, GaldrineRecoveryFixtureVerificationError> write(
      std::string_view name, ByteView bytes) const;

 private:
  explicit FixtureScratchDirectory(std::filesystem::path path) : path_(std::move(path)) {}

  std::filesystem::path path_;  // empty once moved from
};
