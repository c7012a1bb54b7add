#include "recovery/inspection/GraphArtifactDiscovery.hpp"

#include <string_view>
#include <utility>

#include "format/graph/BackupGraphV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "recovery/inspection/RecoveryArtifactFiles.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;

// discover lists `directoryName`, and for each identifier forms its file name with `fileName`,
// reads the frame and opens it with `open`.
template <typename Artifact, typename FileName, typename Open>
[[nodiscard]] std::expected<std::vector<Artifact>, Error> discover(const AuthenticationScope& scope,
                                                                   std::string_view directoryName,
                                                                   std::string_view fileExtension, FileName fileName,
                                                                   Open open) {
  const auto directory = scope.package.directoryPath(directoryName);
  if (!directory) return std::unexpected(inspectorError(directory.error()));
  const auto identifiers = RecoveryArtifactFiles::artifactIdentifiers(*directory, fileExtension,
                                                                      RecoveryArtifactFiles::maximumArtifactCount);
  if (!identifiers) return std::unexpected(identifiers.error());
  std::vector<Artifact> artifacts;
  artifacts.reserve(identifiers->size());
  for (const Bytes& identifier : *identifiers) {
    const auto name = fileName(identifier);
    if (!name) return std::unexpected(inspectorError(name.error()));
    const auto frame = RecoveryArtifactFiles::readRegularFile(*directory / *name,
                                                              RecoveryArtifactFiles::maximumDiscoveredFrameByteCount);
    if (!frame) return std::unexpected(frame.error());
    auto artifact =
        open(*frame, identifier, scope.package.header().packageIdentifier(), scope.libraryDomainIdentifier, scope.bpmk);
    if (!artifact) return std::unexpected(inspectorError(artifact.error()));
    artifacts.push_back(std::move(*artifact));
  }
  return artifacts;
}

}  // namespace

namespace GraphArtifactDiscovery {

std::expected<std::vector<format::AuthenticatedBackupCommit>, Error> discoverCommits(const AuthenticationScope& scope) {
  return discover<format::AuthenticatedBackupCommit>(scope, "commits", format::BackupFormatV1::commitFileExtension,
                                                     format::BackupGraphV1::commitFileName,
                                                     format::BackupGraphV1::openDiscoveredCommit);
}

std::expected<std::vector<format::AuthenticatedBackupHead>, Error> discoverHeads(const AuthenticationScope& scope) {
  return discover<format::AuthenticatedBackupHead>(scope, "heads", format::BackupFormatV1::headFileExtension,
                                                   format::BackupGraphV1::headFileName,
                                                   format::BackupGraphV1::openDiscoveredHead);
}

}  // namespace GraphArtifactDiscovery

}  // namespace galdrine::recovery
