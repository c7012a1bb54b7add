#include "format/manifest/BackupFolderHierarchy.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace galdrine::format {

using Error = BackupManifestRecordV1Error;

namespace BackupFolderHierarchy {

namespace {

class DepthWalker {
 public:
  explicit DepthWalker(const BackupFolderSet& folders) : folders_(folders), depths_(folders.size(), 0) {
    walk_.reserve(maximumChainFolderCount + 1);
  }

  // settle gives the folder at `start` its depth, and every folder of its walk theirs.
  std::expected<void, Error> settle(std::size_t start) {
    if (depths_[start] != 0) return {};
    walk_.clear();
    std::size_t knownDepth = 0;  // depth of the sound folder the walk ended on, if any
    for (std::size_t current = start;;) {
      if (depths_[current] != 0) {
        knownDepth = depths_[current];
        break;
      }
      // The walk never exceeds 17 folders, so a linear search is its set of identifiers.
      if (std::ranges::find(walk_, current) != walk_.end()) return std::unexpected(Error::invalidRelationship);
      walk_.push_back(current);
      if (walk_.size() > maximumChainFolderCount) return std::unexpected(Error::invalidRelationship);
      const auto& parent = folders_.records()[current].parentFolderIdentifier();
      if (!parent) break;
      const auto parentPosition = folders_.positionOf(*parent);
      if (!parentPosition) return std::unexpected(Error::missingReference);
      current = *parentPosition;
    }
    if (knownDepth + walk_.size() > maximumChainFolderCount) return std::unexpected(Error::invalidRelationship);
    for (std::size_t index = 0; index < walk_.size(); ++index) {
      depths_[walk_[index]] = static_cast<std::uint8_t>(knownDepth + walk_.size() - index);
    }
    return {};
  }

 private:
  const BackupFolderSet& folders_;
  std::vector<std::uint8_t> depths_;  // 0 until the folder is known sound, then 1 to 16
  std::vector<std::size_t> walk_;
};

}  // namespace

std::expected<void, Error> validateFolders(const BackupFolderSet& folders) {
  DepthWalker walker(folders);
  for (std::size_t position = 0; position < folders.size(); ++position) {
    if (auto settled = walker.settle(position); !settled) return settled;
  }
  return {};
}

}  // namespace BackupFolderHierarchy

}  // namespace galdrine::format
