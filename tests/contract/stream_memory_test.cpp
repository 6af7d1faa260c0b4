// Memory streams: blocks as the host's allocator sees them, positions, gaps, and what becomes of a
// stream that is no longer the only one over its bytes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "contract/sanitizer_options.h"
#include "contract/stream_library.h"

namespace contract {
namespace {

// Beyond its data, a block is allocated with this much.
constexpr std::uint64_t kBlockOverhead = 24;
constexpr std::uint64_t kMostBlockBytes = 65028;

class MemoryStream : public StreamTest {
 protected:
  // The data sizes of the blocks that an operation allocates, in order; the operations here
  // allocate nothing else.
  template <class Operation>
  std::vector<std::uint64_t> BlocksOf(Operation operation) {
    const std::vector<std::uint64_t> sizes = Host::SizesOf(operation);
    std::vector<std::uint64_t> blocks;
    for (const std::uint64_t size : sizes) blocks.push_back(size - kBlockOverhead);
    return blocks;
  }
  std::vector<std::uint64_t> BlocksOfWriting(ZEBContainer* stream, std::uint64_t count) {
    const std::string text = Pattern(count);
    return BlocksOf([&] { EXPECT_EQ(Write(stream, text), kSuccess); });
  }
};

using Sizes = std::vector<std::uint64_t>;

// ---- Blocks

TEST_F(MemoryStream, BeginsWithoutABlock) {
  ZEBContainer* made = nullptr;
  for (const std::uint64_t size :
       Host::SizesOf([&] { (void)procs_.factory.NewPositionableMemoryStream(&made); })) {
    EXPECT_NE(size, 256 + kBlockOverhead);
  }
  Keep(made);
  EXPECT_EQ(End(made), 0u);
}

TEST_F(MemoryStream, PutsASmallFirstWriteIntoTheSmallestBlock) {
  EXPECT_EQ(BlocksOfWriting(NewMemory(), 10), Sizes{256});
}

TEST_F(MemoryStream, PutsALargerFirstWriteIntoABlockOfTwiceItsSize) {
  EXPECT_EQ(BlocksOfWriting(NewMemory(), 1000), Sizes{2000});
}

TEST_F(MemoryStream, NeverAllocatesMoreThanTheLargestBlock) {
  EXPECT_EQ(BlocksOfWriting(NewMemory(), 100'000), (Sizes{kMostBlockBytes, kMostBlockBytes}));
  EXPECT_EQ(BlocksOfWriting(NewMemory(), 32'514), Sizes{kMostBlockBytes});
  EXPECT_EQ(BlocksOfWriting(NewMemory(), 32'513), Sizes{65'026});
}

TEST_F(MemoryStream, DoublesItsBlocks) {
  ZEBContainer* stream = NewMemory();
  Sizes blocks;
  for (int i = 0; i < 7000; ++i) {
    const Sizes more = BlocksOfWriting(stream, 10);
    blocks.insert(blocks.end(), more.begin(), more.end());
  }
  EXPECT_EQ(blocks, (Sizes{256, 512, 1024, 2048, 4096, 8192, 16384, 32768, kMostBlockBytes}));
}

TEST_F(MemoryStream, FillsABlockBeforeItTakesAnother) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(BlocksOfWriting(stream, 255), Sizes{510});
  EXPECT_EQ(BlocksOfWriting(stream, 254), Sizes{});
  // The block of 510 bytes has room for one of these; the other 999 decide the next one's size.
  EXPECT_EQ(BlocksOfWriting(stream, 1000), Sizes{1998});
}

TEST_F(MemoryStream, WritesOverItsBytesWithoutNewBlocks) {
  ZEBContainer* stream = NewMemory(Pattern(3000));
  EXPECT_EQ(BlocksOf([&] {
              EXPECT_EQ(Seek(stream, 100), kSuccess);
              EXPECT_EQ(Write(stream, std::string(2000, 'x')), kSuccess);
            }),
            Sizes{});
  EXPECT_EQ(Mark(stream), 2100u);
  EXPECT_EQ(End(stream), 3000u);
  EXPECT_EQ(Seek(stream, 99), kSuccess);
  EXPECT_EQ(Read(stream, 2002),
            Pattern(3000).substr(99, 1) + std::string(2000, 'x') + Pattern(3000).substr(2100, 1));
}

TEST_F(MemoryStream, GivesEveryBlockBack) {
  const std::uint64_t live = Host::LiveBlocks();
  ZEBContainer* stream = NewMemory(Pattern(1'000'000));
  Release(stream);
  EXPECT_EQ(Host::LiveBlocks(), live);
}

TEST_F(MemoryStream, RefusesAWriteThatNoBlockCanBeDoubledFor) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Write(stream, "x", std::uint64_t{1} << 63)), kMathOverflow);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(End(stream), 0u);
}

// ---- Reading and writing

TEST_F(MemoryStream, ReadsWhatWasWrittenAcrossBlocks) {
  const std::string text = Pattern(300'000);
  for (const std::uint64_t step :
       {1u, 7u, 255u, 256u, 257u, 4096u, 65'027u, 65'028u, 65'029u, 300'000u}) {
    SCOPED_TRACE(step);
    ZEBContainer* stream = NewMemory();
    // Bytewise writes of the whole would take the test its time for nothing.
    const std::string part = text.substr(0, step == 1 ? 2000 : text.size());
    for (std::uint64_t at = 0; at < part.size(); at += step) {
      ASSERT_EQ(Write(stream, part.substr(at, step)), kSuccess);
    }
    EXPECT_EQ(Mark(stream), part.size());
    EXPECT_EQ(Rewind(stream), kSuccess);
    std::string read;
    for (std::string more = Read(stream, step); !more.empty(); more = Read(stream, step))
      read += more;
    EXPECT_EQ(read, part);
    Release(stream);
  }
}

TEST_F(MemoryStream, ReadsNothingAtItsEnd) {
  ZEBContainer* stream = NewMemory("ten bytes.");
  EXPECT_EQ(Read(stream, 100), "ten bytes.");
  EXPECT_EQ(Read(stream, 100), "");
  EXPECT_EQ(Mark(stream), 10u);
}

TEST_F(MemoryStream, ReadsNothingWhileItIsEmpty) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(Read(stream, 100), "");
  EXPECT_EQ(Mark(stream), 0u);
}

TEST_F(MemoryStream, CatchesUpAfterARewind) {
  ZEBContainer* stream = NewMemory("abcdef");
  EXPECT_EQ(Read(stream, 4), "abcd");
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Read(stream, 2), "ab");
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Write(stream, "XYZ"), kSuccess);
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Read(stream, 9), "XYZdef");
}

TEST_F(MemoryStream, WritesNothingWithoutChangingAnything) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(Sizes{}, BlocksOf([&] { EXPECT_EQ(Write(stream, ""), kSuccess); }));
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Write(stream, nullptr, 0)), kSuccess);
  EXPECT_EQ(End(stream), 0u);
}

TEST_F(MemoryStream, RefusesANullBufferAndStaysAsItIs) {
  ZEBContainer* stream = NewMemory("abcdef");
  std::uint64_t bytesRead = kUntouched;
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Write(stream, nullptr, 3)), kCopyError);
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Read(stream, &bytesRead, nullptr, 3)), kCopyError);
  EXPECT_EQ(bytesRead, 0u);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Read(stream, 10), "abcdef");
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Read(stream, &bytesRead, nullptr, 3)), kSuccess)
      << "at the end there is nothing to copy";
}

// ---- Seeking

TEST_F(MemoryStream, SeeksFromEveryOrigin) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(Seek(stream, 3, ZEB_SEEK_FROM_BEGINNING), kSuccess);
  EXPECT_EQ(Read(stream, 1), "3");
  EXPECT_EQ(Seek(stream, 2, ZEB_SEEK_FROM_POSITION), kSuccess);
  EXPECT_EQ(Read(stream, 1), "6");
  EXPECT_EQ(Seek(stream, -5, ZEB_SEEK_FROM_POSITION), kSuccess);
  EXPECT_EQ(Read(stream, 1), "2");
  EXPECT_EQ(Seek(stream, -1, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Read(stream, 9), "9");
}

TEST_F(MemoryStream, RefusesOtherOriginsAndStaysWhereItIs) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(Seek(stream, 4), kSuccess);
  for (const std::uint32_t origin : {3u, 4u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Seek(stream, 0, origin), kInvalidOrigin);
    EXPECT_EQ(Mark(stream), 4u);
  }
}

TEST_F(MemoryStream, RefusesPositionsBeforeItsBeginning) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(Seek(stream, 4), kSuccess);
  EXPECT_EQ(Seek(stream, -1, ZEB_SEEK_FROM_BEGINNING), kInvalidPosition);
  EXPECT_EQ(Seek(stream, -5, ZEB_SEEK_FROM_POSITION), kInvalidPosition);
  EXPECT_EQ(Seek(stream, -11, ZEB_SEEK_FROM_END), kInvalidPosition);
  EXPECT_EQ(Seek(stream, INT64_MIN, ZEB_SEEK_FROM_BEGINNING), kInvalidPosition);
  EXPECT_EQ(Seek(stream, INT64_MAX, ZEB_SEEK_FROM_POSITION), kInvalidPosition);
  EXPECT_EQ(Mark(stream), 4u);
  EXPECT_EQ(Read(stream, 1), "4");
}

// A position that no memory could ever hold; the process lives on and so does the stream.
TEST_F(MemoryStream, StaysWhereItIsWhenThereIsNoMemoryForAPosition) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(Seek(stream, 4), kSuccess);
  EXPECT_EQ(Seek(stream, INT64_MAX), kOutOfMemory);
  EXPECT_EQ(Mark(stream), 4u);
  EXPECT_EQ(Read(stream, 100), "456789");
}

TEST_F(MemoryStream, GrowsToAPositionPastItsEnd) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(BlocksOf([&] { EXPECT_EQ(Seek(stream, 110), kSuccess); }), Sizes{});
  EXPECT_EQ(End(stream), 110u);
  EXPECT_EQ(BlocksOf([&] { EXPECT_EQ(Seek(stream, 1000), kSuccess); }), (Sizes{512, 1024}));
  EXPECT_EQ(End(stream), 1000u);
  EXPECT_EQ(BlocksOf([&] { EXPECT_EQ(Seek(stream, 1792), kSuccess); }), Sizes{})
      << "the end of the last block is a place to stand at";
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Read(stream, 9999), "0123456789" + std::string(1782, '\0'));
}

// The host's blocks come filled with other values: zero is the library's doing.
TEST_F(MemoryStream, ReadsZerosWhereNothingWasWritten) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(Seek(stream, 200'000), kSuccess);
  EXPECT_EQ(Write(stream, "end"), kSuccess);
  EXPECT_EQ(Seek(stream, 500, ZEB_SEEK_FROM_POSITION), kSuccess);
  EXPECT_EQ(End(stream), 200'503u);
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Read(stream, 999'999),
            "0123456789" + std::string(199'990, '\0') + "end" + std::string(500, '\0'));
}

TEST_F(MemoryStream, KeepsItsBytesWhenItGrowsFromTheMiddle) {
  ZEBContainer* stream = NewMemory("0123456789");
  EXPECT_EQ(Seek(stream, 20), kSuccess);
  EXPECT_EQ(Seek(stream, 12), kSuccess);
  EXPECT_EQ(Write(stream, "ab"), kSuccess);
  EXPECT_EQ(Seek(stream, 30), kSuccess);
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Read(stream, 99), "0123456789" + std::string(2, '\0') + "ab" + std::string(16, '\0'));
}

TEST_F(MemoryStream, StaysEmptyWhenOnlyItsPositionMoves) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(BlocksOf([&] { EXPECT_EQ(Seek(stream, 1000), kSuccess); }), Sizes{});
  EXPECT_EQ(Mark(stream), 1000u);
  EXPECT_EQ(Read(stream, 10), "");
  EXPECT_EQ(Mark(stream), 1000u);
  EXPECT_EQ(Seek(stream, 0, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Write(stream, "x"), kSuccess);
  EXPECT_EQ(Seek(stream, 1000), kSuccess);
  EXPECT_EQ(End(stream), 1000u);
}

TEST_F(MemoryStream, WritesAtItsPositionThoughItWasEmpty) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(Seek(stream, 1000), kSuccess);
  EXPECT_EQ(BlocksOfWriting(stream, 5), (Sizes{256, 512, 1024}));
  EXPECT_EQ(Mark(stream), 1005u);
  EXPECT_EQ(End(stream), 1005u);
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Read(stream, 9999), std::string(1000, '\0') + Pattern(5));
}

TEST_F(MemoryStream, FindsEveryPositionOfALongChain) {
  const std::string text = Pattern(3'000'000);
  ZEBContainer* stream = NewMemory();
  for (std::uint64_t at = 0; at < text.size(); at += 1000) {
    ASSERT_EQ(Write(stream, text.substr(at, 1000)), kSuccess);
  }
  constexpr std::uint64_t kSmallBytes = 65'280;  // of the blocks below the largest size
  std::vector<std::uint64_t> positions{0,
                                       1,
                                       255,
                                       256,
                                       257,
                                       768,
                                       kSmallBytes - 1,
                                       kSmallBytes,
                                       kSmallBytes + 1,
                                       text.size() - 1,
                                       text.size()};
  for (std::uint64_t end = kSmallBytes; end < text.size(); end += kMostBlockBytes) {
    positions.insert(positions.end(), {end - 1, end, end + 1});
  }
  for (const std::uint64_t position : positions) {
    ASSERT_EQ(Seek(stream, static_cast<std::int64_t>(position)), kSuccess);
    ASSERT_EQ(Read(stream, 3), text.substr(position, 3)) << position;
  }
}

TEST_F(MemoryStream, FlushesToNowhere) {
  ZEBContainer* stream = NewMemory("abc");
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(Read(stream, 9), "abc");
}

// ---- Independent streams

TEST_F(MemoryStream, MakesStreamsThatBeginAtTheBeginning) {
  ZEBContainer* source = NewMemory("0123456789");
  EXPECT_EQ(Seek(source, 7), kSuccess);
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Mark(other), 0u);
  EXPECT_EQ(Mark(source), 7u);
  EXPECT_EQ(Read(other, 4), "0123");
  EXPECT_EQ(Read(source, 4), "789");
  EXPECT_EQ(Read(other, 4), "4567");
}

TEST_F(MemoryStream, CannotBeWrittenOnceItIsNotAlone) {
  ZEBContainer* source = NewMemory("0123456789");
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Write(source, "x"), kReadOnly);
  EXPECT_EQ(Write(other, "x"), kReadOnly);
  EXPECT_EQ(Write(source, ""), kReadOnly) << "the flag is asked first";
  Release(other);
  EXPECT_EQ(Write(source, "x"), kReadOnly) << "the flag never goes back";
  EXPECT_EQ(Read(source, 99), "0123456789");
}

TEST_F(MemoryStream, CannotGrowOnceItIsNotAlone) {
  ZEBContainer* source = NewMemory("0123456789");
  ZEBContainer* other = Independent(source);
  for (ZEBContainer* stream : {source, other}) {
    EXPECT_EQ(Seek(stream, 10), kSuccess);
    EXPECT_EQ(Seek(stream, 11), kInvalidPosition);
    EXPECT_EQ(Seek(stream, 1, ZEB_SEEK_FROM_END), kInvalidPosition);
    EXPECT_EQ(Mark(stream), 10u);
  }
}

TEST_F(MemoryStream, OutlivesItsSource) {
  ZEBContainer* source = NewMemory(Pattern(100'000));
  ZEBContainer* other = IndependentRewindable(source);
  Release(source);
  EXPECT_EQ(Read(other, 200'000), Pattern(100'000));
}

TEST_F(MemoryStream, IsPositionableThoughItWasAskedForAsRewindable) {
  ZEBContainer* other = IndependentRewindable(NewMemory("0123456789"));
  EXPECT_EQ(SignatureOf(other),
            "ZEBSimpleStreamInterface.ZEBRewindableStreamInterface.ZEBPositionableStreamInterface");
  EXPECT_EQ(Seek(other, 8), kSuccess);
  EXPECT_EQ(Read(other, 9), "89");
}

TEST_F(MemoryStream, IsIndependentWhileItIsEmpty) {
  ZEBContainer* source = NewMemory();
  EXPECT_EQ(Seek(source, 1000), kSuccess);
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Mark(source), 1000u);
  EXPECT_EQ(Read(source, 10), "");
  EXPECT_EQ(Read(other, 10), "");
  EXPECT_EQ(Seek(source, 0, ZEB_SEEK_FROM_POSITION), kInvalidPosition);
  EXPECT_EQ(Seek(source, 0), kSuccess);
}

}  // namespace
}  // namespace contract
