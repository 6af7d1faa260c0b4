#include "description/sweep.h"

#include <gmock/gmock.h>

#include <array>
#include <string>

namespace description {

namespace {

constexpr contract::FullParts kSampleParts = {
    .instanceName = "sample", .interfaceName = "sample", .destroy = nullptr};

}  // namespace

Sweep::Sweep(const contract::StartOptions& host, std::uint64_t failingAllocation)
    : ComponentLibrary(host), failingAllocation_(failingAllocation) {
  Reports::Take();
  DrainRecycled();
  EXPECT_EQ(ZEBFetchCacheProcs(getProcAddress, &cache_), 1);
  EXPECT_EQ(ZEBFetchStreamFactoryProcs(getProcAddress, &streams_), 1);
  EXPECT_EQ(ZEBFetchFilterProcs(getProcAddress, &filters_), 1);
  EXPECT_EQ(ZEBFetchInspectProcs(getProcAddress, &inspect_), 1);
  // The one method that the sample container has.
  EXPECT_EQ(frame.RegisterProcAddress("sample", "sample", "sample", contract::FakeProc(16)), 1);
}

Sweep::~Sweep() {
  giveSamplesBack();
  Reports::Take();
  DrainRecycled();
  Stop();
  EXPECT_THAT(Reports::Take(), ::testing::IsEmpty());
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

void Sweep::arm() {
  if (failingAllocation_ != 0) Host::FailAt(failingAllocation_);
}
void Sweep::disarm() { allocationFailed_ = Host::StopFailing(); }

void Sweep::giveSamplesBack() {
  while (!samples_.empty()) {
    const auto giveBack = std::exchange(samples_.back(), nullptr);
    samples_.pop_back();
    giveBack();
  }
}

// ---- Samples

const char* Sweep::text(std::string_view name) {
  for (const char* known : {"interfaceName", "methodName", "procName"}) {
    if (name == known) return known;
  }
  if (name == "path") return "/dev/null";
  if (name == "mode") return "r";
  return "sample";
}

ZEBString* Sweep::atom(bool given) {
  return kept(string.NewStringAtom("sample"), given, string.DeleteStringAtom);
}

ZEBErrorObject* Sweep::error(bool given) {
  return kept(ComponentLibrary::error.NewError("sample", "sample", 1, nullptr, nullptr), given,
              ComponentLibrary::error.Release);
}

ZEBContainer* Sweep::container(bool given) {
  return kept(NewFull(bytes_, kSampleParts), given, ComponentLibrary::container.Release);
}

ZEBSharedBuffer* Sweep::sharedBuffer(bool given) {
  return kept(buffer.NewBuffer(sizeof(bytes_), nullptr, nullptr, nullptr, nullptr), given,
              buffer.Release);
}

ZEBProgress* Sweep::progress(bool given) {
  const auto& procs = ComponentLibrary::progress;
  return kept(procs.NewNullProgress(), given, procs.Release);
}

ZEBEventCounter* Sweep::eventCounter(bool given) {
  return kept(event.NewEventCounter("sample", 0), given, event.DeleteEventCounter);
}

ZEBEventRecord* Sweep::eventSnapshot(bool given) {
  std::uint32_t count = 0;
  return kept(event.NewEventSnapshot(&count), given, event.DeleteEventSnapshot);
}

void* Sweep::block(bool given) { return kept(memory.Alloc(16), given, memory.Free); }

ZEBCacheID* Sweep::cacheId(bool given) { return kept(cache_.NewCacheID(), given, cache_.Release); }

ZEBCacheID* Sweep::pinnedCacheId(bool given) {
  ZEBCacheID* id = cache_.NewCacheID();
  cache_.MarkNoPurge(id, nullptr, 1);
  cache_.Release(id);
  return kept(id, given, cache_.MarkPurge);
}

ZEBCacheSet* Sweep::cacheSet(bool given) {
  ZEBCacheSet* set =
      cache_.NewCacheSet([](void* a, void* b) { return std::less<>()(a, b) ? 1 : 0; });
  cache_.AddRefCacheSet(set);
  return kept(set, given, cache_.DeleteCacheSet);
}

ZEBCachePurge* Sweep::cachePurge(bool given) {
  return kept(cache_.NewCachePurge(), given, cache_.DeleteCachePurge);
}

void* Sweep::snapshot(bool given) {
  std::uint32_t count = 0;
  return kept(static_cast<void*>(inspect_.NewAtomSnapshot(&count)), given, inspect_.DeleteSnapshot);
}

ZEBContainer* Sweep::stream(bool given) {
  ZEBContainer* made = nullptr;
  EXPECT_EQ(Outcome(streams_.NewPositionableMemoryStream(&made)), contract::kSuccess);
  return kept(made, given, ComponentLibrary::container.Release);
}

ZEBDataSink* Sweep::referenced(ZEBDataSink* made, bool given) {
  EXPECT_EQ(Outcome(filters_.AddRef(made)), contract::kSuccess);
  return kept(made, given, filters_.Release);
}

ZEBDataSink* Sweep::dataSink(bool given) {
  ZEBDataSink* made = nullptr;
  EXPECT_EQ(Outcome(filters_.NewNullDataSink(&made)), contract::kSuccess);
  return referenced(made, given);
}

ZEBDataSink* Sweep::filter(bool given) {
  ZEBDataSink* made = nullptr;
  EXPECT_EQ(Outcome(filters_.NewIdentityFilter(&made, dataSink(false))), contract::kSuccess);
  return referenced(made, given);
}

ZEBDataSink* Sweep::jpegFilter(bool given) {
  ZEBDataSink* made = nullptr;
  EXPECT_EQ(Outcome(filters_.NewFilterJPEG(&made, dataSink(false), nullptr, nullptr, nullptr,
                                           nullptr, nullptr, nullptr, nullptr)),
            contract::kSuccess);
  return referenced(made, given);
}

ZEBChainState* Sweep::chainState(bool given) {
  ZEBChainState* made = nullptr;
  EXPECT_EQ(Outcome(filters_.GetChainState(&made, filter(false))), contract::kSuccess);
  return kept(made, given, [this](ZEBChainState* state) {
    EXPECT_EQ(Outcome(filters_.ResetChainState(state)), contract::kSuccess);
  });
}

// ---- Judgement

void Sweep::expectDone(bool done, Expected expected) const {
  if (expected == Expected::kEither && allocationFailed_) return;
  EXPECT_TRUE(done) << "the proc is described to succeed";
}

bool Sweep::judgeError(ZEBErrorObject* answer, Expected expected) {
  const bool done = answer == nullptr;
  if (expected == Expected::kRefused) {
    EXPECT_EQ(Outcome(answer), contract::kMissingMethod);
    return false;
  }
  if (expected == Expected::kFailed) {
    EXPECT_FALSE(done);
    ComponentLibrary::error.Release(answer);
  } else if (!done && !allocationFailed_) {
    ADD_FAILURE() << Outcome(answer);
  } else if (!done) {
    EXPECT_EQ(Outcome(answer), contract::kOutOfMemory);
  }
  return done && expected != Expected::kNothing;
}

bool Sweep::judgeNothing(Expected expected) { return expected != Expected::kNothing; }

bool Sweep::judgeAlways(ZEBErrorObject* answer, Expected expected) {
  EXPECT_NE(expected, Expected::kRefused);
  EXPECT_NE(expected, Expected::kNothing);
  EXPECT_NE(answer, nullptr);
  return answer != nullptr;
}

}  // namespace description
