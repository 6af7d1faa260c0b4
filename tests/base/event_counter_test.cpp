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

void destroy(ZEBEventCounter* counter) { service->destroyed.push_back(counter); }

void signal(ZEBEventCounter* counter, uint64_t amount) {
  EXPECT_EQ(counter, theHandle());
  if (service->signalsThatThrow > 0) {
    --service->signalsThatThrow;
    throw std::string("the host's event service");
  }
  service->amounts.push_back(amount);
}

zeb::EventRegistration registered(const char* name, int32_t criticality, zeb::Tally* tally) {
  service->created.push_back(std::string(name) + " " + std::to_string(criticality));
  if (service->refuses) return {};
  return {.handle = theHandle(), .signal = signal, .remove = destroy, .tally = tally};
}

zeb::EventRegistration foreignService(const char* name, int32_t criticality) {
  return registered(name, criticality, nullptr);
}
zeb::EventRegistration libraryService(const char* name, int32_t criticality) {
  return registered(name, criticality, &service->tally);
}

class EventCounter : public testing::Test {
 protected:
  EventCounter() { service = &host; }
  ~EventCounter() override { service = nullptr; }

  void connect(zeb::RegisterCounter to) { zeb::registerCounter = to; }

  Service host;
  CZEBEventCounter counter{"a counter", 42};

 private:
  const zeb_test::Restored<zeb::RegisterCounter> slot_{zeb::registerCounter};
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
  connect(foreignService);
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

TEST_F(EventCounter, RegistersItselfWithTheService) {
  connect(foreignService);
  EXPECT_TRUE(counter.initialise());
  EXPECT_TRUE(counter.registered());
  EXPECT_EQ(host.created, std::vector<std::string>{"a counter 42"});
}

TEST_F(EventCounter, SucceedsThoughTheServiceRefusesIt) {
  connect(foreignService);
  host.refuses = true;
  EXPECT_TRUE(counter.initialise());
  EXPECT_FALSE(counter.registered());
  counter.signal();
  counter.terminate();
  EXPECT_TRUE(host.amounts.empty());
  EXPECT_TRUE(host.destroyed.empty());
}

TEST_F(EventCounter, SignalsAForeignServiceOnceForEachEvent) {
  connect(foreignService);
  counter.initialise();
  counter.signal();
  EXPECT_EQ(host.amounts, std::vector<uint64_t>{1});
  counter.signal(4);
  EXPECT_EQ(host.amounts, (std::vector<uint64_t>{1, 1, 1, 1, 1}));
  counter.signal(0);
  EXPECT_EQ(host.amounts.size(), 5u);
}

TEST_F(EventCounter, AddsToTheTallyOfTheLibrarysOwnService) {
  connect(libraryService);
  counter.initialise();
  counter.signal();
  counter.signal(4);
  EXPECT_EQ(host.tally.total(), 5u);
  EXPECT_TRUE(host.amounts.empty());
}

TEST_F(EventCounter, SwallowsWhatAForeignServiceThrows) {
  connect(foreignService);
  counter.initialise();
  host.signalsThatThrow = 1;
  counter.signal();
  EXPECT_TRUE(host.amounts.empty());
  counter.signal();
  EXPECT_EQ(host.amounts, std::vector<uint64_t>{1});
}

TEST_F(EventCounter, GivesItsHandleBackWhenItIsTerminated) {
  for (const zeb::RegisterCounter each : {foreignService, libraryService}) {
    connect(each);
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
  static const CZEBEventCounter* terminating = nullptr;
  terminating = &counter;
  connect([](const char* name, int32_t criticality) {
    zeb::EventRegistration registration = foreignService(name, criticality);
    registration.remove = [](ZEBEventCounter* handle) {
      EXPECT_FALSE(terminating->registered());
      terminating->signal();  // a service that counts events itself
      service->destroyed.push_back(handle);
    };
    return registration;
  });
  counter.initialise();
  counter.terminate();
  EXPECT_EQ(host.destroyed.size(), 1u);
  EXPECT_TRUE(host.amounts.empty());
}

TEST_F(EventCounter, GoesBackToTheServiceThatMadeItThoughAnotherHasComeSince) {
  connect(foreignService);
  counter.initialise();
  connect([](const char*, int32_t) { return zeb::EventRegistration{}; });
  counter.signal();
  counter.terminate();
  EXPECT_EQ(host.amounts, std::vector<uint64_t>{1});
  EXPECT_EQ(host.destroyed, std::vector<ZEBEventCounter*>{theHandle()});
}

TEST_F(EventCounter, CanBeRegisteredAgain) {
  connect(foreignService);
  counter.initialise();
  counter.terminate();
  connect(libraryService);
  counter.initialise();
  EXPECT_TRUE(counter.registered());
  counter.signal();
  EXPECT_EQ(host.tally.total(), 1u);
  EXPECT_EQ(host.created.size(), 2u);
}

}  // namespace
