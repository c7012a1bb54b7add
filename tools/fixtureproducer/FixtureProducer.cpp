#include "fixtureproducer/FixtureProducer.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

#include "fixtureproducer/FixtureProducerBytes.hpp"
#include "fixtureproducer/FixtureProducers.hpp"
#include "fixtures/FixtureKind.hpp"
#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "format/header/PrototypeFormatHeader.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = FixtureProducerError;

// ProducedFixture is one fixture of the set as the index lists it.
struct ProducedFixture {
  std::string_view identifier;
  fixtures::FixtureKind kind;
  std::string_view fileName;
  FixtureProducers::Document (*document)(const FixturePackage&);
};

// The set: one fixture of each kind, in the order of the kinds, so a kind is its own position. The prototype header is
// no JSON document built here, so it has no producer of its own.
constexpr std::array<ProducedFixture, 5> producedFixtures{{
    {"graph", fixtures::FixtureKind::productionGraphV1, "graph-v1.json", FixtureProducers::graphFixture},
    {"golden", fixtures::FixtureKind::productionGoldenV1, "golden-v1.json", FixtureProducers::goldenFixture},
    {"key-envelopes", fixtures::FixtureKind::productionKeyEnvelopesV1, "key-envelopes-v1.json",
     FixtureProducers::keyEnvelopeSetFixture},
    {"payload", fixtures::FixtureKind::productionPayloadV1, "payload-v1.json", FixtureProducers::payloadFixture},
    {"prototype-header", fixtures::FixtureKind::prototypeHeaderV0, "prototype-header-v0.json", nullptr},
}};
static_assert([] {
  for (std::size_t position = 0; position < producedFixtures.size(); ++position) {
    if (static_cast<std::size_t>(producedFixtures[position].kind) != position) return false;
  }
  return true;
}());

// documentText is the one form of every JSON file of the set: sorted keys, two-space
// indentation, raw UTF-8, and one final line feed.
[[nodiscard]] Bytes documentText(const nlohmann::json& document) { return ByteText::bytes(document.dump(2) + "\n"); }

[[nodiscard]] std::expected<Bytes, Error> prototypeHeaderText() {
  const format::PrototypeFormatHeader header{std::string(format::PrototypeFormatHeader::expectedMagic), 0};
  const auto json = header.encodeJSON();
  if (!json) return std::unexpected(Error::materialRefused);
  return ByteText::bytes(*json + "\n");
}

[[nodiscard]] std::expected<Bytes, Error> fixtureText(const ProducedFixture& fixture, const FixturePackage& package) {
  if (fixture.document == nullptr) return prototypeHeaderText();
  const auto document = fixture.document(package);
  if (!document) return std::unexpected(document.error());
  return documentText(*document);
}

[[nodiscard]] Bytes indexText(const std::vector<ProducedFixtureFile>& files) {
  nlohmann::json entries = nlohmann::json::array();
  for (std::size_t index = 0; index < producedFixtures.size(); ++index) {
    const ProducedFixture& fixture = producedFixtures[index];
    entries.push_back({{"identifier", fixture.identifier},
                       {"kind", rawValue(fixture.kind)},
                       {"relativePath", fixture.fileName},
                       {"sha256", ByteText::lowerHex(platform::SHA256::digest(files[index].bytes))}});
  }
  return documentText({{"schemaIdentifier", fixtures::RecoveryFixtureVerifier::indexSchemaIdentifier},
                       {"schemaVersion", fixtures::RecoveryFixtureVerifier::indexSchemaVersion},
                       {"fixtures", std::move(entries)}});
}

[[nodiscard]] std::expected<void, Error> writeNewFile(const std::filesystem::path& path, ByteView bytes) {
  auto file = platform::FileDescriptor::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  if (!file || !platform::Files::writeAll(file->get(), bytes) || !platform::Files::synchronizeFile(file->get()) ||
      !file->close())
    return std::unexpected(Error::outputFailed);
  return {};
}

}  // namespace

namespace FixtureProducers {

std::expected<FixturePackage, Error> package() {
  const Bytes packageIdentifier = FixtureProducerBytes::identifier("package");
  const auto header = format::BackupFormatHeaderV1::make(packageIdentifier);
  if (!header) return std::unexpected(Error::materialRefused);
  auto headerBytes = header->encoded();
  if (!headerBytes) return std::unexpected(Error::materialRefused);
  return FixturePackage{packageIdentifier, FixtureProducerBytes::identifier("library-domain"), std::move(*headerBytes)};
}

std::expected<Bytes, Error> sealedFrame(ByteView plaintext, ByteView key, format::BackupAADDomainV1 domain,
                                        const FixturePackage& package, ByteView artifactIdentifier,
                                        std::uint64_t ordinal, std::int64_t maximumPlaintextByteCount, ByteView nonce) {
  const auto data = format::BackupAuthenticatedDataV1::make(
      domain, package.packageIdentifier, package.libraryDomainIdentifier, artifactIdentifier, ordinal, std::nullopt);
  if (!data) return std::unexpected(Error::materialRefused);
  const auto encodedData = data->encoded();
  if (!encodedData) return std::unexpected(Error::materialRefused);
  auto frame = format::AESGCMFrameV1::seal(plaintext, key, *encodedData, maximumPlaintextByteCount,
                                           format::AESGCMFrameV1::NonceSource::fixed(nonce));
  if (!frame) return std::unexpected(Error::materialRefused);
  return std::move(*frame);
}

}  // namespace FixtureProducers

namespace FixtureProducer {

std::expected<ProducedFixtureFile, Error> fixtureFile(fixtures::FixtureKind kind) {
  const auto package = FixtureProducers::package();
  if (!package) return std::unexpected(package.error());
  const ProducedFixture& fixture = producedFixtures[static_cast<std::size_t>(kind)];
  auto text = fixtureText(fixture, *package);
  if (!text) return std::unexpected(text.error());
  return ProducedFixtureFile{std::string(fixture.fileName), std::move(*text)};
}

std::expected<std::vector<ProducedFixtureFile>, Error> fixtureFiles() {
  std::vector<ProducedFixtureFile> files;
  for (const ProducedFixture& fixture : producedFixtures) {
    auto file = fixtureFile(fixture.kind);
    if (!file) return std::unexpected(file.error());
    files.push_back(std::move(*file));
  }
  Bytes index = indexText(files);
  files.push_back({std::string(indexFileName), std::move(index)});
  return files;
}

std::expected<void, Error> produce(const std::filesystem::path& directory) {
  const auto files = fixtureFiles();
  if (!files) return std::unexpected(files.error());
  if (::mkdir(directory.c_str(), 0755) != 0) return std::unexpected(Error::outputFailed);
  for (const ProducedFixtureFile& file : *files) {
    if (auto written = writeNewFile(directory / file.name, file.bytes); !written) return written;
  }
  return {};
}

}  // namespace FixtureProducer

}  // namespace galdrine::fixtureproducer
