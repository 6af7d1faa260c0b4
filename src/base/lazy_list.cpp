#include "base/lazy_list.h"

namespace zeb {

constinit LazyList lazyList;

namespace {

void terminateUpTo(const LazyList& list, const ZEB_T_MT::LazyTerminate* end) {
  for (auto* object = list.head(); object != end; object = object->older()) object->terminate();
}

}  // namespace

bool initialiseLazyList(const LazyList& list) {
  for (auto* object = list.head(); object != nullptr; object = object->older()) {
    if (object->level() < kLowestLazyLevel || object->level() > kHighestLazyLevel) continue;
    if (object->initialise()) continue;
    terminateUpTo(list, object);
    return false;
  }
  return true;
}

void terminateLazyList(const LazyList& list) { terminateUpTo(list, nullptr); }

}  // namespace zeb

namespace ZEB_T_MT {

LazyTerminate::LazyTerminate(int32_t level) noexcept : level_(level) {
  zeb::lazyList.pushHead(this);
}

}  // namespace ZEB_T_MT
