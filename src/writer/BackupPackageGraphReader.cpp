#include "writer/BackupPackageGraphReader.hpp"

#include <algorithm>
#include <optional>
#include <string>

#include "format/graph/BackupGraphV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/package/BoundedDirectoryListing.hpp"
#include "platform/Files.hpp"

namespace galdrine::writer {

namespace {

namespace fs = std::filesystem;
using Failure = BackupWriterFailure;
using Error = BackupWriterError;

constexpr std::int64_t maximumListedNameCount = 20000;
constexpr std::size_t maximumDiscoveredFrameByteCount = 66560;
constexpr std::uint64_t frameOverheadByteCount = 1024;

[[nodiscard]] std::expected<fs::path, Failure> directoryOf(const format::BackupPackageV1& package,
                                                           std::string_view name) {
  auto directory = package.directoryPath(name);
  if (!directory) return backupWriterFailure(format::BackupPackageV1Failure(directory.error()));
  return std::move(*directory);
}

[[nodiscard]] std::expected<Bytes, Failure> readFrame(const fs::path& path, std::uint64_t maximumByteCount) {
  auto bytes = platform::Files::readBoundedRegularFile(path, 1, static_cast<std::size_t>(maximumByteCount));
  if (!bytes) return backupWriterFailure(Error::unreadablePackage);
  return std::move(*bytes);
}

// identifierNamed gives the identifier whose canonical file name `name` is, or nothing.
template <typename FileName>
[[nodiscard]] std::optional<Bytes> identifierNamed(const std::string& name, std::string_view extension,
                                                   const FileName& fileName) {
  if (name.size() != 32 + 1 + extension.size()) return std::nullopt;
  auto identifier = ByteText::parseLowerHex(std::string_view(name).substr(0, 32));
  if (!identifier) return std::nullopt;
  const auto canonical = fileName(*identifier);
  if (!canonical || *canonical != name) return std::nullopt;
  return identifier;
}

// listedIdentifiers gives the identifiers of a graph directory in ascending byte order.
template <typename FileName>
[[nodiscard]] std::expected<std::vector<Bytes>, Failure> listedIdentifiers(const fs::path& directory,
                                                                           std::string_view extension,
                                                                           const FileName& fileName) {
  const auto names = format::BoundedDirectoryListing::names(directory, maximumListedNameCount);
  if (!names) return backupWriterFailure(Error::unreadablePackage);
  std::vector<Bytes> identifiers;
  identifiers.reserve(names->size());
  for (const std::string& name : *names) {
    auto identifier = identifierNamed(name, extension, fileName);
    if (!identifier) return backupWriterFailure(Error::unreadablePackage);
    identifiers.push_back(std::move(*identifier));
  }
  std::ranges::sort(identifiers, ByteOrder::precedes);
  return identifiers;
}

template <typename Authenticated, typename FileName, typename Open>
[[nodiscard]] std::expected<std::vector<Authenticated>, Failure> discover(const format::BackupPackageV1& package,
                                                                          std::string_view directoryName,
                                                                          std::string_view extension,
                                                                          const FileName& fileName, const Open& open) {
  const auto directory = directoryOf(package, directoryName);
  if (!directory) return std::unexpected(directory.error());
  const auto identifiers = listedIdentifiers(*directory, extension, fileName);
  if (!identifiers) return std::unexpected(identifiers.error());
  std::vector<Authenticated> found;
  found.reserve(identifiers->size());
  for (const Bytes& identifier : *identifiers) {
    const auto frame = readFrame(*directory / *fileName(identifier), maximumDiscoveredFrameByteCount);
    if (!frame) return std::unexpected(frame.error());
    auto opened = open(*frame, identifier);
    if (!opened) return backupWriterFailure(opened.error());
    found.push_back(std::move(*opened));
  }
  return found;
}

struct OpenedArtifact {
  fs::path file;
  Bytes frame;
};

// readReferenced reads the artifact a reference names, bounded by the reference's frame length
// and the object's own ceiling.
template <typename FileName>
[[nodiscard]] std::expected<OpenedArtifact, Failure> readReferenced(const fs::path& directory,
                                                                    const format::BackupArtifactReferenceV1& reference,
                                                                    std::uint64_t plaintextLimit,
                                                                    const FileName& fileName) {
  if (reference.frameByteCount() > plaintextLimit + frameOverheadByteCount)
    return backupWriterFailure(Error::unreadablePackage);
  const auto name = fileName(reference.identifier());
  if (!name) return backupWriterFailure(name.error());
  fs::path file = directory / *name;
  auto frame = readFrame(file, reference.frameByteCount());
  if (!frame) return std::unexpected(frame.error());
  return OpenedArtifact{std::move(file), std::move(*frame)};
}

}  // namespace

namespace BackupPackageGraphReader {

std::expected<std::vector<format::AuthenticatedBackupCommit>, Failure> discoverCommits(
    const format::BackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView bpmk) {
  const auto open = [&](ByteView frame, ByteView identifier) {
    return format::BackupGraphV1::openDiscoveredCommit(frame, identifier, package.header().packageIdentifier(),
                                                       libraryDomainIdentifier, bpmk);
  };
  return discover<format::AuthenticatedBackupCommit>(package, "commits", format::BackupFormatV1::commitFileExtension,
                                                     format::BackupGraphV1::commitFileName, open);
}

std::expected<std::vector<format::AuthenticatedBackupHead>, Failure> discoverHeads(
    const format::BackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView bpmk) {
  const auto open = [&](ByteView frame, ByteView identifier) {
    return format::BackupGraphV1::openDiscoveredHead(frame, identifier, package.header().packageIdentifier(),
                                                     libraryDomainIdentifier, bpmk);
  };
  return discover<format::AuthenticatedBackupHead>(package, "heads", format::BackupFormatV1::headFileExtension,
                                                   format::BackupGraphV1::headFileName, open);
}

std::expected<BackupStoredManifest, Failure> readManifest(const format::BackupPackageV1& package,
                                                          const format::BackupCommitV1& commit,
                                                          ByteView libraryDomainIdentifier, ByteView bpmk) {
  const ByteView packageIdentifier = package.header().packageIdentifier();
  const auto snapshots = directoryOf(package, "snapshots");
  if (!snapshots) return std::unexpected(snapshots.error());
  const auto manifests = directoryOf(package, "manifests");
  if (!manifests) return std::unexpected(manifests.error());

  const auto snapshotArtifact =
      readReferenced(*snapshots, commit.snapshot(), format::BackupFormatV1::maximumGraphDescriptorPlaintextByteCount,
                     format::BackupGraphV1::snapshotFileName);
  if (!snapshotArtifact) return std::unexpected(snapshotArtifact.error());
  auto snapshot = format::BackupGraphV1::openSnapshot(snapshotArtifact->frame, commit.snapshot(), packageIdentifier,
                                                      libraryDomainIdentifier, bpmk);
  if (!snapshot) return backupWriterFailure(snapshot.error());

  const auto rootArtifact =
      readReferenced(*manifests, snapshot->manifest(), format::BackupFormatV1::maximumManifestRootPlaintextByteCount,
                     format::BackupGraphV1::manifestFileName);
  if (!rootArtifact) return std::unexpected(rootArtifact.error());
  auto root = format::BackupGraphV1::openManifestRoot(rootArtifact->frame, snapshot->manifest(), packageIdentifier,
                                                      libraryDomainIdentifier, bpmk);
  if (!root) return backupWriterFailure(root.error());

  BackupStoredManifest stored{
      std::move(*snapshot), snapshotArtifact->file, std::move(*root), rootArtifact->file, {}, {}};
  for (const auto& reference : stored.root.sections()) {
    const auto sectionArtifact = readReferenced(*manifests, reference.artifact(),
                                                format::BackupFormatV1::maximumManifestSectionPlaintextByteCount,
                                                format::BackupGraphV1::manifestFileName);
    if (!sectionArtifact) return std::unexpected(sectionArtifact.error());
    const auto section = format::BackupGraphV1::openManifestSection(
        sectionArtifact->frame, reference, stored.root.identifier(), packageIdentifier, libraryDomainIdentifier, bpmk);
    if (!section) return backupWriterFailure(section.error());
    auto records = format::BackupManifestRecordCodecV1::records(*section);
    if (!records) return backupWriterFailure(records.error());
    stored.sectionFiles.push_back(sectionArtifact->file);
    std::ranges::move(*records, std::back_inserter(stored.records));
  }
  return stored;
}

}  // namespace BackupPackageGraphReader

}  // namespace galdrine::writer
