#include "buffers/progress.h"

#include "memory/object_memory.h"

namespace zeb::buffers {

ClientProgress::~ClientProgress() {
  try {
    deleteProc_(data_);
  } catch (...) {  // the data is the client's loss
  }
}

void release(ZEBProgress& progress) noexcept {
  if (progress.references.fetch_sub(1, std::memory_order_acq_rel) == 1) destroyObject(&progress);
}

}  // namespace zeb::buffers
