// A module of another convention: other names, and exceptions that leave them.
#include <stdexcept>

#include "zeb/sdk/module_entry.h"

extern "C" {
ZEB_MODULE_EXPORT int32_t beginQuietly(ZEBGetProcAddress find);
ZEB_MODULE_EXPORT int32_t beginBadly(ZEBGetProcAddress find);
ZEB_MODULE_EXPORT void endBadly();
ZEB_MODULE_EXPORT int32_t timesEnded();
}

static int32_t ended = 0;

int32_t beginQuietly(ZEBGetProcAddress /*find*/) { return 1; }
int32_t beginBadly(ZEBGetProcAddress /*find*/) { throw std::runtime_error("thrown by the module"); }
void endBadly() {
  ++ended;
  throw 1;
}
int32_t timesEnded() { return ended; }
