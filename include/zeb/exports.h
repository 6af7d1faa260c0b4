/*
 * The eleven functions that the shared library exports. Everything else is found by name through
 * the get-proc-address function that starting the library returns.
 *
 * A host that links the library calls these directly. A host that loads it at run time looks the
 * names up in the loaded library and casts them to the ...Function types.
 */
#ifndef ZEB_EXPORTS_H
#define ZEB_EXPORTS_H

#include "zeb/types.h"

#if defined(_WIN32) && !defined(ZEB_BUILDING_LIBRARY)
#define ZEB_EXPORT __declspec(dllimport)
#elif defined(_WIN32)
#define ZEB_EXPORT __declspec(dllexport)
#else
#define ZEB_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this library: major in the high, minor in the low 16 bits. */
#define ZEB_VERSION 0x40000u

/* Bit 0 of ZEBInitialize4's flags: the host calls the library from more than one thread. */
#define ZEB_FLAG_MULTI_THREADED 1u

/*
 * The host's allocator pair, from which the library takes pages and large blocks. PageAlloc takes a
 * size in bytes and returns a block aligned for any type, or null; PageFree takes such a block.
 */
typedef void *(*ZEBPageAlloc)(uint64_t size);
typedef void (*ZEBPageFree)(void *block);

/*
 * The host's four memory procs. Given together they serve every object of the library and all
 * client memory, and the procs of the memory interface are these very functions.
 *   ObjAlloc    size in bytes -> block aligned for any type, or null
 *   ObjRealloc  block or null, new size -> block with the contents up to the smaller of both
 *               sizes, or null with the old block untouched
 *   ObjFree     block -> nothing; never called with null by the library
 *   ObjSize     block -> its usable size in bytes
 */
typedef void *(*ZEBObjAlloc)(uint64_t size);
typedef void *(*ZEBObjRealloc)(void *block, uint64_t size);
typedef void (*ZEBObjFree)(void *block);
typedef uint64_t (*ZEBObjSize)(void *block);

/* Told of every error that is made through the error interface, and of leaks at stop. */
typedef void (*ZEBErrorReport)(const char *message);

/* Told the new total of the cache whenever data is attached or changes its size (cache.h). */
typedef void (*ZEBPurgeRequest)(int64_t newTotalCacheSize);

/* Returns ZEB_VERSION, whether or not the library is initialised. [any-thread] */
ZEB_EXPORT uint32_t ZEBGetVersion(void);

/* Returns the look-up function while the library is initialised, else null. [any-thread] */
ZEB_EXPORT ZEBGetProcAddress ZEBGetGetProcAddress(void);

/*
 * Starts the library.
 *
 * pageAlloc, pageFree  the allocator pair; if either is null, malloc and free stand in and the
 *                      library counts as multi-threaded.
 * objAlloc ... objSize the four memory procs; used only if all four are given.
 * errorReport          may be null: nobody is told.
 * purgeRequest         may be null: the library purges its cache itself.
 * flags                ZEB_FLAG_MULTI_THREADED or 0; looked at only if host allocators are given.
 * unregisterCountStart the change counter's first value; never pass 0, by which clients know that
 *                      they have fetched nothing yet. Pass what the last ZEBTerminate returned, and
 *                      the counter never repeats across restarts.
 * hostValue            kept, never looked at.
 *
 * Returns the look-up function, or null on failure. Calls are counted: while the library runs on
 * its default allocators, a further call changes nothing, ignores its arguments, returns the same
 * function and needs its own ZEBTerminate. While it runs on host allocators a further call is
 * refused with null. A failed start is not rolled back: what was done so far stays, and the count
 * stays 0. [frame-thread] [calls-host]
 */
ZEB_EXPORT ZEBGetProcAddress ZEBInitialize4(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree,
                                            ZEBObjAlloc objAlloc, ZEBObjRealloc objRealloc,
                                            ZEBObjFree objFree, ZEBObjSize objSize,
                                            ZEBErrorReport errorReport,
                                            ZEBPurgeRequest purgeRequest, uint32_t flags,
                                            uint32_t unregisterCountStart, uint64_t hostValue);

/* As ZEBInitialize4 without purge request and flags. [frame-thread] [calls-host] */
ZEB_EXPORT ZEBGetProcAddress ZEBInitialize3(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree,
                                            ZEBObjAlloc objAlloc, ZEBObjRealloc objRealloc,
                                            ZEBObjFree objFree, ZEBObjSize objSize,
                                            ZEBErrorReport errorReport,
                                            uint32_t unregisterCountStart, uint64_t hostValue);

/* As ZEBInitialize3 with a change counter that starts at 1. [frame-thread] [calls-host] */
ZEB_EXPORT ZEBGetProcAddress ZEBInitialize2(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree,
                                            ZEBObjAlloc objAlloc, ZEBObjRealloc objRealloc,
                                            ZEBObjFree objFree, ZEBObjSize objSize,
                                            ZEBErrorReport errorReport);

/* As ZEBInitialize2 without the four memory procs. [frame-thread] [calls-host] */
ZEB_EXPORT ZEBGetProcAddress ZEBInitialize(ZEBPageAlloc pageAlloc, ZEBPageFree pageFree,
                                           ZEBErrorReport errorReport);

/*
 * Gives one start back. The last one stops the library: event counters are unregistered, the
 * registry is emptied, the library's own objects are released; if clients still hold atoms, the
 * error report is told "string memory leak" once, and those atoms stay valid until their last
 * release.
 *
 * Returns the change counter. Every ZEBTerminate must match a successful start: the count is not
 * guarded. [frame-thread] [calls-host]
 */
ZEB_EXPORT uint32_t ZEBTerminate(void);

/*
 * Lock entry points for hosts that expect them. The library's locks need no help from outside, so
 * these do nothing: Lock returns 0, AssertNoLocks hands its argument back. [any-thread]
 */
ZEB_EXPORT int32_t ZEBLockSmithLockImpl(void);
ZEB_EXPORT void ZEBLockSmithUnlockImpl(void);
ZEB_EXPORT void ZEBLockSmithDeleteImpl(void);
ZEB_EXPORT void *ZEBLockSmithAssertNoLocksImpl(void *value);

/* The exports' types, for hosts that load the library at run time. */
typedef uint32_t (*ZEBGetVersionFunction)(void);
typedef ZEBGetProcAddress (*ZEBGetGetProcAddressFunction)(void);
typedef ZEBGetProcAddress (*ZEBInitializeFunction)(ZEBPageAlloc, ZEBPageFree, ZEBErrorReport);
typedef ZEBGetProcAddress (*ZEBInitialize2Function)(ZEBPageAlloc, ZEBPageFree, ZEBObjAlloc,
                                                    ZEBObjRealloc, ZEBObjFree, ZEBObjSize,
                                                    ZEBErrorReport);
typedef ZEBGetProcAddress (*ZEBInitialize3Function)(ZEBPageAlloc, ZEBPageFree, ZEBObjAlloc,
                                                    ZEBObjRealloc, ZEBObjFree, ZEBObjSize,
                                                    ZEBErrorReport, uint32_t, uint64_t);
typedef ZEBGetProcAddress (*ZEBInitialize4Function)(ZEBPageAlloc, ZEBPageFree, ZEBObjAlloc,
                                                    ZEBObjRealloc, ZEBObjFree, ZEBObjSize,
                                                    ZEBErrorReport, ZEBPurgeRequest, uint32_t,
                                                    uint32_t, uint64_t);
typedef uint32_t (*ZEBTerminateFunction)(void);
typedef int32_t (*ZEBLockSmithLockImplFunction)(void);
typedef void (*ZEBLockSmithUnlockImplFunction)(void);
typedef void (*ZEBLockSmithDeleteImplFunction)(void);
typedef void *(*ZEBLockSmithAssertNoLocksImplFunction)(void *);

#ifdef __cplusplus
}
#endif

#endif
