#include "base/event_counter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/tally.h"
#include "support/restored.h"

namespace {

using ZEB_T_MT::CZEBEventCounter;

// What an event service was asked to do.
struct Service {
  std::vector<std::string> created;
  std::vector<ZEBEventCounter*> destroyed;
  std::vector<uint64_t> amounts;
  int signalsThatThrow = 0;
  bool refuses = false;
  zeb::Tally tally;
  uint64_t handle = 0;  // its address is the handle
};

Service* service = nullptr;

ZEBEventCounter* theHandle() { return reinterpret_cast<ZEBEventCounter*>(&service->handle); }

ZEBEventCounter* create(const char* name, int32_t criticality) {
  service->created.push_back(std::string(name) + " " + std::to_string(criticality));
  return service->refuses ? nullptr : theHandle();
}

void destroy(ZEBEventCounter* counter) { service->destroyed.push_back(counter); }

void signal(ZEBEventCounter* counter, uint64_t amount) {
  EXPECT_EQ(counter, theHandle());
  if (service->signalsThatThrow > 0) {
    --service->signalsThatThrow;
    throw std::string("the host's event service");
  }
  service->amounts.push_back(amount);
}

zeb::Tally* noTally(ZEBEventCounter* /*counter*/) { return nullptr; }
zeb::Tally* ownTally(ZEBEventCounter* /*counter*/) { return &service->tally; }

constexpr zeb::EventSlots kForeignService{create, destroy, signal, noTally};
constexpr zeb::EventSlots kLibraryService{create, destroy, signal, ownTally};

class EventCounter : public testing::Test {
 protected:
  EventCounter() { service = &host; }
  ~EventCounter() override { service = nullptr; }

  void connect(const zeb::EventSlots& slots) { zeb::eventSlots = slots; }

  Service host;
  CZEBEventCounter counter{"a counter", 42};

 private:
  const zeb_test::Restored<zeb::EventSlots> slots_{zeb::eventSlots};
};

TEST_F(EventCounter, KeepsItsNameItsCriticalityAndItsLevel) {
  const char* const name = "another counter";
  const CZEBEventCounter other(name, -1);
  EXPECT_EQ(other.name(), name);
  EXPECT_EQ(other.criticality(), -1);
  EXPECT_EQ(other.level(), 1);
  EXPECT_FALSE(other.registered());
}

TEST_F(EventCounter, CountsNothingBeforeItIsInitialised) {
  connect(kForeignService);
  counter.signal();
  EXPECT_TRUE(host.amounts.empty());
}

TEST_F(EventCounter, CountsNothingWithoutAService) {
  EXPECT_TRUE(counter.initialise());
  EXPECT_FALSE(counter.registered());
  counter.signal();
  counter.terminate();
  EXPECT_FALSE(counter.registered());
}

TEST_F(EventCounter, DefaultSlotsDoNothing) {
  EXPECT_EQ(zeb::eventSlots.create("name", 1), nullptr);
  zeb::eventSlots.destroy(nullptr);
  zeb::eventSlots.signal(theHandle(), 1);
  EXPECT_EQ(zeb::eventSlots.tallyOf(theHandle()), nullptr);
  EXPECT_TRUE(host.amounts.empty());
}

TEST_F(EventCounter, RegistersItselfWithTheService) {
  connect(kForeignService);
  EXPECT_TRUE(counter.initialise());
  EXPECT_TRUE(counter.registered());
  EXPECT_EQ(host.created, std::vector<std::string>{"a counter 42"});
}

TEST_F(EventCounter, SucceedsThoughTheServiceRefusesIt) {
  connect(kForeignService);
  host.refuses = true;
  EXPECT_TRUE(counter.initialise());
  EXPECT_FALSE(counter.registered());
  counter.signal();
  counter.terminate();
  EXPECT_TRUE(host.amounts.empty());
  EXPECT_TRUE(host.destroyed.empty());
}

TEST_F(EventCounter, SignalsAForeignServiceOnceForEachEvent) {
  connect(kForeignService);
  counter.initialise();
  counter.signal();
  EXPECT_EQ(host.amounts, std::vector<uint64_t>{1});
  counter.signal(4);
  EXPECT_EQ(host.amounts, (std::vector<uint64_t>{1, 1, 1, 1, 1}));
  counter.signal(0);
  EXPECT_EQ(host.amounts.size(), 5u);
}

TEST_F(EventCounter, AddsToTheTallyOfTheLibrarysOwnService) {
  connect(kLibraryService);
  counter.initialise();
  counter.signal();
  counter.signal(4);
  EXPECT_EQ(host.tally.total(), 5u);
  EXPECT_TRUE(host.amounts.empty());
}

TEST_F(EventCounter, SwallowsWhatAForeignServiceThrows) {
  connect(kForeignService);
  counter.initialise();
  host.signalsThatThrow = 1;
  counter.signal();
  EXPECT_TRUE(host.amounts.empty());
  counter.signal();
  EXPECT_EQ(host.amounts, std::vector<uint64_t>{1});
}

TEST_F(EventCounter, GivesItsHandleBackWhenItIsTerminated) {
  for (const auto& slots : {kForeignService, kLibraryService}) {
    connect(slots);
    host.destroyed.clear();
    counter.initialise();
    counter.terminate();
    EXPECT_FALSE(counter.registered());
    EXPECT_EQ(host.destroyed, std::vector<ZEBEventCounter*>{theHandle()});
    counter.signal();
    EXPECT_TRUE(host.amounts.empty());
    EXPECT_EQ(host.tally.total(), 0u);
    counter.terminate();
    EXPECT_EQ(host.destroyed.size(), 1u);
  }
}

TEST_F(EventCounter, HasNoHandleWhileTheServiceDestroysIt) {
  connect(kForeignService);
  static const CZEBEventCounter* terminating = nullptr;
  terminating = &counter;
  counter.initialise();
  zeb::eventSlots.destroy = [](ZEBEventCounter* handle) {
    EXPECT_FALSE(terminating->registered());
    terminating->signal();  // a service that counts events itself
    service->destroyed.push_back(handle);
  };
  counter.terminate();
  EXPECT_EQ(host.destroyed.size(), 1u);
  EXPECT_TRUE(host.amounts.empty());
}

TEST_F(EventCounter, CanBeRegisteredAgain) {
  connect(kForeignService);
  counter.initialise();
  counter.terminate();
  connect(kLibraryService);
  counter.initialise();
  EXPECT_TRUE(counter.registered());
  counter.signal();
  EXPECT_EQ(host.tally.total(), 1u);
  EXPECT_EQ(host.created.size(), 2u);
}

}  // namespace
