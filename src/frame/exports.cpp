// The eleven exported functions. Their names stand in exports.txt, from which the linker's export
// list is made.
#include "zeb/exports.h"

#include "frame/lifecycle.h"

uint32_t ZEBGetVersion(void) { return ZEB_VERSION; }

ZEBGetProcAddress ZEBGetGetProcAddress(void) { return zeb::frame::lookUpFunction(); }

ZEBGetProcAddress ZEBInitialize(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree,
                                ZEBErrorReport errorReport) {
  return zeb::frame::start({.pages = {pageAlloc, pageFree}, .errorReport = errorReport});
}

ZEBGetProcAddress ZEBInitialize2(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree, ZEBObjAlloc objAlloc,
                                 ZEBObjRealloc objRealloc, ZEBObjFree objFree, ZEBObjSize objSize,
                                 ZEBErrorReport errorReport) {
  return zeb::frame::start({.pages = {pageAlloc, pageFree},
                            .objects = {objAlloc, objRealloc, objFree, objSize},
                            .errorReport = errorReport});
}

ZEBGetProcAddress ZEBInitialize3(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree, ZEBObjAlloc objAlloc,
                                 ZEBObjRealloc objRealloc, ZEBObjFree objFree, ZEBObjSize objSize,
                                 ZEBErrorReport errorReport, uint32_t unregisterCountStart,
                                 uint64_t hostValue) {
  return zeb::frame::start({.pages = {pageAlloc, pageFree},
                            .objects = {objAlloc, objRealloc, objFree, objSize},
                            .errorReport = errorReport,
                            .unregisterCountStart = unregisterCountStart,
                            .hostValue = hostValue});
}

ZEBGetProcAddress ZEBInitialize4(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree, ZEBObjAlloc objAlloc,
                                 ZEBObjRealloc objRealloc, ZEBObjFree objFree, ZEBObjSize objSize,
                                 ZEBErrorReport errorReport, ZEBPurgeRequest purgeRequest,
                                 uint32_t flags, uint32_t unregisterCountStart,
                                 uint64_t hostValue) {
  return zeb::frame::start({.pages = {pageAlloc, pageFree},
                            .objects = {objAlloc, objRealloc, objFree, objSize},
                            .errorReport = errorReport,
                            .purgeRequest = purgeRequest,
                            .flags = flags,
                            .unregisterCountStart = unregisterCountStart,
                            .hostValue = hostValue});
}

uint32_t ZEBTerminate(void) { return zeb::frame::stop(); }

int32_t ZEBLockSmithLockImpl(void) { return 0; }
void ZEBLockSmithUnlockImpl(void) {}
void ZEBLockSmithDeleteImpl(void) {}
void* ZEBLockSmithAssertNoLocksImpl(void* value) { return value; }
