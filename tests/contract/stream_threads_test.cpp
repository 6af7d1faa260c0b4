// Independent streams over the same bytes, each read by a thread of its own.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "contract/sanitizers.h"
#include "contract/stream_library.h"
#include "contract/temporary_folder.h"
#include "support/random.h"
#include "support/threads.h"

namespace contract {
namespace {

constexpr unsigned kThreads = 4;
constexpr int kRounds = kSanitized ? 300 : 3000;

class StreamThreads : public StreamTest {
 protected:
  // Failed checks are counted: one message for all of them is enough.
  void CountUnless(bool right) {
    if (!right) mistakes_.fetch_add(1, std::memory_order_relaxed);
  }

  // Reads random pieces of the text through a stream, and now and then through a new one.
  void ReadPieces(ZEBContainer* stream, const std::string& text, unsigned thread) {
    zeb_test::Random random(thread + 1);
    std::string piece(3000, '?');
    for (int i = 0; i < kRounds; ++i) {
      const std::uint64_t position = random.below(text.size());
      const bool fromEnd = random.oneIn(3);
      const auto offset = static_cast<std::int64_t>(position) -
                          (fromEnd ? static_cast<std::int64_t>(text.size()) : 0);
      std::uint64_t bytesRead = 0;
      CountUnless(procs_.positionable.Seek(stream, offset, fromEnd ? 2 : 0) == nullptr);
      CountUnless(procs_.simple.Read(stream, &bytesRead, piece.data(), piece.size()) == nullptr);
      CountUnless(text.compare(position, piece.size(), piece, 0, bytesRead) == 0);
      if (random.oneIn(50)) CountUnless(IsReadByAnother(stream, text));
    }
  }

  bool IsReadByAnother(ZEBContainer* stream, const std::string& text) {
    ZEBContainer* other = nullptr;
    if (procs_.positionable.CreateIndependentlyPositionableStream(stream, &other) != nullptr) {
      return false;
    }
    std::string piece(100, '?');
    std::uint64_t bytesRead = 0;
    const bool read = procs_.simple.Read(other, &bytesRead, piece.data(), piece.size()) == nullptr;
    zeb_.container.Release(other);
    return read && text.compare(0, piece.size(), piece, 0, bytesRead) == 0;
  }

  void ReadTogether(ZEBContainer* source, const std::string& text) {
    std::vector<ZEBContainer*> streams{source};
    while (streams.size() < kThreads) streams.push_back(Independent(source));
    zeb_test::runTogether(kThreads,
                          [&](unsigned thread) { ReadPieces(streams[thread], text, thread); });
    EXPECT_EQ(mistakes_, 0);
  }

  const std::string text_ = Pattern(1'500'000);

 private:
  std::atomic<int> mistakes_{0};
};

TEST_F(StreamThreads, ReadTheSameMemory) {
  ZEBContainer* source = NewMemory(text_);
  ReadTogether(source, text_);
}

TEST_F(StreamThreads, ReadTheSameBuffer) { ReadTogether(NewBuffer(text_), text_); }

TEST_F(StreamThreads, ReadTheSameFile) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  PutContent(path, text_);
  ZEBContainer* source = nullptr;
  ASSERT_EQ(zeb_.Outcome(procs_.factory.NewPositionableFileStream(&source, path.c_str(), "rb")),
            kSuccess);
  ReadTogether(Keep(source), text_);
}

// Bodies go with their last stream, whichever thread ends it.
TEST_F(StreamThreads, EndTheirStreamsTogether) {
  for (int round = 0; round < kRounds / 30; ++round) {
    ZEBContainer* source = NewMemory("0123456789");
    std::vector<ZEBContainer*> streams;
    for (unsigned i = 0; i < kThreads; ++i) {
      ZEBContainer* made = nullptr;
      ASSERT_EQ(
          zeb_.Outcome(procs_.positionable.CreateIndependentlyPositionableStream(source, &made)),
          kSuccess);
      streams.push_back(made);
    }
    Release(source);
    zeb_test::runTogether(kThreads,
                          [&](unsigned thread) { zeb_.container.Release(streams[thread]); });
  }
}

}  // namespace
}  // namespace contract
