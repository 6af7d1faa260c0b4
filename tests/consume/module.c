#include "greeting.h"

static ZEBStringProcs strings;

static ZEBString* greeting(void) { return strings.NewStringAtom("hello from the module"); }

int32_t startModule(ZEBGetProcAddress find);

__attribute__((visibility("default"))) int32_t startModule(ZEBGetProcAddress find) {
  ZEBFrameProcs frame;
  if (!ZEBFetchStringProcs(find, &strings) || !ZEBFetchFrameProcs(find, &frame)) return 0;
  return frame.RegisterProcAddress(GREETING_INTERFACE, "Greeting", "GreetingProc",
                                   (ZEBProc)greeting);
}
