/* A module in C that does not want to start, and says why. */
#include "zeb/frame.h"
#include "zeb/sdk/module_entry.h"

int32_t ZEBModuleStart(ZEBGetProcAddress find) {
  ZEBFrameProcs frame;
  if (ZEBFetchFrameProcs(find, &frame)) {
    frame.ReportError("no licence found");
    frame.ReportError("try again tomorrow");
    frame.ReportError("no licence found");
  }
  return 0;
}

void ZEBModuleStop(void) {}
