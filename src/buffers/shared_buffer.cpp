#include "buffers/shared_buffer.h"

#include "base/failure.h"
#include "base/library_counters.h"
#include "memory/object_memory.h"
#include "memory/typed_pool.h"

namespace zeb::buffers {

namespace {

constinit TypedPool<ZEBSharedBuffer, 48, 8> pool{counters::sharedBufferPageMiss};

void deleteNothing(void* /*data*/) {}

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

ZEBSharedBuffer* make(uint64_t size, void* data, ZEBSharedBuffDelete deleteProc,
                      ZEBSharedBuffReleaseHook hook, void* deleteContext) {
  counters::sharedBuffer.signal();
  if (data == nullptr && deleteProc != nullptr) {
    raiseNewKst(kst::kUnknown, "NULL client buffer with non-NULL delete proc");
  }
  ObjectMemory own;
  if (data == nullptr) own = ObjectMemory(size);
  ZEBSharedBuffer* buffer = pool.make();
  buffer->size = size;
  buffer->hook = hook;
  if (data == nullptr) {
    buffer->data = own.release();
    return buffer;
  }
  buffer->data = data;
  buffer->deleteProc = deleteProc != nullptr ? deleteProc : deleteNothing;
  buffer->deleteContext = deleteProc != nullptr ? deleteContext : nullptr;
  return buffer;
}

void release(ZEBSharedBuffer& buffer) noexcept {
  if (buffer.references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (hookKeeps(buffer)) return;
  deleteData(buffer);
  pool.destroy(&buffer);
}

void deleteUnowned(ZEBSharedBuffer& buffer) noexcept {
  buffer.hook = nullptr;
  addReference(buffer);
  release(buffer);
}

}  // namespace zeb::buffers
