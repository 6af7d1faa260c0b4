// Interface "ZEBSharedBuffInterface".
#include <array>

#include "base/value_boundary.h"
#include "buffers/buffer_services.h"
#include "buffers/shared_buffer.h"

namespace zeb {

namespace {

namespace procs {

ZEBSharedBuffer* NewBuffer(uint64_t size, void* data, ZEBSharedBuffDelete deleteProc,
                           ZEBSharedBuffReleaseHook hook, void* deleteContext) {
  return buffers::make(size, data, deleteProc, hook, deleteContext);
}

ZEBSharedBuffer* NewBufferV2(uint64_t size, void* data, ZEBSharedBuffDelete deleteProc,
                             ZEBSharedBuffReleaseHook hook) {
  return buffers::make(size, data, deleteProc, hook, nullptr);
}

void DeleteUnowned(ZEBSharedBuffer* buffer) noexcept {
  if (buffer != nullptr) buffers::deleteUnowned(*buffer);
}
void AddRef(ZEBSharedBuffer* buffer) noexcept {
  if (buffer != nullptr) buffers::addReference(*buffer);
}
void Release(ZEBSharedBuffer* buffer) noexcept {
  if (buffer != nullptr) buffers::release(*buffer);
}
void* GetBuffer(ZEBSharedBuffer* buffer) noexcept {
  return buffer != nullptr ? buffer->data : nullptr;
}
uint64_t GetSize(ZEBSharedBuffer* buffer) noexcept { return buffer != nullptr ? buffer->size : 0; }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_SHARED_BUFFER_PROCS(ZEB_ROW)};
const std::array olderEntries{ZEB_SHARED_BUFFER_OLDER_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable sharedBufferService() { return {ZEB_SHARED_BUFFER_INTERFACE, entries, olderEntries}; }

}  // namespace zeb
