#include "GaldrineFixtureProducer/GaldrineFixtureProducer.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"
#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrineCore/GaldrinePrototypeFormatHeader.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1.hpp"
#include "GaldrineFixtureProducer/FixtureProducerBytes.hpp"
#include "GaldrineFixtureProducer/FixtureProducers.hpp"
#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"
#include "GaldrinePlatform/GaldrinePlatformFiles.hpp"
#include "GaldrineRecoveryCore/FixtureKind.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

namespace {

using Error = GaldrineFixtureProducerError;
using Seeds = GaldrineFixtureProducerSeeds;

// ProducedFixture is one fixture of the set as the index lists it.
struct ProducedFixture {
  std::string_view identifier;
  FixtureKind kind;
  std::string_view fileName;
  FixtureProducers::Document (*document)(const Seeds&, const FixturePackage&);
};

// The set: one fixture of each kind, in the order of the kinds, so a kind is its own position. The prototype header is no
// JSON document built here, so it has no producer of its own.
constexpr std::array<ProducedFixture, 5> producedFixtures{{
    {"graph", FixtureKind::productionGraphV1, "graph-v1.json", FixtureProducers::graphFixture},
    {"golden", FixtureKind::productionGoldenV1, "golden-v1.json", FixtureProducers::goldenFixture},
    {"key-envelopes", FixtureKind::productionKeyEnvelopesV1, "key-envelopes-v1.json",
     FixtureProducers::keyEnvelopeSetFixture},
    {"payload", FixtureKind::productionPayloadV1, "payload-v1.json", FixtureProducers::payloadFixture},
    {"prototype-header", FixtureKind::prototypeHeaderV0, "prototype-header-v0.json", nullptr},
}};
static_assert([] {
  for (std::size_t position = 0; position < producedFixtures.size(); ++position) {
    if (static_cast<std::size_t>(producedFixtures[position].kind) != position) return false;
  }
  return true;
}());

// documentText is the one form of every JSON file of the set: sorted keys, two-space
// indentation, raw UTF-8, and one final line feed.
[[nodiscard]] Bytes documentText(const nlohmann::json& document) {
  return GaldrineByteText::bytes(document.dump(2) + "\n");
}

[[nodiscard]] std::expected<Bytes, Error> prototypeHeaderText() {
  const GaldrinePrototypeFormatHeader header{std::string(GaldrinePrototypeFormatHeader::expectedMagic), 0};
  const auto json = header.encodeJSON();
  if (!json) return std::unexpected(Error::materialRefused);
  return GaldrineByteText::bytes(*json + "\n");
}

[[nodiscard]] std::expected<Bytes, Error> fixtureText(const ProducedFixture& fixture, const Seeds& seeds,
                                                      const FixturePackage& package) {
  if (fixture.document == nullptr) return prototypeHeaderText();
  const auto document = fixture.document(seeds, package);
  if (!document) return std::unexpected(document.error());
  return documentText(*document);
}

[[nodiscard]] Bytes indexText(const std::vector<GaldrineProducedFixtureFile>& files) {
  nlohmann::json entries = nlohmann::json::array();
  for (std::size_t index = 0; index < producedFixtures.size(); ++index) {
    const ProducedFixture& fixture = producedFixtures[index];
    entries.push_back({{"identifier", fixture.identifier},
                       {"kind", rawValue(fixture.kind)},
                       {"relativePath", fixture.fileName},
                       {"sha256", GaldrineByteText::lowerHex(GaldrinePlatformSHA256::digest(files[index].bytes))}});
  }
  return documentText({{"schemaIdentifier", GaldrineRecoveryFixtureVerifier::indexSchemaIdentifier},
                       {"schemaVersion", GaldrineRecoveryFixtureVerifier::indexSchemaVersion},
                       {"fixtures", std::move(entries)}});
}

[[nodiscard]] std::expected<void, Error> writeNewFile(const std::filesystem::path& url, ByteView bytes) {
  auto file = GaldrineFileDescriptor::open(url, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  if (!file || !GaldrinePlatformFiles::writeAll(file->get(), bytes) || !GaldrinePlatformFiles::synchronizeFile(file->get()) ||
      !file->close())
    return std::unexpected(Error::outputFailed);
  return {};
}

}  // namespace

namespace FixtureProducers {

std::expected<FixturePackage, Error> package() {
  const Bytes packageIdentifier = FixtureProducerBytes::identifier("package");
  const auto header = GaldrineBackupFormatHeaderV1::make(packageIdentifier);
  if (!header) return std::unexpected(Error::materialRefused);
  auto headerBytes = header->encoded();
  if (!headerBytes) return std::unexpected(Error::materialRefused);
  return FixturePackage{packageIdentifier, FixtureProducerBytes::identifier("library-domain"), std::move(*headerBytes)};
}

std::expected<Bytes, Error> sealedFrame(ByteView plaintext, ByteView key, GaldrineBackupAADDomainV1 domain,
                                        const FixturePackage& package, ByteView artifactIdentifier,
                                        std::uint64_t ordinal, std::int64_t maximumPlaintextByteCount, ByteView nonce) {
  const auto data = GaldrineBackupAuthenticatedDataV1::make(domain, package.packageIdentifier,
                                                            package.libraryDomainIdentifier, artifactIdentifier, ordinal,
                                                            std::nullopt);
  if (!data) return std::unexpected(Error::materialRefused);
  const auto encodedData = data->encoded();
  if (!encodedData) return std::unexpected(Error::materialRefused);
  auto frame =
      GaldrineAESGCMFrameV1::sealDeterministicFixture(plaintext, key, *encodedData, maximumPlaintextByteCount, nonce);
  if (!frame) return std::unexpected(Error::materialRefused);
  return std::move(*frame);
}

}  // namespace FixtureProducers

namespace GaldrineFixtureProducer {

std::expected<GaldrineProducedFixtureFile, Error> fixtureFile(FixtureKind kind, const Seeds& seeds) {
  const auto package = FixtureProducers::package();
  if (!package) return std::unexpected(package.error());
  const ProducedFixture& fixture = producedFixtures[static_cast<std::size_t>(kind)];
  auto text = fixtureText(fixture, seeds, *package);
  if (!text) return std::unexpected(text.error());
  return GaldrineProducedFixtureFile{std::string(fixture.fileName), std::move(*text)};
}

std::expected<std::vector<GaldrineProducedFixtureFile>, Error> fixtureFiles(const Seeds& seeds) {
  std::vector<GaldrineProducedFixtureFile> files;
  for (const ProducedFixture& fixture : producedFixtures) {
    auto file = fixtureFile(fixture.kind, seeds);
    if (!file) return std::unexpected(file.error());
    files.push_back(std::move(*file));
  }
  Bytes index = indexText(files);
  files.push_back({std::string(indexFileName), std::move(index)});
  return files;
}

std::expected<void, Error> produce(const std::filesystem::path& directory, const Seeds& seeds) {
  const auto files = fixtureFiles(seeds);
  if (!files) return std::unexpected(files.error());
  if (::mkdir(directory.c_str(), 0755) != 0) return std::unexpected(Error::outputFailed);
  for (const GaldrineProducedFixtureFile& file : *files) {
    if (auto written = writeNewFile(directory / file.name, file.bytes); !written) return written;
  }
  return {};
}

}  // namespace GaldrineFixtureProducer
