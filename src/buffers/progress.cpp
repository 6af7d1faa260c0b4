#include "buffers/progress.h"

#include "memory/object_memory.h"

namespace zeb::buffers {

namespace {
constinit LiveTally liveTally;
}

ClientProgress::~ClientProgress() {
  try {
    deleteProc_(data_);
  } catch (...) {  // the data is the client's loss
  }
}

void release(ZEBProgress& progress) noexcept {
  if (progress.references.fetch_sub(1, std::memory_order_acq_rel) == 1) destroyObject(&progress);
}

LiveObjects liveProgress() noexcept { return {.live = liveTally.live()}; }

}  // namespace zeb::buffers

ZEBProgress::ZEBProgress() noexcept { zeb::buffers::liveTally.made(); }
ZEBProgress::~ZEBProgress() { zeb::buffers::liveTally.ended(); }
