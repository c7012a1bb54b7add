#pragma once
// GaldrineBackupContentSourceV1 says where a resource's bytes come from: a buffer in memory, a
// file on disk, a generator that computes any piece on demand, or "retained", which keeps the
// payload that the commit being built on already stores for that resource. A source is a cheap
// value: copies share the buffer or the generator. Nothing is read until the writer opens it.
//
// GaldrineBackupContentReaderV1 reads an opened source front to back in pieces the caller sizes,
// so a file of any length is never held whole. It proves at the end that the source still had
// the length it had when opened: a file that grew, shrank or was swapped in between is
// contentChanged, never a payload of mixed content.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <variant>

#include "GaldrineBackupWriter/GaldrineBackupWriterV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrineFileDescriptor.hpp"

class GaldrineBackupContentSourceV1 {
 public:
  // A generator writes the bytes that start at `offset` over all of `into`; the same offset
  // must always give the same bytes.
  using Generator = std::function<void(std::uint64_t offset, std::span<std::uint8_t> into)>;

  // The default source is an empty buffer (which no resource may have: the manifest refuses it).
  GaldrineBackupContentSourceV1() : content_(std::make_shared<const Bytes>()) {}

  [[nodiscard]] static GaldrineBackupContentSourceV1 bytes(Bytes content);
  // file reads the regular file at `path` when the writer needs it; a symbolic link to a
  // regular file is followed, since the file is the caller's own and not part of a package.
  [[nodiscard]] static GaldrineBackupContentSourceV1 file(std::filesystem::path path);
  [[nodiscard]] static GaldrineBackupContentSourceV1 generated(std::uint64_t byteCount, Generator generator);
  [[nodiscard]] static GaldrineBackupContentSourceV1 retained();

  [[nodiscard]] bool isRetained() const { return std::holds_alternative<Retained>(content_); }

 private:
  friend class GaldrineBackupContentReaderV1;
  struct Retained {};
  struct Generated {
    std::uint64_t byteCount;
    Generator generator;
  };
  using Content = std::variant<std::shared_ptr<const Bytes>, std::filesystem::path, Generated, Retained>;

  explicit GaldrineBackupContentSourceV1(Content content) : content_(std::move(content)) {}

  Content content_;
};

class GaldrineBackupContentReaderV1 {
 public:
  // open makes a source readable and learns its length: a file must open and be a regular file
  // (contentUnavailable). A retained source has no bytes of its own and is contentUnavailable.
  [[nodiscard]] static std::expected<GaldrineBackupContentReaderV1, GaldrineBackupWriterV1Error> open(
      const GaldrineBackupContentSourceV1& source);

  [[nodiscard]] std::uint64_t byteCount() const { return byteCount_; }
  [[nodiscard]] std::uint64_t position() const { return position_; }

  // read fills `into` with the next bytes. Asking past the length found at opening, or a file
  // that ends early, is contentChanged; a failed read is contentUnavailable.
  [[nodiscard]] std::expected<void, GaldrineBackupWriterV1Error> read(std::span<std::uint8_t> into);
  // finish requires every byte to have been read and the source to hold no more than that:
  // a file that has grown or changed its size since opening is contentChanged.
  [[nodiscard]] std::expected<void, GaldrineBackupWriterV1Error> finish();

 private:
  GaldrineBackupContentReaderV1(GaldrineBackupContentSourceV1 source, GaldrineFileDescriptor file, std::uint64_t byteCount)
      : source_(std::move(source)), file_(std::move(file)), byteCount_(byteCount) {}

  [[nodiscard]] std::expected<void, GaldrineBackupWriterV1Error> readFile(std::span<std::uint8_t> into);

  GaldrineBackupContentSourceV1 source_;
  GaldrineFileDescriptor file_;
  std::uint64_t byteCount_;
  std::uint64_t position_ = 0;
};
