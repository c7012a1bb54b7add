#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "GaldrinePlatform/GaldrineFileURL.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrineRecoveryCore/FixtureFiles.hpp"
#include "GaldrineRecoveryCore/FixtureJSONFields.hpp"
#include "GaldrineRecoveryCore/FixtureKind.hpp"
#include "GaldrineRecoveryCore/FixtureVerification.hpp"

namespace GaldrineRecoveryFixtureVerifier {

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;
using Count = FixtureVerification::Count;

// IndexedFixture is one entry of the index as decoded; nothing of it is checked yet.
struct IndexedFixture {
  std::string identifier;
  FixtureKind kind = FixtureKind::productionGraphV1;
  std::string relativePath;
  std::string sha256;
};

struct FixtureIndex {
  std::string schemaIdentifier;
  std::int64_t schemaVersion = 0;
  std::vector<IndexedFixture> fixtures;
};

[[nodiscard]] std::expected<FixtureIndex, Error> decodeIndex(ByteView bytes) {
  const auto document = FixtureJSON::parse(bytes);
  if (!document) return std::unexpected(Error::invalidIndex);
  bool faulted = false;
  const FixtureJSONFields fields(*document, faulted);
  FixtureIndex index{fields.text("schemaIdentifier"), fields.signedInteger("schemaVersion"), {}};
  for (const FixtureJSONFields& fixture : fields.objects("fixtures")) {
    const std::string identifier = fixture.text("identifier");
    const auto kind = fromRawValue<FixtureKind>(fixture.text("kind"));
    if (!kind) faulted = true;  // a kind this build does not know is a document it cannot decode
    index.fixtures.push_back({identifier, kind.value_or(FixtureKind::productionGraphV1), fixture.text("relativePath"),
                              fixture.text("sha256")});
  }
  if (faulted) return std::unexpected(Error::invalidIndex);
  return index;
}

[[nodiscard]] bool followsIndexRules(const FixtureIndex& index) {
  if (index.schemaIdentifier != indexSchemaIdentifier || index.schemaVersion != indexSchemaVersion) return false;
  if (index.fixtures.size() < minimumIndexFixtureCount || index.fixtures.size() > maximumIndexFixtureCount) return false;
  std::set<std::string> identifiers;
  std::set<std::string> relativePaths;
  for (const IndexedFixture& fixture : index.fixtures) {
    if (!identifiers.insert(fixture.identifier).second || !relativePaths.insert(fixture.relativePath).second) return false;
  }
  return true;
}

// indexDirectory is the parent of the standardised, absolute index location: the only
// directory fixtures are read from.
[[nodiscard]] std::expected<std::filesystem::path, Error> indexDirectory(const std::filesystem::path& url) {
  std::error_code failure;
  const std::filesystem::path absolute = std::filesystem::absolute(url, failure);
  if (failure) return std::unexpected(Error::invalidIndex);
  return GaldrineFileURL::standardized(absolute).parent_path();
}

[[nodiscard]] bool isLowerCaseDigestText(std::string_view text) {
  if (text.size() != 2 * GaldrineSHA256Digest{}.size()) return false;
  for (const char character : text) {
    if (character >= 'A' && character <= 'Z') return false;
  }
  return true;
}

// verifiedDigestBytes checks the index's digest of the file at `url` and gives the bytes it
// hashed.
[[nodiscard]] std::expected<Bytes, Error> verifiedDigestBytes(const IndexedFixture& fixture,
                                                             const std::filesystem::path& url) {
  if (!isLowerCaseDigestText(fixture.sha256)) return std::unexpected(Error::invalidFixture);
  const std::size_t bound = fixture.kind == FixtureKind::prototypeHeaderV0 ? maximumPrototypeFixtureByteCount
                                                                           : maximumDigestPassByteCount;
  auto bytes = FixtureFiles::readBoundedRegularFile(url, bound);
  if (!bytes) return std::unexpected(bytes.error());
  if (GaldrineByteText::lowerHex(GaldrinePlatformSHA256::digest(*bytes)) != fixture.sha256)
    return std::unexpected(Error::invalidFixture);
  return std::move(*bytes);
}

// verifyByKind verifies the hashed bytes as their kind's own verification would read them: a
// file above the kind's bound is refused as that read would refuse it.
[[nodiscard]] Count verifyByKind(FixtureKind kind, ByteView bytes) {
  const auto withinBound = [&](std::size_t bound) { return bytes.size() <= bound; };
  switch (kind) {
    case FixtureKind::productionGraphV1:
      if (!withinBound(maximumGraphFixtureByteCount)) break;
      return FixtureVerification::verifyGraph(bytes);
    case FixtureKind::productionGoldenV1:
      if (!withinBound(maximumFixtureByteCount)) break;
      return FixtureVerification::verifyGolden(bytes);
    case FixtureKind::productionKeyEnvelopesV1:
      if (!withinBound(maximumFixtureByteCount)) break;
      return FixtureVerification::verifyKeyEnvelopeSet(bytes);
    case FixtureKind::productionPayloadV1:
      if (!withinBound(maximumFixtureByteCount)) break;
      return FixtureVerification::verifyPayload(bytes);
    case FixtureKind::prototypeHeaderV0:
      if (!withinBound(maximumPrototypeFixtureByteCount)) break;
      return FixtureVerification::verifyPrototypeHeader(bytes);
  }
  return std::unexpected(Error::invalidFixture);
}

[[nodiscard]] Count verifyIndexedFixture(const IndexedFixture& fixture, const std::filesystem::path& base) {
  const auto url = FixtureFiles::fixtureURL(base, fixture.relativePath);
  if (!FixtureFiles::validIdentifier(fixture.identifier) || !url) return std::unexpected(Error::invalidFixturePath);
  const auto bytes = verifiedDigestBytes(fixture, *url);
  if (!bytes) return std::unexpected(bytes.error());
  return verifyByKind(fixture.kind, *bytes);
}

[[nodiscard]] Count verifyFile(const std::filesystem::path& url, std::size_t bound, Count (*verify)(ByteView)) {
  const auto bytes = FixtureFiles::readBoundedRegularFile(url, bound);
  if (!bytes) return std::unexpected(bytes.error());
  return verify(*bytes);
}

}  // namespace

std::expected<GaldrineRecoveryFixtureVerificationResult, Error> verifyFixtureIndex(const std::filesystem::path& url) {
  const auto bytes = FixtureFiles::readBoundedRegularFile(url, maximumIndexByteCount);
  if (!bytes) return std::unexpected(Error::invalidIndex);
  const auto index = decodeIndex(*bytes);
  if (!index) return std::unexpected(index.error());
  if (!followsIndexRules(*index)) return std::unexpected(Error::invalidIndex);
  const auto base = indexDirectory(url);
  if (!base) return std::unexpected(base.error());

  GaldrineRecoveryFixtureVerificationResult result;
  for (const IndexedFixture& fixture : index->fixtures) {
    const auto count = verifyIndexedFixture(fixture, *base);
    if (!count) return std::unexpected(count.error());
    result.productionVectorCount += *count;
  }
  result.fixtureCount = static_cast<std::int64_t>(index->fixtures.size());
  return result;
}

std::expected<std::int64_t, Error> verifyGoldenFixture(const std::filesystem::path& url) {
  return verifyFile(url, maximumFixtureByteCount, FixtureVerification::verifyGolden);
}

std::expected<std::int64_t, Error> verifyKeyEnvelopeSetFixture(const std::filesystem::path& url) {
  return verifyFile(url, maximumFixtureByteCount, FixtureVerification::verifyKeyEnvelopeSet);
}

std::expected<std::int64_t, Error> verifyPayloadFixture(const std::filesystem::path& url) {
  return verifyFile(url, maximumFixtureByteCount, FixtureVerification::verifyPayload);
}

std::expected<std::int64_t, Error> verifyGraphFixture(const std::filesystem::path& url) {
  return verifyFile(url, maximumGraphFixtureByteCount, FixtureVerification::verifyGraph);
}

}  // namespace GaldrineRecoveryFixtureVerifier
