#include "recovery/inspection/RecoveryArtifactFiles.hpp"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "format/graph/BackupGraphV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/package/BoundedDirectoryListing.hpp"
#include "platform/Files.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;
using Fault = platform::BoundedFileReadFault;

constexpr std::size_t identifierHexDigitCount = 32;

[[nodiscard]] Error listingError(const format::BoundedDirectoryListingError& error) {
  return error.code == format::BoundedDirectoryListingError::Code::limitExceeded ? Error::resourceLimitExceeded
                                                                                 : Error::packageUnavailable;
}

// canonicalFileName is the one name a commit or head of `identifier` may have; any other
// extension has none.
[[nodiscard]] std::optional<std::string> canonicalFileName(ByteView identifier, std::string_view fileExtension) {
  std::expected<std::string, format::BackupGraphV1Error> name =
      std::unexpected(format::BackupGraphV1Error::invalidIdentifier);
  if (fileExtension == format::BackupFormatV1::commitFileExtension)
    name = format::BackupGraphV1::commitFileName(identifier);
  if (fileExtension == format::BackupFormatV1::headFileExtension)
    name = format::BackupGraphV1::headFileName(identifier);
  if (!name) return std::nullopt;
  return std::move(*name);
}

// identifierOfName accepts only "<32 lower-case hex digits>.<fileExtension>" in canonical form.
[[nodiscard]] std::optional<Bytes> identifierOfName(std::string_view name, std::string_view fileExtension) {
  const std::size_t suffixByteCount = fileExtension.size() + 1;
  if (name.size() < suffixByteCount || name[name.size() - suffixByteCount] != '.' || !name.ends_with(fileExtension)) {
    return std::nullopt;
  }
  const std::string_view stem = name.substr(0, name.size() - suffixByteCount);
  if (stem.size() != identifierHexDigitCount) return std::nullopt;
  auto identifier = ByteText::parseLowerHex(stem);
  if (!identifier) return std::nullopt;
  const auto canonical = canonicalFileName(*identifier, fileExtension);
  if (!canonical || *canonical != name) return std::nullopt;
  return identifier;
}

[[nodiscard]] Error readFault(const Fault& fault) {
  switch (fault.kind) {
    case Fault::Kind::openFailed:
      return fault.errorNumber == ENOENT || fault.errorNumber == ELOOP ? Error::integrityFailure
                                                                       : Error::packageUnavailable;
    case Fault::Kind::statusFailed:
    case Fault::Kind::readFailed:
      return Error::packageUnavailable;
    case Fault::Kind::notRegularFile:
    case Fault::Kind::sizeOutOfRange:
    case Fault::Kind::sizeChanged:
      return Error::integrityFailure;
  }
  std::unreachable();
}

}  // namespace

namespace RecoveryArtifactFiles {

std::expected<std::vector<Bytes>, Error> artifactIdentifiers(const std::filesystem::path& directory,
                                                             std::string_view fileExtension,
                                                             std::int64_t maximumCount) {
  const auto names = format::BoundedDirectoryListing::names(directory, maximumCount);
  if (!names) return std::unexpected(listingError(names.error()));
  std::vector<Bytes> identifiers;
  identifiers.reserve(names->size());
  for (const std::string& name : *names) {
    auto identifier = identifierOfName(name, fileExtension);
    if (!identifier) return std::unexpected(Error::integrityFailure);
    identifiers.push_back(std::move(*identifier));
  }
  std::ranges::sort(identifiers,
                    [](const Bytes& left, const Bytes& right) { return ByteOrder::precedes(left, right); });
  return identifiers;
}

std::expected<Bytes, Error> readRegularFile(const std::filesystem::path& path, std::int64_t maximumByteCount) {
  if (maximumByteCount < 1) return std::unexpected(Error::integrityFailure);
  auto bytes = platform::Files::readBoundedRegularFile(path, 1, static_cast<std::size_t>(maximumByteCount));
  if (!bytes) return std::unexpected(readFault(bytes.error()));
  return std::move(*bytes);
}

}  // namespace RecoveryArtifactFiles

}  // namespace galdrine::recovery
