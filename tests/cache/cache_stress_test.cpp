// Many threads over one cache: identifiers filed, found, pinned, grown, evicted and removed at the
// same time. At the end every piece of data has been deleted exactly once and the total is exact.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "cache/cache_service.h"
#include "support/random.h"
#include "support/started_library.h"
#include "support/threads.h"
#include "zeb/cache.h"

namespace zeb::cache {
namespace {

struct Piece {
  uint32_t key = 0;
  std::atomic<int> deletions{0};
};

void deletePiece(void* data, int32_t /*survives*/) { ++static_cast<Piece*>(data)->deletions; }

int32_t ordersBefore(void* a, void* b) {
  return static_cast<Piece*>(a)->key < static_cast<Piece*>(b)->key ? 1 : 0;
}

class CacheStressTest : public ::testing::Test {
 protected:
  static constexpr unsigned kThreads = 4;
  static constexpr unsigned kRounds = 3000;
  static constexpr uint32_t kKeys = 50;

  CacheStressTest() {
    for (const ZEBProcTableEntry& entry : cacheService().entries) rows_.push_back(entry.proc);
    std::memcpy(&procs_, rows_.data(), sizeof procs_);
  }

  void client(unsigned index, zeb_test::Random& random) {
    std::deque<Piece>& pieces = pieces_[index];
    for (unsigned round = 0; round < kRounds; ++round) {
      Piece& piece = pieces.emplace_back();
      piece.key = static_cast<uint32_t>(random.below(kKeys));
      useOnce(piece, random);
    }
  }

  void useOnce(Piece& piece, zeb_test::Random& random) {
    ZEBCacheSet* set = random.oneIn(4) ? nullptr : set_;
    ZEBCacheID* id = set != nullptr ? procs_.SearchForID(set, &piece, ZEB_CACHE_FIND_EQUAL)
                                    : procs_.NewCacheID();
    ZEBCacheID* const pinned = id;
    uint64_t stamp = 0;
    if (procs_.MarkNoPurge(id, &stamp, 1) == nullptr) {
      void* held = procs_.Attach(&id, &piece, set, random.between(1, 100000), deletePiece, &stamp);
      if (held != &piece) piece.deletions = 1;  // not adopted, and so deleted here
    } else {
      piece.deletions = 1;
    }
    procs_.Add(id, random.below(1000), &stamp);
    procs_.MarkPurge(pinned);  // which Attach may have replaced
    if (random.oneIn(50)) procs_.RemoveID(set_, &piece, ZEB_CACHE_FIND_AT_LEAST);
    if (random.oneIn(300)) procs_.PurgeAll();
    procs_.Release(id);
  }

  ZEBCacheProcs procs_{};
  std::vector<ZEBProc> rows_;
  std::array<std::deque<Piece>, kThreads> pieces_;
  ZEBCacheSet* set_ = nullptr;
};

TEST_F(CacheStressTest, DeletesEverythingOnceAndCountsExactly) {
  test::StartedLibrary library;
  ASSERT_TRUE(library.started());
  set_ = procs_.NewCacheSet(ordersBefore);
  procs_.AddRefCacheSet(set_);
  zeb_test::runTogether(kThreads, [&](unsigned index) {
    zeb_test::Random random(index + 1);
    client(index, random);
  });
  procs_.DeleteCacheSet(set_);
  finishPurges();
  EXPECT_EQ(procs_.CurrentCacheSize(), 0);
  for (const auto& pieces : pieces_) {
    for (const Piece& piece : pieces) ASSERT_EQ(piece.deletions, 1);
  }
}

}  // namespace
}  // namespace zeb::cache
