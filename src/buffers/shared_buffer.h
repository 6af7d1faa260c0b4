// Shared buffers: reference-counted blocks of bytes with a size.
//
// Thread safety: references may be added and dropped by any thread. No lock is held while a
// client's procedure runs.
#ifndef ZEB_BUFFERS_SHARED_BUFFER_H
#define ZEB_BUFFERS_SHARED_BUFFER_H

#include <atomic>
#include <cstdint>

#include "base/live_objects.h"
#include "zeb/shared_buffer.h"

struct ZEBSharedBuffer {
  std::atomic<uint32_t> references{1};
  uint64_t size = 0;
  void* data = nullptr;
  ZEBSharedBuffDelete deleteProc = nullptr;  // null: the bytes are the library's
  ZEBSharedBuffReleaseHook hook = nullptr;
  void* deleteContext = nullptr;
};

namespace zeb::buffers {

// One reference for the caller. Raises an error for a delete procedure without data, and what
// allocation raises; the data then stays the caller's.
[[nodiscard]] ZEBSharedBuffer* make(uint64_t size, void* data, ZEBSharedBuffDelete deleteProc,
                                    ZEBSharedBuffReleaseHook hook, void* deleteContext);

inline void addReference(ZEBSharedBuffer& buffer) noexcept {
  buffer.references.fetch_add(1, std::memory_order_relaxed);
}
void release(ZEBSharedBuffer& buffer) noexcept;
void deleteUnowned(ZEBSharedBuffer& buffer) noexcept;

[[nodiscard]] LiveObjects liveBuffers() noexcept;

}  // namespace zeb::buffers

#endif
