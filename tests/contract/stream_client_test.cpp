// Streams over a client's callbacks, and the tiers: what each stream lists and can do.

#include "contract/stream_client.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace contract {
namespace {

class ClientStream : public ClientStreamTest {};

// ---- Tiers

TEST_F(ClientStream, ListsTheInterfacesOfItsTier) {
  EXPECT_EQ(SignatureOf(NewSimple()), "ZEBSimpleStreamInterface");
  EXPECT_EQ(SignatureOf(NewRewindable()), "ZEBSimpleStreamInterface.ZEBRewindableStreamInterface");
  EXPECT_EQ(SignatureOf(NewPositionable()),
            "ZEBSimpleStreamInterface.ZEBRewindableStreamInterface.ZEBPositionableStreamInterface");
  EXPECT_EQ(SignatureOf(NewMemory()), SignatureOf(NewPositionable()));
}

TEST_F(ClientStream, CarriesAnInstanceUnderTheStreamName) {
  for (ZEBContainer* stream : {NewSimple(), NewRewindable(), NewPositionable()}) {
    EXPECT_NE(zeb_.InstanceOf(stream, "ZEBSimpleStreamZEBImpl"), nullptr);
    EXPECT_EQ(zeb_.CacheOf(stream).instanceName, zeb_.TextOf("ZEBSimpleStreamZEBImpl"));
  }
}

TEST_F(ClientStream, HasNoMethodAboveItsTier) {
  ZEBContainer* made = nullptr;
  std::uint64_t position = kUntouched;
  for (ZEBContainer* stream : {NewSimple(), NewRewindable()}) {
    EXPECT_EQ(Seek(stream, 0), kMissingMethod);
    EXPECT_EQ(Flush(stream), kMissingMethod);
    EXPECT_EQ(zeb_.Outcome(procs_.positionable.Mark(stream, &position)), kMissingMethod);
    EXPECT_EQ(position, 0u);
    EXPECT_EQ(
        zeb_.Outcome(procs_.positionable.CreateIndependentlyPositionableStream(stream, &made)),
        kMissingMethod);
    EXPECT_EQ(zeb_.Outcome(procs_.older.SeekV3(stream, 0)), kMissingMethod);
    EXPECT_EQ(procs_.older.SeekV2(stream, 0), 0);
    EXPECT_EQ(procs_.older.MarkV1(stream), 0u);
  }
  ZEBContainer* simple = NewSimple();
  EXPECT_EQ(Rewind(simple), kMissingMethod);
  EXPECT_EQ(zeb_.Outcome(procs_.rewindable.CreateIndependentlyRewindableStream(simple, &made)),
            kMissingMethod);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(TakeCalls(), Calls{});
}

// Listing an interface does not give a stream what it lacks.
TEST_F(ClientStream, HasNoMethodThatOnlyItsContainerClaims) {
  ZEBContainer* stream = NewSimple();
  zeb_.AddInterface(stream, ZEB_POSITIONABLE_STREAM_INTERFACE);
  EXPECT_EQ(Seek(stream, 0), kMissingMethod);
}

TEST_F(ClientStream, IsNoStreamWithoutAnInstanceOfOne) {
  ZEBContainer* impostor = Keep(zeb_.NewFull(
      &data_, {.instanceName = "other", .interfaceName = ZEB_SIMPLE_STREAM_INTERFACE}));
  EXPECT_EQ(Write(impostor, "x"), kMissingMethod);
  EXPECT_EQ(Write(Keep(zeb_.NewEmpty()), "x"), kMissingMethod);
}

TEST_F(ClientStream, IsFoundBehindAClone) {
  ZEBContainer* memory = NewMemory("abc");
  ZEBContainer* clone = Keep(zeb_.Clone(memory));
  EXPECT_EQ(Read(clone, 2), "ab");
  EXPECT_EQ(Read(memory, 2), "c");
  EXPECT_EQ(Seek(clone, 1), kSuccess);
  EXPECT_EQ(Mark(memory), 1u);
}

TEST_F(ClientStream, IsFoundBehindAnotherInstance) {
  ZEBContainer* memory = NewMemory("abc");
  zeb_.AddInstance(memory, "another", &data_);
  EXPECT_EQ(Read(memory, 9), "abc");
}

// ---- Calls

TEST_F(ClientStream, CallsItsCallbacks) {
  ZEBContainer* stream = NewPositionable();
  context_.number = 1;
  EXPECT_EQ(Read(stream, 5), "r");
  EXPECT_EQ(Write(stream, "text"), kSuccess);
  EXPECT_EQ(Rewind(stream), kSuccess);
  context_.number = 123;
  EXPECT_EQ(Mark(stream), 123u);
  EXPECT_EQ(Seek(stream, -7, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Seek(stream, 7, 99), kSuccess) << "what an origin means is the client's";
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(TakeCalls(),
            (Calls{"read(5)", "write(text)", "rewind()", "mark()", "seek(-7, 2)", "seek(7, 99)"}));
}

TEST_F(ClientStream, CallsTheCallbacksOfEveryTier) {
  for (ZEBContainer* stream : {NewSimple(), NewRewindable()}) {
    context_.number = 1;
    EXPECT_EQ(Read(stream, 5), "r");
    EXPECT_EQ(Write(stream, "text"), kSuccess);
    EXPECT_EQ(TakeCalls(), (Calls{"read(5)", "write(text)"}));
  }
  EXPECT_EQ(Rewind(NewRewindable()), kSuccess);
  EXPECT_EQ(TakeCalls(), Calls{"rewind()"});
}

TEST_F(ClientStream, IsReadAndWrittenByOldProcsAlike) {
  ZEBContainer* stream = NewPositionable();
  char buffer[8] = {};
  context_.number = 5;
  EXPECT_EQ(procs_.older.ReadV2(stream, buffer, 8), 5u);
  EXPECT_EQ(procs_.older.WriteV2(stream, "ab", 2), 1);
  EXPECT_EQ(zeb_.Outcome(procs_.older.WriteV3(stream, "cd", 2)), kSuccess);
  EXPECT_EQ(procs_.older.SeekV2(stream, 11), 1);
  EXPECT_EQ(zeb_.Outcome(procs_.older.SeekV3(stream, 12)), kSuccess);
  EXPECT_EQ(procs_.older.MarkV1(stream), 5u);
  EXPECT_EQ(TakeCalls(),
            (Calls{"read(8)", "write(ab)", "write(cd)", "seek(11, 0)", "seek(12, 0)", "mark()"}));
}

// ---- Errors

TEST_F(ClientStream, HandsTheErrorsOfItsCallbacksOn) {
  ZEBContainer* stream = NewPositionable();
  ZEBContainer* made = nullptr;
  std::uint64_t number = kUntouched;
  char buffer[8] = {};
  const std::vector<std::function<ZEBErrorObject*()>> operations = {
      [&] { return procs_.simple.Read(stream, &number, buffer, 8); },
      [&] { return procs_.simple.Write(stream, "x", 1); },
      [&] { return procs_.rewindable.CreateIndependentlyRewindableStream(stream, &made); },
      [&] { return procs_.rewindable.Rewind(stream); },
      [&] { return procs_.positionable.CreateIndependentlyPositionableStream(stream, &made); },
      [&] { return procs_.positionable.Mark(stream, &number); },
      [&] { return procs_.positionable.Seek(stream, 0, 0); },
  };
  context_.number = 3;
  context_.other = &other_;
  for (const auto& operation : operations) {
    ZEBErrorObject* own = NewError();
    context_.answer = own;
    ZEBErrorObject* answer = operation();
    EXPECT_EQ(answer, own) << "not a copy";
    EXPECT_EQ(zeb_.Outcome(answer), kOwnError);
    EXPECT_EQ(made, nullptr);
    context_.throws = true;
    EXPECT_EQ(zeb_.Outcome(operation()), kUnknownError);
    context_.throws = false;
  }
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(other_.released, 0) << "a context that came with an error is nobody's stream";
}

TEST_F(ClientStream, SwallowsErrorsForOldProcs) {
  ZEBContainer* stream = NewPositionable();
  char buffer[8] = {};
  context_.number = 3;
  const auto fail = [&] { context_.answer = NewError(); };
  fail();
  EXPECT_EQ(procs_.older.ReadV2(stream, buffer, 8), 0u);
  fail();
  EXPECT_EQ(procs_.older.WriteV2(stream, "x", 1), 0);
  fail();
  EXPECT_EQ(procs_.older.SeekV2(stream, 1), 0);
  fail();
  EXPECT_EQ(procs_.older.MarkV1(stream), 0u);
  fail();
  EXPECT_EQ(zeb_.Outcome(procs_.older.WriteV3(stream, "x", 1)), kOwnError);
  fail();
  EXPECT_EQ(zeb_.Outcome(procs_.older.SeekV3(stream, 1)), kOwnError);
}

TEST_F(ClientStream, MissesACallbackWhenItIsCalledFor) {
  ZEBContainer* stream = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewClientPositionableStream(
                &stream, &context_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                nullptr)),
            kSuccess);
  Keep(stream);
  ZEBContainer* made = nullptr;
  std::uint64_t position = kUntouched;
  EXPECT_EQ(Read(stream, 1), kMissingMethod);
  EXPECT_EQ(Write(stream, "x"), kMissingMethod);
  EXPECT_EQ(Rewind(stream), kMissingMethod);
  EXPECT_EQ(Seek(stream, 0), kMissingMethod);
  EXPECT_EQ(zeb_.Outcome(procs_.positionable.Mark(stream, &position)), kMissingMethod);
  EXPECT_EQ(zeb_.Outcome(procs_.rewindable.CreateIndependentlyRewindableStream(stream, &made)),
            kMissingMethod);
  EXPECT_EQ(zeb_.Outcome(procs_.positionable.CreateIndependentlyPositionableStream(stream, &made)),
            kMissingMethod);
  EXPECT_EQ(Flush(stream), kSuccess);
  Release(stream);
  EXPECT_EQ(context_.released, 0);
}

// ---- Release

TEST_F(ClientStream, IsReleasedOnce) {
  for (ZEBContainer* stream : {NewSimple(), NewRewindable(), NewPositionable()}) {
    context_.released = 0;
    EXPECT_EQ(zeb_.container.AddRef(stream), 1);
    zeb_.container.Release(stream);
    EXPECT_EQ(context_.released, 0);
    Release(stream);
    EXPECT_EQ(context_.released, 1);
  }
  EXPECT_EQ(TakeCalls(), Calls{});
}

TEST_F(ClientStream, MayThrowWhenItIsReleased) {
  ZEBContainer* stream = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewClientSimpleStream(
                &stream, &context_, ClientContext::Read, ClientContext::Write,
                ClientContext::ReleaseAndThrow)),
            kSuccess);
  zeb_.container.Release(stream);
  EXPECT_EQ(context_.released, 1);
}

TEST_F(ClientStream, IsReleasedWhenThereIsNowhereToPutIt) {
  EXPECT_EQ(
      zeb_.Outcome(procs_.factory.NewClientSimpleStream(
          nullptr, &context_, ClientContext::Read, ClientContext::Write, ClientContext::Release)),
      kMissingMethod);
  EXPECT_EQ(context_.released, 1);
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewClientRewindableStream(
                nullptr, &context_, ClientContext::Read, ClientContext::Write,
                ClientContext::NewRewindable, ClientContext::Rewind, ClientContext::Release)),
            kMissingMethod);
  EXPECT_EQ(context_.released, 2);
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewClientPositionableStream(
                nullptr, &context_, ClientContext::Read, ClientContext::Write,
                ClientContext::NewRewindable, ClientContext::Rewind, ClientContext::NewPositionable,
                ClientContext::Mark, ClientContext::Seek, ClientContext::Release)),
            kMissingMethod);
  EXPECT_EQ(context_.released, 3);
}

// ---- Independent streams

TEST_F(ClientStream, MakesIndependentStreamsOverNewContexts) {
  ZEBContainer* source = NewPositionable();
  context_.other = &other_;
  ZEBContainer* positionable = Independent(source);
  EXPECT_EQ(TakeCalls(), Calls{"new positionable()"});
  EXPECT_EQ(SignatureOf(positionable), SignatureOf(source));
  EXPECT_EQ(Seek(positionable, 4), kSuccess);
  EXPECT_EQ(Write(positionable, "x"), kSuccess);
  EXPECT_EQ(Write(source, "y"), kSuccess) << "who may write is the client's";
  EXPECT_EQ(other_.calls, (Calls{"seek(4, 0)", "write(x)"}));
  EXPECT_EQ(TakeCalls(), Calls{"write(y)"});
  Release(source);
  EXPECT_EQ(context_.released, 1);
  EXPECT_EQ(other_.released, 0);
  Release(positionable);
  EXPECT_EQ(other_.released, 1);
  EXPECT_EQ(context_.released, 1);
}

TEST_F(ClientStream, MakesIndependentStreamsOfTheTierThatWasAskedFor) {
  context_.other = &other_;
  for (ZEBContainer* source : {NewRewindable(), NewPositionable()}) {
    ZEBContainer* rewindable = IndependentRewindable(source);
    EXPECT_EQ(TakeCalls(), Calls{"new rewindable()"});
    EXPECT_EQ(SignatureOf(rewindable), "ZEBSimpleStreamInterface.ZEBRewindableStreamInterface");
    EXPECT_EQ(Rewind(rewindable), kSuccess);
    EXPECT_EQ(std::exchange(other_.calls, {}), Calls{"rewind()"});
    EXPECT_EQ(Seek(rewindable, 0), kMissingMethod);
  }
}

TEST_F(ClientStream, ReleasesNewContextsThatAreNull) {
  static int released;
  released = 0;
  ZEBContainer* source = nullptr;
  const auto release = [](void* context) { released += context == nullptr ? 100 : 1; };
  EXPECT_EQ(zeb_.Outcome(procs_.factory.NewClientRewindableStream(
                &source, &context_, ClientContext::Read, ClientContext::Write,
                ClientContext::NewRewindable, ClientContext::Rewind, release)),
            kSuccess);
  Release(IndependentRewindable(Keep(source)));
  EXPECT_EQ(released, 100);
  Release(source);
  EXPECT_EQ(released, 101);
}

}  // namespace
}  // namespace contract
