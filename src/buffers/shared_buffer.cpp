#include "buffers/shared_buffer.h"

#include <memory>

#include "base/failure.h"
#include "base/library_counters.h"
#include "memory/object_memory.h"
#include "memory/typed_pool.h"

namespace zeb::buffers {

namespace {

constinit TypedPool<ZEBSharedBuffer, 48, 8> pool{counters::sharedBufferPageMiss};

struct GiveSlotBack {
  void operator()(ZEBSharedBuffer* buffer) const noexcept { pool.destroy(buffer); }
};
// A buffer under construction.
using Draft = std::unique_ptr<ZEBSharedBuffer, GiveSlotBack>;

void deleteNothing(void* /*data*/) {}

void bindClientData(ZEBSharedBuffer& buffer, void* data, ZEBSharedBuffDelete deleteProc,
                    void* deleteContext) noexcept {
  buffer.data = data;
  buffer.deleteProc = deleteProc != nullptr ? deleteProc : deleteNothing;
  buffer.deleteContext = deleteProc != nullptr ? deleteContext : nullptr;
}

bool hookKeeps(ZEBSharedBuffer& buffer) noexcept {
  if (buffer.hook == nullptr) return false;
  try {
    return buffer.hook(&buffer) != 0;
  } catch (...) {  // a hook that fails keeps nothing
    return false;
  }
}

void deleteData(ZEBSharedBuffer& buffer) noexcept {
  if (buffer.data == nullptr) return;
  if (buffer.deleteProc == nullptr) {
    freeObject(buffer.data);
    return;
  }
  try {
    buffer.deleteProc(buffer.deleteContext != nullptr ? buffer.deleteContext : buffer.data);
  } catch (...) {  // the data is the client's loss
  }
}

}  // namespace

// The slot comes first: a host counts a page for a buffer that is refused, too.
ZEBSharedBuffer* make(uint64_t size, void* data, ZEBSharedBuffDelete deleteProc,
                      ZEBSharedBuffReleaseHook hook, void* deleteContext) {
  counters::sharedBuffer.signal();
  Draft draft(pool.make());
  draft->size = size;
  draft->hook = hook;
  if (data != nullptr) {
    bindClientData(*draft, data, deleteProc, deleteContext);
  } else if (deleteProc == nullptr) {
    draft->data = allocObject(size);
  } else {
    raiseNewKst(kst::kUnknown, "NULL client buffer with non-NULL delete proc");
  }
  return draft.release();
}

void release(ZEBSharedBuffer& buffer) noexcept {
  if (buffer.references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (hookKeeps(buffer)) return;
  deleteData(buffer);
  pool.destroy(&buffer);
}

LiveObjects liveBuffers() noexcept { return {.live = pool.live()}; }

void deleteUnowned(ZEBSharedBuffer& buffer) noexcept {
  buffer.hook = nullptr;
  addReference(buffer);
  release(buffer);
}

}  // namespace zeb::buffers
