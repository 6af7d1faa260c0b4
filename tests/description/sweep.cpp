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
  if (!done && !allocationFailed_) {
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
