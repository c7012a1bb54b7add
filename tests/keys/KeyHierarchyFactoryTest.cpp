#include <gtest/gtest.h>

#include <vector>

#include "keys/KeyHierarchyFactory.hpp"

namespace galdrine::keys {

namespace {

using Error = KeyMaterialError;

// A scripted source: counts each draw, numbers its bytes so that no two draws are equal, and
// can fail or misbehave at a chosen draw.
struct ScriptedSource {
  std::vector<std::size_t> requestedCounts;
  std::size_t failingDraw = SIZE_MAX;
  Error failure = Error::randomGenerationFailed(-7);
  std::size_t shortDraw = SIZE_MAX;
  bool repeating = false;

  KeyHierarchyFactory factory() {
    return KeyHierarchyFactory([this](std::size_t count) -> std::expected<Bytes, Error> {
      const std::size_t draw = requestedCounts.size();
      requestedCounts.push_back(count);
      if (draw == failingDraw) return std::unexpected(failure);
      Bytes bytes(draw == shortDraw ? count - 1 : count);
      for (std::size_t index = 0; index < bytes.size(); ++index) {
        bytes[index] = static_cast<std::uint8_t>(repeating ? 0x5A : draw * 64 + index);
      }
      return bytes;
    });
  }
};

Bytes keyBytes(const std::shared_ptr<SecretKeyStorage>& storage) {
  const auto bytes = storage->withTemporaryBytes([](ByteView key) { return Bytes(key.begin(), key.end()); });
  return bytes ? *bytes : Bytes{};
}

Bytes drawnBytes(std::size_t draw, std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) bytes[index] = static_cast<std::uint8_t>(draw * 64 + index);
  return bytes;
}

TEST(KeyHierarchyFactory, DrawsTheHierarchyInOrder) {
  ScriptedSource source;
  const auto hierarchy = source.factory().createLibraryHierarchy(LibraryRole::decoy);
  ASSERT_TRUE(hierarchy.has_value());
  EXPECT_EQ(source.requestedCounts, (std::vector<std::size_t>{16, 32, 32, 16}));
  EXPECT_EQ(hierarchy->domain.role, LibraryRole::decoy);
  EXPECT_EQ(Bytes(hierarchy->domain.identifier.bytes().begin(), hierarchy->domain.identifier.bytes().end()), drawnBytes(0, 16));
  EXPECT_EQ(keyBytes(hierarchy->libraryMasterKey.storage()), drawnBytes(1, 32));
  EXPECT_EQ(keyBytes(hierarchy->databaseKey.storage()), drawnBytes(2, 32));
  EXPECT_EQ(Bytes(hierarchy->databaseKeyIdentifier.bytes().begin(), hierarchy->databaseKeyIdentifier.bytes().end()),
            drawnBytes(3, 16));
  EXPECT_NE(hierarchy->libraryMasterKey.storage(), hierarchy->databaseKey.storage());
}

TEST(KeyHierarchyFactory, OtherOperationsDrawWhatTheyNeed) {
  struct DrawCase { std::string_view name; bool (*operation)(const KeyHierarchyFactory&); std::vector<std::size_t> counts; };
  const auto identifier = LibraryDomainIdentifier::make(Bytes(16, 9));
  ASSERT_TRUE(identifier.has_value());
  static LibraryDomainIdentifier given = *identifier;
  const DrawCase cases[] = {
      {"hierarchy with identifier",
       [](const KeyHierarchyFactory& factory) { return factory.createLibraryHierarchy(LibraryRole::primary, given).has_value(); },
       {32, 32, 16}},
      {"domain identifier", [](const KeyHierarchyFactory& factory) { return factory.createLibraryDomainIdentifier().has_value(); }, {16}},
      {"local key identifier", [](const KeyHierarchyFactory& factory) { return factory.createLocalKeyIdentifier().has_value(); }, {16}},
      {"resource key", [](const KeyHierarchyFactory& factory) { return factory.createLocalResourceKey().has_value(); }, {16, 32}},
      {"backup package master key", [](const KeyHierarchyFactory& factory) { return factory.createBackupPackageMasterKey().has_value(); }, {32}},
      {"recovery key", [](const KeyHierarchyFactory& factory) { return factory.createRecoveryKey().has_value(); }, {32}},
  };
  for (const DrawCase& drawCase : cases) {
    ScriptedSource source;
    EXPECT_TRUE(drawCase.operation(source.factory())) << drawCase.name;
    EXPECT_EQ(source.requestedCounts, drawCase.counts) << drawCase.name;
  }
}

TEST(KeyHierarchyFactory, FailsAtTheFirstBadDraw) {
  struct FailCase { std::string_view name; std::size_t failingDraw; std::size_t shortDraw; bool repeating; Error expected; std::size_t draws; };
  const FailCase cases[] = {
      {"identifier source fails", 0, SIZE_MAX, false, Error::randomGenerationFailed(-7), 1},
      {"database key source fails", 2, SIZE_MAX, false, Error::randomGenerationFailed(-7), 3},
      {"short identifier", SIZE_MAX, 0, false, Error::randomGeneratorReturnedWrongByteCount(16, 15), 1},
      {"short master key", SIZE_MAX, 1, false, Error::randomGeneratorReturnedWrongByteCount(32, 31), 2},
      {"short database key identifier", SIZE_MAX, 3, false, Error::randomGeneratorReturnedWrongByteCount(16, 15), 4},
      {"a source that repeats itself", SIZE_MAX, SIZE_MAX, true, Error::duplicateKeyMaterial(), 3},
  };
  for (const FailCase& failCase : cases) {
    ScriptedSource source;
    source.failingDraw = failCase.failingDraw;
    source.shortDraw = failCase.shortDraw;
    source.repeating = failCase.repeating;
    const auto hierarchy = source.factory().createLibraryHierarchy(LibraryRole::primary);
    ASSERT_FALSE(hierarchy.has_value()) << failCase.name;
    EXPECT_EQ(hierarchy.error(), failCase.expected) << failCase.name;
    EXPECT_EQ(source.requestedCounts.size(), failCase.draws) << failCase.name;
  }
}

TEST(KeyHierarchyFactory, SystemSourceGivesDistinctKeys) {
  const KeyHierarchyFactory factory;
  const auto first = factory.createLibraryHierarchy(LibraryRole::primary);
  const auto second = factory.createLibraryHierarchy(LibraryRole::decoy);
  ASSERT_TRUE(first.has_value());
  ASSERT_TRUE(second.has_value());
  EXPECT_NE(keyBytes(first->libraryMasterKey.storage()), keyBytes(first->databaseKey.storage()));
  EXPECT_NE(keyBytes(first->libraryMasterKey.storage()), keyBytes(second->libraryMasterKey.storage()));
  EXPECT_FALSE(first->domain.identifier == second->domain.identifier);
}

}  // namespace

}  // namespace galdrine::keys
