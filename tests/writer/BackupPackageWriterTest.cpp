#include <gtest/gtest.h>

#include <functional>

#include "writer/BackupPseudoRandom.hpp"
#include "writer/BackupRecoveryKey.hpp"
#include "format/graph/BackupCommitGraph.hpp"
#include "kdf/Argon2id.hpp"
#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"
#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using EnvelopeError = envelope::PortableKeyEnvelopeV1Error;
using Factor = envelope::PortableKeyFactorV1;

const Bytes kPassphrase = ByteText::bytes("quiet harbor lantern 47 ember");

[[nodiscard]] std::expected<Bytes, EnvelopeError> openEntry(const format::BackupPackageV1& package,
                                                           const envelope::BackupKeyEnvelopeSetV1& set, Factor factor,
                                                           ByteView credential) {
  const auto entry = set.activeEntry(factor);
  if (!entry) return std::unexpected(EnvelopeError::unexpectedFactor());
  const auto& metadata = entry->metadata();
  const auto context = envelope::PortableKeyEnvelopeContextV1::make(package.header(), set.libraryDomainIdentifier(),
                                                                 metadata.artifactIdentifier(),
                                                                 metadata.keySlotIdentifier(), metadata.generation());
  if (!context) return std::unexpected(context.error());
  return factor == Factor::backupPassphrase
             ? envelope::PortableKeyEnvelopeV1::openWithBackupPassphrase(entry->envelope(), credential, *context)
             : envelope::PortableKeyEnvelopeV1::openWithRecoveryKey(entry->envelope(), credential, *context);
}

TEST(BackupPackageWriter, BothCredentialsOfANewPackageUnlockTheWritersMasterKey) {
  const testsupport::TemporaryDirectory directory;
  const fs::path path = directory / "Library.galdrine";
  auto writer = Writer::create(path, {ByteView(kPassphrase), ByteView(kRecoveryKey)}, settings());
  ASSERT_TRUE(writer) << writer.error().index();
  const Bytes bpmk(writer->backupPackageMasterKey().begin(), writer->backupPackageMasterKey().end());
  EXPECT_EQ(bpmk.size(), 32u);

  const auto package = format::BackupPackageV1::open(path);
  ASSERT_TRUE(package);
  EXPECT_EQ(package->header().packageIdentifier(), writer->package().header().packageIdentifier());
  const auto read = envelope::BackupKeyEnvelopeFileV1::read(*package);
  ASSERT_TRUE(read);
  const auto& set = read->envelopeSet;
  EXPECT_EQ(set.activeEntries().size(), 2u);
  EXPECT_EQ(set.libraryDomainIdentifier(), Bytes(writer->libraryDomainIdentifier().begin(), writer->libraryDomainIdentifier().end()));
  EXPECT_EQ(set.activeEntry(Factor::backupPassphrase)->metadata().operationsLimit(), 3u);
  EXPECT_EQ(set.activeEntry(Factor::backupPassphrase)->metadata().memoryLimitBytes(), 67108864);
  EXPECT_EQ(openEntry(*package, set, Factor::recoveryKey, kRecoveryKey), bpmk);
  EXPECT_EQ(openEntry(*package, set, Factor::backupPassphrase, kPassphrase), bpmk);

  auto reopened = Writer::openWithRecoveryKey(path, kRecoveryKey, settings());
  ASSERT_TRUE(reopened);
  EXPECT_TRUE(std::ranges::equal(reopened->backupPackageMasterKey(), bpmk));
  EXPECT_EQ(reopened->libraryDomainIdentifier(), writer->libraryDomainIdentifier());
  const Bytes wrongKey(32, 0x01);
  EXPECT_EQ(Writer::openWithRecoveryKey(path, wrongKey, settings()).error(), Failure(EnvelopeError::authenticationFailed()));
}

TEST(BackupPackageWriter, CreationRefusesBeforeAnythingIsWritten) {
  const Bytes weakPassphrase = ByteText::bytes("12345678");
  const Bytes shortKey(31, 0x01);
  BackupWriterSettings badLayout = settings();
  badLayout.layout.chunkPlaintextByteCount = 0;
  struct Case {
    std::string_view name;
    BackupPackageCredentials credentials;
    BackupWriterSettings settings;
    Failure expected;
  };
  const Case cases[] = {
      {"no credential", {}, settings(), Error::missingCredential},
      {"weak passphrase", {ByteView(weakPassphrase), ByteView(kRecoveryKey)}, settings(), EnvelopeError::invalidCredential()},
      {"short recovery key", {std::nullopt, ByteView(shortKey)}, settings(), EnvelopeError::invalidRecoveryKeyByteCount()},
      {"chunks of no bytes", {std::nullopt, ByteView(kRecoveryKey)}, badLayout, Error::invalidLayout},
  };
  const std::uint64_t derivationsBefore = kdf::Argon2id::derivationCount();
  for (const Case& test : cases) {
    const testsupport::TemporaryDirectory directory;
    const auto writer = Writer::create(directory / "Library.galdrine", test.credentials, test.settings);
    ASSERT_FALSE(writer) << test.name;
    EXPECT_EQ(writer.error(), test.expected) << test.name;
    EXPECT_TRUE(namesIn(directory.path()).empty()) << test.name;
  }
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivationsBefore);

  const testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::makeDirectory(directory / "Taken.galdrine");
  const auto taken = Writer::create(directory / "Taken.galdrine", {std::nullopt, ByteView(kRecoveryKey)}, settings());
  ASSERT_FALSE(taken);
  EXPECT_EQ(taken.error(),
            Failure(format::BackupPackageV1Failure(format::BackupPackageV1Error::destinationAlreadyExists())));
}

TEST(BackupPackageWriter, AWrittenSnapshotReadsBackThroughTheFormatsOwnReaders) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  testsupport::BackupSampleLibraryShape shape;
  shape.photoCount = 5;
  shape.videoCount = 2;  // 5,000 to 9,000 bytes: three to five chunks each
  const auto library = testsupport::BackupSampleLibrary::make(shape);
  const auto written = writer.writeCommit(library, {.writeConvenienceHead = true});
  ASSERT_TRUE(written) << written.error().index();

  // The commit and head files open as a reader discovers them, and make a single branch.
  const ByteView packageIdentifier = writer.package().header().packageIdentifier();
  const auto commit = format::BackupGraphV1::openDiscoveredCommit(fileBytes(written->commitFile), written->commitIdentifier,
                                                                 packageIdentifier, writer.libraryDomainIdentifier(),
                                                                 writer.backupPackageMasterKey());
  ASSERT_TRUE(commit);
  EXPECT_EQ(*commit, written->commit);
  ASSERT_TRUE(written->head);
  const auto head = format::BackupGraphV1::openDiscoveredHead(
      fileBytes(written->head->file), written->head->head.head().identifier(), packageIdentifier,
      writer.libraryDomainIdentifier(), writer.backupPackageMasterKey());
  ASSERT_TRUE(head);
  const auto scan = format::BackupCommitGraph::scan(std::vector{*commit}, std::vector{*head});
  ASSERT_TRUE(scan);
  ASSERT_TRUE(scan->accessState.asWritable() && scan->accessState.asWritable()->canonicalTip);
  EXPECT_EQ(scan->accessState.asWritable()->canonicalTip->reference(), commit->reference());
  EXPECT_EQ(commit->commit().generation(), 0u);
  EXPECT_FALSE(commit->commit().parent());
  EXPECT_EQ(fileBytes(*written->convenienceHeadFile),
            ByteText::bytes(ByteText::lowerHex(written->commitIdentifier) + "\n"));

  // The manifest validates, and its summary is what the snapshot, root and commit carry.
  const auto read = readBack(writer, commit->commit());
  ASSERT_TRUE(read);
  const auto summary = format::BackupManifestRecordCodecV1::validateAndSummarize(
      read->sections, packageIdentifier, writer.libraryDomainIdentifier(), writer.backupPackageMasterKey());
  ASSERT_TRUE(summary);
  EXPECT_EQ(summary->counts, read->snapshot.counts());
  EXPECT_EQ(summary->logicalPlaintextByteCount, read->snapshot.logicalPlaintextByteCount());
  EXPECT_EQ(summary->encryptedPayloadByteCount, read->snapshot.encryptedPayloadByteCount());
  EXPECT_EQ(summary->requiredPayloadSetSHA256, read->snapshot.requiredPayloadSetSHA256());
  EXPECT_EQ(summary->requiredPayloadSetSHA256, commit->commit().requiredPayloadSetSHA256());
  EXPECT_EQ(read->root.createdAtUTCMilliseconds(), commit->commit().createdAtUTCMilliseconds());
  EXPECT_EQ(read->snapshot.createdAtUTCMilliseconds(), commit->commit().createdAtUTCMilliseconds());
  EXPECT_EQ(read->records, written->records);
  EXPECT_EQ(*summary, written->summary);
  EXPECT_EQ(summary->counts.itemCount(), 9u);
  EXPECT_EQ(summary->counts.resourceCount(), 11u);
  for (const auto& section : read->sections) {
    EXPECT_LE(section.records().size(), 3u);
    EXPECT_EQ(section.manifestIdentifier(), read->root.identifier());
  }

  // Every resource gives back its content byte for byte, packed or in several chunks.
  const auto contents = expectedContents(library);
  std::set<format::BackupPayloadContainerKindV1> containers;
  std::size_t multiChunkResources = 0;
  for (const Record& record : read->records) {
    const auto* resource = record.resource();
    if (resource == nullptr) continue;
    containers.insert(resource->parts().front().container());
    multiChunkResources += resource->parts().size() > 1;
    EXPECT_EQ(payloadOf(writer, read->records, *resource), contents.at(resource->identifier()));
  }
  EXPECT_EQ(containers.size(), 2u);
  const auto beyondPackedLimit = std::ranges::count_if(contents, [](const auto& entry) { return entry.second.size() > 3000; });
  EXPECT_GE(beyondPackedLimit, 2);  // both videos at least
  EXPECT_EQ(multiChunkResources, static_cast<std::size_t>(beyondPackedLimit));

  // Exactly the described files exist, and nothing stays behind in tmp.
  std::set<fs::path> described{written->commitFile, written->snapshotFile, written->manifestRootFile,
                               written->head->file, *written->convenienceHeadFile};
  described.insert(written->sectionFiles.begin(), written->sectionFiles.end());
  for (const auto& file : written->payloadFiles) {
    EXPECT_TRUE(file.newlyWritten);
    described.insert(file.path);
  }
  described.insert(writer.package().packagePath() / "format-header.cbor");
  described.insert(writer.package().packagePath() / "key-envelopes.cbor");
  EXPECT_EQ(filesUnder(writer.package().packagePath()), described);
}

TEST(BackupPackageWriter, APassphraseOpensThePackageForAppendingAndAMissingFactorCostsNoDerivation) {
  const testsupport::TemporaryDirectory directory;
  const fs::path both = directory / "Both.galdrine";
  ASSERT_TRUE(Writer::create(both, {ByteView(kPassphrase), ByteView(kRecoveryKey)}, settings()));
  auto appending = Writer::openWithBackupPassphrase(both, kPassphrase, settings());
  ASSERT_TRUE(appending);
  ASSERT_TRUE(appending->writeCommit(testsupport::BackupSampleLibrary::make({})));

  const fs::path recoveryOnly = directory / "Recovery.galdrine";
  (void)createWithRecoveryKey(recoveryOnly);
  const std::uint64_t derivationsBefore = kdf::Argon2id::derivationCount();
  EXPECT_EQ(Writer::openWithBackupPassphrase(recoveryOnly, kPassphrase, settings()).error(),
            Failure(Error::credentialFactorUnavailable));
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivationsBefore);
}

TEST(BackupPackageWriter, AGeneratedRecoveryKeyIsWrittenDownAsWordsThatOpenThePackage) {
  const testsupport::TemporaryDirectory directory;
  const auto sources = BackupWriterSources::deterministic(31, 0);
  const auto generated = BackupRecoveryKey::generate(sources);
  ASSERT_TRUE(generated);
  EXPECT_EQ(std::ranges::count(generated->phrase(), ' '), 23);
  ASSERT_TRUE(Writer::create(directory / "Library.galdrine", {std::nullopt, generated->key()}, settings()));
  const std::string typed = "  " + std::string(generated->phrase()) + "\n";
  const auto read = BackupRecoveryKey::fromPhrase(typed);
  ASSERT_TRUE(read);
  EXPECT_TRUE(std::ranges::equal(read->key(), generated->key()));
  EXPECT_TRUE(Writer::openWithRecoveryKey(directory / "Library.galdrine", read->key(), settings()));
  EXPECT_EQ(BackupRecoveryKey::fromPhrase("abandon").error(),
            Failure(keys::RecoveryKeyMnemonicV1Error::invalidWordCount(24, 1)));
}

TEST(BackupPackageWriter, ContentIsReadInPiecesNoLargerThanAChunk) {
  const testsupport::TemporaryDirectory directory;
  BackupWriterSettings defaults = settings();
  defaults.layout = {};
  auto writer = Writer::create(directory / "Library.galdrine", {std::nullopt, ByteView(kRecoveryKey)}, defaults);
  ASSERT_TRUE(writer);
  constexpr std::uint64_t byteCount = 40 * 1024 * 1024 + 123;  // three chunks, the last one short
  auto largestPiece = std::make_shared<std::size_t>(0);
  auto library = testsupport::BackupSampleLibrary::make({.photoCount = 1, .livePhotoCount = 0, .videoCount = 1});
  auto& video = library.items.back().resources.front();
  video.content = BackupContentSource::generated(byteCount, [largestPiece](std::uint64_t offset, std::span<std::uint8_t> into) {
    *largestPiece = std::max(*largestPiece, into.size());
    BackupPseudoRandom::fill(8, offset, into);
  });
  const auto written = writer->writeCommit(library);
  ASSERT_TRUE(written);
  EXPECT_EQ(*largestPiece, 16u * 1024 * 1024);
  const auto* resource = written->resource(video.identifier);
  ASSERT_NE(resource, nullptr);
  EXPECT_EQ(resource->container, format::BackupPayloadContainerKindV1::chunk);
  EXPECT_EQ(resource->partFiles.size(), 3u);
  const auto read = readBack(*writer, written->commit.commit());
  ASSERT_TRUE(read);
  const auto record = std::ranges::find_if(read->records, [&](const Record& candidate) {
    return candidate.resource() != nullptr && candidate.resource()->identifier() == video.identifier;
  });
  ASSERT_NE(record, read->records.end());
  const auto payload = payloadOf(*writer, read->records, *record->resource());
  ASSERT_TRUE(payload);
  EXPECT_EQ(payload->size(), byteCount);
  EXPECT_EQ(platform::SHA256::digest(*payload), resource->plaintextSHA256);
  Bytes expected(byteCount);
  BackupPseudoRandom::fill(8, 0, expected);
  EXPECT_TRUE(*payload == expected);
}

TEST(BackupPackageWriter, ALaterCommitReplacesTheConvenienceHead) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto library = testsupport::BackupSampleLibrary::make({.photoCount = 1, .livePhotoCount = 0, .videoCount = 0});
  const auto first = writer.writeCommit(library, {.writeConvenienceHead = true});
  const auto second = writer.writeCommit(library, {.writeConvenienceHead = true});
  ASSERT_TRUE(first && second);
  EXPECT_EQ(*second->convenienceHeadFile, directory / "Library.galdrine" / "HEAD");
  EXPECT_EQ(fileBytes(*second->convenienceHeadFile),
            ByteText::bytes(ByteText::lowerHex(second->commitIdentifier) + "\n"));
  EXPECT_TRUE(namesIn(directory / "Library.galdrine" / "tmp").empty());
  EXPECT_TRUE(format::BackupPackageV1::open(directory / "Library.galdrine"));
  EXPECT_EQ(writer.writeConvenienceHead(Identifier{0x05}).error(), Failure(Error::unknownCommit));
}

TEST(BackupPackageWriter, ALibraryTheManifestRefusesWritesNoFile) {
  using RecordError = format::BackupManifestRecordV1Error;
  struct Case {
    std::string_view name;
    std::function<void(BackupLibrarySnapshot&)> spoil;
    Failure expected;
  };
  const Case cases[] = {
      {"membership of an unknown album", [](auto& library) { library.memberships.front().albumIdentifier = {9}; },
       RecordError::missingReference},
      {"live photo without its video", [](auto& library) { library.items[5].resources.pop_back(); },
       RecordError::invalidRelationship},
      {"empty resource", [](auto& library) { library.items[0].resources[0].content = BackupContentSource(); },
       RecordError::invalidValue},
      {"tombstone of a live item", [](auto& library) { library.tombstones.front().itemIdentifier = library.items[0].identifier; },
       RecordError::conflictingReference},
      {"folders in a ring", [](auto& library) { library.folders[0].parentFolderIdentifier = library.folders[1].identifier; },
       RecordError::invalidRelationship},
      {"blank album name", [](auto& library) { library.albums[0].name = " "; }, RecordError::invalidText},
      {"missing content file", [](auto& library) { library.items[0].resources[0].content = BackupContentSource::file("/nonexistent/x"); },
       Error::contentUnavailable},
  };
  for (const Case& test : cases) {
    const testsupport::TemporaryDirectory directory;
    auto writer = createWithRecoveryKey(directory / "Library.galdrine");
    auto library = testsupport::BackupSampleLibrary::make({});
    test.spoil(library);
    const auto written = writer.writeCommit(library);
    ASSERT_FALSE(written) << test.name;
    EXPECT_EQ(written.error(), test.expected) << test.name;
    for (const char* name : {"packs", "objects", "manifests", "snapshots", "commits", "heads", "tmp"})
      EXPECT_TRUE(namesIn(directory / "Library.galdrine" / name).empty()) << test.name << " " << name;
  }
}

}  // namespace

}  // namespace galdrine::writer
