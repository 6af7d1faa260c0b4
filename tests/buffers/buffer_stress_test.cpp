// Shared buffers and progress objects under many threads. Nothing here depends on who comes first;
// every count is exact.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <barrier>
#include <cstring>
#include <vector>

#include "base/library_counters.h"
#include "buffers/buffer_client.h"
#include "buffers/progress.h"
#include "buffers/shared_buffer.h"
#include "memory/object_memory.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"
#include "support/threads.h"

namespace zeb::buffers {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;
using zeb_test::runTogether;

constexpr unsigned kThreads = 4;
constexpr int kRounds = 2000;

struct SharedData {
  std::atomic<int64_t> deleted{0};

  static void del(void* data) {
    static_cast<SharedData*>(data)->deleted.fetch_add(1, std::memory_order_relaxed);
  }
};

class BufferStressTest : public testing::Test {
 protected:
  void TearDown() override {
    library_.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
  }

  StartedLibrary library_;
  SharedData data_;
};

TEST_F(BufferStressTest, CountsReferencesExactly) {
  ZEBSharedBuffer* buffer = make(1, &data_, SharedData::del, nullptr, nullptr);
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds; ++i) {
      addReference(*buffer);
      addReference(*buffer);
      release(*buffer);
      release(*buffer);
    }
  });
  EXPECT_EQ(data_.deleted, 0);
  EXPECT_EQ(buffer->references.load(), 1u);
  release(*buffer);
  EXPECT_EQ(data_.deleted, 1);
}

// What each holder wrote is there when the last one, whoever it is, deletes the bytes.
TEST_F(BufferStressTest, DeletesTheBytesOnceAfterAllWereWritten) {
  struct Written {
    std::array<int, kThreads> by{};
    int deletions = 0;

    static void del(void* data) {
      auto* self = static_cast<Written*>(data);
      for (const int mark : self->by) EXPECT_EQ(mark, 7);
      ++self->deletions;
    }
  };
  std::vector<Written> written(kRounds / 4);
  std::vector<ZEBSharedBuffer*> buffers;
  for (Written& each : written) {
    buffers.push_back(make(sizeof each, &each, Written::del, nullptr, nullptr));
    for (unsigned i = 1; i < kThreads; ++i) addReference(*buffers.back());
  }
  runTogether(kThreads, [&](unsigned index) {
    for (ZEBSharedBuffer* buffer : buffers) {
      static_cast<Written*>(buffer->data)->by[index] = 7;
      release(*buffer);
    }
  });
  for (const Written& each : written) EXPECT_EQ(each.deletions, 1);
}

TEST_F(BufferStressTest, MakesAndDropsFromAllThreads) {
  const int64_t blocks = CountingHost::liveBlocks;
  runTogether(kThreads, [&](unsigned index) {
    std::vector<ZEBSharedBuffer*> held;
    for (int i = 0; i < kRounds; ++i) {
      const bool own = i % 3 == 0;
      held.push_back(own ? make(8, nullptr, nullptr, nullptr, nullptr)
                         : make(8, &data_, SharedData::del, nullptr, nullptr));
      if (own) std::memset(held.back()->data, static_cast<int>(index), 8);
      if (held.size() < 20) continue;
      for (ZEBSharedBuffer* buffer : held) release(*buffer);
      held.clear();
    }
    for (ZEBSharedBuffer* buffer : held) release(*buffer);
  });
  EXPECT_EQ(totalOf(counters::sharedBuffer), kRounds * int64_t{kThreads});
  EXPECT_EQ(data_.deleted, kThreads * int64_t{kRounds - (kRounds + 2) / 3});
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
}

TEST_F(BufferStressTest, AsksTheHookOnceForEachTimeABufferIsLetGo) {
  static std::atomic<int64_t> asked;
  asked = 0;
  ZEBSharedBuffer* kept = make(
      1, &data_, SharedData::del,
      [](ZEBSharedBuffer*) -> int32_t {
        asked.fetch_add(1, std::memory_order_relaxed);
        return 1;
      },
      nullptr);
  for (unsigned i = 1; i < kThreads; ++i) addReference(*kept);
  std::barrier together(kThreads);
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds / 4; ++i) {
      release(*kept);
      together.arrive_and_wait();
      addReference(*kept);
      together.arrive_and_wait();
    }
  });
  EXPECT_EQ(asked, kRounds / 4);
  EXPECT_EQ(data_.deleted, 0);
  for (unsigned i = 0; i < kThreads; ++i) release(*kept);
  deleteUnowned(*kept);
  EXPECT_EQ(data_.deleted, 1);
}

// The client side's procs are one table that every thread may find outdated.
TEST_F(BufferStressTest, FetchesTheProcsOnceWhoeverFindsThemOutdated) {
  std::atomic<unsigned> making{kThreads - 1};
  runTogether(kThreads, [&](unsigned index) {
    if (index == 0) {
      while (making.load(std::memory_order_relaxed) != 0) registry::removeInterface("a stranger");
      return;
    }
    for (int i = 0; i < kRounds; ++i) {
      ZEBSharedBuffer* buffer = newClientBuffer(1, &data_, SharedData::del, nullptr, nullptr);
      clientProcs().Release(buffer);
    }
    making.fetch_sub(1, std::memory_order_relaxed);
  });
  EXPECT_EQ(data_.deleted, (kThreads - 1) * int64_t{kRounds});
}

TEST_F(BufferStressTest, CountsProgressExactly) {
  struct Client {
    std::atomic<int64_t> updates{0};
    std::atomic<int64_t> deletions{0};
  } client;
  ZEBProgress* progress = makeObject<ClientProgress>(
      &client,
      [](void* data, uint64_t, uint64_t) -> int32_t {
        static_cast<Client*>(data)->updates.fetch_add(1, std::memory_order_relaxed);
        return 1;
      },
      [](void* data) {
        static_cast<Client*>(data)->deletions.fetch_add(1, std::memory_order_relaxed);
      });
  progress->references.fetch_add(kThreads - 1);
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds; ++i) ASSERT_TRUE(progress->Update(1, 2));
    ASSERT_EQ(client.deletions, 0);
    release(*progress);
  });
  EXPECT_EQ(client.updates, kRounds * int64_t{kThreads});
  EXPECT_EQ(client.deletions, 1);
}

}  // namespace
}  // namespace zeb::buffers
