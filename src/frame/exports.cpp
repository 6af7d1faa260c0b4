#include "zeb/exports.h"

#include <cstdio>

namespace {

void greet(ZEBErrorReport report) {
  char text[32];
  std::snprintf(text, sizeof text, "version %x", ZEBGetVersion());
  if (report != nullptr) report(text);
}

}  // namespace

uint32_t ZEBGetVersion() { return ZEB_VERSION; }
ZEBGetProcAddress ZEBGetGetProcAddress() { return nullptr; }

ZEBGetProcAddress ZEBInitialize(ZEBPageAlloc, ZEBPageFree, ZEBErrorReport report) {
  greet(report);
  return nullptr;
}

ZEBGetProcAddress ZEBInitialize2(ZEBPageAlloc, ZEBPageFree, ZEBObjAlloc, ZEBObjRealloc, ZEBObjFree,
                                 ZEBObjSize, ZEBErrorReport) {
  return nullptr;
}

ZEBGetProcAddress ZEBInitialize3(ZEBPageAlloc, ZEBPageFree, ZEBObjAlloc, ZEBObjRealloc, ZEBObjFree,
                                 ZEBObjSize, ZEBErrorReport, uint32_t, uint64_t) {
  return nullptr;
}

ZEBGetProcAddress ZEBInitialize4(ZEBPageAlloc, ZEBPageFree, ZEBObjAlloc, ZEBObjRealloc, ZEBObjFree,
                                 ZEBObjSize, ZEBErrorReport, ZEBPurgeRequest, uint32_t, uint32_t,
                                 uint64_t) {
  return nullptr;
}

uint32_t ZEBTerminate() { return 1; }

int32_t ZEBLockSmithLockImpl() { return 0; }
void ZEBLockSmithUnlockImpl() {}
void ZEBLockSmithDeleteImpl() {}
void* ZEBLockSmithAssertNoLocksImpl(void* value) { return value; }
