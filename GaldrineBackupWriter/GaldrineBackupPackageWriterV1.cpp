// Creating and opening a package for writing, heads, and the writer's view of the graph.

#include "GaldrineBackupWriter/GaldrineBackupPackageWriterV1.hpp"

#include <algorithm>
#include <system_error>

#include "GaldrineBackupWriter/GaldrineBackupArtifactFileV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupPackageGraphReaderV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1.hpp"
#include "GaldrineCryptoSupport/GaldrineSecureMemory.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupPassphrasePolicyV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"

namespace {

namespace fs = std::filesystem;
using Writer = GaldrineBackupPackageWriterV1;
using Failure = GaldrineBackupWriterV1Failure;
using Error = GaldrineBackupWriterV1Error;
using EnvelopeError = GaldrinePortableKeyEnvelopeV1Error;
using Factor = GaldrinePortableKeyFactorV1;

constexpr std::uint64_t defaultPassphraseOperationsLimit = 3;
constexpr std::int64_t defaultPassphraseMemoryLimitBytes = 67108864;
constexpr std::uint64_t envelopeGeneration = 1;

[[nodiscard]] Bytes bytesOf(const GaldrineBackupIdentifierV1& identifier) {
  return Bytes(identifier.begin(), identifier.end());
}

[[nodiscard]] std::expected<GaldrineBackupIdentifierV1, Failure> fixedOrDrawn(
    const std::optional<GaldrineBackupIdentifierV1>& fixed, const GaldrineBackupWriterSourcesV1& sources) {
  if (fixed) return *fixed;
  auto drawn = sources.identifier();
  if (!drawn) return galdrineBackupWriterFailure(drawn.error());
  return *drawn;
}

[[nodiscard]] std::expected<void, Failure> validateCredentials(const GaldrineBackupPackageCredentialsV1& credentials) {
  if (!credentials.backupPassphrase && !credentials.recoveryKey) return galdrineBackupWriterFailure(Error::missingCredential);
  if (credentials.backupPassphrase && !GaldrineBackupPassphrasePolicyV1::accepts(*credentials.backupPassphrase))
    return galdrineBackupWriterFailure(EnvelopeError::invalidCredential());
  if (credentials.recoveryKey && credentials.recoveryKey->size() != GaldrinePortableKeyEnvelopeV1::keyByteCount)
    return galdrineBackupWriterFailure(EnvelopeError::invalidRecoveryKeyByteCount());
  return {};
}

// sealedEntry seals the master key under one credential in a fresh artifact and key slot.
template <typename Seal>
[[nodiscard]] std::expected<GaldrineBackupKeyEnvelopeEntryV1, Failure> sealedEntry(
    const GaldrineBackupFormatHeaderV1& header, const GaldrineBackupIdentifierV1& libraryDomainIdentifier,
    const GaldrineBackupWriterSourcesV1& sources, const Seal& seal) {
  const auto artifactIdentifier = sources.identifier();
  if (!artifactIdentifier) return galdrineBackupWriterFailure(artifactIdentifier.error());
  const auto keySlotIdentifier = sources.identifier();
  if (!keySlotIdentifier) return galdrineBackupWriterFailure(keySlotIdentifier.error());
  const auto context = GaldrinePortableKeyEnvelopeContextV1::make(header, libraryDomainIdentifier, *artifactIdentifier,
                                                                 *keySlotIdentifier, envelopeGeneration);
  if (!context) return galdrineBackupWriterFailure(context.error());
  const auto envelope = seal(*context);
  if (!envelope) return galdrineBackupWriterFailure(envelope.error());
  auto entry = GaldrineBackupKeyEnvelopeEntryV1::make(*envelope, true);
  if (!entry) return galdrineBackupWriterFailure(entry.error());
  return std::move(*entry);
}

[[nodiscard]] std::expected<GaldrineBackupKeyEnvelopeSetV1, Failure> sealedEnvelopeSet(
    const GaldrineBackupFormatHeaderV1& header, const GaldrineBackupIdentifierV1& libraryDomainIdentifier, ByteView bpmk,
    const GaldrineBackupPackageCredentialsV1& credentials, const GaldrineBackupWriterSettingsV1& settings) {
  std::vector<GaldrineBackupKeyEnvelopeEntryV1> entries;
  if (credentials.backupPassphrase) {
    auto profile = settings.passphraseProfile
                       ? std::expected<GaldrineBackupPassphraseKDFProfileV1, GaldrineArgon2idError>(*settings.passphraseProfile)
                       : GaldrineBackupPassphraseKDFProfileV1::make(defaultPassphraseOperationsLimit,
                                                                    defaultPassphraseMemoryLimitBytes);
    if (!profile) return galdrineBackupWriterFailure(EnvelopeError::invalidDerivationProfile());
    auto entry = sealedEntry(header, libraryDomainIdentifier, settings.sources, [&](const auto& context) {
      return GaldrinePortableKeyEnvelopeV1::sealWithBackupPassphrase(bpmk, *credentials.backupPassphrase, *profile, context);
    });
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  if (credentials.recoveryKey) {
    auto entry = sealedEntry(header, libraryDomainIdentifier, settings.sources, [&](const auto& context) {
      return GaldrinePortableKeyEnvelopeV1::sealWithRecoveryKey(bpmk, *credentials.recoveryKey, context);
    });
    if (!entry) return std::unexpected(entry.error());
    entries.push_back(std::move(*entry));
  }
  auto set = GaldrineBackupKeyEnvelopeSetV1::make(header.packageIdentifier(), libraryDomainIdentifier, std::move(entries));
  if (!set) return galdrineBackupWriterFailure(set.error());
  return std::move(*set);
}

// unlock opens the active envelope of `factor` in the package's envelope file.
template <typename Open>
[[nodiscard]] std::expected<Bytes, Failure> unlock(const GaldrineBackupPackageV1& package,
                                                   const GaldrineBackupKeyEnvelopeSetV1& set, Factor factor,
                                                   const Open& open) {
  const auto entry = set.activeEntry(factor);
  if (!entry) return galdrineBackupWriterFailure(Error::credentialFactorUnavailable);
  const auto& metadata = entry->metadata();
  const auto context =
      GaldrinePortableKeyEnvelopeContextV1::make(package.header(), set.libraryDomainIdentifier(),
                                                 metadata.artifactIdentifier(), metadata.keySlotIdentifier(),
                                                 metadata.generation());
  if (!context) return galdrineBackupWriterFailure(context.error());
  auto bpmk = open(entry->envelope(), *context);
  if (!bpmk) return galdrineBackupWriterFailure(bpmk.error());
  return std::move(*bpmk);
}

template <typename Open>
[[nodiscard]] std::expected<Writer, Failure> openWith(const fs::path& packageURL, Factor factor,
                                                      GaldrineBackupWriterSettingsV1 settings, const Open& open,
                                                      const auto& openUnlocked) {
  auto package = GaldrineBackupPackageV1::open(packageURL);
  if (!package) return galdrineBackupWriterFailure(package.error());
  if (auto done = settings.layout.validate(); !done) return galdrineBackupWriterFailure(done.error());
  const auto read = GaldrineBackupKeyEnvelopeFileV1::read(*package);
  if (!read) return galdrineBackupWriterFailure(read.error());
  const auto libraryDomainIdentifier = GaldrineFixedBytes::identifier(read->envelopeSet.libraryDomainIdentifier());
  if (!libraryDomainIdentifier) return galdrineBackupWriterFailure(GaldrineBackupKeyEnvelopeSetV1Error::invalidLibraryDomainIdentifier());
  auto bpmk = unlock(*package, read->envelopeSet, factor, open);
  if (!bpmk) return std::unexpected(bpmk.error());
  return openUnlocked(std::move(*package), std::move(settings), *libraryDomainIdentifier, std::move(*bpmk));
}

}  // namespace

GaldrineBackupPackageWriterV1::GaldrineBackupPackageWriterV1(GaldrineBackupPackageV1 package,
                                                             GaldrineBackupWriterSettingsV1 settings,
                                                             GaldrineBackupIdentifierV1 libraryDomainIdentifier,
                                                             GaldrineBackupIdentifierV1 writerDeviceIdentifier, Bytes bpmk)
    : package_(std::move(package)),
      settings_(std::move(settings)),
      libraryDomainIdentifier_(libraryDomainIdentifier),
      writerDeviceIdentifier_(writerDeviceIdentifier),
      bpmk_(std::move(bpmk)) {}

GaldrineBackupPackageWriterV1::GaldrineBackupPackageWriterV1(GaldrineBackupPackageWriterV1&& other) noexcept
    : package_(std::move(other.package_)),
      settings_(std::move(other.settings_)),
      libraryDomainIdentifier_(other.libraryDomainIdentifier_),
      writerDeviceIdentifier_(other.writerDeviceIdentifier_),
      bpmk_(std::move(other.bpmk_)),
      commits_(std::move(other.commits_)),
      heads_(std::move(other.heads_)) {
  other.bpmk_.clear();
}

GaldrineBackupPackageWriterV1::~GaldrineBackupPackageWriterV1() { GaldrineSecureMemory::wipe(bpmk_); }

std::expected<Writer, Failure> GaldrineBackupPackageWriterV1::create(const fs::path& packageURL,
                                                                     const GaldrineBackupPackageCredentialsV1& credentials,
                                                                     GaldrineBackupWriterSettingsV1 settings,
                                                                     const GaldrineBackupPackageIdentityV1& identity) {
  if (auto done = validateCredentials(credentials); !done) return std::unexpected(done.error());
  if (auto done = settings.layout.validate(); !done) return galdrineBackupWriterFailure(done.error());
  const auto packageIdentifier = fixedOrDrawn(identity.packageIdentifier, settings.sources);
  if (!packageIdentifier) return std::unexpected(packageIdentifier.error());
  const auto libraryDomainIdentifier = fixedOrDrawn(identity.libraryDomainIdentifier, settings.sources);
  if (!libraryDomainIdentifier) return std::unexpected(libraryDomainIdentifier.error());
  const auto writerDeviceIdentifier = fixedOrDrawn(settings.writerDeviceIdentifier, settings.sources);
  if (!writerDeviceIdentifier) return std::unexpected(writerDeviceIdentifier.error());
  auto bpmk = settings.sources.key();
  if (!bpmk) return galdrineBackupWriterFailure(bpmk.error());
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(*bpmk); }};

  const auto header = GaldrineBackupFormatHeaderV1::make(*packageIdentifier);
  if (!header) return galdrineBackupWriterFailure(GaldrineBackupPackageV1Failure(header.error()));
  const auto set = sealedEnvelopeSet(*header, *libraryDomainIdentifier, *bpmk, credentials, settings);
  if (!set) return std::unexpected(set.error());

  auto package = GaldrineBackupPackageV1::create(packageURL, *packageIdentifier);
  if (!package) return galdrineBackupWriterFailure(package.error());
  GaldrineScopeGuard removePackage{[&] {
    std::error_code ignored;  // best effort: the creation already failed
    fs::remove_all(package->packageURL(), ignored);
  }};
  if (auto written = GaldrineBackupKeyEnvelopeFileV1::writeAtomically(*set, *package, std::nullopt); !written)
    return galdrineBackupWriterFailure(written.error());
  removePackage.dismiss();
  wipeKey.dismiss();
  Writer writer(std::move(*package), std::move(settings), *libraryDomainIdentifier, *writerDeviceIdentifier, std::move(*bpmk));
  return writer;
}

std::expected<Writer, Failure> GaldrineBackupPackageWriterV1::openWithBackupPassphrase(
    const fs::path& packageURL, ByteView passphrase, GaldrineBackupWriterSettingsV1 settings) {
  const auto open = [&](ByteView envelope, const GaldrinePortableKeyEnvelopeContextV1& context) {
    return GaldrinePortableKeyEnvelopeV1::openWithBackupPassphrase(envelope, passphrase, context);
  };
  return openWith(packageURL, Factor::backupPassphrase, std::move(settings), open, openUnlocked);
}

std::expected<Writer, Failure> GaldrineBackupPackageWriterV1::openWithRecoveryKey(const fs::path& packageURL,
                                                                                  ByteView recoveryKey,
                                                                                  GaldrineBackupWriterSettingsV1 settings) {
  const auto open = [&](ByteView envelope, const GaldrinePortableKeyEnvelopeContextV1& context) {
    return GaldrinePortableKeyEnvelopeV1::openWithRecoveryKey(envelope, recoveryKey, context);
  };
  return openWith(packageURL, Factor::recoveryKey, std::move(settings), open, openUnlocked);
}

std::expected<Writer, Failure> GaldrineBackupPackageWriterV1::openUnlocked(GaldrineBackupPackageV1 package,
                                                                           GaldrineBackupWriterSettingsV1 settings,
                                                                           GaldrineBackupIdentifierV1 libraryDomainIdentifier,
                                                                           Bytes bpmk) {
  GaldrineScopeGuard wipeKey{[&] { GaldrineSecureMemory::wipe(bpmk); }};
  auto commits = GaldrineBackupPackageGraphReaderV1::discoverCommits(package, libraryDomainIdentifier, bpmk);
  if (!commits) return std::unexpected(commits.error());
  auto heads = GaldrineBackupPackageGraphReaderV1::discoverHeads(package, libraryDomainIdentifier, bpmk);
  if (!heads) return std::unexpected(heads.error());
  if (const auto scan = GaldrineBackupCommitGraphV1::scan(*commits, *heads); !scan)
    return galdrineBackupWriterFailure(scan.error());
  const auto writerDeviceIdentifier = fixedOrDrawn(settings.writerDeviceIdentifier, settings.sources);
  if (!writerDeviceIdentifier) return std::unexpected(writerDeviceIdentifier.error());
  wipeKey.dismiss();
  Writer writer(std::move(package), std::move(settings), libraryDomainIdentifier, *writerDeviceIdentifier, std::move(bpmk));
  writer.commits_ = std::move(*commits);
  writer.heads_ = std::move(*heads);
  return writer;
}

const GaldrineAuthenticatedBackupCommitV1* GaldrineBackupPackageWriterV1::findCommit(ByteView identifier) const {
  const auto found = std::ranges::find_if(commits_, [&](const auto& commit) {
    return GaldrineByteOrder::equal(commit.reference().identifier(), identifier);
  });
  return found == commits_.end() ? nullptr : &*found;
}

std::expected<GaldrineBackupCommitGraphScanV1, Failure> GaldrineBackupPackageWriterV1::scan() const {
  auto scan = GaldrineBackupCommitGraphV1::scan(commits_, heads_);
  if (!scan) return galdrineBackupWriterFailure(scan.error());
  return std::move(*scan);
}

std::expected<GaldrineBackupWrittenHeadV1, Failure> GaldrineBackupPackageWriterV1::writeHead(
    const GaldrineBackupIdentifierV1& commitIdentifier, const std::optional<GaldrineBackupIdentifierV1>& headIdentifier) {
  const auto* commit = findCommit(commitIdentifier);
  if (commit == nullptr) return galdrineBackupWriterFailure(Error::unknownCommit);
  const auto identifier = fixedOrDrawn(headIdentifier, settings_.sources);
  if (!identifier) return std::unexpected(identifier.error());
  const auto head = GaldrineBackupHeadV1::make(bytesOf(*identifier), bytesOf(libraryDomainIdentifier_), commit->reference(),
                                               settings_.sources.now());
  if (!head) return galdrineBackupWriterFailure(head.error());
  const auto sealed = GaldrineBackupGraphV1::sealHead(*head, package_.header().packageIdentifier(), bpmk_);
  if (!sealed) return galdrineBackupWriterFailure(sealed.error());
  auto authenticated = GaldrineAuthenticatedBackupHeadV1::make(sealed->reference, *head);
  if (!authenticated) return galdrineBackupWriterFailure(authenticated.error());
  auto file = GaldrineBackupArtifactFileV1::writeOnce(package_, "heads", *GaldrineBackupGraphV1::headFileName(*identifier),
                                                      sealed->frame);
  if (!file) return std::unexpected(file.error());
  heads_.push_back(*authenticated);
  return GaldrineBackupWrittenHeadV1{std::move(*authenticated), std::move(*file)};
}

std::expected<fs::path, Failure> GaldrineBackupPackageWriterV1::writeConvenienceHead(
    const GaldrineBackupIdentifierV1& commitIdentifier) {
  if (findCommit(commitIdentifier) == nullptr) return galdrineBackupWriterFailure(Error::unknownCommit);
  const std::string text = GaldrineByteText::lowerHex(commitIdentifier) + "\n";
  return GaldrineBackupArtifactFileV1::replaceRootFile(package_, GaldrineBackupPackageV1::convenienceHeadName,
                                                       GaldrineByteText::view(text));
}
