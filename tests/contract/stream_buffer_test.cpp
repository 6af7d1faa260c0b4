// Buffer streams: the bytes of a shared buffer in place, of a fixed size, alive as long as a stream
// is.

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "contract/stream_library.h"

namespace contract {
namespace {

class BufferStream : public StreamTest {
 protected:
  // A stream over bytes of the test's, which counts how often they were deleted.
  ZEBContainer* NewOverOwnBytes() {
    ZEBSharedBuffer* buffer = zeb_.buffer.NewBuffer(
        bytes_.size(), bytes_.data(), [](void* data) { Data::Destroy(data); }, nullptr, &deleted_);
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.factory.NewPositionableBufferStream(&made, buffer)), kSuccess);
    zeb_.buffer.Release(buffer);
    return Keep(made);
  }
  std::string Bytes() const { return {bytes_.data(), bytes_.size()}; }

  std::array<char, 10> bytes_{'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
  Data deleted_;
};

TEST_F(BufferStream, ReadsAndWritesTheBytesInPlace) {
  ZEBContainer* stream = NewOverOwnBytes();
  EXPECT_EQ(Read(stream, 3), "012");
  EXPECT_EQ(Write(stream, "abc"), kSuccess);
  EXPECT_EQ(Mark(stream), 6u);
  EXPECT_EQ(Bytes(), "012abc6789");
  bytes_[6] = 'X';
  EXPECT_EQ(Read(stream, 99), "X789");
  EXPECT_EQ(Read(stream, 99), "");
  EXPECT_EQ(Mark(stream), 10u);
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Read(stream, 4), "012a");
}

TEST_F(BufferStream, KeepsTheBufferAlive) {
  ZEBContainer* stream = NewOverOwnBytes();
  ZEBContainer* other = Independent(stream);
  Release(stream);
  EXPECT_EQ(deleted_.destroyed, 0);
  EXPECT_EQ(Read(other, 2), "01");
  Release(other);
  EXPECT_EQ(deleted_.destroyed, 1);
}

TEST_F(BufferStream, RefusesAWriteThatDoesNotFit) {
  ZEBContainer* stream = NewOverOwnBytes();
  EXPECT_EQ(Seek(stream, 8), kSuccess);
  EXPECT_EQ(Write(stream, "abcde"), kPastBuffer);
  EXPECT_EQ(Mark(stream), 8u);
  EXPECT_EQ(Bytes(), "0123456789");
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Write(stream, "x", ~std::uint64_t{0})), kPastBuffer);
  EXPECT_EQ(Write(stream, "ab"), kSuccess);
  EXPECT_EQ(Mark(stream), 10u);
  EXPECT_EQ(Bytes(), "01234567ab");
  EXPECT_EQ(Write(stream, ""), kSuccess);
  EXPECT_EQ(Write(stream, "x"), kPastBuffer);
}

TEST_F(BufferStream, RefusesANullBufferAndStaysAsItIs) {
  ZEBContainer* stream = NewOverOwnBytes();
  std::uint64_t bytesRead = kUntouched;
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Write(stream, nullptr, 3)), kCopyError);
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Read(stream, &bytesRead, nullptr, 3)), kCopyError);
  EXPECT_EQ(bytesRead, 0u);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Bytes(), "0123456789");
}

TEST_F(BufferStream, SeeksUpToItsEnd) {
  ZEBContainer* stream = NewOverOwnBytes();
  EXPECT_EQ(Seek(stream, 10), kSuccess);
  EXPECT_EQ(Seek(stream, 11), kInvalidPosition);
  EXPECT_EQ(Seek(stream, 1, ZEB_SEEK_FROM_END), kInvalidPosition);
  EXPECT_EQ(Seek(stream, 1, ZEB_SEEK_FROM_POSITION), kInvalidPosition);
  EXPECT_EQ(Seek(stream, 110), kInvalidPosition);
  EXPECT_EQ(Mark(stream), 10u);
  EXPECT_EQ(Seek(stream, -10, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Seek(stream, -1, ZEB_SEEK_FROM_POSITION), kInvalidPosition);
  EXPECT_EQ(Seek(stream, 0, 3), kInvalidOrigin);
  EXPECT_EQ(Read(stream, 1), "0");
}

// The holders of a buffer agree on who writes it, with streams as without.
TEST_F(BufferStream, CanStillBeWrittenWhenItIsNotAlone) {
  ZEBContainer* source = NewOverOwnBytes();
  EXPECT_EQ(Seek(source, 5), kSuccess);
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Mark(other), 0u);
  EXPECT_EQ(Write(source, "S"), kSuccess);
  EXPECT_EQ(Write(other, "O"), kSuccess);
  EXPECT_EQ(Bytes(), "O1234S6789");
  ZEBContainer* third = IndependentRewindable(other);
  EXPECT_EQ(Read(third, 99), "O1234S6789");
}

TEST_F(BufferStream, IsEmptyWithoutABuffer) {
  ZEBContainer* stream = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewPositionableBufferStream(&stream, nullptr)), kSuccess);
  Keep(stream);
  EXPECT_EQ(Read(stream, 10), "");
  EXPECT_EQ(Write(stream, ""), kSuccess);
  EXPECT_EQ(Write(stream, "x"), kPastBuffer);
  EXPECT_EQ(Seek(stream, 0, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Seek(stream, 1), kInvalidPosition);
  EXPECT_EQ(Read(Independent(stream), 10), "");
}

TEST_F(BufferStream, FlushesToNowhere) { EXPECT_EQ(Flush(NewOverOwnBytes()), kSuccess); }

TEST_F(BufferStream, NeedsTheBufferServiceToBeMade) {
  ZEBSharedBuffer* buffer = zeb_.buffer.NewBuffer(4, nullptr, nullptr, nullptr, nullptr);
  zeb_.frame.UnregisterInterface(ZEB_SHARED_BUFFER_INTERFACE);
  ZEBContainer* made = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewPositionableBufferStream(&made, buffer)),
            "ZEB 0: Missing Interface");
  EXPECT_EQ(made, nullptr);
  EXPECT_THAT(Reports::Take(), ::testing::ElementsAre("Missing Interface"));
  zeb_.buffer.Release(buffer);
}

}  // namespace
}  // namespace contract
