#pragma once
// FixtureSetCopy is a private copy of the committed fixture set in a temporary directory, for
// tests that alter one file the way damage or a careless edit would. Writing a fixture through
// it keeps the index's digest of that file right, so the alteration reaches the fixture's own
// verification instead of stopping at the digest.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

class FixtureSetCopy {
 public:
  explicit FixtureSetCopy(const std::filesystem::path& committedSet) {
    for (const auto& entry : std::filesystem::directory_iterator(committedSet))
      std::filesystem::copy_file(entry.path(), directory_ / entry.path().filename());
  }

  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return directory_ / name; }
  [[nodiscard]] std::filesystem::path index() const { return directory_ / "index.json"; }

  [[nodiscard]] nlohmann::json read(std::string_view name) const {
    const Bytes bytes = GaldrineFileFixtures::readFile(directory_ / name);
    return nlohmann::json::parse(bytes.begin(), bytes.end());
  }

  // write replaces the fixture `name` with `document`, padded with spaces to `byteCount`
  // bytes when that is more, and gives the index the new digest.
  void write(std::string_view name, const nlohmann::json& document, std::size_t byteCount = 0) const {
    std::string text = document.dump(2);
    if (text.size() < byteCount) text.append(byteCount - text.size(), ' ');
    GaldrineFileFixtures::writeFile(directory_ / name, text);
    refreshDigest(name);
  }

  void writeIndex(const nlohmann::json& index) const {
    GaldrineFileFixtures::writeFile(this->index(), index.dump(2));
  }

  // refreshDigest sets the index's digest of `name` to that of the file as it now is.
  void refreshDigest(std::string_view name) const {
    nlohmann::json index = read("index.json");
    const Bytes bytes = GaldrineFileFixtures::readFile(directory_ / name);
    for (auto& fixture : index["fixtures"]) {
      if (fixture["relativePath"] == name)
        fixture["sha256"] = GaldrineByteText::lowerHex(GaldrinePlatformSHA256::digest(bytes));
    }
    writeIndex(index);
  }

 private:
  GaldrineTemporaryDirectory directory_;
};
