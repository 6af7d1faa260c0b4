/* A module that publishes an interface and a counter, under names that are hard to print. */
#include "module.h"

static ZEBFrameProcs frame;
static ZEBEventProcs events;
static ZEBEventCounter* counter;

static void Greet(void) {}

#define INTERFACE "TestInterface"

int32_t MODULE_START(ZEBGetProcAddress getProcAddress) {
  if (!ZEBFetchFrameProcs(getProcAddress, &frame)) return 0;
  if (!ZEBFetchEventProcs(getProcAddress, &events)) return 0;
  counter = events.NewEventCounter("things that the module counts", 7);
  events.SignalEventCounter(counter, 42);
  return frame.RegisterProcAddress(INTERFACE, "Greet", "TestGreetProc", Greet) &&
         frame.RegisterProcAddress(INTERFACE, "Greet", "TestGreetV2Proc", Greet) &&
         frame.RegisterProcAddress(INTERFACE, "Gr\xC3\xBC\xC3\x9F", "TestUmlautProc", Greet) &&
         frame.RegisterProcAddress(INTERFACE, "control\n\"quoted\" back\\slash \x7F", "P", Greet) &&
         frame.RegisterProcAddress(INTERFACE, "no UTF-8: \xC0\xAF \xED\xA0\x80 \xFF", "P", Greet) &&
         frame.RegisterProcAddress(INTERFACE, NULL, NULL, NULL) &&
         frame.RegisterProcAddress(NULL, "of the null name", "P", Greet);
}

void MODULE_STOP(void) {
  frame.UnregisterInterface(INTERFACE);
  frame.UnregisterInterface(NULL);
  events.DeleteEventCounter(counter);
}
