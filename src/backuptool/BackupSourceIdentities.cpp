#include "backuptool/BackupSourceIdentities.hpp"

#include <utility>

#include "platform/HKDF.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::backuptool {

namespace {

using Error = BackupSourceIdentitiesError;

constexpr std::size_t keyByteCount = 32;
constexpr std::string_view keyInfo = "galdrine-backup/source-identity-key/v1";

[[nodiscard]] std::string_view labelOf(BackupSourceIdentities::Kind kind) {
  switch (kind) {
    case BackupSourceIdentities::Kind::folder:
      return "galdrine-backup/folder/v1";
    case BackupSourceIdentities::Kind::album:
      return "galdrine-backup/album/v1";
    case BackupSourceIdentities::Kind::item:
      return "galdrine-backup/item/v1";
    case BackupSourceIdentities::Kind::resource:
      return "galdrine-backup/resource/v1";
  }
  std::unreachable();
}

}  // namespace

BackupSourceIdentities::~BackupSourceIdentities() { platform::SecureMemory::wipe(key_); }

std::expected<BackupSourceIdentities, Error> BackupSourceIdentities::make(ByteView bpmk) {
  if (bpmk.size() != keyByteCount) return std::unexpected(Error::invalidKey);
  Bytes key(keyByteCount);
  if (!platform::HKDF::deriveSHA256(bpmk, {}, ByteText::view(keyInfo), key)) {
    return std::unexpected(Error::derivationFailed);  // the platform zeroed the output
  }
  return BackupSourceIdentities(std::move(key));
}

std::expected<format::BackupIdentifierV1, Error> BackupSourceIdentities::identifier(
    Kind kind, std::string_view relativePath) const {
  // The label is followed by a zero byte, which no label holds, so no path can pass for another kind.
  const std::string_view label = labelOf(kind);
  Bytes info;
  info.reserve(label.size() + 1 + relativePath.size());
  info.insert(info.end(), label.begin(), label.end());
  info.push_back(0);
  info.insert(info.end(), relativePath.begin(), relativePath.end());
  format::BackupIdentifierV1 identifier{};
  if (!platform::HKDF::deriveSHA256(key_, {}, info, identifier)) return std::unexpected(Error::derivationFailed);
  return identifier;
}

}  // namespace galdrine::backuptool
