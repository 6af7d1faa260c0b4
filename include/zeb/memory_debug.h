/*
 * Interface "ZEBMemDbgInterface": the names that a debugging build of the library would serve.
 *
 * This library watches nothing: the five commands do nothing and the three questions answer 0. The
 * procs exist so that a client written against a watching library finds every name.
 */
#ifndef ZEB_MEMORY_DEBUG_H
#define ZEB_MEMORY_DEBUG_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_MEMORY_DEBUG_INTERFACE "ZEBMemDbgInterface"

/* Begin and end watching allocations: nothing happens. [any-thread] */
typedef void (*ZEBMemDbgStartWatchProc)(void);
typedef void (*ZEBMemDbgStopWatchProc)(void);

/* Check the heap, report statistics: nothing happens. [any-thread] */
typedef void (*ZEBMemDbgVerifyHeapProc)(void);
typedef void (*ZEBMemDbgReportStatsProc)(void);

/* Let one allocation in `rate` fail: nothing happens. [any-thread] */
typedef void (*ZEBMemDbgSetFailureRateProc)(uint32_t rate);

/* Bytes in use, most bytes ever in use, number of blocks: always 0. [any-thread] */
typedef uint64_t (*ZEBMemDbgGetCurAllocProc)(void);
typedef uint64_t (*ZEBMemDbgGetHighWaterAllocProc)(void);
typedef uint64_t (*ZEBMemDbgGetNumAllocsProc)(void);

#define ZEB_MEMORY_DEBUG_PROCS(X)                                         \
  X(StartWatch, StartWatch, ZEBMemDbgStartWatchProc)                      \
  X(StopWatch, StopWatch, ZEBMemDbgStopWatchProc)                         \
  X(VerifyHeap, VerifyHeap, ZEBMemDbgVerifyHeapProc)                      \
  X(ReportStats, ReportStats, ZEBMemDbgReportStatsProc)                   \
  X(SetFailureRate, SetFailureRate, ZEBMemDbgSetFailureRateProc)          \
  X(GetCurAlloc, GetCurAlloc, ZEBMemDbgGetCurAllocProc)                   \
  X(GetHighWaterAlloc, GetHighWaterAlloc, ZEBMemDbgGetHighWaterAllocProc) \
  X(GetNumAllocs, GetNumAllocs, ZEBMemDbgGetNumAllocsProc)

typedef struct ZEBMemoryDebugProcs {
  ZEB_MEMORY_DEBUG_PROCS(ZEB_PROC_MEMBER)
} ZEBMemoryDebugProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchMemoryDebugProcs, ZEBMemoryDebugProcs, ZEB_MEMORY_DEBUG_INTERFACE,
                 ZEB_MEMORY_DEBUG_PROCS)

#ifdef __cplusplus
}
#endif

#endif
