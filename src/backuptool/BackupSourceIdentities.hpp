#pragma once
// BackupSourceIdentities gives every folder, album, item and resource of a source directory an
// identifier that follows from its path, so that the same file gets the same identifiers in
// every run and an unchanged file keeps its stored payload.
//
// The identifiers are keyed by the package: each is HKDF-SHA-256 of a key derived once from the
// package master key, over the kind and the relative path. A resource identifier stands in the
// clear in a pack segment's entry table, so an unkeyed digest of the path would let anyone
// holding the package test guesses of file names; keyed, it tells nothing without the key.
//
// The value holds the derived key, wipes it when it goes away, and cannot be copied.

#include <cstdint>
#include <expected>
#include <string_view>

#include "format/graph/BackupIdentifierV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::backuptool {

// BackupSourceIdentitiesError is why no identifier could be derived.
enum class BackupSourceIdentitiesError : std::uint8_t {
  invalidKey,        // the package master key is not 32 bytes
  derivationFailed,  // the key derivation of the platform failed
};

class BackupSourceIdentities {
 public:
  enum class Kind : std::uint8_t { folder, album, item, resource };

  // make derives the identity key from `bpmk` (32 bytes, else invalidKey).
  [[nodiscard]] static std::expected<BackupSourceIdentities, BackupSourceIdentitiesError> make(ByteView bpmk);

  BackupSourceIdentities(BackupSourceIdentities&& other) noexcept : key_(std::move(other.key_)) {}
  BackupSourceIdentities& operator=(BackupSourceIdentities&&) = delete;
  BackupSourceIdentities(const BackupSourceIdentities&) = delete;
  BackupSourceIdentities& operator=(const BackupSourceIdentities&) = delete;
  ~BackupSourceIdentities();

  // identifier is the identifier of the `kind` at `relativePath`; distinct kinds of one path
  // get unrelated identifiers.
  [[nodiscard]] std::expected<format::BackupIdentifierV1, BackupSourceIdentitiesError> identifier(
      Kind kind, std::string_view relativePath) const;

 private:
  explicit BackupSourceIdentities(Bytes key) : key_(std::move(key)) {}

  Bytes key_;
};

}  // namespace galdrine::backuptool
