// Client streams of the first generation.

#include <gtest/gtest.h>

#include <string>

#include "contract/stream_client.h"

namespace contract {
namespace {

class OldClientStream : public ClientStreamTest {
 protected:
  // With write and seek in the form that answers yes or no.
  ZEBContainer* NewThird() {
    return Keep(procs_.olderMakers.NewExternalStreamV3(
        &context_, ClientContext::OldRead, ClientContext::OldWrite, ClientContext::OldSeek,
        ClientContext::Tell, ClientContext::Release));
  }
  // With write and seek in the form that answers an error.
  ZEBContainer* NewFourth() {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.olderMakers.NewExternalStreamV4(
                  &made, &context_, ClientContext::OldRead, ClientContext::Write,
                  ClientContext::SeekWithError, ClientContext::Tell, ClientContext::Release)),
              kSuccess);
    return Keep(made);
  }
};

TEST_F(OldClientStream, ReadsWhatTheClientSays) {
  for (ZEBContainer* stream : {NewThird(), NewFourth()}) {
    context_.number = 1;
    EXPECT_EQ(Read(stream, 4), "r");
    context_.number = 0;
    EXPECT_EQ(Read(stream, 4), "");
    EXPECT_EQ(TakeCalls(), (Calls{"read(4)", "read(4)"}));
  }
}

TEST_F(OldClientStream, WritesInEitherForm) {
  context_.number = 1;
  for (ZEBContainer* stream : {NewThird(), NewFourth()}) {
    EXPECT_EQ(Write(stream, "text"), kSuccess);
    EXPECT_EQ(TakeCalls(), Calls{"write(text)"});
  }
}

TEST_F(OldClientStream, TakesAnyNumberButZeroForSuccess) {
  ZEBContainer* stream = NewThird();
  context_.number = static_cast<std::uint64_t>(-5);
  EXPECT_EQ(Write(stream, "text"), kSuccess);
  EXPECT_EQ(Seek(stream, 3), kSuccess);
  context_.number = 0;
  EXPECT_EQ(Write(stream, "text"), kUnknownError);
  EXPECT_EQ(Seek(stream, 3), kUnknownError);
  EXPECT_EQ(Rewind(stream), kUnknownError);
}

TEST_F(OldClientStream, GivesTheVeryObjectOfTheGenericError) {
  ZEBErrorObject* error = procs_.positionable.Seek(NewThird(), 3, 0);
  ZEBErrorObject* generic = zeb_.error.GetCoreError(ZEB_ERROR_UNKNOWN);
  EXPECT_EQ(error, generic);
  zeb_.error.Release(error);
  zeb_.error.Release(generic);
}

TEST_F(OldClientStream, HandsTheErrorsOfTheFourthFormOn) {
  ZEBContainer* stream = NewFourth();
  context_.answer = NewError();
  EXPECT_EQ(Write(stream, "text"), kOwnError);
  context_.answer = NewError();
  EXPECT_EQ(Seek(stream, 3), kOwnError);
  context_.answer = NewError();
  EXPECT_EQ(Rewind(stream), kOwnError);
}

TEST_F(OldClientStream, SeeksToAbsolutePositionsOnly) {
  for (ZEBContainer* stream : {NewThird(), NewFourth()}) {
    context_.number = 10;
    EXPECT_EQ(Seek(stream, 5, ZEB_SEEK_FROM_BEGINNING), kSuccess);
    EXPECT_EQ(Seek(stream, 5, ZEB_SEEK_FROM_POSITION), kSuccess);
    EXPECT_EQ(Seek(stream, -3, ZEB_SEEK_FROM_POSITION), kSuccess);
    EXPECT_EQ(Rewind(stream), kSuccess);
    EXPECT_EQ(TakeCalls(),
              (Calls{"seek(5)", "tell()", "seek(15)", "tell()", "seek(7)", "seek(0)"}));
  }
}

TEST_F(OldClientStream, CannotSeekFromItsEnd) {
  for (ZEBContainer* stream : {NewThird(), NewFourth()}) {
    for (const std::uint32_t origin : {2u, 3u, 0xFFFFFFFFu}) {
      EXPECT_EQ(Seek(stream, 0, origin), "KST 0: Cannot seek from end on old client stream");
    }
  }
  EXPECT_EQ(TakeCalls(), Calls{});
}

TEST_F(OldClientStream, TellsItsPosition) {
  ZEBContainer* stream = NewThird();
  context_.number = 42;
  EXPECT_EQ(Mark(stream), 42u);
  EXPECT_EQ(procs_.older.MarkV1(stream), 42u);
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(TakeCalls(), (Calls{"tell()", "tell()"}));
}

TEST_F(OldClientStream, CannotBeMadeIndependent) {
  for (ZEBContainer* stream : {NewThird(), NewFourth()}) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.rewindable.CreateIndependentlyRewindableStream(stream, &made)),
              "KST 0: Cannot create independently rewindable stream from old client stream");
    EXPECT_EQ(
        zeb_.Outcome(procs_.positionable.CreateIndependentlyPositionableStream(stream, &made)),
        "KST 0: Cannot create independently rewindable stream from old client");
    EXPECT_EQ(made, nullptr);
  }
  EXPECT_EQ(TakeCalls(), Calls{});
}

TEST_F(OldClientStream, ListsAllThreeInterfaces) {
  EXPECT_EQ(SignatureOf(NewThird()), SignatureOf(NewMemory()));
}

TEST_F(OldClientStream, IsReleasedOnce) {
  Release(NewThird());
  EXPECT_EQ(context_.released, 1);
  Release(NewFourth());
  EXPECT_EQ(context_.released, 2);
  EXPECT_EQ(TakeCalls(), Calls{});
}

TEST_F(OldClientStream, IsReleasedWhenThereIsNowhereToPutIt) {
  EXPECT_EQ(zeb_.Outcome(procs_.olderMakers.NewExternalStreamV4(
                nullptr, &context_, ClientContext::OldRead, ClientContext::Write,
                ClientContext::SeekWithError, ClientContext::Tell, ClientContext::Release)),
            kMissingMethod);
  EXPECT_EQ(context_.released, 1);
}

TEST_F(OldClientStream, MissesACallbackWhenItIsCalledFor) {
  ZEBContainer* third = Keep(procs_.olderMakers.NewExternalStreamV3(&context_, nullptr, nullptr,
                                                                    nullptr, nullptr, nullptr));
  ZEBContainer* fourth = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.olderMakers.NewExternalStreamV4(
                &fourth, &context_, nullptr, nullptr, nullptr, nullptr, nullptr)),
            kSuccess);
  for (ZEBContainer* stream : {third, Keep(fourth)}) {
    std::uint64_t position = kUntouched;
    EXPECT_EQ(Read(stream, 4), kMissingMethod);
    EXPECT_EQ(Write(stream, "x"), kMissingMethod);
    EXPECT_EQ(Seek(stream, 1), kMissingMethod);
    EXPECT_EQ(Seek(stream, 1, ZEB_SEEK_FROM_POSITION), kMissingMethod);
    EXPECT_EQ(Rewind(stream), kMissingMethod);
    EXPECT_EQ(zeb_.Outcome(procs_.positionable.Mark(stream, &position)), kMissingMethod);
  }
}

TEST_F(OldClientStream, MayThrow) {
  ZEBContainer* stream = NewThird();
  context_.throws = true;
  EXPECT_EQ(Read(stream, 4), kUnknownError);
  EXPECT_EQ(Write(stream, "x"), kUnknownError);
  EXPECT_EQ(Seek(stream, 1), kUnknownError);
  EXPECT_EQ(procs_.older.MarkV1(stream), 0u);
}

}  // namespace
}  // namespace contract
