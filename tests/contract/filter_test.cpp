// Data sinks and filters one by one: what they do with bytes, who owns them, and what they refuse.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "contract/filter_library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// ---- The published rows

class FilterRows : public FilterTest {};

TEST_F(FilterRows, ArePublishedUnderTheirNames) {
  std::vector<ZEBProc> members(sizeof(filter_) / sizeof(ZEBProc));
  std::memcpy(members.data(), &filter_, sizeof(filter_));
  std::vector<ZEBProc> older(sizeof(older_) / sizeof(ZEBProc));
  std::memcpy(older.data(), &older_, sizeof(older_));
  members.insert(members.end(), older.begin(), older.end());

  std::vector<ZEBProc> published;
  for (const ProcRow& row : kProcRows) {
    if (std::string(ZEB_FILTER_INTERFACE) != row.interfaceName) continue;
    published.push_back(zeb_.getProcAddress(row.interfaceName, row.methodName, row.procName));
    EXPECT_NE(published.back(), nullptr) << ::testing::PrintToString(row);
  }
  EXPECT_EQ(published.size(), 26u);
  EXPECT_EQ(members, published);
}

TEST_F(FilterRows, HaveNoNeighbours) {
  constexpr std::array<std::array<const char*, 2>, 8> neighbours = {{
      {"Write", "ZEBFilterWriteV3Proc"},
      {"Write", "ZEBFilterWriteV1Proc"},
      {"Release", "ZEBFilterReleaseV2Proc"},
      {"Close", "ZEBFilterCloseV2Proc"},
      {"SetImageParameters", "ZEBFilterSetImageParametersProc"},
      {"ResetChainState", "ZEBFilterResetChainStateV2Proc"},
      {"IsFilter", "ZEBFilterWriteProc"},
      {"", ""},
  }};
  for (const auto& [method, proc] : neighbours) {
    EXPECT_EQ(zeb_.getProcAddress(ZEB_FILTER_INTERFACE, method, proc), nullptr) << proc;
  }
}

// ---- Writing

class Sinks : public FilterTest {};

TEST_F(Sinks, OfNobodyTakeEverything) {
  ZEBDataSink* sink = Owned(NewNull());
  const std::uint64_t live = Host::LiveBlocks();
  EXPECT_EQ(filter_.Write(sink, "bytes", 5), nullptr);
  EXPECT_EQ(filter_.Write(sink, nullptr, 0), nullptr);
  EXPECT_EQ(filter_.Write(sink, nullptr, std::numeric_limits<std::uint64_t>::max()), nullptr);
  EXPECT_EQ(older_.WriteV1(sink, "bytes", 5), 1);
  EXPECT_EQ(Host::LiveBlocks(), live);
  filter_.Release(sink);
}

TEST_F(Sinks, GiveTheirClientTheArgumentsUnchanged) {
  std::vector<std::pair<const void*, std::uint64_t>> got;
  FilterClient client = Client("sink");
  client.onWrite = [&](const void* data, std::uint64_t size) {
    got.emplace_back(data, size);
    return nullptr;
  };
  ZEBDataSink* sink = Owned(NewSink(client));
  const char bytes[] = "some bytes";
  const std::vector<std::pair<const void*, std::uint64_t>> sent = {
      {bytes, 10}, {bytes + 3, 0}, {nullptr, 0}, {nullptr, ~std::uint64_t{0}}};
  for (const auto& [data, size] : sent) EXPECT_EQ(filter_.Write(sink, data, size), nullptr);
  EXPECT_EQ(got, sent);
  filter_.Release(sink);
}

TEST_F(Sinks, HandTheirClientsErrorOnUntouched) {
  ZEBErrorObject* error = zeb_.error.NewError("disk full", "client", 7, nullptr, nullptr);
  EXPECT_THAT(Reports::Take(), ElementsAre("disk full"));
  FilterClient client = Client("sink");
  client.onWrite = [&](const void*, std::uint64_t) { return error; };
  ZEBDataSink* filter = Owned(NewIdentity(NewSink(client)));
  EXPECT_EQ(filter_.Write(filter, "x", 1), error);
  EXPECT_EQ(Outcome(error), "client 7: disk full");
  filter_.Release(filter);
}

TEST_F(Sinks, AnswerNoToOldClientsAndReleaseTheError) {
  FilterClient client = Client("sink");
  int ended = 0;
  client.onWrite = [&](const void*, std::uint64_t) {
    return zeb_.error.NewError("disk full", "client", 7, &ended,
                               [](void* info) { ++*static_cast<int*>(info); });
  };
  ZEBDataSink* sink = Owned(NewSink(client));
  EXPECT_EQ(older_.WriteV1(sink, "x", 1), 0);
  EXPECT_EQ(ended, 1);
  EXPECT_THAT(Reports::Take(), ElementsAre("disk full"));
  filter_.Release(sink);
}

TEST_F(Sinks, PassBytesThroughIdentityFilters) {
  FilterClient client = Client("sink");
  std::string got;
  client.onWrite = [&](const void* data, std::uint64_t size) {
    got.append(static_cast<const char*>(data), size);
    return nullptr;
  };
  ZEBDataSink* head = NewSink(client);
  for (int i = 0; i < 16; ++i) head = NewIdentity(head);
  Owned(head);
  EXPECT_EQ(filter_.Write(head, "one ", 4), nullptr);
  EXPECT_EQ(older_.WriteV1(head, "two", 3), 1);
  EXPECT_EQ(got, "one two");
  filter_.Release(head);
}

TEST_F(Sinks, GetNothingFromAClientFilterThatWritesNothingOn) {
  FilterClient sink = Client("sink");
  FilterClient filter = Client("filter");
  ZEBDataSink* head = Owned(NewFilter(NewSink(sink), filter));
  EXPECT_EQ(filter_.Write(head, "abc", 3), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("filter writes 3"));
  filter_.Release(head);
}

TEST_F(Sinks, GetWhatAClientFilterWritesIntoItsTarget) {
  FilterClient sink = Client("sink");
  FilterClient filter = Client("filter");
  ZEBDataSink* head = Owned(NewFilter(NewIdentity(NewSink(sink)), filter));
  filter.onWrite = [&](const void* data, std::uint64_t size) {
    if (ZEBErrorObject* error = filter_.Write(filter_.PeekTarget(head), data, size)) return error;
    return filter_.Write(filter_.PeekTarget(head), data, size * 2);
  };
  EXPECT_EQ(filter_.Write(head, "abc", 3), nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("filter writes 3", "sink writes 3", "sink writes 6"));
  filter_.Release(head);
}

// ---- Kinds

class FilterKinds : public FilterTest {
 protected:
  FilterKinds() {
    plain_ = Owned(NewNull());
    identity_ = Owned(NewIdentity(plain_));
    jpeg_ = Owned(NewJPEG(plain_, client_));
    clientFilter_ = Owned(NewFilter(plain_, client_));
  }
  void TearDown() override {
    for (ZEBDataSink* member : {identity_, jpeg_, clientFilter_, plain_}) filter_.Release(member);
    FilterTest::TearDown();
  }

  FilterClient client_ = Client("client");
  ZEBDataSink* plain_;
  ZEBDataSink* identity_;
  ZEBDataSink* jpeg_;
  ZEBDataSink* clientFilter_;
};

TEST_F(FilterKinds, AreTold) {
  FilterClient client = Client("sink");
  ZEBDataSink* clientSink = Owned(NewSink(client));
  EXPECT_EQ(filter_.IsFilter(plain_), 0);
  EXPECT_EQ(filter_.IsFilter(clientSink), 0);
  EXPECT_EQ(filter_.IsFilter(identity_), 1);
  EXPECT_EQ(filter_.IsFilter(clientFilter_), 1);
  EXPECT_EQ(filter_.IsFilter(jpeg_), 1);
  EXPECT_EQ(filter_.IsFilter(nullptr), 0);
  filter_.Release(clientSink);
}

TEST_F(FilterKinds, AreRefusedWhereAFilterIsNeeded) {
  EXPECT_EQ(Outcome(filter_.SetDataSink(plain_, plain_)), kNotAFilter);
  EXPECT_EQ(older_.SetDataSinkV1(plain_, plain_), 0);
  ZEBChainState* state = reinterpret_cast<ZEBChainState*>(this);
  EXPECT_EQ(Outcome(filter_.GetChainState(&state, plain_)), kNotAFilter);
  EXPECT_EQ(state, nullptr);
  EXPECT_EQ(older_.GetChainStateV1(plain_), nullptr);
  EXPECT_EQ(filter_.PeekTarget(plain_), nullptr);
  EXPECT_EQ(filter_.GetPostScriptFilter(plain_), nullptr);
  filter_.Close(plain_);
  EXPECT_THAT(TakeDiary(), IsEmpty());
}

TEST_F(FilterKinds, AreRefusedWhereAJPEGFilterIsNeeded) {
  for (ZEBDataSink* member : {plain_, identity_, clientFilter_}) {
    filter_.SetImageParameters(member, 1, 2, 3);
    filter_.SetCompressionParameters(member, 1.5f);
  }
  EXPECT_THAT(TakeDiary(), IsEmpty());
}

TEST_F(FilterKinds, PassTheParametersOnUnchanged) {
  filter_.SetImageParameters(jpeg_, 1, 0, 0xFFFFFFFFu);
  filter_.SetCompressionParameters(jpeg_, -0.5f);
  EXPECT_THAT(TakeDiary(),
              ElementsAre("client image 1 0 4294967295", "client compression -0.500000"));
}

TEST_F(FilterKinds, NameTheirPostScriptCounterpart) {
  EXPECT_STREQ(filter_.GetPostScriptFilter(identity_), "");
  EXPECT_EQ(filter_.GetPostScriptFilter(clientFilter_), client_.name.c_str());
  EXPECT_EQ(filter_.GetPostScriptFilter(jpeg_), client_.name.c_str());
}

TEST_F(FilterKinds, ShowTheirTargetWithoutANewReference) {
  FilterClient client = Client("target");
  ZEBDataSink* target = NewSink(client);
  ZEBDataSink* filter = Owned(NewIdentity(target));
  EXPECT_EQ(filter_.PeekTarget(filter), target);
  EXPECT_EQ(filter_.PeekTarget(filter), target);
  filter_.Release(filter);
  EXPECT_THAT(TakeDiary(), ElementsAre("target ends"));
}

// ---- Nulls

class FilterNulls : public FilterTest {};

TEST_F(FilterNulls, AreTheStandardErrorWhereAnErrorIsAnswered) {
  ZEBDataSink* filter = Owned(NewIdentity(NewNull()));
  EXPECT_EQ(Outcome(filter_.AddRef(nullptr)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.Write(nullptr, "x", 1)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.SetDataSink(nullptr, filter)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.SetDataSink(filter, nullptr)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.SetDataSink(nullptr, nullptr)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.ResetChainState(nullptr)), kMissingMethod);
  ZEBChainState* state = reinterpret_cast<ZEBChainState*>(this);
  EXPECT_EQ(Outcome(filter_.GetChainState(&state, nullptr)), kMissingMethod);
  EXPECT_EQ(state, nullptr);
  EXPECT_EQ(Outcome(filter_.GetChainState(nullptr, filter)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.NewNullDataSink(nullptr)), kMissingMethod);
  EXPECT_EQ(Outcome(filter_.NewIdentityFilter(nullptr, filter)), kMissingMethod);
  filter_.Release(filter);
}

TEST_F(FilterNulls, AreNothingElsewhere) {
  older_.AddRefV1(nullptr);
  filter_.Release(nullptr);
  filter_.Close(nullptr);
  EXPECT_EQ(older_.WriteV1(nullptr, "x", 1), 0);
  EXPECT_EQ(older_.SetDataSinkV1(nullptr, nullptr), 0);
  EXPECT_EQ(older_.GetChainStateV1(nullptr), nullptr);
  EXPECT_EQ(older_.NewIdentityFilterV1(nullptr), nullptr);
  EXPECT_EQ(filter_.PeekTarget(nullptr), nullptr);
  EXPECT_EQ(filter_.GetPostScriptFilter(nullptr), nullptr);
  filter_.SetImageParameters(nullptr, 1, 2, 3);
  filter_.SetCompressionParameters(nullptr, 1);
}

TEST_F(FilterNulls, CloseNothingOfAFilterThatGetsNoSink) {
  FilterClient client = Client("filter");
  ZEBDataSink* filter = Owned(NewFilter(NewNull(), client));
  EXPECT_EQ(Outcome(filter_.SetDataSink(filter, nullptr)), kMissingMethod);
  EXPECT_THAT(TakeDiary(), IsEmpty());
  filter_.Release(filter);
}

TEST_F(FilterNulls, AsClientProceduresFailOnlyWhenTheyAreNeeded) {
  ZEBDataSink* sink = nullptr;
  EXPECT_EQ(Outcome(filter_.NewClientDataSink(&sink, nullptr, nullptr, nullptr)), kSuccess);
  ZEBDataSink* filter = nullptr;
  EXPECT_EQ(
      Outcome(filter_.NewClientFilter(&filter, sink, nullptr, nullptr, nullptr, nullptr, nullptr)),
      kSuccess);
  ZEBDataSink* jpeg = nullptr;
  EXPECT_EQ(Outcome(filter_.NewFilterJPEG(&jpeg, filter, nullptr, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr)),
            kSuccess);
  Owned(jpeg);
  for (ZEBDataSink* member : {sink, filter, jpeg}) {
    EXPECT_EQ(Outcome(filter_.Write(member, "x", 1)), kMissingMethod);
    EXPECT_EQ(older_.WriteV1(member, "x", 1), 0);
  }
  EXPECT_EQ(filter_.GetPostScriptFilter(filter), nullptr);
  EXPECT_EQ(filter_.GetPostScriptFilter(jpeg), nullptr);
  filter_.SetImageParameters(jpeg, 1, 2, 3);
  filter_.SetCompressionParameters(jpeg, 1);
  filter_.Close(jpeg);
  filter_.Release(jpeg);
}

TEST_F(FilterNulls, AsClientDataReachTheClient) {
  static int calls;
  calls = 0;
  const auto write = [](void* data, const void*, std::uint64_t) -> ZEBErrorObject* {
    calls += data == nullptr ? 1 : 100;
    return nullptr;
  };
  const auto destroy = [](void* data) { calls += data == nullptr ? 1 : 100; };
  ZEBDataSink* sink = Owned(older_.NewClientDataSinkV1(nullptr, write, destroy));
  EXPECT_EQ(filter_.Write(sink, "x", 1), nullptr);
  filter_.Release(sink);
  EXPECT_EQ(calls, 2);
}

// ---- Ownership

class FilterOwnership : public FilterTest {};

TEST_F(FilterOwnership, StartsWithNobody) {
  FilterClient client = Client("sink");
  ZEBDataSink* sink = NewSink(client);
  EXPECT_EQ(Outcome(filter_.AddRef(sink)), kSuccess);
  EXPECT_THAT(TakeDiary(), IsEmpty());
  filter_.Release(sink);
  EXPECT_THAT(TakeDiary(), ElementsAre("sink ends"));
}

TEST_F(FilterOwnership, EndsAtExactlyZero) {
  FilterClient client = Client("sink");
  ZEBDataSink* sink = NewSink(client);
  filter_.Release(sink);  // -1
  EXPECT_THAT(TakeDiary(), IsEmpty());
  older_.AddRefV1(sink);  // 0, but not by a release
  EXPECT_THAT(TakeDiary(), IsEmpty());
  older_.AddRefV1(sink);
  older_.AddRefV1(sink);
  filter_.Release(sink);
  EXPECT_THAT(TakeDiary(), IsEmpty());
  filter_.Release(sink);
  EXPECT_THAT(TakeDiary(), ElementsAre("sink ends"));
}

TEST_F(FilterOwnership, RunsAlongTheChainFromItsHead) {
  FilterClient a = Client("a"), b = Client("b"), s = Client("s");
  const std::uint64_t live = Host::LiveBlocks();
  ZEBDataSink* head = Owned(NewFilter(NewIdentity(NewJPEG(NewSink(s), b)), a));
  EXPECT_EQ(Host::LiveBlocks(), live + 4);
  filter_.Release(head);
  EXPECT_THAT(TakeDiary(), ElementsAre("a ends", "b ends", "s ends"));
  EXPECT_EQ(Host::LiveBlocks(), live);
}

TEST_F(FilterOwnership, StopsAtAMemberThatSomebodyElseOwns) {
  FilterClient a = Client("a"), b = Client("b"), s = Client("s");
  ZEBDataSink* tail = Owned(NewFilter(NewSink(s), b));
  filter_.Release(Owned(NewFilter(tail, a)));
  EXPECT_THAT(TakeDiary(), ElementsAre("a ends"));
  filter_.Release(tail);
  EXPECT_THAT(TakeDiary(), ElementsAre("b ends", "s ends"));
}

TEST_F(FilterOwnership, OfASinkMayBeSharedByChains) {
  FilterClient s = Client("s");
  ZEBDataSink* sink = NewSink(s);
  ZEBDataSink* first = Owned(NewIdentity(sink));
  ZEBDataSink* second = Owned(NewIdentity(sink));
  filter_.Release(first);
  EXPECT_THAT(TakeDiary(), IsEmpty());
  filter_.Release(second);
  EXPECT_THAT(TakeDiary(), ElementsAre("s ends"));
}

TEST_F(FilterOwnership, OfTheDataIsTakenByARefusedMaker) {
  FilterClient client = Client("client");
  ZEBDataSink* out = reinterpret_cast<ZEBDataSink*>(this);
  EXPECT_EQ(Outcome(filter_.NewClientFilter(&out, nullptr, &client, &FilterClient::Write,
                                            &FilterClient::Close, &FilterClient::PostScript,
                                            &FilterClient::Destroy)),
            kMissingMethod);
  EXPECT_EQ(out, nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("client ends"));
  out = reinterpret_cast<ZEBDataSink*>(this);
  EXPECT_EQ(Outcome(filter_.NewFilterJPEG(&out, nullptr, &client, &FilterClient::Write,
                                          &FilterClient::Close, &FilterClient::PostScript,
                                          &FilterClient::Destroy, &FilterClient::Image,
                                          &FilterClient::Compression)),
            kMissingMethod);
  EXPECT_EQ(out, nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("client ends"));
  out = reinterpret_cast<ZEBDataSink*>(this);
  EXPECT_EQ(Outcome(filter_.NewIdentityFilter(&out, nullptr)), kMissingMethod);
  EXPECT_EQ(out, nullptr);
}

TEST_F(FilterOwnership, OfTheDataIsTakenByAMakerWithoutAnOut) {
  FilterClient client = Client("client");
  ZEBDataSink* target = Owned(NewNull());
  EXPECT_EQ(Outcome(filter_.NewClientDataSink(nullptr, &client, &FilterClient::Write,
                                              &FilterClient::Destroy)),
            kMissingMethod);
  EXPECT_EQ(Outcome(filter_.NewClientFilter(nullptr, target, &client, &FilterClient::Write,
                                            &FilterClient::Close, &FilterClient::PostScript,
                                            &FilterClient::Destroy)),
            kMissingMethod);
  EXPECT_EQ(Outcome(filter_.NewFilterJPEG(nullptr, target, &client, &FilterClient::Write,
                                          &FilterClient::Close, &FilterClient::PostScript,
                                          &FilterClient::Destroy, nullptr, nullptr)),
            kMissingMethod);
  EXPECT_THAT(TakeDiary(), ElementsAre("client ends", "client ends", "client ends"));
  filter_.Release(target);
}

TEST_F(FilterOwnership, OfTheDataIsTakenByTheOldMakersToo) {
  FilterClient client = Client("client");
  EXPECT_EQ(older_.NewClientFilterV1(nullptr, &client, &FilterClient::Write, &FilterClient::Close,
                                     &FilterClient::PostScript, &FilterClient::Destroy),
            nullptr);
  EXPECT_EQ(
      older_.NewFilterJPEGV1(nullptr, &client, &FilterClient::Write, &FilterClient::Close,
                             &FilterClient::PostScript, &FilterClient::Destroy, nullptr, nullptr),
      nullptr);
  EXPECT_THAT(TakeDiary(), ElementsAre("client ends", "client ends"));
}

TEST_F(FilterOwnership, OfATargetIsNotTakenByARefusedMaker) {
  FilterClient client = Client("target");
  ZEBDataSink* target = NewSink(client);
  Host::FailAt(1, true);
  EXPECT_EQ(older_.NewIdentityFilterV1(target), nullptr);
  EXPECT_TRUE(Host::StopFailing());
  EXPECT_THAT(TakeDiary(), IsEmpty());
  filter_.Release(Owned(target));
  EXPECT_THAT(TakeDiary(), ElementsAre("target ends"));
}

TEST_F(FilterOwnership, IsTheSameForOldClients) {
  FilterClient a = Client("a"), j = Client("j"), s = Client("s");
  ZEBDataSink* sink = older_.NewClientDataSinkV1(&s, &FilterClient::Write, &FilterClient::Destroy);
  ZEBDataSink* jpeg = older_.NewFilterJPEGV1(sink, &j, &FilterClient::Write, &FilterClient::Close,
                                             &FilterClient::PostScript, &FilterClient::Destroy,
                                             &FilterClient::Image, &FilterClient::Compression);
  ZEBDataSink* filter =
      older_.NewClientFilterV1(jpeg, &a, &FilterClient::Write, &FilterClient::Close,
                               &FilterClient::PostScript, &FilterClient::Destroy);
  ZEBDataSink* head = older_.NewIdentityFilterV1(filter);
  older_.AddRefV1(head);
  EXPECT_EQ(older_.WriteV1(head, "x", 1), 1);
  filter_.SetImageParameters(jpeg, 3, 2, 1);
  EXPECT_EQ(older_.SetDataSinkV1(head, older_.NewNullDataSinkV1()), 1);
  filter_.Release(head);
  EXPECT_THAT(TakeDiary(), ElementsAre("a writes 1", "j image 3 2 1", "a closes", "j closes",
                                       "s ends", "a ends", "j ends"));
}

// ---- Procedures that throw

class ThrowingFilterClients : public FilterTest {};

TEST_F(ThrowingFilterClients, MakeAWriteFail) {
  FilterClient client = Client("sink");
  client.onWrite = [](const void*, std::uint64_t) -> ZEBErrorObject* {
    throw std::runtime_error("thrown by a write procedure");
  };
  ZEBDataSink* head = Owned(NewIdentity(NewSink(client)));
  EXPECT_NO_THROW(EXPECT_EQ(Outcome(filter_.Write(head, "x", 1)), kUnknownError));
  EXPECT_NO_THROW(EXPECT_EQ(older_.WriteV1(head, "x", 1), 0));
  filter_.Release(head);
}

TEST_F(ThrowingFilterClients, StopNoOtherClose) {
  FilterClient a = Client("a"), b = Client("b");
  a.onClose = [] { throw 5; };
  ZEBDataSink* head = Owned(NewFilter(NewFilter(NewNull(), b), a));
  EXPECT_NO_THROW(filter_.Close(head));
  EXPECT_THAT(TakeDiary(), ElementsAre("a closes", "b closes"));
  filter_.Release(head);
}

TEST_F(ThrowingFilterClients, MakeAnAppendFailWithoutAChange) {
  FilterClient a = Client("a"), b = Client("b"), s = Client("s");
  b.onClose = [] { throw std::runtime_error("thrown by a close procedure"); };
  ZEBDataSink* sink = NewSink(s);
  ZEBDataSink* tail = NewFilter(sink, b);
  ZEBDataSink* head = Owned(NewFilter(tail, a));
  ZEBDataSink* other = NewNull();
  EXPECT_NO_THROW(EXPECT_EQ(Outcome(filter_.SetDataSink(head, other)), kUnknownError));
  EXPECT_EQ(older_.SetDataSinkV1(head, other), 0);
  EXPECT_EQ(filter_.PeekTarget(tail), sink);
  EXPECT_EQ(filter_.PeekTarget(head), tail);
  filter_.Release(Owned(other));
  filter_.Release(head);
}

TEST_F(ThrowingFilterClients, DoNotStopTheEndOfAChain) {
  FilterClient a = Client("a"), b = Client("b"), s = Client("s");
  for (FilterClient* client : {&a, &b, &s}) client->onDestroy = [] { throw 5; };
  ZEBDataSink* head = Owned(NewFilter(NewJPEG(NewSink(s), b), a));
  EXPECT_NO_THROW(filter_.Release(head));
  EXPECT_THAT(TakeDiary(), ElementsAre("a ends", "b ends", "s ends"));
}

TEST_F(ThrowingFilterClients, LetNothingOutOfTheOtherProcs) {
  ZEBDataSink* target = NewNull();
  ZEBDataSink* jpeg = nullptr;
  EXPECT_EQ(Outcome(filter_.NewFilterJPEG(
                &jpeg, target, nullptr, nullptr, nullptr, [](void*) -> const char* { throw 1; },
                [](void*) { throw 2; },
                [](void*, std::uint32_t, std::uint32_t, std::uint32_t) { throw 3; },
                [](void*, float) { throw 4; })),
            kSuccess);
  Owned(jpeg);
  EXPECT_NO_THROW(EXPECT_EQ(filter_.GetPostScriptFilter(jpeg), nullptr));
  EXPECT_NO_THROW(filter_.SetImageParameters(jpeg, 1, 2, 3));
  EXPECT_NO_THROW(filter_.SetCompressionParameters(jpeg, 1));
  EXPECT_NO_THROW(filter_.Release(jpeg));
  EXPECT_NO_THROW(EXPECT_EQ(
      older_.NewClientFilterV1(nullptr, nullptr, nullptr, nullptr, nullptr, [](void*) { throw 5; }),
      nullptr));
}

// ---- Memory that runs out

class FailingFilters : public FilterTest,
                       public ::testing::WithParamInterface<std::tuple<int, bool>> {
 protected:
  FailingFilters() : target_(Owned(NewNull())) {}
  void TearDown() override {
    filter_.Release(target_);
    FilterTest::TearDown();
  }

  ZEBErrorObject* Make(ZEBDataSink** out) {
    switch (std::get<0>(GetParam())) {
      case 0:
        return filter_.NewNullDataSink(out);
      case 1:
        return filter_.NewIdentityFilter(out, target_);
      case 2:
        return filter_.NewClientDataSink(out, &client_, &FilterClient::Write,
                                         &FilterClient::Destroy);
      case 3:
        return filter_.NewClientFilter(out, target_, &client_, &FilterClient::Write, nullptr,
                                       nullptr, &FilterClient::Destroy);
      default:
        return filter_.NewFilterJPEG(out, target_, &client_, &FilterClient::Write, nullptr, nullptr,
                                     &FilterClient::Destroy, nullptr, nullptr);
    }
  }
  bool HasClient() const { return std::get<0>(GetParam()) >= 2; }

  FilterClient client_ = Client("client");
  ZEBDataSink* target_;
};

std::string NameOfMaker(const ::testing::TestParamInfo<std::tuple<int, bool>>& variant) {
  constexpr std::array names = {"NullDataSink", "IdentityFilter", "ClientDataSink", "ClientFilter",
                                "FilterJPEG"};
  const auto& [maker, byThrowing] = variant.param;
  return std::string(names.at(static_cast<std::size_t>(maker))) +
         (byThrowing ? "ByThrowing" : "ByNull");
}

INSTANTIATE_TEST_SUITE_P(Makers, FailingFilters,
                         ::testing::Combine(::testing::Range(0, 5), ::testing::Bool()),
                         NameOfMaker);

TEST_P(FailingFilters, ConsumeTheDataAndLeakNothing) {
  const bool byThrowing = std::get<1>(GetParam());
  std::uint64_t nth = 0;
  for (bool failed = true; failed;) {
    SCOPED_TRACE(++nth);
    const std::uint64_t live = Host::LiveBlocks();
    ZEBDataSink* made = reinterpret_cast<ZEBDataSink*>(this);
    Host::FailAt(nth, true, byThrowing);
    ZEBErrorObject* error = Make(&made);
    failed = Host::StopFailing();
    if (failed) {
      EXPECT_EQ(Outcome(error), byThrowing ? kUnknownError : kOutOfMemory);
      EXPECT_EQ(made, nullptr);
    } else {
      EXPECT_EQ(Outcome(error), kSuccess);
      filter_.Release(Owned(made));
    }
    EXPECT_EQ(TakeDiary(), HasClient() ? Diary{"client ends"} : Diary{});
    EXPECT_EQ(Host::LiveBlocks(), live);
  }
  EXPECT_GT(nth, 1u) << "nothing was allocated";
}

class FailingChainStates : public FilterTest {};

TEST_F(FailingChainStates, TakeNoReference) {
  FilterClient s = Client("s");
  ZEBDataSink* head = Owned(NewIdentity(NewSink(s)));
  std::uint64_t nth = 0;
  for (bool failed = true; failed;) {
    SCOPED_TRACE(++nth);
    ZEBChainState* state = reinterpret_cast<ZEBChainState*>(this);
    Host::FailAt(nth, true);
    ZEBErrorObject* error = filter_.GetChainState(&state, head);
    failed = Host::StopFailing();
    EXPECT_EQ(Outcome(error), failed ? kOutOfMemory : kSuccess);
    EXPECT_EQ(state == nullptr, failed);
    EXPECT_TRUE(failed || filter_.ResetChainState(state) == nullptr);
  }
  EXPECT_GT(nth, 1u);
  filter_.Release(head);
  EXPECT_THAT(TakeDiary(), ElementsAre("s ends"));
}

TEST_F(FailingChainStates, RefuseALoopEvenWithoutMemoryForTheMessage) {
  ZEBDataSink* head = Owned(NewIdentity(NewNull()));
  std::uint64_t nth = 0;
  for (bool failed = true; failed;) {
    SCOPED_TRACE(++nth);
    Host::FailAt(nth, true);
    ZEBErrorObject* error = filter_.SetDataSink(head, head);
    failed = Host::StopFailing();
    EXPECT_EQ(Outcome(error), failed ? kOutOfMemory : kLoop);
  }
  filter_.Release(head);
}

}  // namespace
}  // namespace contract
