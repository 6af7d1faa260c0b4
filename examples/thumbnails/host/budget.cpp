#include "host/budget.h"

#include <algorithm>
#include <limits>

namespace examples {
namespace {

constinit const Budget* current = nullptr;

}  // namespace

void keepToBudget(int64_t totalSize) {
  if (current != nullptr && totalSize > current->bytes_) current->purge();
}

Budget::Budget(const ZEBCacheProcs& cache, uint64_t bytes)
    : cache_(cache),
      bytes_(static_cast<int64_t>(
          std::min(bytes, static_cast<uint64_t>(std::numeric_limits<int64_t>::max())))) {
  current = this;
}

Budget::~Budget() { current = nullptr; }

void Budget::purge() const {
  ZEBCachePurge* const purge = cache_.NewCachePurge();
  if (purge == nullptr) return;  // memory is short: the next change asks again
  const int64_t enough = bytes_ - bytes_ / 4;
  while (cache_.CurrentCacheSize() > enough && cache_.PurgeNextBlock(purge) == 1) {
  }
  cache_.DeleteCachePurge(purge);
}

}  // namespace examples
