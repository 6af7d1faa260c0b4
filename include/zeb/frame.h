/*
 * Interface "ZEB": the registry and the library's frame, as modules reach them.
 */
#ifndef ZEB_FRAME_H
#define ZEB_FRAME_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_FRAME_INTERFACE "ZEB"

/*
 * Publishes a function under three names, each of which may be null (a name of its own).
 *
 * The names are copied; the function must stay callable until the interface is unregistered. A
 * module that unloads unregisters first. Returns 1, or 0 when the same three names are taken
 * already (the proc registered first stays) or memory is short. A null function is accepted and
 * cannot be told from a missing one. [any-thread]
 */
typedef int32_t (*ZEBRegisterProcAddress)(const char *interfaceName, const char *methodName,
                                          const char *procName, ZEBProc proc);

/*
 * The host's error-report procedure; one that does nothing when the host gave none. The text is
 * only read during the call. [any-thread] [calls-host]
 */
typedef void (*ZEBReportError)(const char *message);

/*
 * Moves the change counter, then removes every proc of the interface; afterwards the same names may
 * be registered again. The counter moves also when there is no such interface.
 *
 * Other threads may register and look up procs of other interfaces meanwhile. They must neither
 * look up nor call procs of this one. [any-thread]
 */
typedef void (*ZEBUnregisterInterface)(const char *interfaceName);

/*
 * The change counter: it moves with each ZEBUnregisterInterface. Whoever has fetched procs compares
 * it with the value at the time of fetching and fetches again when they differ. [any-thread]
 */
typedef uint32_t (*ZEBGetUnregisterCount)(void);

/*
 * The address of the change counter, to read it without a call (an aligned 32-bit load; use an
 * atomic load where interfaces are unregistered by other threads). Never null, valid as long as
 * the library is loaded. Never write to it. [any-thread]
 */
typedef uint32_t *(*ZEBGetUnregisterCountAddr)(void);

/* An empty hook: does nothing. [any-thread] */
typedef void (*ZEBAssertNoObjects)(void);

/*
 * 1 when the library may start threads of its own: it runs on its default allocators, or the host
 * gave its allocators together with ZEB_FLAG_MULTI_THREADED. Else 0. [any-thread]
 */
typedef int32_t (*ZEBIsMultiThreaded)(void);

/* In this interface the method name and the proc name are the same. */
#define ZEB_FRAME_PROCS(X)                                                        \
  X(RegisterProcAddress, ZEBRegisterProcAddress, ZEBRegisterProcAddress)          \
  X(ReportError, ZEBReportError, ZEBReportError)                                  \
  X(UnregisterInterface, ZEBUnregisterInterface, ZEBUnregisterInterface)          \
  X(GetUnregisterCount, ZEBGetUnregisterCount, ZEBGetUnregisterCount)             \
  X(GetUnregisterCountAddr, ZEBGetUnregisterCountAddr, ZEBGetUnregisterCountAddr) \
  X(AssertNoObjects, ZEBAssertNoObjects, ZEBAssertNoObjects)                      \
  X(IsMultiThreaded, ZEBIsMultiThreaded, ZEBIsMultiThreaded)

typedef struct ZEBFrameProcs {
  ZEB_FRAME_PROCS(ZEB_PROC_MEMBER)
} ZEBFrameProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchFrameProcs, ZEBFrameProcs, ZEB_FRAME_INTERFACE, ZEB_FRAME_PROCS)

#ifdef __cplusplus
}
#endif

#endif
