// A host whose memory runs out under streams: every allocation of every maker and of every
// operation fails once. The answer is the documented one, client data is released once, nothing
// stays behind, and the same operation succeeds as soon as there is memory again.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "contract/failure.h"
#include "contract/stream_client.h"
#include "contract/temporary_folder.h"

namespace contract {
namespace {

class FailingStreams : public ClientStreamTest, public ::testing::WithParamInterface<Failure> {
 protected:
  // `operation()` runs with ever later allocations failing. A failure is told as documented
  // and leaves as many blocks out as there were; the operation takes back what it made.
  template <class Operation>
  void Sweep(Operation operation) {
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      zeb_.DrainRecycled();
      ForgetRecentAtoms(zeb_);
      const std::uint64_t live = Host::LiveBlocks();
      FailAt(GetParam(), nth);
      ZEBErrorObject* error = operation();
      failed = Host::StopFailing();
      const std::string outcome = zeb_.Outcome(error);
      // An allocation that a stream can do without fails silently.
      if (outcome != kSuccess) {
        EXPECT_TRUE(failed);
        EXPECT_EQ(outcome, GetParam() == Failure::kByThrowing ? kUnknownError : kOutOfMemory);
      }
      check_(outcome == kSuccess);
      zeb_.DrainRecycled();
      ForgetRecentAtoms(zeb_);
      EXPECT_EQ(Host::LiveBlocks(), live);
    }
    EXPECT_GT(nth, 1u) << "the operation allocates nothing";
  }

  // Checks a maker's out argument and ends what was made.
  void ExpectMade(bool succeeded) {
    EXPECT_EQ(made_ != nullptr, succeeded);
    zeb_.container.Release(std::exchange(made_, nullptr));
  }
  // The same of a maker that consumes a client's context.
  void ExpectMadeAndReleased(bool succeeded) {
    EXPECT_EQ(context_.released, succeeded ? 0 : 1);
    ExpectMade(succeeded);
    EXPECT_EQ(std::exchange(context_.released, 0), 1);
  }

  ZEBContainer* made_ = nullptr;
  std::function<void(bool succeeded)> check_ = [this](bool succeeded) { ExpectMade(succeeded); };
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingStreams, kEveryFailure, NameOfFailure);

TEST_P(FailingStreams, AreNotMadeOverMemory) {
  Sweep([&] { return procs_.factory.NewPositionableMemoryStream(&made_); });
  Sweep([&] { return procs_.olderMakers.NewMemoryStreamV3(&made_); });
}

TEST_P(FailingStreams, AreNotMadeOverBuffers) {
  ZEBSharedBuffer* buffer = zeb_.buffer.NewBuffer(16, nullptr, nullptr, nullptr, nullptr);
  Sweep([&] { return procs_.factory.NewPositionableBufferStream(&made_, buffer); });
  Sweep([&] { return procs_.olderMakers.NewBufferStreamV4(&made_, buffer); });
  zeb_.buffer.Release(buffer);
}

TEST_P(FailingStreams, AreNotMadeOverFiles) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  PutContent(path, "0123456789");
  Sweep([&] { return procs_.factory.NewPositionableFileStream(&made_, path.c_str(), "rb"); });
  Sweep([&] { return procs_.olderMakers.NewFileStreamV3(&made_, path.c_str(), "rb"); });
}

TEST_P(FailingStreams, AreNotMadeOverCallbacks) {
  check_ = [this](bool succeeded) { ExpectMadeAndReleased(succeeded); };
  Sweep([&] {
    return procs_.factory.NewClientSimpleStream(&made_, &context_, ClientContext::Read,
                                                ClientContext::Write, ClientContext::Release);
  });
  Sweep([&] {
    return procs_.factory.NewClientRewindableStream(
        &made_, &context_, ClientContext::Read, ClientContext::Write, ClientContext::NewRewindable,
        ClientContext::Rewind, ClientContext::Release);
  });
  Sweep([&] {
    return procs_.factory.NewClientPositionableStream(
        &made_, &context_, ClientContext::Read, ClientContext::Write, ClientContext::NewRewindable,
        ClientContext::Rewind, ClientContext::NewPositionable, ClientContext::Mark,
        ClientContext::Seek, ClientContext::Release);
  });
}

TEST_P(FailingStreams, AreNotMadeOverOldCallbacks) {
  check_ = [this](bool succeeded) { ExpectMadeAndReleased(succeeded); };
  Sweep([&] {
    return procs_.olderMakers.NewExternalStreamV4(
        &made_, &context_, ClientContext::OldRead, ClientContext::Write,
        ClientContext::SeekWithError, ClientContext::Tell, ClientContext::Release);
  });
}

TEST_P(FailingStreams, AreNullToMakersWithoutAnError) {
  for (std::uint64_t nth = 1;; ++nth) {
    FailAt(GetParam(), nth);
    made_ = procs_.olderMakers.NewExternalStreamV3(&context_, ClientContext::OldRead,
                                                   ClientContext::OldWrite, ClientContext::OldSeek,
                                                   ClientContext::Tell, ClientContext::Release);
    const bool failed = Host::StopFailing();
    ExpectMadeAndReleased(!failed);
    if (!failed) break;
  }
  for (std::uint64_t nth = 1;; ++nth) {
    FailAt(GetParam(), nth);
    made_ = procs_.olderMakers.NewMemoryStreamV2();
    const bool failed = Host::StopFailing();
    ExpectMade(!failed);
    if (!failed) break;
  }
}

TEST_P(FailingStreams, AreNotMadeIndependent) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  PutContent(path, "0123456789");
  ZEBContainer* file = nullptr;
  ASSERT_EQ(zeb_.Outcome(procs_.factory.NewPositionableFileStream(&file, path.c_str(), "rb")),
            kSuccess);
  for (ZEBContainer* source : {NewMemory("0123456789"), NewBuffer("0123456789"), Keep(file)}) {
    Sweep(
        [&] { return procs_.positionable.CreateIndependentlyPositionableStream(source, &made_); });
    Sweep([&] { return procs_.rewindable.CreateIndependentlyRewindableStream(source, &made_); });
    EXPECT_EQ(Read(source, 10), "0123456789");
  }
}

TEST_P(FailingStreams, AreNotMadeIndependentOfClients) {
  ZEBContainer* source = NewPositionable();
  context_.other = &other_;
  check_ = [this](bool succeeded) {
    EXPECT_EQ(other_.released, succeeded ? 0 : 1);
    ExpectMade(succeeded);
    EXPECT_EQ(std::exchange(other_.released, 0), 1);
  };
  Sweep([&] {
    TakeCalls();
    return procs_.positionable.CreateIndependentlyPositionableStream(source, &made_);
  });
  Sweep([&] {
    TakeCalls();
    return procs_.rewindable.CreateIndependentlyRewindableStream(source, &made_);
  });
}

// What a failed write has changed: bytes may have come behind the position, which has not moved.
TEST_P(FailingStreams, CanBeWrittenAgain) {
  const std::string text = Pattern(1'000'000);
  ZEBContainer* stream = nullptr;
  bool done = false;
  for (std::uint64_t nth = 1; !done; ++nth) {
    SCOPED_TRACE(nth);
    stream = NewMemory("0123456789");
    EXPECT_EQ(Seek(stream, 5), kSuccess);
    FailAt(GetParam(), nth);
    ZEBErrorObject* error = procs_.simple.Write(stream, text.data(), text.size());
    done = !Host::StopFailing();
    const std::string outcome = zeb_.Outcome(error);
    if (outcome != kSuccess) {
      EXPECT_EQ(Mark(stream), 5u);
      EXPECT_EQ(Write(stream, text), kSuccess);
    }
    EXPECT_EQ(Mark(stream), 5 + text.size());
    EXPECT_EQ(End(stream), 5 + text.size());
    EXPECT_EQ(Rewind(stream), kSuccess);
    ASSERT_EQ(Read(stream, 2'000'000), "01234" + text);
    Release(stream);
  }
}

TEST_P(FailingStreams, StayWhereTheyAreWhenTheyCannotGrow) {
  bool done = false;
  for (std::uint64_t nth = 1; !done; ++nth) {
    SCOPED_TRACE(nth);
    ZEBContainer* stream = NewMemory("0123456789");
    EXPECT_EQ(Seek(stream, 5), kSuccess);
    FailAt(GetParam(), nth);
    ZEBErrorObject* error = procs_.positionable.Seek(stream, 1'000'000, 0);
    done = !Host::StopFailing();
    if (zeb_.Outcome(error) != kSuccess) {
      EXPECT_EQ(Mark(stream), 5u);
      EXPECT_EQ(End(stream), 10u);
      EXPECT_EQ(Read(stream, 99), "56789");
      EXPECT_EQ(Seek(stream, 1'000'000), kSuccess);
    }
    EXPECT_EQ(Mark(stream), 1'000'000u);
    EXPECT_EQ(Write(stream, "end"), kSuccess);
    EXPECT_EQ(Rewind(stream), kSuccess);
    ASSERT_EQ(Read(stream, 2'000'000), "0123456789" + std::string(999'990, '\0') + "end");
    Release(stream);
  }
}

TEST_P(FailingStreams, StayEmptyWhenTheirFirstWriteFails) {
  bool done = false;
  for (std::uint64_t nth = 1; !done; ++nth) {
    SCOPED_TRACE(nth);
    ZEBContainer* stream = NewMemory();
    EXPECT_EQ(Seek(stream, 5000), kSuccess);
    FailAt(GetParam(), nth);
    ZEBErrorObject* error = procs_.simple.Write(stream, "abc", 3);
    done = !Host::StopFailing();
    if (zeb_.Outcome(error) != kSuccess) {
      EXPECT_EQ(Mark(stream), 5000u);
      EXPECT_EQ(Read(stream, 9), "");
      EXPECT_EQ(Write(stream, "abc"), kSuccess);
    }
    EXPECT_EQ(Rewind(stream), kSuccess);
    EXPECT_EQ(Read(stream, 9999), std::string(5000, '\0') + "abc");
    Release(stream);
  }
}

// Beyond this host's own failing, an error that an operation makes may itself find no memory.
TEST_P(FailingStreams, FailWithOutOfMemoryWhenTheirErrorsCannotBeMade) {
  ZEBContainer* buffer = NewBuffer("0123456789");
  ForgetRecentAtoms(zeb_);
  FailAt(GetParam(), 1);
  ZEBErrorObject* error = procs_.positionable.Seek(buffer, 11, 0);
  Host::StopFailing();
  EXPECT_EQ(zeb_.Outcome(error), GetParam() == Failure::kByThrowing ? kUnknownError : kOutOfMemory);
  EXPECT_EQ(Mark(buffer), 0u);
}

}  // namespace
}  // namespace contract
