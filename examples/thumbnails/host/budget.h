// How much the cache may hold, and the procedure that keeps it there.
//
// The library's own marks suit small results; a host that knows better gives a purge request when
// it starts the library, and is asked whenever the cache has changed its size.
#ifndef THUMBNAILS_HOST_BUDGET_H
#define THUMBNAILS_HOST_BUDGET_H

#include <cstdint>

#include "zeb/cache.h"

namespace examples {

// The purge request to start the library with. When the cache is over the budget, it evicts what is
// worth least until a quarter of the budget is free again, so that not every picture sorts the
// cache. Does nothing while there is no budget.
void keepToBudget(int64_t totalSize);

// A budget for as long as a C++ object lives; one at a time, for the procedure above is given no
// context. One thread.
class Budget {
 public:
  // The procs must outlive this object.
  Budget(const ZEBCacheProcs& cache, uint64_t bytes);
  ~Budget();

  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;

 private:
  friend void keepToBudget(int64_t totalSize);

  void purge() const;

  const ZEBCacheProcs& cache_;
  int64_t bytes_;
};

}  // namespace examples

#endif
