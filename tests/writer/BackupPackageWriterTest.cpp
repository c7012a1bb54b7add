#include <gtest/gtest.h>

#include "kdf/Argon2id.hpp"
#include "reader/BackupKeyEnvelopeSetReader.hpp"
#include "support/BackupWriterTestSupport.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using EnvelopeError = envelope::PortableKeyEnvelopeV1Error;

const Bytes kPassphrase = ByteText::bytes("quiet harbor lantern 47 ember");

// Both envelopes of a new package open, through the package readers, to the writer's master
// key; a passphrase cost is the default one, and a factor the package lacks costs no derivation.
TEST(BackupPackageWriter, ANewPackageOpensWithEitherCredential) {
  const testsupport::TemporaryDirectory directory;
  const fs::path path = directory / "Library.galdrine";
  auto writer = Writer::create(path, {ByteView(kPassphrase), ByteView(kRecoveryKey)}, settings());
  ASSERT_TRUE(writer) << writer.error().index();
  const Bytes bpmk(writer->backupPackageMasterKey().begin(), writer->backupPackageMasterKey().end());
  const auto reader = reader::BackupKeyEnvelopeSetReader::open(path);
  ASSERT_TRUE(reader);
  const auto& passphraseEntry = reader->envelopeSet().activeEntry(envelope::PortableKeyFactorV1::backupPassphrase);
  ASSERT_TRUE(passphraseEntry);
  EXPECT_EQ(passphraseEntry->metadata().operationsLimit(), 3u);
  EXPECT_EQ(passphraseEntry->metadata().memoryLimitBytes(), 67108864);
  EXPECT_EQ(reader->openWithRecoveryKey(kRecoveryKey), bpmk);
  EXPECT_EQ(reader->openWithBackupPassphrase(kPassphrase), bpmk);

  auto appending = Writer::openWithBackupPassphrase(path, kPassphrase, settings(8));
  ASSERT_TRUE(appending);
  EXPECT_TRUE(appending->writeCommit(testsupport::BackupSampleLibrary::make({})));

  const fs::path recoveryOnly = directory / "Recovery.galdrine";
  (void)createWithRecoveryKey(recoveryOnly);
  const std::uint64_t derivationsBefore = kdf::Argon2id::derivationCount();
  EXPECT_EQ(Writer::openWithBackupPassphrase(recoveryOnly, kPassphrase, settings()).error(),
            Failure(Error::credentialFactorUnavailable));
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivationsBefore);
}

TEST(BackupPackageWriter, CreationRefusesBeforeAnythingIsWritten) {
  const Bytes weakPassphrase = ByteText::bytes("12345678");
  BackupWriterSettings badLayout = settings();
  badLayout.layout.chunkPlaintextByteCount = 0;
  const struct {
    std::string_view name;
    BackupPackageCredentials credentials;
    BackupWriterSettings settings;
    Failure expected;
  } cases[] = {
      {"no credential", {}, settings(), Error::missingCredential},
      {"weak passphrase",
       {ByteView(weakPassphrase), ByteView(kRecoveryKey)},
       settings(),
       EnvelopeError::invalidCredential()},
      {"short recovery key",
       {std::nullopt, ByteView(kRecoveryKey).first(31)},
       settings(),
       EnvelopeError::invalidRecoveryKeyByteCount()},
      {"chunks of no bytes", {std::nullopt, ByteView(kRecoveryKey)}, badLayout, Error::invalidLayout},
  };
  const std::uint64_t derivationsBefore = kdf::Argon2id::derivationCount();
  for (const auto& test : cases) {
    const testsupport::TemporaryDirectory directory;
    EXPECT_EQ(Writer::create(directory / "Library.galdrine", test.credentials, test.settings).error(), test.expected)
        << test.name;
    EXPECT_TRUE(fs::is_empty(directory.path())) << test.name;
  }
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivationsBefore);
}

// What the writer reports is what the recovery engine authenticates: the records, the summary
// the validator computes, and every payload file; each resource promises its own content, in a
// pack segment or in several chunks; and the package holds exactly the files reported.
TEST(BackupPackageWriter, TheRecoveryEngineReadsBackWhatWasWritten) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto library = testsupport::BackupSampleLibrary::make({.photoCount = 5, .videoCount = 2});
  const auto written = writer.writeCommit(library);
  ASSERT_TRUE(written) << written.error().index();

  const auto inspection = inspected(writer);
  ASSERT_TRUE(inspection && inspection->authenticatedSnapshots.size() == 1);
  const auto& preflight = inspection->authenticatedSnapshots.front();
  EXPECT_EQ(preflight.counts, written->summary.counts);
  EXPECT_EQ(preflight.logicalPlaintextByteCount, written->summary.logicalPlaintextByteCount);
  EXPECT_EQ(preflight.encryptedPayloadByteCount, written->summary.encryptedPayloadByteCount);
  EXPECT_EQ(preflight.payloadFileEvidence.requiredFileCount, std::ssize(written->payloadFiles));
  EXPECT_EQ(preflight.payloadFileEvidence.matchingFileCount, std::ssize(written->payloadFiles));
  const auto envelopes = recovery::openEnvelopeReader(writer.package().packagePath());
  ASSERT_TRUE(envelopes);
  const auto snapshot =
      recovery::authenticatedSnapshot(written->commitIdentifier, *envelopes, writer.backupPackageMasterKey());
  ASSERT_TRUE(snapshot);
  EXPECT_EQ(snapshot->records, written->records);

  const auto contents = expectedContents(library);
  std::set<format::BackupPayloadContainerKindV1> containers;
  for (const auto& resource : written->resources) {
    const Bytes& content = contents.at(resource.identifier);
    EXPECT_EQ(resource.plaintextSHA256, platform::SHA256::digest(content));
    EXPECT_EQ(resource.partFiles.size(), content.size() > 3000 ? (content.size() + 2047) / 2048 : 1);
    containers.insert(resource.container);
  }
  EXPECT_EQ(containers.size(), 2u);

  std::set<fs::path> described{written->commitFile,
                               written->snapshotFile,
                               written->manifestRootFile,
                               written->head->file,
                               directory / "Library.galdrine" / "format-header.cbor",
                               directory / "Library.galdrine" / "key-envelopes.cbor"};
  described.insert(written->sectionFiles.begin(), written->sectionFiles.end());
  for (const auto& file : written->payloadFiles) {
    EXPECT_TRUE(file.newlyWritten);
    described.insert(file.path);
  }
  EXPECT_EQ(filesUnder(directory / "Library.galdrine"), described);  // nothing stays behind in tmp
}

TEST(BackupPackageWriter, ContentIsReadInPiecesNoLargerThanAChunk) {
  const testsupport::TemporaryDirectory directory;
  auto writer = Writer::create(directory / "Library.galdrine", {std::nullopt, ByteView(kRecoveryKey)},
                               {reproducibleSources(7), {}, 2});  // the format's own layout
  ASSERT_TRUE(writer);
  constexpr std::uint64_t byteCount = 40 * 1024 * 1024 + 123;  // three chunks, the last one short
  auto largestPiece = std::make_shared<std::size_t>(0);
  auto library = testsupport::BackupSampleLibrary::make({.photoCount = 1, .livePhotoCount = 0, .videoCount = 1});
  auto& video = library.items.back().resources.front();
  video.content =
      BackupContentSource::generated(byteCount, [largestPiece](std::uint64_t offset, std::span<std::uint8_t> into) {
        *largestPiece = std::max(*largestPiece, into.size());
        testsupport::BackupSampleLibrary::fill(8, offset, into);
      });
  const auto written = writer->writeCommit(library);
  ASSERT_TRUE(written);
  EXPECT_EQ(*largestPiece, 16u * 1024 * 1024);
  const auto* resource = written->resource(video.identifier);
  ASSERT_NE(resource, nullptr);
  EXPECT_EQ(resource->partFiles.size(), 3u);
  EXPECT_EQ(resource->plaintextSHA256, platform::SHA256::digest(expectedContents(library).at(video.identifier)));
}

TEST(BackupPackageWriter, ALibraryTheManifestRefusesWritesNoFile) {
  using RecordError = format::BackupManifestRecordV1Error;
  const struct {
    std::string_view name;
    std::function<void(BackupLibrarySnapshot&)> spoil;
    Failure expected;
  } cases[] = {
      {"membership of an unknown album", [](auto& library) { library.memberships.front().albumIdentifier = {9}; },
       RecordError::missingReference},
      {"empty resource", [](auto& library) { library.items[0].resources[0].content = BackupContentSource(); },
       RecordError::invalidValue},
      {"folders in a ring",
       [](auto& library) { library.folders[0].parentFolderIdentifier = library.folders[1].identifier; },
       RecordError::invalidRelationship},
      {"missing content file",
       [](auto& library) { library.items[0].resources[0].content = BackupContentSource::file("/nonexistent/x"); },
       Error::contentUnavailable},
  };
  for (const auto& test : cases) {
    const testsupport::TemporaryDirectory directory;
    auto writer = createWithRecoveryKey(directory / "Library.galdrine");
    const auto before = filesUnder(directory / "Library.galdrine");
    auto library = testsupport::BackupSampleLibrary::make({});
    test.spoil(library);
    EXPECT_EQ(writer.writeCommit(library).error(), test.expected) << test.name;
    EXPECT_EQ(filesUnder(directory / "Library.galdrine"), before) << test.name;
  }
}

// A name that is taken when a file is published stops the commit there: what was written before
// stays unreferenced, the staged file is gone, and nothing after it is written. Two packages
// made from one seed draw the same names, so one shows where the other will write.
TEST(BackupPackageWriter, ATakenNameStopsTheCommitAtThatFile) {
  const testsupport::TemporaryDirectory twin;
  auto model = createWithRecoveryKey(twin / "Library.galdrine");
  const auto library = testsupport::BackupSampleLibrary::make({});
  const auto planned = model.writeCommit(library);
  ASSERT_TRUE(planned);
  const struct {
    fs::path file;
    std::vector<std::string> unwritten;  // directories that stay empty
  } cases[] = {
      {planned->manifestRootFile, {"snapshots", "commits", "heads"}},
      {planned->snapshotFile, {"commits", "heads"}},
      {planned->commitFile, {"heads"}},
  };
  for (const auto& test : cases) {
    const testsupport::TemporaryDirectory directory;
    const fs::path root = directory / "Library.galdrine";
    auto writer = createWithRecoveryKey(root);
    testsupport::FileFixtures::makeDirectory(root / fs::relative(test.file, twin / "Library.galdrine"));
    EXPECT_EQ(writer.writeCommit(library).error(), Failure(platform::FileError{EEXIST})) << test.file;
    EXPECT_TRUE(writer.commits().empty());
    EXPECT_TRUE(fs::is_empty(root / "tmp"));
    for (const auto& name : test.unwritten) EXPECT_TRUE(fs::is_empty(root / name)) << name;
  }
}

}  // namespace

}  // namespace galdrine::writer
