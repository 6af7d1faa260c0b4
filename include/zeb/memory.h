/*
 * Interface "ZEBMemoryInterface": memory that modules may hand to each other.
 *
 * A block from one module may be resized or freed by any other. When the host gave its four memory
 * procs, the procs found here are the host's own functions and what they answer is the host's
 * business; the comments below describe the library's.
 */
#ifndef ZEB_MEMORY_H
#define ZEB_MEMORY_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_MEMORY_INTERFACE "ZEBMemoryInterface"

/*
 * Allocates `size` bytes (0 is a valid size) aligned to 16 bytes. The caller owns the block until
 * it gives it to Free or Realloc. Contents are undefined. Returns null when memory is short.
 * [any-thread]
 */
typedef void *(*ZEBMemAllocProc)(uint64_t size);

/*
 * Makes a new block of `size` bytes, copies what fits of the old one and frees the old one; the
 * block always moves. A null block means Alloc. Returns the new block, or null when memory is
 * short: the old block is then untouched and still the caller's. [any-thread]
 */
typedef void *(*ZEBMemReallocProc)(void *block, uint64_t size);

/* Frees a block of Alloc or Realloc; null is ignored. [any-thread] */
typedef void (*ZEBMemFreeProc)(void *block);

/* The block's size in bytes, at least what was asked for; 0 for null. [any-thread] */
typedef uint64_t (*ZEBMemGetBlockSizeProc)(void *block);

#define ZEB_MEMORY_PROCS(X)              \
  X(Alloc, Alloc, ZEBMemAllocProc)       \
  X(Realloc, Realloc, ZEBMemReallocProc) \
  X(Free, Free, ZEBMemFreeProc)          \
  X(GetBlockSize, GetBlockSize, ZEBMemGetBlockSizeProc)

typedef struct ZEBMemoryProcs {
  ZEB_MEMORY_PROCS(ZEB_PROC_MEMBER)
} ZEBMemoryProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchMemoryProcs, ZEBMemoryProcs, ZEB_MEMORY_INTERFACE, ZEB_MEMORY_PROCS)

#ifdef __cplusplus
}
#endif

#endif
