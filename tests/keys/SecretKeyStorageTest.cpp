#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "keys/KeyHandle.hpp"

namespace galdrine::keys {

namespace {

Bytes keyOf(std::uint8_t seed) {
  Bytes key(32);
  for (std::size_t index = 0; index < key.size(); ++index) key[index] = static_cast<std::uint8_t>(seed + index);
  return key;
}

Bytes copyOut(ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }

TEST(SecretKeyStorage, RefusesKeysOfAnotherLength) {
  for (const std::size_t length : {0u, 16u, 31u, 33u, 64u}) {
    EXPECT_EQ(SecretKeyStorage::make(Bytes(length)).error(),
              KeyMaterialError::invalidKeyByteCount(32, static_cast<std::int64_t>(length)));
  }
}

TEST(SecretKeyStorage, InvalidationReachesEveryHandleAndAccess) {
  auto storage = SecretKeyStorage::make(keyOf(1));
  ASSERT_TRUE(storage.has_value());
  const DatabaseKeyHandle handle(*storage);
  const DatabaseKeyHandle copiedHandle = handle;
  const DatabaseKeyAccess access(handle);
  EXPECT_EQ(access.withTemporaryBytes(copyOut), keyOf(1));

  copiedHandle.storage()->invalidate();
  bool called = false;
  const auto afterwards = access.withTemporaryBytes([&called](ByteView) { called = true; });
  EXPECT_EQ(afterwards, std::unexpected(KeyMaterialError::invalidated()));
  EXPECT_FALSE(called);
  EXPECT_EQ(handle.storage()->withTemporaryBytes(copyOut).error(), KeyMaterialError::invalidated());
  handle.storage()->invalidate();  // a second invalidation does nothing
  EXPECT_EQ(DatabaseKeyAccess(nullptr).withTemporaryBytes(copyOut).error(), KeyMaterialError::invalidated());
}

// The caller's function runs outside the lock: taking the lock again inside it would deadlock.
TEST(SecretKeyStorage, RunsTheFunctionOutsideTheLock) {
  auto storage = SecretKeyStorage::make(keyOf(7));
  ASSERT_TRUE(storage.has_value());
  const auto shared = *storage;
  const auto result = shared->withTemporaryBytes([&shared](ByteView outer) {
    const auto inner = shared->withTemporaryBytes(copyOut);
    shared->invalidate();
    return inner == copyOut(outer);
  });
  EXPECT_EQ(result, true);
  EXPECT_EQ(shared->withTemporaryBytes(copyOut).error(), KeyMaterialError::invalidated());
}

// Readers racing an invalidation see either the whole key or `invalidated`, never a torn or
// zeroed key.
TEST(SecretKeyStorage, ReadersRacingAnInvalidationSeeTheKeyOrNothing) {
  auto storage = SecretKeyStorage::make(keyOf(42));
  ASSERT_TRUE(storage.has_value());
  const LocalResourceKeyAccess access(*storage);
  std::atomic<bool> start = false;
  std::atomic<int> torn = 0;
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 4; ++reader) {
    readers.emplace_back([&] {
      while (!start) std::this_thread::yield();
      for (int round = 0; round < 2000; ++round) {
        const auto bytes = access.withTemporaryBytes(copyOut);
        if (bytes && *bytes != keyOf(42)) ++torn;
      }
    });
  }
  start = true;
  access.storage()->invalidate();
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(torn, 0);
  EXPECT_FALSE(access.withTemporaryBytes(copyOut).has_value());
}

}  // namespace

}  // namespace galdrine::keys
