#include "memory/object_memory.h"

namespace zeb {

void freeObjectThrough(ZEBObjFree hostFree, void* block) noexcept {
  if (block == nullptr) return;
  if (hostFree == nullptr) {
    processAllocator.free(block);
    return;
  }
  try {
    hostFree(block);
  } catch (...) {  // the block is gone as far as the library is concerned
  }
}

}  // namespace zeb
