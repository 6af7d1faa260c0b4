/*
 * Fetching procs in bulk, from the client's side.
 *
 * A client fetches all procs of an interface at once, keeps the change counter's value of that
 * moment, and fetches again whenever the counter has moved (ZEBGetUnregisterCountAddr in frame.h).
 */
#ifndef ZEB_CLIENT_H
#define ZEB_CLIENT_H

#include <string.h>

#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Looks `count` requests up under one interface name and stores each answer at the same index of
 * `procs`. Stops at the first that is missing: its slot becomes null, the slots after it are left
 * as they were. Returns 1 when all were found (also for a count of 0), else 0. [any-thread]
 */
static inline int32_t ZEBFetchProcs(ZEBGetProcAddress getProcAddress, const char *interfaceName,
                                    const ZEBProcRequest *requests, size_t count, ZEBProc *procs) {
  for (size_t i = 0; i < count; ++i) {
    procs[i] = getProcAddress(interfaceName, requests[i].methodName, requests[i].procName);
    if (!procs[i]) return 0;
  }
  return 1;
}

/*
 * Defines `int32_t name(ZEBGetProcAddress, struct *out)`, which fills the typed struct of an
 * interface's procs. It returns 1 when every proc was found, else 0 with `*out` untouched.
 */
#define ZEB_DEFINE_FETCH(name, procsStruct, interfaceName, rows)                         \
  static inline int32_t name(ZEBGetProcAddress getProcAddress, procsStruct *out) {       \
    static const ZEBProcRequest requests[] = {rows(ZEB_PROC_REQUEST)};                   \
    ZEBProc procs[sizeof(requests) / sizeof(requests[0])];                               \
    const size_t count = sizeof(requests) / sizeof(requests[0]);                         \
    if (!ZEBFetchProcs(getProcAddress, interfaceName, requests, count, procs)) return 0; \
    memcpy(out, procs, sizeof(procs));                                                   \
    return 1;                                                                            \
  }

#ifdef __cplusplus
}
#endif

#endif
