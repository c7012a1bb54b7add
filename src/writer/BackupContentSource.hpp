#pragma once
// BackupContentSource says where a resource's bytes come from: a file on disk, or a
// generator that computes any piece on demand. A source is a small value; nothing is read
// until the writer opens it.
//
// BackupContentReader reads an opened source front to back in pieces the caller sizes,
// so a file of any length is never held whole. It proves at the end that the source still had
// the length it had when opened: a file that grew, shrank or was swapped in between is
// contentChanged, never a payload of mixed content.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <span>
#include <variant>

#include "platform/Bytes.hpp"
#include "platform/FileDescriptor.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

class BackupContentSource {
 public:
  // A generator writes the bytes that start at `offset` over all of `into`; the same offset
  // must always give the same bytes.
  using Generator = std::function<void(std::uint64_t offset, std::span<std::uint8_t> into)>;

  // The default source gives no bytes (which no resource may have: the manifest refuses it).
  BackupContentSource() : content_(Generated{0, [](std::uint64_t, std::span<std::uint8_t>) {}}) {}

  // file reads the regular file at `filePath` when the writer needs it; a symbolic link to a
  // regular file is followed, since the file is the caller's own and not part of a package.
  [[nodiscard]] static BackupContentSource file(std::filesystem::path filePath);
  [[nodiscard]] static BackupContentSource generated(std::uint64_t byteCount, Generator generator);

 private:
  friend class BackupContentReader;
  struct Generated {
    std::uint64_t byteCount;
    Generator generator;
  };
  using Content = std::variant<std::filesystem::path, Generated>;

  explicit BackupContentSource(Content content) : content_(std::move(content)) {}

  Content content_;
};

class BackupContentReader {
 public:
  // open makes a source readable and learns its length: a file must open and be a regular file
  // (contentUnavailable).
  [[nodiscard]] static std::expected<BackupContentReader, BackupWriterError> open(const BackupContentSource& source);

  [[nodiscard]] std::uint64_t byteCount() const { return byteCount_; }
  [[nodiscard]] std::uint64_t position() const { return position_; }

  // read fills `into` with the next bytes. Asking past the length found at opening, or a file
  // that ends early, is contentChanged; a failed read is contentUnavailable.
  [[nodiscard]] std::expected<void, BackupWriterError> read(std::span<std::uint8_t> into);
  // finish requires every byte to have been read and the source to hold no more than that:
  // a file that has grown or changed its size since opening is contentChanged.
  [[nodiscard]] std::expected<void, BackupWriterError> finish();

 private:
  BackupContentReader(BackupContentSource source, platform::FileDescriptor file, std::uint64_t byteCount)
      : source_(std::move(source)), file_(std::move(file)), byteCount_(byteCount) {}

  [[nodiscard]] std::expected<void, BackupWriterError> readFile(std::span<std::uint8_t> into);

  BackupContentSource source_;
  platform::FileDescriptor file_;
  std::uint64_t byteCount_;
  std::uint64_t position_ = 0;
};

}  // namespace galdrine::writer
