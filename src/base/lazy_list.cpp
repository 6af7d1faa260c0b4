#include "base/lazy_list.h"

namespace zeb {

constinit LazyList lazyList;

bool initialiseLazyList(const LazyList& list) {
  return sdk::initialiseLazyObjects(list.head(), kLowestLazyLevel, kHighestLazyLevel);
}

void terminateLazyList(const LazyList& list) { sdk::terminateLazyObjects(list.head()); }

}  // namespace zeb

namespace ZEB_T_MT {

LazyTerminate::LazyTerminate(int32_t level) noexcept : level_(level) {
  zeb::lazyList.pushHead(this);
}

}  // namespace ZEB_T_MT
