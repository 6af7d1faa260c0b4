/* A module that does not start, and says why. */
#include "module.h"

int32_t MODULE_START(ZEBGetProcAddress getProcAddress) {
  ZEBFrameProcs frame;
  if (ZEBFetchFrameProcs(getProcAddress, &frame)) frame.ReportError("no licence found");
  return 0;
}

void MODULE_STOP(void) {}
