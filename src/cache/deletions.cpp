#include "cache/deletions.h"

#include "memory/object_memory.h"

namespace zeb::cache {

namespace {

constexpr int32_t kIdentifierSurvives = 1;
constexpr int32_t kIdentifierIsGone = 0;

void deleteData(ZEBCacheDelete deleteProc, void* data, int32_t survives) noexcept {
  if (data == nullptr) return;
  try {
    deleteProc(data, survives);
  } catch (...) {  // the data is the client's loss
  }
}

void destroy(ZEBCacheID* id) noexcept {
  const ZEBObjFree freeThrough = id->freeThrough;
  id->~ZEBCacheID();
  freeObjectThrough(freeThrough, id);
}

}  // namespace

void Deletions::deleteAll() noexcept {
  deleteData(deleteEvicted_, evicted_, kIdentifierSurvives);
  while (first_ != nullptr) {
    ZEBCacheID* id = first_;
    first_ = id->newer;
    deleteData(id->deleteProc, id->data, kIdentifierIsGone);
    destroy(id);
  }
}

}  // namespace zeb::cache
