#include "format/sealing/AESGCMFrameV1.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "format/cbor/DeterministicCBOR.hpp"
#include "platform/AESGCM.hpp"
#include "platform/Random.hpp"

namespace galdrine::format {

namespace {

using Error = AESGCMFrameV1Error;
using Failure = AESGCMFrameV1Failure;
using AESGCMFrameV1::Nonce;
using AESGCMFrameV1::nonceByteCount;
using AESGCMFrameV1::tagByteCount;

enum FrameKey : std::uint64_t {
  schemaKey = 0,
  algorithmKey = 1,
  nonceKey = 2,
  ciphertextKey = 3,
  tagKey = 4,
  plaintextByteCountKey = 5,
};
constexpr std::uint64_t frameKeyCount = 6;

enum MajorType : std::uint8_t {
  unsignedMajorType = 0,
  byteStringMajorType = 2,
  textStringMajorType = 3,
  mapMajorType = 5
};

std::unexpected<Error> refuse(Error error) { return std::unexpected(error); }

std::expected<void, Error> checkCommonInput(ByteView key, ByteView authenticatedData,
                                            std::int64_t maximumPlaintextByteCount) {
  if (key.size() != AESGCMFrameV1::keyByteCount) return refuse(Error::invalidKeyByteCount());
  if (authenticatedData.empty()) return refuse(Error::emptyAuthenticatedData());
  // Read as unsigned, a negative limit is above the largest one.
  if (static_cast<std::uint64_t>(maximumPlaintextByteCount) > AESGCMFrameV1::largestPlaintextLimit)
    return refuse(Error::invalidPlaintextLimit());
  return {};
}

// ---- Sealing ----

// LaidOutFrame is the canonical encoding of a frame with room left for the ciphertext and
// the tag, so that the cipher writes them in place and the payload is never copied.
struct LaidOutFrame {
  Bytes bytes;
  std::size_t ciphertextOffset;
  std::size_t tagOffset;
};

void appendText(Bytes& output, std::string_view text) {
  DeterministicCBOR::appendHead(output, textStringMajorType, text.size());
  output.insert(output.end(), text.begin(), text.end());
}

// layOutFrame writes the six keys in ascending order, exactly as the codec encodes the map.
LaidOutFrame layOutFrame(ByteView nonce, std::size_t plaintextByteCount) {
  using DeterministicCBOR::appendHead;
  LaidOutFrame frame{{}, 0, 0};
  Bytes& bytes = frame.bytes;
  appendHead(bytes, mapMajorType, frameKeyCount);
  appendHead(bytes, unsignedMajorType, schemaKey);
  appendText(bytes, AESGCMFrameV1::schemaIdentifier);
  appendHead(bytes, unsignedMajorType, algorithmKey);
  appendText(bytes, AESGCMFrameV1::algorithmName);
  appendHead(bytes, unsignedMajorType, nonceKey);
  appendHead(bytes, byteStringMajorType, nonce.size());
  bytes.insert(bytes.end(), nonce.begin(), nonce.end());
  appendHead(bytes, unsignedMajorType, ciphertextKey);
  appendHead(bytes, byteStringMajorType, plaintextByteCount);
  constexpr std::size_t largestTrailerByteCount =
      2 + tagByteCount + 1 + 9;  // tag key and head, tag, count key and head
  bytes.reserve(bytes.size() + plaintextByteCount + largestTrailerByteCount);
  frame.ciphertextOffset = bytes.size();
  bytes.resize(bytes.size() + plaintextByteCount);
  appendHead(bytes, unsignedMajorType, tagKey);
  appendHead(bytes, byteStringMajorType, tagByteCount);
  frame.tagOffset = bytes.size();
  bytes.resize(bytes.size() + tagByteCount);
  appendHead(bytes, unsignedMajorType, plaintextByteCountKey);
  appendHead(bytes, unsignedMajorType, plaintextByteCount);
  return frame;
}

// ---- Opening ----

struct FrameFields {
  ByteView nonce;
  ByteView ciphertext;
  ByteView tag;
  std::uint64_t plaintextByteCount;
};

// The key set was checked first, so every lookup finds its key.
const CBORBorrowedValue& field(const CBORBorrowedValue& frame, std::uint64_t key) { return *frame.find(key); }

std::expected<void, Error> requireText(const CBORBorrowedValue& frame, std::uint64_t key, std::string_view expected,
                                       Error mismatch) {
  const auto text = field(frame, key).asTextString();
  if (!text) return refuse(Error::invalidFrameFieldType(key));
  if (*text != expected) return refuse(mismatch);
  return {};
}

std::expected<ByteView, Error> byteStringField(const CBORBorrowedValue& frame, std::uint64_t key) {
  const auto bytes = field(frame, key).asByteString();
  if (!bytes) return refuse(Error::invalidFrameFieldType(key));
  return *bytes;
}

// readFields checks the structure, in the frame's order, before anything is decrypted.
std::expected<FrameFields, Error> readFields(const CBORBorrowedValue& frame) {
  if (!frame.hasKeysZeroThrough(frameKeyCount - 1)) return refuse(Error::invalidFrameFieldSet());
  if (auto checked = requireText(frame, schemaKey, AESGCMFrameV1::schemaIdentifier, Error::unsupportedFrameSchema());
      !checked)
    return std::unexpected(checked.error());
  if (auto checked = requireText(frame, algorithmKey, AESGCMFrameV1::algorithmName, Error::unsupportedAlgorithm());
      !checked)
    return std::unexpected(checked.error());
  const auto nonce = byteStringField(frame, nonceKey);
  if (!nonce) return std::unexpected(nonce.error());
  if (nonce->size() != nonceByteCount) return refuse(Error::invalidNonceByteCount());
  const auto ciphertext = byteStringField(frame, ciphertextKey);
  if (!ciphertext) return std::unexpected(ciphertext.error());
  const auto tag = byteStringField(frame, tagKey);
  if (!tag) return std::unexpected(tag.error());
  if (tag->size() != tagByteCount) return refuse(Error::authenticationFailed());
  const auto plaintextByteCount = field(frame, plaintextByteCountKey).asUnsigned();
  if (!plaintextByteCount) return refuse(Error::invalidFrameFieldType(plaintextByteCountKey));
  return FrameFields{*nonce, *ciphertext, *tag, *plaintextByteCount};
}

}  // namespace

namespace AESGCMFrameV1 {

std::expected<Nonce, AESGCMFrameV1Error> NonceSource::next() const {
  Nonce nonce{};
  if (fixed_) {
    if (fixed_->size() != nonceByteCount) return refuse(Error::invalidNonceByteCount());
    std::ranges::copy(*fixed_, nonce.begin());
    return nonce;
  }
  if (platform::Random::fill(nonce) != 0) return refuse(Error::authenticationFailed());
  return nonce;
}

// The nonce is taken only once the input has passed its checks, so a refused seal draws
// nothing from the random source.
std::expected<Bytes, AESGCMFrameV1Failure> seal(ByteView plaintext, ByteView key, ByteView authenticatedData,
                                                std::int64_t maximumPlaintextByteCount,
                                                const NonceSource& nonceSource) {
  if (auto checked = checkCommonInput(key, authenticatedData, maximumPlaintextByteCount); !checked)
    return std::unexpected(Failure(checked.error()));
  if (maximumPlaintextByteCount < 0 || std::cmp_greater(plaintext.size(), maximumPlaintextByteCount))
    return std::unexpected(Failure(Error::plaintextLimitExceeded()));
  const std::expected<Nonce, Error> nonce = nonceSource.next();
  if (!nonce) return std::unexpected(Failure(nonce.error()));
  LaidOutFrame frame = layOutFrame(*nonce, plaintext.size());
  const std::span<std::uint8_t> bytes(frame.bytes);
  if (!platform::AESGCM::seal(key, *nonce, authenticatedData, plaintext,
                              bytes.subspan(frame.ciphertextOffset, plaintext.size()),
                              bytes.subspan(frame.tagOffset, tagByteCount)))
    return std::unexpected(Failure(Error::authenticationFailed()));
  return std::move(frame.bytes);
}

std::expected<Bytes, AESGCMFrameV1Error> open(ByteView frame, ByteView key, ByteView authenticatedData,
                                              std::int64_t maximumPlaintextByteCount) {
  if (auto checked = checkCommonInput(key, authenticatedData, maximumPlaintextByteCount); !checked)
    return std::unexpected(checked.error());
  // Views into `frame`: the ciphertext is read where it lies, never copied.
  const auto decoded = DeterministicCBOR::decodeBorrowed(frame, CBORLimits::sealedFrame(maximumPlaintextByteCount));
  if (!decoded) return refuse(Error::malformedFrame());  // the codec's reason stays below this edge
  const auto fields = readFields(*decoded);
  if (!fields) return std::unexpected(fields.error());
  if (std::cmp_greater(fields->plaintextByteCount, maximumPlaintextByteCount))
    return refuse(Error::plaintextLengthMismatch());
  if (fields->ciphertext.size() != fields->plaintextByteCount) return refuse(Error::plaintextLengthMismatch());
  // Sized once from the declared count, which equals the ciphertext's, so the decrypted length
  // cannot differ from it; the cipher zeroes the buffer when the tag does not verify.
  Bytes plaintext(fields->ciphertext.size());
  if (!platform::AESGCM::open(key, fields->nonce, authenticatedData, fields->ciphertext, fields->tag, plaintext))
    return refuse(Error::authenticationFailed());
  return plaintext;
}

}  // namespace AESGCMFrameV1

}  // namespace galdrine::format
