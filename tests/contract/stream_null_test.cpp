// What the procs of streams make of null: the predefined error, null or 0, and never a crash.

#include <gtest/gtest.h>

#include "contract/stream_library.h"

namespace contract {
namespace {

class StreamNulls : public StreamTest {
 protected:
  void ExpectRefused(ZEBErrorObject* answer) { EXPECT_EQ(zeb_.Outcome(answer), kMissingMethod); }
};

TEST_F(StreamNulls, AreNoStreams) {
  char buffer[4] = {};
  std::uint64_t number = kUntouched;
  ZEBContainer* made = zeb_.NewEmpty();
  ZEBContainer* const untouched = made;
  ExpectRefused(procs_.simple.Read(nullptr, &number, buffer, 4));
  EXPECT_EQ(number, 0u);
  ExpectRefused(procs_.simple.Write(nullptr, buffer, 4));
  ExpectRefused(procs_.rewindable.Rewind(nullptr));
  ExpectRefused(procs_.rewindable.CreateIndependentlyRewindableStream(nullptr, &made));
  EXPECT_EQ(made, nullptr);
  made = untouched;
  ExpectRefused(procs_.positionable.CreateIndependentlyPositionableStream(nullptr, &made));
  EXPECT_EQ(made, nullptr);
  number = kUntouched;
  ExpectRefused(procs_.positionable.Mark(nullptr, &number));
  EXPECT_EQ(number, 0u);
  ExpectRefused(procs_.positionable.Seek(nullptr, 0, 0));
  ExpectRefused(procs_.positionable.Flush(nullptr));
  zeb_.container.Release(untouched);
}

TEST_F(StreamNulls, AreNoStreamsForOldProcs) {
  char buffer[4] = {};
  EXPECT_EQ(procs_.older.ReadV2(nullptr, buffer, 4), 0u);
  EXPECT_EQ(procs_.older.WriteV2(nullptr, buffer, 4), 0);
  EXPECT_EQ(procs_.older.SeekV2(nullptr, 0), 0);
  EXPECT_EQ(procs_.older.MarkV1(nullptr), 0u);
  ExpectRefused(procs_.older.WriteV3(nullptr, buffer, 4));
  ExpectRefused(procs_.older.SeekV3(nullptr, 0));
}

TEST_F(StreamNulls, AreNoPlacesForResults) {
  ZEBContainer* stream = NewMemory("abc");
  char buffer[4] = {};
  ExpectRefused(procs_.simple.Read(stream, nullptr, buffer, 4));
  ExpectRefused(procs_.positionable.Mark(stream, nullptr));
  ExpectRefused(procs_.rewindable.CreateIndependentlyRewindableStream(stream, nullptr));
  ExpectRefused(procs_.positionable.CreateIndependentlyPositionableStream(stream, nullptr));
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Write(stream, "x"), kSuccess) << "a refused independent stream makes nothing read-only";
}

TEST_F(StreamNulls, AreNoPlacesForStreams) {
  ExpectRefused(procs_.factory.NewPositionableMemoryStream(nullptr));
  ExpectRefused(procs_.factory.NewPositionableBufferStream(nullptr, nullptr));
  ExpectRefused(procs_.factory.NewPositionableFileStream(nullptr, "path", "rb"));
  ExpectRefused(procs_.olderMakers.NewMemoryStreamV3(nullptr));
  ExpectRefused(procs_.olderMakers.NewBufferStreamV4(nullptr, nullptr));
  ExpectRefused(procs_.olderMakers.NewFileStreamV3(nullptr, "path", "rb"));
}

TEST_F(StreamNulls, AreNoPathsAndNoModes) {
  ZEBContainer* made = nullptr;
  ExpectRefused(procs_.factory.NewPositionableFileStream(&made, nullptr, "rb"));
  ExpectRefused(procs_.factory.NewPositionableFileStream(&made, "path", nullptr));
  ExpectRefused(procs_.olderMakers.NewFileStreamV3(&made, nullptr, nullptr));
  EXPECT_EQ(procs_.olderMakers.NewFileStreamV2(nullptr, "rb"), nullptr);
  EXPECT_EQ(procs_.olderMakers.NewFileStreamV2("path", nullptr), nullptr);
  EXPECT_EQ(made, nullptr);
}

// ---- The older makers, which have no place of their own among the subjects.

class OlderMakers : public StreamTest {};

TEST_F(OlderMakers, MakeMemoryStreams) {
  ZEBContainer* third = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.olderMakers.NewMemoryStreamV3(&third)), kSuccess);
  for (ZEBContainer* stream : {Keep(procs_.olderMakers.NewMemoryStreamV2()), Keep(third)}) {
    EXPECT_EQ(procs_.older.WriteV2(stream, "abc", 3), 1);
    EXPECT_EQ(procs_.older.MarkV1(stream), 3u);
    EXPECT_EQ(procs_.older.SeekV2(stream, 1), 1);
    char buffer[4] = {};
    EXPECT_EQ(procs_.older.ReadV2(stream, buffer, 4), 2u);
    EXPECT_STREQ(buffer, "bc");
    EXPECT_EQ(SignatureOf(stream), SignatureOf(NewMemory()));
  }
}

TEST_F(OlderMakers, MakeBufferStreams) {
  ZEBSharedBuffer* buffer = zeb_.buffer.NewBuffer(4, nullptr, nullptr, nullptr, nullptr);
  ZEBContainer* fourth = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.olderMakers.NewBufferStreamV4(&fourth, buffer)), kSuccess);
  for (ZEBContainer* stream : {Keep(procs_.olderMakers.NewBufferStreamV3(buffer)), Keep(fourth)}) {
    EXPECT_EQ(procs_.older.WriteV2(stream, "12345", 5), 0);
    EXPECT_EQ(zeb_.Outcome(procs_.older.WriteV3(stream, "12345", 5)), kPastBuffer);
    EXPECT_EQ(zeb_.Outcome(procs_.older.WriteV3(stream, "1234", 4)), kSuccess);
    EXPECT_EQ(procs_.older.SeekV2(stream, 5), 0);
    EXPECT_EQ(zeb_.Outcome(procs_.older.SeekV3(stream, 5)), kInvalidPosition);
    EXPECT_EQ(procs_.older.MarkV1(stream), 4u);
  }
  zeb_.buffer.Release(buffer);
  EXPECT_EQ(End(Keep(procs_.olderMakers.NewBufferStreamV3(nullptr))), 0u);
}

}  // namespace
}  // namespace contract
