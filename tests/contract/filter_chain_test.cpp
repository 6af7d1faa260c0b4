// Chains as a whole: closing, appending, loops, chain states, clients that change the chain they
// are called from, and chains longer than the stack is deep.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/filter_library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A to B to the sink S, all of clients; A is the test's.
class Chain : public FilterTest {
 protected:
  Chain() {
    sink_ = NewSink(s_);
    b_ = NewFilter(sink_, clientB_);
    a_ = Owned(NewFilter(b_, clientA_));
  }
  void TearDown() override {
    filter_.Release(a_);
    FilterTest::TearDown();
  }

  ZEBChainState* StateOf(ZEBDataSink* filter) {
    ZEBChainState* state = nullptr;
    EXPECT_EQ(Outcome(filter_.GetChainState(&state, filter)), kSuccess);
    EXPECT_NE(state, nullptr);
    return state;
  }

  FilterClient clientA_ = Client("a");
  FilterClient clientB_ = Client("b");
  FilterClient s_ = Client("s");
  FilterClient t_ = Client("t");
  ZEBDataSink* sink_;
  ZEBDataSink* b_;
  ZEBDataSink* a_;
};

TEST_F(Chain, IsClosedInItsOrderWithoutTheSink) {
  filter_.Close(a_);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  filter_.Close(b_);
  EXPECT_THAT(TakeDiary(), ElementsAre("b closes"));
}

TEST_F(Chain, IsClosedPastIdentityFilters) {
  ZEBDataSink* head = Owned(NewIdentity(a_));
  filter_.Close(head);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  filter_.Release(head);
}

TEST_F(Chain, GetsANewSinkAtItsEnd) {
  ZEBDataSink* other = NewSink(t_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, other)), kSuccess);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes", "s ends"));
  EXPECT_EQ(filter_.PeekTarget(a_), b_);
  EXPECT_EQ(filter_.PeekTarget(b_), other);
}

TEST_F(Chain, KeepsItsSinkWhenItIsGivenItAgain) {
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, sink_)), kSuccess);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(Chain, GetsAnotherChainAtItsEnd) {
  ZEBDataSink* tail = NewIdentity(NewSink(t_));
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, tail)), kSuccess);
  EXPECT_EQ(filter_.PeekTarget(b_), tail);
  TakeDiary();
  ZEBDataSink* last = NewNull();
  EXPECT_EQ(Outcome(filter_.SetDataSink(b_, last)), kSuccess);
  EXPECT_EQ(filter_.PeekTarget(tail), last);
  EXPECT_THAT(TakeDiary(), ElementsAre("b closes", "t ends"));
}

TEST_F(Chain, MayShareItsEndWithAnother) {
  ZEBDataSink* other = NewIdentity(sink_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, other)), kSuccess);
  EXPECT_EQ(filter_.PeekTarget(b_), other);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
}

// ---- Loops

TEST_F(Chain, RefusesItsHeadAsItsSink) {
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, a_)), kLoop);
  EXPECT_THAT(TakeDiary(), IsEmpty());
  EXPECT_EQ(older_.SetDataSinkV1(a_, a_), 0);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(Chain, RefusesAMemberAsItsSinkAfterClosingThoseBeforeIt) {
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, b_)), kLoop);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes"));
  EXPECT_EQ(filter_.PeekTarget(a_), b_);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(Chain, RefusesASinkWhoseOwnChainLeadsBack) {
  EXPECT_EQ(Outcome(filter_.SetDataSink(b_, a_)), kLoop);
  ZEBDataSink* outer = NewIdentity(NewIdentity(a_));
  EXPECT_EQ(Outcome(filter_.SetDataSink(b_, outer)), kLoop);
  ZEBDataSink* beside = NewIdentity(b_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, beside)), kLoop);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
  EXPECT_THAT(TakeDiary(), ElementsAre("b closes", "b closes", "a closes", "b closes"));
  filter_.Release(Owned(outer));
  filter_.Release(Owned(beside));
  EXPECT_THAT(TakeDiary(), IsEmpty());
}

TEST_F(Chain, LeavesARefusedSinkThatNobodyOwnsAsItWas) {
  FilterClient client = Client("x");
  ZEBDataSink* unowned = NewFilter(b_, client);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, unowned)), kLoop);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  EXPECT_EQ(filter_.Write(unowned, "x", 1), nullptr);
  filter_.Release(Owned(unowned));
  EXPECT_THAT(TakeDiary(), ElementsAre("x writes 1", "x ends"));
}

TEST_F(Chain, LeavesARefusedFilterThatNobodyOwnsAsItWas) {
  ZEBDataSink* lonely = NewIdentity(NewNull());
  EXPECT_EQ(Outcome(filter_.SetDataSink(lonely, lonely)), kLoop);
  EXPECT_EQ(filter_.Write(lonely, "x", 1), nullptr);
  filter_.Close(lonely);
  filter_.Release(Owned(lonely));
}

// ---- Chain states

TEST_F(Chain, IsRestoredByItsState) {
  ZEBChainState* state = StateOf(a_);
  ZEBDataSink* other = NewSink(t_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, other)), kSuccess);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  EXPECT_EQ(filter_.PeekTarget(b_), other);
  EXPECT_EQ(filter_.ResetChainState(state), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("t ends"));
  EXPECT_EQ(filter_.PeekTarget(a_), b_);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(Chain, LosesWhatWasAppendedSinceItsState) {
  FilterClient c = Client("c");
  ZEBChainState* state = older_.GetChainStateV1(b_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewFilter(NewSink(t_), c))), kSuccess);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewNull())), kSuccess);
  TakeDiary();
  EXPECT_EQ(filter_.ResetChainState(state), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("c ends"));
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(Chain, IsUnchangedByAStateOfNoChange) {
  const std::uint64_t live = Host::LiveBlocks();
  ZEBChainState* state = StateOf(a_);
  EXPECT_EQ(Host::LiveBlocks(), live + 1);
  EXPECT_EQ(filter_.ResetChainState(state), nullptr);
  EXPECT_EQ(Host::LiveBlocks(), live);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
  EXPECT_THAT(TakeDiary(), IsEmpty());
}

TEST_F(Chain, LivesOnInItsState) {
  FilterClient a = Client("x"), b = Client("y"), s = Client("z");
  ZEBDataSink* head = Owned(NewFilter(NewFilter(NewSink(s), b), a));
  ZEBChainState* state = StateOf(head);
  filter_.Release(head);
  EXPECT_THAT(TakeDiary(), ElementsAre("x ends"));
  EXPECT_EQ(filter_.ResetChainState(state), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("y ends", "z ends"));
}

TEST_F(Chain, MayHaveSeveralStates) {
  ZEBChainState* first = StateOf(a_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewSink(t_))), kSuccess);
  ZEBDataSink* second_sink = filter_.PeekTarget(b_);
  ZEBChainState* second = StateOf(a_);
  TakeDiary();
  EXPECT_EQ(filter_.ResetChainState(first), nullptr);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
  EXPECT_THAT(TakeDiary(), IsEmpty());
  EXPECT_EQ(filter_.ResetChainState(second), nullptr);
  EXPECT_EQ(filter_.PeekTarget(b_), second_sink);
  EXPECT_THAT(TakeDiary(), ElementsAre("s ends"));
}

// ---- Clients that change the chain that they are called from

class ChangingChain : public Chain {
 protected:
  // The test's own reference to the head, given back early.
  void ReleaseHead() {
    filter_.Release(a_);
    a_ = nullptr;
  }
};

TEST_F(ChangingChain, IsReleasedByItsSinkThatIsWrittenInto) {
  ZEBDataSink* head = Owned(NewIdentity(a_));
  ReleaseHead();  // the identity filter alone owns A now
  ZEBDataSink* const a = filter_.PeekTarget(head);
  clientA_.onWrite = [&](const void* data, std::uint64_t size) {
    return filter_.Write(filter_.PeekTarget(a), data, size);
  };
  clientB_.onWrite = [&](const void* data, std::uint64_t size) {
    return filter_.Write(sink_, data, size);
  };
  s_.onWrite = [&](const void*, std::uint64_t) -> ZEBErrorObject* {
    filter_.Release(head);
    return nullptr;
  };
  EXPECT_EQ(filter_.Write(head, "abc", 3), nullptr);
  EXPECT_THAT(TakeDiary(),
              ElementsAre("a writes 3", "b writes 3", "s writes 3", "a ends", "b ends", "s ends"));
}

TEST_F(ChangingChain, IsReleasedWhileItIsClosed) {
  clientA_.onClose = [&] { ReleaseHead(); };
  filter_.Close(a_);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "a ends", "b closes", "b ends", "s ends"));
}

TEST_F(ChangingChain, IsReleasedByItsLastFilterWhileItIsClosed) {
  clientB_.onClose = [&] { ReleaseHead(); };
  filter_.Close(a_);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes", "a ends", "b ends", "s ends"));
}

TEST_F(ChangingChain, GrowsWhileItIsClosed) {
  FilterClient c = Client("c");
  clientA_.onClose = [&] {
    clientA_.onClose = nullptr;
    EXPECT_EQ(Outcome(filter_.SetDataSink(b_, NewFilter(NewNull(), c))), kSuccess);
  };
  filter_.Close(a_);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes", "s ends", "b closes", "c closes"));
}

TEST_F(ChangingChain, LosesTheMemberThatIsBeingClosed) {
  FilterClient c = Client("c");
  ZEBChainState* state = StateOf(a_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewFilter(NewSink(t_), c))), kSuccess);
  TakeDiary();
  c.onClose = [&] { EXPECT_EQ(filter_.ResetChainState(state), nullptr); };
  filter_.Close(a_);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes", "c closes", "c ends", "t ends"));
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(ChangingChain, LosesTheMemberThatAppendingReached) {
  FilterClient c = Client("c"), n = Client("n");
  ZEBChainState* state = StateOf(a_);
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewFilter(NewSink(t_), c))), kSuccess);
  TakeDiary();
  c.onClose = [&] { EXPECT_EQ(filter_.ResetChainState(state), nullptr); };
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewSink(n))), kSuccess);
  // C was the last filter that the call had reached, and ends together with what it was given.
  EXPECT_THAT(TakeDiary(),
              ElementsAre("a closes", "b closes", "c closes", "t ends", "c ends", "n ends"));
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(ChangingChain, IsReleasedWhileASinkIsAppended) {
  clientB_.onClose = [&] { ReleaseHead(); };
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, NewSink(t_))), kSuccess);
  EXPECT_THAT(TakeDiary(),
              ElementsAre("a closes", "b closes", "a ends", "s ends", "b ends", "t ends"));
}

TEST_F(ChangingChain, BecomesALoopOnlyWhileItIsClosed) {
  // While A closes, the sink that is being appended comes to lead back to the chain.
  ZEBDataSink* outer = Owned(NewIdentity(NewNull()));
  clientB_.onClose = [&] {
    clientB_.onClose = nullptr;
    EXPECT_EQ(Outcome(filter_.SetDataSink(outer, a_)), kSuccess);
  };
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, outer)), kLoop);
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
  filter_.Release(outer);
}

TEST_F(ChangingChain, LosesTheSinkThatIsBeingAppended) {
  ZEBDataSink* other = Owned(NewSink(t_));
  clientA_.onClose = [&] { filter_.Release(other); };
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, other)), kSuccess);
  EXPECT_EQ(filter_.PeekTarget(b_), other);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes", "s ends"));
  EXPECT_EQ(filter_.Write(other, "x", 1), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("t writes 1"));
}

TEST_F(ChangingChain, LosesTheSinkThatIsRefused) {
  ZEBDataSink* outer = Owned(NewIdentity(a_));
  clientA_.onClose = [&] { filter_.Release(outer); };
  EXPECT_EQ(Outcome(filter_.SetDataSink(a_, outer)), kLoop);
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  EXPECT_EQ(filter_.PeekTarget(b_), sink_);
}

TEST_F(ChangingChain, IsUsedByAClientThatEnds) {
  clientA_.onDestroy = [&] {
    ZEBDataSink* ending = a_;
    EXPECT_EQ(filter_.IsFilter(ending), 1);
    EXPECT_EQ(filter_.PeekTarget(ending), b_);
    EXPECT_EQ(Outcome(filter_.Write(ending, "x", 1)), kMissingMethod);
    EXPECT_EQ(filter_.GetPostScriptFilter(ending), nullptr);
    EXPECT_EQ(Outcome(filter_.AddRef(ending)), kSuccess);
    filter_.Release(ending);
    filter_.Close(ending);
    EXPECT_EQ(filter_.ResetChainState(StateOf(ending)), nullptr);
    EXPECT_EQ(Outcome(filter_.SetDataSink(ending, NewSink(t_))), kSuccess);
  };
  filter_.Release(a_);
  a_ = nullptr;
  EXPECT_THAT(TakeDiary(),
              ElementsAre("a ends", "b closes", "b closes", "s ends", "b ends", "t ends"));
}

TEST_F(ChangingChain, KeepsAMemberWhoseEndingClientTookAReference) {
  clientA_.onDestroy = [&] { Owned(a_); };
  filter_.Release(a_);
  EXPECT_THAT(TakeDiary(), ElementsAre("a ends"));
  EXPECT_EQ(filter_.PeekTarget(a_), b_);
  EXPECT_EQ(Outcome(filter_.Write(a_, "x", 1)), kMissingMethod);
  filter_.Release(a_);
  a_ = nullptr;
  EXPECT_THAT(TakeDiary(), ElementsAre("b ends", "s ends"));
}

TEST_F(ChangingChain, EndsInsideTheEndOfAMember) {
  ZEBDataSink* other = Owned(NewIdentity(NewSink(t_)));
  clientB_.onDestroy = [&] { filter_.Release(other); };
  ReleaseHead();
  EXPECT_THAT(TakeDiary(), ElementsAre("a ends", "b ends", "t ends", "s ends"));
}

// ---- Long chains

class LongChain : public FilterTest {
 protected:
  static constexpr int kMembers = 100'000;

  // Every member ends, and nothing remembers it but a number.
  static inline int ends = 0;
  static inline int closes = 0;
  static void CountEnd(void*) { ++ends; }
  static void CountClose(void*) { ++closes; }

  ZEBDataSink* NewChain(ZEBDataSink* last, bool identities) {
    ends = closes = 0;
    ZEBDataSink* head = last;
    for (int i = 0; i < kMembers; ++i) {
      ZEBDataSink* next = identities ? older_.NewIdentityFilterV1(head)
                                     : older_.NewClientFilterV1(head, nullptr, nullptr, &CountClose,
                                                                nullptr, &CountEnd);
      if (next == nullptr) throw std::runtime_error("no filter");
      head = next;
    }
    return Owned(head);
  }
};

TEST_F(LongChain, IsWalkedAndEnded) {
  FilterClient s = Client("s"), t = Client("t");
  ZEBDataSink* head = NewChain(NewSink(s), false);
  filter_.Close(head);
  EXPECT_EQ(closes, kMembers);
  ZEBChainState* state = nullptr;
  EXPECT_EQ(filter_.GetChainState(&state, head), nullptr);
  EXPECT_EQ(filter_.SetDataSink(head, NewSink(t)), nullptr);
  EXPECT_EQ(closes, 2 * kMembers);
  EXPECT_EQ(filter_.ResetChainState(state), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("t ends"));
  filter_.Release(head);
  EXPECT_EQ(ends, kMembers);
  EXPECT_THAT(TakeDiary(), ElementsAre("s ends"));
}

TEST_F(LongChain, IsWrittenThrough) {
  FilterClient s = Client("s");
  ZEBDataSink* head = NewChain(NewSink(s), true);
  EXPECT_EQ(filter_.Write(head, "abc", 3), nullptr);
  filter_.Release(head);
  EXPECT_THAT(TakeDiary(), ElementsAre("s writes 3", "s ends"));
}

TEST_F(LongChain, IsRefusedAsItsOwnSink) {
  ZEBDataSink* last = NewIdentity(NewNull());
  ZEBDataSink* head = NewChain(last, false);
  EXPECT_EQ(Outcome(filter_.SetDataSink(last, head)), kLoop);
  EXPECT_EQ(closes, 0);
  filter_.Release(head);
  EXPECT_EQ(ends, kMembers);
}

}  // namespace
}  // namespace contract
