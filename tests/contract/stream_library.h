// A running library with what the tests of streams need: the procs of all versions, streams that
// are released at the end, and every operation with its outcome as a text.
//
// As with other components, a test over it ends with every block back at the host and no report
// made.
#ifndef ZEB_TESTS_CONTRACT_STREAM_LIBRARY_H
#define ZEB_TESTS_CONTRACT_STREAM_LIBRARY_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "contract/component_library.h"

namespace contract {

struct OlderNewStreamProcs {
  ZEB_NEW_STREAM_OLDER_PROCS(ZEB_PROC_MEMBER)
};
struct OlderStreamProcs {
  ZEB_STREAM_OLDER_PROCS(ZEB_PROC_MEMBER)
};
ZEB_DEFINE_FETCH(FetchOlderNewStreamProcs, OlderNewStreamProcs, ZEB_NEW_STREAM_INTERFACE,
                 ZEB_NEW_STREAM_OLDER_PROCS)
ZEB_DEFINE_FETCH(FetchOlderStreamProcs, OlderStreamProcs, ZEB_STREAM_INTERFACE,
                 ZEB_STREAM_OLDER_PROCS)

struct StreamProcs {
  explicit StreamProcs(ZEBGetProcAddress find) {
    if (ZEBFetchStreamFactoryProcs(find, &factory) == 0 ||
        ZEBFetchSimpleStreamProcs(find, &simple) == 0 ||
        ZEBFetchRewindableStreamProcs(find, &rewindable) == 0 ||
        ZEBFetchPositionableStreamProcs(find, &positionable) == 0 ||
        FetchOlderNewStreamProcs(find, &olderMakers) == 0 ||
        FetchOlderStreamProcs(find, &older) == 0) {
      throw std::runtime_error("a started library lacks a proc of its streams");
    }
  }

  ZEBStreamFactoryProcs factory;
  ZEBSimpleStreamProcs simple;
  ZEBRewindableStreamProcs rewindable;
  ZEBPositionableStreamProcs positionable;
  OlderNewStreamProcs olderMakers;
  OlderStreamProcs older;
};

inline constexpr const char* kInvalidOrigin = "KST 0: Invalid seek origin";
inline constexpr const char* kInvalidPosition = "KST 0: invalid stream position";
inline constexpr const char* kReadOnly = "KST 0: Attempt to write read-only stream";
inline constexpr const char* kPastBuffer = "KST 0: writing past end of fixed size buffer";
inline constexpr const char* kCopyError = "KST 0: Memory Copy Error";
inline constexpr const char* kMathOverflow = "KST 1: Math overflow exception";
inline constexpr const char* kNoFile = "KST 0: file does not exist";
inline constexpr const char* kReadError = "KST 0: stream read error";
inline constexpr const char* kWriteError = "KST 0: stream write error";

// Not 0, to see that nothing was stored, and no address.
inline constexpr std::uint64_t kUntouched = 0xDEAD;

class StreamTest : public ComponentTest {
 protected:
  void TearDown() override {
    ReleaseStreams();
    ComponentTest::TearDown();
  }

  // Released at the end of the test, unless that is done before.
  ZEBContainer* Keep(ZEBContainer* made) {
    kept_.push_back(made);
    return made;
  }
  void Release(ZEBContainer* stream) {
    std::erase(kept_, stream);
    zeb_.container.Release(stream);
  }
  void ReleaseStreams() {
    for (ZEBContainer* stream : kept_) zeb_.container.Release(stream);
    kept_.clear();
  }

  ZEBContainer* NewMemory(std::string_view content = {}) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.factory.NewPositionableMemoryStream(&made)), kSuccess);
    if (!content.empty()) {
      EXPECT_EQ(Write(made, content), kSuccess);
      EXPECT_EQ(Rewind(made), kSuccess);
    }
    return Keep(made);
  }

  // Over a buffer that nobody else holds.
  ZEBContainer* NewBuffer(std::string_view content) {
    ZEBSharedBuffer* buffer =
        zeb_.buffer.NewBuffer(content.size(), nullptr, nullptr, nullptr, nullptr);
    std::memcpy(zeb_.buffer.GetBuffer(buffer), content.data(), content.size());
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.factory.NewPositionableBufferStream(&made, buffer)), kSuccess);
    zeb_.buffer.Release(buffer);
    return Keep(made);
  }

  std::string Write(ZEBContainer* stream, std::string_view text) {
    return zeb_.Outcome(procs_.simple.Write(stream, text.data(), text.size()));
  }

  // What came, or the error.
  std::string Read(ZEBContainer* stream, std::uint64_t count) {
    std::string text(count, '?');
    std::uint64_t bytesRead = kUntouched;
    const std::string outcome =
        zeb_.Outcome(procs_.simple.Read(stream, &bytesRead, text.data(), count));
    if (outcome != kSuccess) {
      EXPECT_EQ(bytesRead, 0u);
      return outcome;
    }
    EXPECT_LE(bytesRead, count);
    text.resize(bytesRead);
    return text;
  }

  std::string Rewind(ZEBContainer* stream) {
    return zeb_.Outcome(procs_.rewindable.Rewind(stream));
  }
  std::string Seek(ZEBContainer* stream, std::int64_t offset, std::uint32_t origin = 0) {
    return zeb_.Outcome(procs_.positionable.Seek(stream, offset, origin));
  }
  std::string Flush(ZEBContainer* stream) {
    return zeb_.Outcome(procs_.positionable.Flush(stream));
  }
  std::uint64_t Mark(ZEBContainer* stream) {
    std::uint64_t position = kUntouched;
    EXPECT_EQ(zeb_.Outcome(procs_.positionable.Mark(stream, &position)), kSuccess);
    return position;
  }

  // The position of the end; the stream stays where it is.
  std::uint64_t End(ZEBContainer* stream) {
    const std::uint64_t before = Mark(stream);
    EXPECT_EQ(Seek(stream, 0, ZEB_SEEK_FROM_END), kSuccess);
    const std::uint64_t end = Mark(stream);
    EXPECT_EQ(Seek(stream, static_cast<std::int64_t>(before)), kSuccess);
    return end;
  }

  ZEBContainer* Independent(ZEBContainer* stream) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(
        zeb_.Outcome(procs_.positionable.CreateIndependentlyPositionableStream(stream, &made)),
        kSuccess);
    return Keep(made);
  }
  ZEBContainer* IndependentRewindable(ZEBContainer* stream) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.rewindable.CreateIndependentlyRewindableStream(stream, &made)),
              kSuccess);
    return Keep(made);
  }

  std::string SignatureOf(ZEBContainer* stream) { return zeb_.container.GetSignature(stream); }

  StreamProcs procs_{zeb_.getProcAddress};

 private:
  std::vector<ZEBContainer*> kept_;
};

// Bytes that differ from block to block.
inline std::string Pattern(std::uint64_t size) {
  std::string text(size, '\0');
  for (std::uint64_t i = 0; i < size; ++i)
    text[i] = static_cast<char>('A' + (i * 31 + i / 251) % 57);
  return text;
}

}  // namespace contract

#endif
