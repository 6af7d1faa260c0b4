// The procs of streams: every row under its name, in the order of the typed structs, and nothing
// under names that are merely close.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "contract/proc_rows.h"
#include "contract/stream_library.h"

namespace contract {
namespace {

using ::testing::Each;
using ::testing::IsNull;
using ::testing::NotNull;

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
  ZEBProc Find(const ProcRow& row) const {
    return zeb_.getProcAddress(row.interfaceName, row.methodName, row.procName);
  }

  // The published procs of an interface, in the order in which clients know them.
  std::vector<ZEBProc> Published(const std::string& interfaceName) const {
    std::vector<ZEBProc> procs;
    for (const ProcRow& row : kProcRows) {
      if (interfaceName == row.interfaceName) procs.push_back(Find(row));
    }
    return procs;
  }

  template <class Fetched>
  void ExpectPublished(const char* interfaceName, const Fetched& fetched, std::size_t count) const {
    std::vector<ZEBProc> members(sizeof(fetched) / sizeof(ZEBProc));
    std::memcpy(members.data(), &fetched, sizeof(fetched));
    const std::vector<ZEBProc> published = Published(interfaceName);
    EXPECT_EQ(published.size(), count);
    EXPECT_THAT(published, Each(NotNull()));
    EXPECT_EQ(members, published);
  }
};

TEST_F(StreamRows, ArePublishedForTheFactory) {
  ExpectPublished("ZEBStreamFactoryInterface", procs_.factory, 6);
}
TEST_F(StreamRows, ArePublishedForSimpleStreams) {
  ExpectPublished("ZEBSimpleStreamInterface", procs_.simple, 2);
}
TEST_F(StreamRows, ArePublishedForRewindableStreams) {
  ExpectPublished("ZEBRewindableStreamInterface", procs_.rewindable, 2);
}
TEST_F(StreamRows, ArePublishedForPositionableStreams) {
  ExpectPublished("ZEBPositionableStreamInterface", procs_.positionable, 4);
}
TEST_F(StreamRows, ArePublishedForTheOlderMakers) {
  ExpectPublished("ZEBNewStreamInterface", procs_.olderMakers, 8);
}
TEST_F(StreamRows, ArePublishedForTheOlderOperations) {
  ExpectPublished("ZEBStreamInterface", procs_.older, 6);
}

TEST_F(StreamRows, HaveNoNeighbours) {
  for (const ProcRow& row : kNeighbouringRows) {
    EXPECT_EQ(Find(row), nullptr) << ::testing::PrintToString(row);
  }
}

TEST_F(StreamRows, GoWithTheirInterface) {
  zeb_.frame.UnregisterInterface(ZEB_STREAM_INTERFACE);
  EXPECT_THAT(Published("ZEBStreamInterface"), Each(IsNull()));
  EXPECT_THAT(Published("ZEBNewStreamInterface"), Each(NotNull()));
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
