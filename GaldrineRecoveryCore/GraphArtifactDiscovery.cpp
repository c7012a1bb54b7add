#include "GaldrineRecoveryCore/GraphArtifactDiscovery.hpp"

#include <string_view>
#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1.hpp"
#include "GaldrineRecoveryCore/InspectorErrorTranslation.hpp"
#include "GaldrineRecoveryCore/RecoveryArtifactFiles.hpp"

namespace {

using Error = GaldrineRecoveryPackageInspectorV1Error;

// discover lists `directoryName`, and for each identifier forms its file name with `fileName`,
// reads the frame and opens it with `open`.
template <typename Artifact, typename FileName, typename Open>
[[nodiscard]] std::expected<std::vector<Artifact>, Error> discover(const AuthenticationScope& scope,
                                                                   std::string_view directoryName,
                                                                   std::string_view fileExtension, FileName fileName,
                                                                   Open open) {
  const auto directory = scope.package.directoryURL(directoryName);
  if (!directory) return std::unexpected(inspectorError(directory.error()));
  const auto identifiers =
      RecoveryArtifactFiles::artifactIdentifiers(*directory, fileExtension, RecoveryArtifactFiles::maximumArtifactCount);
  if (!identifiers) return std::unexpected(identifiers.error());
  std::vector<Artifact> artifacts;
  artifacts.reserve(identifiers->size());
  for (const Bytes& identifier : *identifiers) {
    const auto name = fileName(identifier);
    if (!name) return std::unexpected(inspectorError(name.error()));
    const auto frame =
        RecoveryArtifactFiles::readRegularFile(*directory / *name, RecoveryArtifactFiles::maximumDiscoveredFrameByteCount);
    if (!frame) return std::unexpected(frame.error());
    auto artifact = open(*frame, identifier, scope.package.header().packageIdentifier(), scope.libraryDomainIdentifier,
                         scope.bpmk);
    if (!artifact) return std::unexpected(inspectorError(artifact.error()));
    artifacts.push_back(std::move(*artifact));
  }
  return artifacts;
}

}  // namespace

namespace GraphArtifactDiscovery {

std::expected<std::vector<GaldrineAuthenticatedBackupCommitV1>, Error> discoverCommits(const AuthenticationScope& scope) {
  return discover<GaldrineAuthenticatedBackupCommitV1>(scope, "commits", GaldrineBackupFormatV1::commitFileExtension,
                                                       GaldrineBackupGraphV1::commitFileName,
                                                       GaldrineBackupGraphV1::openDiscoveredCommit);
}

std::expected<std::vector<GaldrineAuthenticatedBackupHeadV1>, Error> discoverHeads(const AuthenticationScope& scope) {
  return discover<GaldrineAuthenticatedBackupHeadV1>(scope, "heads", GaldrineBackupFormatV1::headFileExtension,
                                                     GaldrineBackupGraphV1::headFileName,
                                                     GaldrineBackupGraphV1::openDiscoveredHead);
}

}  // namespace GraphArtifactDiscovery
