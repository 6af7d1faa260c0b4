// A module's lazy objects, its start and stop, and its counters over a service of the test's own.

#include "zeb/sdk/client_start.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sdk/fake_service.h"
#include "zeb/sdk/event_counter.hpp"

namespace sdk_test {
namespace {

using zeb::sdk::EventCounter;
using zeb::sdk::Module;
using zeb::sdk::startClient;
using zeb::sdk::stopClient;

using Log = std::vector<std::string>;

class Noted final : public zeb::sdk::LazyTerminate {
 public:
  Noted(Module& module, Log& log, std::string name, std::int32_t level, bool succeeds = true)
      : LazyTerminate(level, module.lazyList),
        log_(log),
        name_(std::move(name)),
        succeeds_(succeeds) {}

  bool initialise() override {
    log_.push_back("init " + name_);
    return succeeds_;
  }
  void terminate() override { log_.push_back("term " + name_); }

 private:
  Log& log_;
  const std::string name_;
  const bool succeeds_;
};

class ClientStart : public ::testing::Test {
 protected:
  ClientStart() { FakeService::Reset(); }

  bool Start(const zeb::sdk::LazyLevels& levels = {}) {
    return startClient(&FakeService::GetProcAddress, levels, module_);
  }
  void Stop() { stopClient(module_); }

  Module module_;
  Log log_;
};

TEST_F(ClientStart, InitialisesAndTerminatesInListOrder) {
  const Noted first(module_, log_, "first", 1);
  const Noted second(module_, log_, "second", 2);
  EXPECT_TRUE(Start());
  Stop();
  EXPECT_EQ(log_, (Log{"init second", "init first", "term second", "term first"}));
}

TEST_F(ClientStart, InitialisesTheWantedLevelsAndTerminatesAll) {
  const Noted a(module_, log_, "a", 0), b(module_, log_, "b", 5), c(module_, log_, "c", 8),
      d(module_, log_, "d", 9), negative(module_, log_, "negative", -1);
  EXPECT_TRUE(Start({.lowest = 5, .highest = 8}));
  EXPECT_EQ(log_, (Log{"init c", "init b"}));
  log_.clear();
  Stop();
  EXPECT_EQ(log_, (Log{"term negative", "term d", "term c", "term b", "term a"}));
}

TEST_F(ClientStart, TakesLevelsFrom0To65000ByDefault) {
  const Noted a(module_, log_, "-1", -1), b(module_, log_, "0", 0),
      c(module_, log_, "65000", 65000), d(module_, log_, "65001", 65001);
  EXPECT_TRUE(Start());
  EXPECT_EQ(log_, (Log{"init 65000", "init 0"}));
  Stop();
}

TEST_F(ClientStart, TerminatesWhatWasInitialisedWhenAnObjectFails) {
  const Noted a(module_, log_, "a", 1), b(module_, log_, "b", 1, false), c(module_, log_, "c", 1),
      d(module_, log_, "d", 1);
  EXPECT_FALSE(Start());
  EXPECT_EQ(log_, (Log{"init d", "init c", "init b", "term d", "term c"}));
  log_.clear();
  Stop();
  EXPECT_EQ(log_, Log{});
}

TEST_F(ClientStart, LeavesOutAnObjectThatIsGone) {
  const Noted a(module_, log_, "a", 1);
  { const Noted b(module_, log_, "b", 1); }
  const Noted c(module_, log_, "c", 1);
  {
    const Noted d(module_, log_, "d", 1);
    EXPECT_EQ(module_.lazyList.head(), &d);
  }
  EXPECT_EQ(module_.lazyList.head(), &c);
  EXPECT_TRUE(Start());
  EXPECT_EQ(log_, (Log{"init c", "init a"}));
  Stop();
}

TEST_F(ClientStart, IsRefusedTwiceAndAllowedAgain) {
  const Noted a(module_, log_, "a", 1);
  EXPECT_TRUE(Start());
  EXPECT_FALSE(Start());
  Stop();
  Stop();
  EXPECT_TRUE(Start());
  Stop();
  EXPECT_EQ(log_, (Log{"init a", "term a", "init a", "term a"}));
}

TEST_F(ClientStart, NeedsALibrary) {
  const Noted a(module_, log_, "a", 1);
  EXPECT_FALSE(startClient(nullptr, {}, module_));
  FakeService::hasFrame = false;
  EXPECT_FALSE(Start());
  EXPECT_EQ(log_, Log{});
  FakeService::hasFrame = true;
  EXPECT_TRUE(Start());
  Stop();
}

class ClientCounter : public ClientStart {
 protected:
  EventCounter counter_{"counted", 7, module_};
};

TEST_F(ClientCounter, CountsBetweenStartAndStop) {
  EXPECT_EQ(counter_.level(), 1);
  EXPECT_STREQ(counter_.name(), "counted");
  EXPECT_EQ(counter_.criticality(), 7);
  counter_.signal();
  EXPECT_TRUE(Start());
  EXPECT_TRUE(counter_.registered());
  counter_.signal();
  counter_.signal(5);
  Stop();
  EXPECT_FALSE(counter_.registered());
  counter_.signal();
  EXPECT_EQ(FakeService::signalled, (std::map<std::string, std::uint64_t>{{"counted", 6}}));
  EXPECT_EQ(FakeService::liveCounters, 0);
}

TEST_F(ClientCounter, IsNotRegisteredWhenTheServiceMakesNone) {
  FakeService::makesCounters = false;
  EXPECT_TRUE(Start());
  EXPECT_FALSE(counter_.registered());
  counter_.signal();
  Stop();
  EXPECT_TRUE(FakeService::signalled.empty());
}

TEST_F(ClientCounter, FindsNoServiceForEverOnceThereWasNone) {
  FakeService::hasEvents = false;
  EXPECT_TRUE(Start());
  EXPECT_FALSE(counter_.registered());
  counter_.signal();
  Stop();
  FakeService::hasEvents = true;
  ++FakeService::changes;
  EXPECT_TRUE(Start());
  EXPECT_FALSE(counter_.registered());
  EXPECT_EQ(FakeService::fetches, 1);
  Stop();
}

TEST_F(ClientCounter, FindsNoServiceForEverOnceALookUpThrew) {
  FakeService::throws = true;
  EXPECT_TRUE(Start());
  FakeService::throws = false;
  Stop();
  EXPECT_TRUE(Start());
  EXPECT_FALSE(counter_.registered());
  Stop();
}

TEST_F(ClientCounter, FetchesAgainOnlyWhenTheChangeCounterMoves) {
  EXPECT_TRUE(Start());
  EXPECT_EQ(FakeService::fetches, 1);
  EXPECT_TRUE(module_.events.procs().has_value());
  EXPECT_EQ(FakeService::fetches, 1);
  ++FakeService::changes;
  EXPECT_TRUE(module_.events.procs().has_value());
  EXPECT_EQ(FakeService::fetches, 2);
  Stop();
  EXPECT_FALSE(module_.events.procs().has_value());
  EXPECT_TRUE(Start());
  EXPECT_EQ(FakeService::fetches, 3) << "another start may be another library";
  Stop();
}

}  // namespace
}  // namespace sdk_test
