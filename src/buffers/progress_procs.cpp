// Interface "ZEBProgressInterface".
#include <array>

#include "base/unowned_data.h"
#include "base/value_boundary.h"
#include "buffers/buffer_services.h"
#include "buffers/progress.h"
#include "memory/object_memory.h"

namespace zeb {

namespace {

namespace procs {

ZEBProgress* NewNullProgress() { return makeObject<buffers::NullProgress>(); }

// The data ends here unless a progress takes it over.
ZEBProgress* NewClientProgress(void* data, ZEBProgressUpdate update, ZEBProgressDelete deleteProc) {
  if (deleteProc == nullptr) return nullptr;
  UnownedData unowned(deleteProc, data);
  if (update == nullptr) return nullptr;
  ZEBProgress* progress = makeObject<buffers::ClientProgress>(data, update, deleteProc);
  unowned.handOver();
  return progress;
}

void AddRef(ZEBProgress* progress) noexcept {
  if (progress != nullptr) progress->references.fetch_add(1, std::memory_order_relaxed);
}
void Release(ZEBProgress* progress) noexcept {
  if (progress != nullptr) buffers::release(*progress);
}

int32_t Update(ZEBProgress* progress, uint64_t done, uint64_t total) {
  return progress != nullptr && progress->Update(done, total) ? 1 : 0;
}

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_PROGRESS_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable progressService() { return {ZEB_PROGRESS_INTERFACE, entries, {}}; }

}  // namespace zeb
