// The procs of streams: every row under its name, in the order of the typed structs, and nothing
// under names that are merely close.

#include <gtest/gtest.h>

#include "contract/published_rows.h"
#include "contract/stream_library.h"

namespace contract {
namespace {

constexpr ProcRow kNeighbouringRows[] = {
    {"ZEBStreamFactoryInterface", "NewMemoryStream", "ZEBNewPositionableMemoryStreamProc"},
    {"ZEBStreamFactoryInterface", "NewPositionableMemoryStream", "ZEBNewMemoryStreamProc3"},
    {"ZEBStreamFactoryInterface", "", ""},
    {"ZEBSimpleStreamInterface", "Read", "ZEBSimpleStreamWriteProc"},
    {"ZEBSimpleStreamInterface", "Rewind", "ZEBRewindableStreamRewindProc"},
    {"ZEBRewindableStreamInterface", "Mark", "ZEBPositionableStreamMarkProc"},
    {"ZEBPositionableStreamInterface", "Rewind", "ZEBRewindableStreamRewindProc"},
    {"ZEBPositionableStreamInterface", "SyncPosition", "ZEBPositionableStreamSyncPositionProc"},
    {"ZEBNewStreamInterface", "NewMemoryStream", "ZEBNewMemoryStreamProc"},
    {"ZEBNewStreamInterface", "NewMemoryStream", "ZEBNewMemoryStreamProc4"},
    {"ZEBNewStreamInterface", "NewBufferStream", "ZEBNewBufferStreamProc2"},
    {"ZEBNewStreamInterface", "NewFileStream", "ZEBNewFileStreamProc4"},
    {"ZEBNewStreamInterface", "NewExternalStream", "ZEBNewExternalStreamProc2"},
    {"ZEBStreamInterface", "Read", "ZEBStreamReadProc"},
    {"ZEBStreamInterface", "Read", "ZEBStreamReadProc3"},
    {"ZEBStreamInterface", "Mark", "ZEBStreamMarkProc2"},
    {"ZEBStreamInterface", "Flush", "ZEBStreamFlushProc"},
};

class StreamRows : public StreamTest {
 protected:
  PublishedRows published_{zeb_.getProcAddress};
};

TEST_F(StreamRows, ArePublishedForTheFactory) {
  published_.ExpectAre("ZEBStreamFactoryInterface", 6, procs_.factory);
}
TEST_F(StreamRows, ArePublishedForSimpleStreams) {
  published_.ExpectAre("ZEBSimpleStreamInterface", 2, procs_.simple);
}
TEST_F(StreamRows, ArePublishedForRewindableStreams) {
  published_.ExpectAre("ZEBRewindableStreamInterface", 2, procs_.rewindable);
}
TEST_F(StreamRows, ArePublishedForPositionableStreams) {
  published_.ExpectAre("ZEBPositionableStreamInterface", 4, procs_.positionable);
}
TEST_F(StreamRows, ArePublishedForTheOlderMakers) {
  published_.ExpectAre("ZEBNewStreamInterface", 8, procs_.olderMakers);
}
TEST_F(StreamRows, ArePublishedForTheOlderOperations) {
  published_.ExpectAre("ZEBStreamInterface", 6, procs_.older);
}

TEST_F(StreamRows, HaveNoNeighbours) { published_.ExpectNone(kNeighbouringRows); }

TEST_F(StreamRows, GoWithTheirInterface) {
  zeb_.frame.UnregisterInterface(ZEB_STREAM_INTERFACE);
  published_.ExpectGone("ZEBStreamInterface");
  published_.ExpectThere("ZEBNewStreamInterface");
}

// A stream's methods are found under its own container's interfaces, those of its tier.
TEST_F(StreamRows, AreMethodsOfAStreamsContainer) {
  ZEBContainer* stream = NewMemory();
  EXPECT_EQ(zeb_.MethodOf(stream, "Write", "ZEBSimpleStreamWriteProc"),
            AsProc(procs_.simple.Write));
  EXPECT_EQ(zeb_.MethodOf(stream, "Rewind", "ZEBRewindableStreamRewindProc"),
            AsProc(procs_.rewindable.Rewind));
  EXPECT_EQ(zeb_.MethodOf(stream, "Seek", "ZEBPositionableStreamSeekProc"),
            AsProc(procs_.positionable.Seek));
  EXPECT_EQ(zeb_.MethodOf(stream, "Seek", "ZEBStreamSeekProc3"), nullptr);
}

}  // namespace
}  // namespace contract
