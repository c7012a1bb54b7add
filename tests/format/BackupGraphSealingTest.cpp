#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "BackupGraphTestRecords.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupGraphV1Error;
using Reference = BackupArtifactReferenceV1;
namespace Graph = BackupGraphV1;

const Bytes kNonce = filled(12, 0x66);

Reference withFields(const Reference& reference, std::optional<Bytes> identifier, std::uint64_t frameByteCount,
                     std::uint64_t plaintextByteCount, Bytes plaintextSHA256) {
  return take(Reference::make(identifier.value_or(reference.identifier()), frameByteCount, reference.frameSHA256(),
                              plaintextByteCount, std::move(plaintextSHA256)));
}

// frameWithAuthenticatedData seals any plaintext under the authenticated data of a head with
// `identifier`, as a writer with the key could.
Bytes headFrame(const Bytes& plaintext, const Bytes& identifier) {
  const auto data = take(BackupAuthenticatedDataV1::make(BackupAADDomainV1::head, kPackage, kLibrary,
                                                                 identifier, 0, std::nullopt));
  return take(AESGCMFrameV1::seal(plaintext, kKey, take(data.encoded()), 65536));
}

Reference referenceFor(const Bytes& frame, const Bytes& plaintext, const Bytes& identifier) {
  const auto frameDigest = platform::SHA256::digest(frame);
  const auto plaintextDigest = platform::SHA256::digest(plaintext);
  return take(Reference::make(identifier, frame.size(), Bytes(frameDigest.begin(), frameDigest.end()), plaintext.size(),
                              Bytes(plaintextDigest.begin(), plaintextDigest.end())));
}

TEST(BackupGraphSealing, EachObjectOpensAgainstItsReference) {
  const auto sealedHead = take(Graph::sealHead(head(), kPackage, kKey));
  EXPECT_EQ(take(Graph::openHead(sealedHead.frame, sealedHead.reference, kPackage, kLibrary, kKey)), head());
  const auto sealedCommit = take(Graph::sealCommit(commit(), kPackage, kKey));
  EXPECT_EQ(take(Graph::openCommit(sealedCommit.frame, sealedCommit.reference, kPackage, kLibrary, kKey)), commit());
  const auto sealedSnapshot = take(Graph::sealSnapshot(snapshot(), kPackage, kKey));
  EXPECT_EQ(take(Graph::openSnapshot(sealedSnapshot.frame, sealedSnapshot.reference, kPackage, kLibrary, kKey)),
            snapshot());
  const auto sealedRoot = take(Graph::sealManifestRoot(root(), kPackage, kKey));
  EXPECT_EQ(take(Graph::openManifestRoot(sealedRoot.frame, sealedRoot.reference, kPackage, kLibrary, kKey)), root());

  const auto sealedSection = take(Graph::sealManifestSection(section(3), kPackage, kKey));
  const auto& reference = sealedSection.reference;
  EXPECT_EQ(reference.ordinal(), 3u);
  EXPECT_EQ(reference.recordCount(), 2u);
  EXPECT_EQ(reference.firstSortKey(), Bytes{1});
  EXPECT_EQ(reference.lastSortKey(), Bytes{2});
  EXPECT_EQ(reference.decodedPlaintextByteCount(), take(section(3).encoded()).size());
  EXPECT_EQ(take(Graph::openManifestSection(sealedSection.frame, reference, kManifest, kPackage, kLibrary, kKey)),
            section(3));
}

TEST(BackupGraphSealing, FixtureTwinsRepeatTheirFrame) {
  const auto first = take(Graph::sealCommitDeterministicFixture(commit(), kPackage, kKey, kNonce));
  EXPECT_EQ(take(Graph::sealCommitDeterministicFixture(commit(), kPackage, kKey, kNonce)), first);
  EXPECT_NE(take(Graph::sealCommit(commit(), kPackage, kKey)).frame, first.frame);
  EXPECT_EQ(take(Graph::sealManifestSectionDeterministicFixture(section(), kPackage, kKey, kNonce)),
            take(Graph::sealManifestSectionDeterministicFixture(section(), kPackage, kKey, kNonce)));
  EXPECT_EQ(Graph::sealHeadDeterministicFixture(head(), kPackage, kKey, filled(11, 0)).error(), Error::verificationFailed);
}

TEST(BackupGraphSealing, SealingChecksKeyBeforePackage) {
  EXPECT_EQ(Graph::sealHead(head(), kPackage, filled(31, 0)).error(), Error::invalidKey);
  EXPECT_EQ(Graph::sealSnapshot(snapshot(), filled(15, 0), kKey).error(), Error::invalidIdentifier);
  EXPECT_EQ(Graph::sealManifestRoot(root(), filled(15, 0), filled(33, 0)).error(), Error::invalidKey);
}

TEST(BackupGraphSealing, EveryMismatchReadsAsVerificationFailed) {
  const auto sealed = take(Graph::sealHead(head(), kPackage, kKey));
  const Reference& good = sealed.reference;
  Bytes flipped = sealed.frame;
  flipped[flipped.size() / 2] ^= 0x01;
  const auto sealedRoot = take(Graph::sealManifestRoot(root(), kPackage, kKey));
  const auto sealedSection = take(Graph::sealManifestSection(section(), kPackage, kKey));
  using Opening = std::function<bool()>;
  const auto failsHead = [&](ByteView frame, const Reference& expected, ByteView package, ByteView library, ByteView key) {
    const auto opened = Graph::openHead(frame, expected, package, library, key);
    return !opened && opened.error() == Error::verificationFailed;
  };
  const struct {
    std::string_view name;
    Opening fails;
  } cases[] = {
      {"frame length", [&] { return failsHead(sealed.frame, withFields(good, {}, good.frameByteCount() + 1,
                                                                       good.plaintextByteCount(), good.plaintextSHA256()),
                                              kPackage, kLibrary, kKey); }},
      {"frame digest", [&] { return failsHead(flipped, good, kPackage, kLibrary, kKey); }},
      {"plaintext count above the limit",
       [&] { return failsHead(sealed.frame, withFields(good, {}, good.frameByteCount(), 65537, good.plaintextSHA256()),
                              kPackage, kLibrary, kKey); }},
      {"plaintext count", [&] { return failsHead(sealed.frame, withFields(good, {}, good.frameByteCount(),
                                                                          good.plaintextByteCount() - 1,
                                                                          good.plaintextSHA256()),
                                                 kPackage, kLibrary, kKey); }},
      {"plaintext digest", [&] { return failsHead(sealed.frame, withFields(good, {}, good.frameByteCount(),
                                                                           good.plaintextByteCount(), digest(0)),
                                                  kPackage, kLibrary, kKey); }},
      {"key length", [&] { return failsHead(sealed.frame, good, kPackage, kLibrary, filled(31, 0x44)); }},
      {"key", [&] { return failsHead(sealed.frame, good, kPackage, kLibrary, filled(32, 0x45)); }},
      {"package", [&] { return failsHead(sealed.frame, good, filled(16, 0x23), kLibrary, kKey); }},
      {"library domain", [&] { return failsHead(sealed.frame, good, kPackage, filled(16, 0x12), kKey); }},
      {"identifier", [&] { return failsHead(sealed.frame, withFields(good, identifier(2, 0x40), good.frameByteCount(),
                                                                     good.plaintextByteCount(), good.plaintextSHA256()),
                                            kPackage, kLibrary, kKey); }},
      {"domain: a head opened as a commit", [&] {
         return Graph::openCommit(sealed.frame, good, kPackage, kLibrary, kKey).error() == Error::verificationFailed;
       }},
      {"ordinal: a root opened as a section", [&] {
         const auto asSection = take(BackupManifestSectionReferenceV1::make(
             sealedRoot.reference, 0, BackupManifestSectionKindV1::payloadKey,
             BackupManifestCompressionV1::none, 1, Bytes{1}, Bytes{1}, sealedRoot.reference.plaintextByteCount(),
             sealedRoot.reference.plaintextSHA256()));
         return Graph::openManifestSection(sealedRoot.frame, asSection, kManifest, kPackage, kLibrary, kKey).error() ==
                Error::verificationFailed;
       }},
      {"ordinal: a section opened as a root", [&] {
         return Graph::openManifestRoot(sealedSection.frame, sealedSection.reference.artifact(), kPackage, kLibrary, kKey)
                    .error() == Error::verificationFailed;
       }},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(std::string(testCase.name));
    EXPECT_TRUE(testCase.fails());
  }
}

TEST(BackupGraphSealing, EveryBitOfAFrameMatters) {
  const auto sealed = take(Graph::sealHead(head(), kPackage, kKey));
  const Reference& good = sealed.reference;
  for (std::size_t bit = 0; bit < sealed.frame.size() * 8; ++bit) {
    Bytes tampered = sealed.frame;
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    const auto frameDigest = platform::SHA256::digest(tampered);
    // With the reference following the tampered frame, the frame's own authentication decides.
    const auto following = take(Reference::make(good.identifier(), good.frameByteCount(),
                                                Bytes(frameDigest.begin(), frameDigest.end()), good.plaintextByteCount(),
                                                good.plaintextSHA256()));
    const auto opened = Graph::openHead(tampered, following, kPackage, kLibrary, kKey);
    ASSERT_FALSE(opened.has_value()) << "bit " << bit;
    EXPECT_EQ(opened.error(), Error::verificationFailed) << "bit " << bit;
  }
}

TEST(BackupGraphSealing, AuthenticContentHasItsOwnErrors) {
  // A head sealed under another head's identifier: authentic, but not the record expected.
  const Bytes otherHead = take(head().encoded());
  const Bytes foreign = headFrame(otherHead, identifier(9, 0x40));
  EXPECT_EQ(Graph::openHead(foreign, referenceFor(foreign, otherHead, identifier(9, 0x40)), kPackage, kLibrary, kKey)
                .error(),
            Error::verificationFailed);
  EXPECT_EQ(Graph::openDiscoveredHead(foreign, identifier(9, 0x40), kPackage, kLibrary, kKey).error(),
            Error::verificationFailed);
  // An authentic head whose commit reference is its own identifier: the decoder's error stands.
  const Bytes selfReferring = encode(withNested(owned(otherHead), 3, 0, Value::byteString(identifier(1, 0x40))));
  const Bytes frame = headFrame(selfReferring, identifier(1, 0x40));
  EXPECT_EQ(Graph::openHead(frame, referenceFor(frame, selfReferring, identifier(1, 0x40)), kPackage, kLibrary, kKey)
                .error(),
            Error::invalidReference);
  EXPECT_EQ(Graph::openDiscoveredHead(frame, identifier(1, 0x40), kPackage, kLibrary, kKey).error(),
            Error::invalidReference);
}

TEST(BackupGraphSealing, SectionMustMatchEveryFieldOfItsReference) {
  using Kind = BackupManifestSectionKindV1;
  const auto sealed = take(Graph::sealManifestSection(section(0), kPackage, kKey));
  const auto& good = sealed.reference;
  const auto variant = [&](Kind kind, std::uint64_t recordCount, Bytes first, Bytes last) {
    return take(BackupManifestSectionReferenceV1::make(good.artifact(), good.ordinal(), kind, good.compression(),
                                                               recordCount, std::move(first), std::move(last),
                                                               good.decodedPlaintextByteCount(),
                                                               good.decodedPlaintextSHA256()));
  };
  const BackupManifestSectionReferenceV1 mismatches[] = {
      variant(Kind::item, 2, Bytes{1}, Bytes{2}),
      variant(Kind::payloadKey, 3, Bytes{1}, Bytes{2}),
      variant(Kind::payloadKey, 2, Bytes{0}, Bytes{2}),
      variant(Kind::payloadKey, 2, Bytes{1}, Bytes{3}),
  };
  for (const auto& expected : mismatches) {
    EXPECT_EQ(Graph::openManifestSection(sealed.frame, expected, kManifest, kPackage, kLibrary, kKey).error(),
              Error::verificationFailed);
  }
  EXPECT_EQ(Graph::openManifestSection(sealed.frame, good, filled(16, 0x34), kPackage, kLibrary, kKey).error(),
            Error::verificationFailed);
}

TEST(BackupGraphSealing, DiscoveredCommitsAndHeadsCarryTheReferenceSeen) {
  const auto sealed = take(Graph::sealCommit(commit(), kPackage, kKey));
  const auto discovered = take(Graph::openDiscoveredCommit(sealed.frame, identifier(7), kPackage, kLibrary, kKey));
  EXPECT_EQ(discovered.reference(), sealed.reference);
  EXPECT_EQ(discovered.commit(), commit());
  const auto sealedHead = take(Graph::sealHead(head(), kPackage, kKey));
  EXPECT_EQ(take(Graph::openDiscoveredHead(sealedHead.frame, identifier(1, 0x40), kPackage, kLibrary, kKey)).reference(),
            sealedHead.reference);

  const auto error = [&](ByteView frame, ByteView name, ByteView key) {
    return Graph::openDiscoveredCommit(frame, name, kPackage, kLibrary, key).error();
  };
  EXPECT_EQ(error({}, filled(15, 0), kKey), Error::invalidIdentifier);
  EXPECT_EQ(error({}, identifier(7), kKey), Error::verificationFailed);
  EXPECT_EQ(error(filled(66'561, 0), identifier(7), kKey), Error::verificationFailed);
  EXPECT_EQ(error(sealed.frame, identifier(7), filled(31, 0x44)), Error::verificationFailed);
  EXPECT_EQ(error(sealed.frame, identifier(8), kKey), Error::verificationFailed);
  EXPECT_EQ(error(sealedHead.frame, identifier(1, 0x40), kKey), Error::verificationFailed);
  EXPECT_EQ(Graph::openDiscoveredCommit(sealed.frame, identifier(7), kPackage, filled(16, 0), kKey).error(),
            Error::verificationFailed);
}

}  // namespace

}  // namespace galdrine::format
