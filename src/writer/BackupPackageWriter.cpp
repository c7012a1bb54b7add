// Creating and opening a package for writing, heads, and the writer's view of the graph.

#include "writer/BackupPackageWriter.hpp"

#include <algorithm>
#include <system_error>

#include "envelope/BackupPassphrasePolicy.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "format/graph/BackupCommitGraph.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"
#include "writer/BackupArtifactFile.hpp"
#include "writer/BackupPackageGraphReader.hpp"

namespace galdrine::writer {

namespace {

namespace fs = std::filesystem;
using Writer = BackupPackageWriter;
using Failure = BackupWriterFailure;
using Error = BackupWriterError;
using EnvelopeError = envelope::PortableKeyEnvelopeV1Error;
using Factor = envelope::PortableKeyFactorV1;

constexpr std::uint64_t passphraseOperationsLimit = 3;
constexpr std::int64_t passphraseMemoryLimitBytes = 67108864;
constexpr std::uint64_t envelopeGeneration = 1;

[[nodiscard]] Bytes bytesOf(const format::BackupIdentifierV1& identifier) {
  return Bytes(identifier.begin(), identifier.end());
}

[[nodiscard]] std::expected<format::BackupIdentifierV1, Failure> drawnIdentifier(const BackupWriterSources& sources) {
  auto drawn = sources.identifier();
  if (!drawn) return backupWriterFailure(drawn.error());
  return *drawn;
}

[[nodiscard]] std::expected<void, Failure> validateCredentials(const BackupPackageCredentials& credentials) {
  if (!credentials.backupPassphrase && !credentials.recoveryKey) return backupWriterFailure(Error::missingCredential);
  if (credentials.backupPassphrase && !envelope::BackupPassphrasePolicy::accepts(*credentials.backupPassphrase))
    return backupWriterFailure(EnvelopeError::invalidCredential());
  if (credentials.recoveryKey && credentials.recoveryKey->size() != envelope::PortableKeyEnvelopeV1::keyByteCount)
    return backupWriterFailure(EnvelopeError::invalidRecoveryKeyByteCount());
  return {};
}

// sealedEntry seals the master key under one credential in a fresh artifact and key slot.
template <typename Seal>
[[nodiscard]] std::expected<envelope::BackupKeyEnvelopeEntryV1, Failure> sealedEntry(
    const format::BackupFormatHeaderV1& header, const format::BackupIdentifierV1& libraryDomainIdentifier,
    const BackupWriterSources& sources, const Seal& seal) {
  const auto artifactIdentifier = sources.identifier();
  if (!artifactIdentifier) return backupWriterFailure(artifactIdentifier.error());
  const auto keySlotIdentifier = sources.identifier();
  if (!keySlotIdentifier) return backupWriterFailure(keySlotIdentifier.error());
  const auto context = envelope::PortableKeyEnvelopeContextV1::make(
      header, libraryDomainIdentifier, *artifactIdentifier, *keySlotIdentifier, envelopeGeneration);
  if (!context) return backupWriterFailure(context.error());
  const auto envelope = seal(*context);
  if (!envelope) return backupWriterFailure(envelope.error());
  auto entry = envelope::BackupKeyEnvelopeEntryV1::make(*envelope, true);
  if (!entry) return backupWriterFailure(entry.error());
  return std::move(*entry);
}

[[nodiscard]] std::expected<envelope::BackupKeyEnvelopeSetV1, Failure> sealedEnvelopeSet(
    const format::BackupFormatHeaderV1& header, const format::BackupIdentifierV1& libraryDomainIdentifier,
    ByteView bpmk, const BackupPackageCredentials& credentials, const BackupWriterSources& sources) {
  std::vector<envelope::BackupKeyEnvelopeEntryV1> entries;
  if (credentials.backupPassphrase) {
    const auto profile =
        envelope::BackupPassphraseKDFProfileV1::make(passphraseOperationsLimit, passphraseMemoryLimitBytes);
    if (!profile) return backupWriterFailure(EnvelopeError::invalidDerivationProfile());
    auto entry = sealedEntry(header, libraryDomainIdentifier, sources, [&](const auto& context) {
      return envelope::PortableKeyEnvelopeV1::sealWithBackupPassphrase(bpmk, *credentials.backupPassphrase, *profile,
                                                                       context);
    });
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  if (credentials.recoveryKey) {
    auto entry = sealedEntry(header, libraryDomainIdentifier, sources, [&](const auto& context) {
      return envelope::PortableKeyEnvelopeV1::sealWithRecoveryKey(bpmk, *credentials.recoveryKey, context);
    });
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  auto set =
      envelope::BackupKeyEnvelopeSetV1::make(header.packageIdentifier(), libraryDomainIdentifier, std::move(entries));
  if (!set) return backupWriterFailure(set.error());
  return std::move(*set);
}

// unlock opens the active envelope of `factor` in the package's envelope file.
template <typename Open>
[[nodiscard]] std::expected<Bytes, Failure> unlock(const format::BackupPackageV1& package,
                                                   const envelope::BackupKeyEnvelopeSetV1& set, Factor factor,
                                                   const Open& open) {
  const auto entry = set.activeEntry(factor);
  if (!entry) return backupWriterFailure(Error::credentialFactorUnavailable);
  const auto& metadata = entry->metadata();
  const auto context = envelope::PortableKeyEnvelopeContextV1::make(
      package.header(), set.libraryDomainIdentifier(), metadata.artifactIdentifier(), metadata.keySlotIdentifier(),
      metadata.generation());
  if (!context) return backupWriterFailure(context.error());
  auto bpmk = open(entry->envelope(), *context);
  if (!bpmk) return backupWriterFailure(bpmk.error());
  return std::move(*bpmk);
}

template <typename Open>
[[nodiscard]] std::expected<Writer, Failure> openWith(const fs::path& packagePath, Factor factor,
                                                      BackupWriterSettings settings, const Open& open,
                                                      const auto& openUnlocked) {
  auto package = format::BackupPackageV1::open(packagePath);
  if (!package) return backupWriterFailure(package.error());
  if (auto done = settings.layout.validate(); !done) return backupWriterFailure(done.error());
  const auto read = envelope::BackupKeyEnvelopeFileV1::read(*package);
  if (!read) return backupWriterFailure(read.error());
  const auto libraryDomainIdentifier = format::FixedBytes::identifier(read->envelopeSet.libraryDomainIdentifier());
  if (!libraryDomainIdentifier)
    return backupWriterFailure(envelope::BackupKeyEnvelopeSetV1Error::invalidLibraryDomainIdentifier());
  auto bpmk = unlock(*package, read->envelopeSet, factor, open);
  if (!bpmk) return std::unexpected(bpmk.error());
  return openUnlocked(std::move(*package), std::move(settings), *libraryDomainIdentifier, std::move(*bpmk));
}

}  // namespace

BackupPackageWriter::BackupPackageWriter(format::BackupPackageV1 package, BackupWriterSettings settings,
                                         format::BackupIdentifierV1 libraryDomainIdentifier,
                                         format::BackupIdentifierV1 writerDeviceIdentifier, Bytes bpmk)
    : package_(std::move(package)),
      settings_(std::move(settings)),
      libraryDomainIdentifier_(libraryDomainIdentifier),
      writerDeviceIdentifier_(writerDeviceIdentifier),
      bpmk_(std::move(bpmk)) {}

BackupPackageWriter::BackupPackageWriter(BackupPackageWriter&& other) noexcept
    : package_(std::move(other.package_)),
      settings_(std::move(other.settings_)),
      libraryDomainIdentifier_(other.libraryDomainIdentifier_),
      writerDeviceIdentifier_(other.writerDeviceIdentifier_),
      bpmk_(std::move(other.bpmk_)),
      commits_(std::move(other.commits_)),
      heads_(std::move(other.heads_)) {
  other.bpmk_.clear();
}

BackupPackageWriter::~BackupPackageWriter() { platform::SecureMemory::wipe(bpmk_); }

std::expected<Writer, Failure> BackupPackageWriter::create(const fs::path& packagePath,
                                                           const BackupPackageCredentials& credentials,
                                                           BackupWriterSettings settings) {
  if (auto done = validateCredentials(credentials); !done) return std::unexpected(done.error());
  if (auto done = settings.layout.validate(); !done) return backupWriterFailure(done.error());
  const auto packageIdentifier = drawnIdentifier(settings.sources);
  if (!packageIdentifier) return std::unexpected(packageIdentifier.error());
  const auto libraryDomainIdentifier = drawnIdentifier(settings.sources);
  if (!libraryDomainIdentifier) return std::unexpected(libraryDomainIdentifier.error());
  const auto writerDeviceIdentifier = drawnIdentifier(settings.sources);
  if (!writerDeviceIdentifier) return std::unexpected(writerDeviceIdentifier.error());
  auto bpmk = settings.sources.key();
  if (!bpmk) return backupWriterFailure(bpmk.error());
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(*bpmk); }};

  const auto header = format::BackupFormatHeaderV1::make(*packageIdentifier);
  if (!header) return backupWriterFailure(format::BackupPackageV1Failure(header.error()));
  const auto set = sealedEnvelopeSet(*header, *libraryDomainIdentifier, *bpmk, credentials, settings.sources);
  if (!set) return std::unexpected(set.error());

  auto package = format::BackupPackageV1::create(packagePath, *packageIdentifier);
  if (!package) return backupWriterFailure(package.error());
  ScopeGuard removePackage{[&] {
    std::error_code ignored;  // best effort: the creation already failed
    fs::remove_all(package->packagePath(), ignored);
  }};
  if (auto written = envelope::BackupKeyEnvelopeFileV1::writeAtomically(*set, *package, std::nullopt); !written)
    return backupWriterFailure(written.error());
  removePackage.dismiss();
  wipeKey.dismiss();
  Writer writer(std::move(*package), std::move(settings), *libraryDomainIdentifier, *writerDeviceIdentifier,
                std::move(*bpmk));
  return writer;
}

std::expected<Writer, Failure> BackupPackageWriter::openWithBackupPassphrase(const fs::path& packagePath,
                                                                             ByteView passphrase,
                                                                             BackupWriterSettings settings) {
  const auto open = [&](ByteView envelope, const envelope::PortableKeyEnvelopeContextV1& context) {
    return envelope::PortableKeyEnvelopeV1::openWithBackupPassphrase(envelope, passphrase, context);
  };
  return openWith(packagePath, Factor::backupPassphrase, std::move(settings), open, openUnlocked);
}

std::expected<Writer, Failure> BackupPackageWriter::openWithRecoveryKey(const fs::path& packagePath,
                                                                        ByteView recoveryKey,
                                                                        BackupWriterSettings settings) {
  const auto open = [&](ByteView envelope, const envelope::PortableKeyEnvelopeContextV1& context) {
    return envelope::PortableKeyEnvelopeV1::openWithRecoveryKey(envelope, recoveryKey, context);
  };
  return openWith(packagePath, Factor::recoveryKey, std::move(settings), open, openUnlocked);
}

std::expected<Writer, Failure> BackupPackageWriter::openUnlocked(format::BackupPackageV1 package,
                                                                 BackupWriterSettings settings,
                                                                 format::BackupIdentifierV1 libraryDomainIdentifier,
                                                                 Bytes bpmk) {
  ScopeGuard wipeKey{[&] { platform::SecureMemory::wipe(bpmk); }};
  auto commits = BackupPackageGraphReader::discoverCommits(package, libraryDomainIdentifier, bpmk);
  if (!commits) return std::unexpected(commits.error());
  auto heads = BackupPackageGraphReader::discoverHeads(package, libraryDomainIdentifier, bpmk);
  if (!heads) return std::unexpected(heads.error());
  if (const auto scan = format::BackupCommitGraph::scan(*commits, *heads); !scan)
    return backupWriterFailure(scan.error());
  const auto writerDeviceIdentifier = drawnIdentifier(settings.sources);
  if (!writerDeviceIdentifier) return std::unexpected(writerDeviceIdentifier.error());
  wipeKey.dismiss();
  Writer writer(std::move(package), std::move(settings), libraryDomainIdentifier, *writerDeviceIdentifier,
                std::move(bpmk));
  writer.commits_ = std::move(*commits);
  writer.heads_ = std::move(*heads);
  return writer;
}

const format::AuthenticatedBackupCommit* BackupPackageWriter::findCommit(ByteView identifier) const {
  const auto found = std::ranges::find_if(
      commits_, [&](const auto& commit) { return ByteOrder::equal(commit.reference().identifier(), identifier); });
  return found == commits_.end() ? nullptr : &*found;
}

std::expected<BackupWrittenHead, Failure> BackupPackageWriter::writeHead(
    const format::AuthenticatedBackupCommit& commit) {
  const auto identifier = drawnIdentifier(settings_.sources);
  if (!identifier) return std::unexpected(identifier.error());
  const auto head = format::BackupHeadV1::make(bytesOf(*identifier), bytesOf(libraryDomainIdentifier_),
                                               commit.reference(), settings_.sources.now());
  if (!head) return backupWriterFailure(head.error());
  const auto sealed = format::BackupGraphV1::sealHead(*head, package_.header().packageIdentifier(), bpmk_);
  if (!sealed) return backupWriterFailure(sealed.error());
  auto authenticated = format::AuthenticatedBackupHead::make(sealed->reference, *head);
  if (!authenticated) return backupWriterFailure(authenticated.error());
  auto file = BackupArtifactFile::writeOnce(package_, "heads", *format::BackupGraphV1::headFileName(*identifier),
                                            sealed->frame);
  if (!file) return std::unexpected(file.error());
  heads_.push_back(*authenticated);
  return BackupWrittenHead{std::move(*authenticated), std::move(*file)};
}

}  // namespace galdrine::writer
