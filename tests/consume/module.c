#include <zeb/sdk/module_entry.h>

#include "greeting.h"

static ZEBFrameProcs frame;
static ZEBStringProcs strings;

static ZEBString* greeting(void) { return strings.NewStringAtom("hello from the module"); }

int32_t ZEBModuleStart(ZEBGetProcAddress find) {
  if (!ZEBFetchStringProcs(find, &strings) || !ZEBFetchFrameProcs(find, &frame)) return 0;
  return frame.RegisterProcAddress(GREETING_INTERFACE, "Greeting", "GreetingProc",
                                   (ZEBProc)greeting);
}

void ZEBModuleStop(void) { frame.UnregisterInterface(GREETING_INTERFACE); }
