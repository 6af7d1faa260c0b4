// An executable of its own: once found unusable, the event service stays so for the process.
#include <gtest/gtest.h>

#include "base/library_counters.h"
#include "events/event_binding.h"
#include "events/event_service.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"

namespace zeb::events {
namespace {

TEST(UnusableEventsTest, CountsNothingForTheRestOfTheProcess) {
  {
    const test::StartedLibrary library;
    registry::removeInterface(ZEB_EVENT_INTERFACE);
    EXPECT_FALSE(eventsAvailable());
    ZEB_T_MT::CZEBEventCounter late("late", 1);
    EXPECT_TRUE(late.initialise());
    EXPECT_FALSE(late.registered());
    late.signal();
    EXPECT_TRUE(registerEventsAs(ZEB_EVENT_INTERFACE));
    EXPECT_FALSE(eventsAvailable());
  }
  EXPECT_EQ(test::CountingHost::liveBlocks, 0);
  const test::StartedLibrary again;
  EXPECT_TRUE(again.started());
  EXPECT_FALSE(counters::atomFound.registered());
}

}  // namespace
}  // namespace zeb::events
