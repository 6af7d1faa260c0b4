// Objects that exist from load to unload but work only between start and stop.
//
// A LazyTerminate links itself at the head of one process-wide list when it is constructed.
// Starting the library initialises the listed objects in list order, stopping it terminates them.
// The list is changed at load and unload and walked at start and stop: it needs no lock.
#ifndef ZEB_BASE_LAZY_LIST_H
#define ZEB_BASE_LAZY_LIST_H

#include <cstdint>

#include "base/object_bases.h"
#include "util/intrusive_list.h"
#include "zeb/sdk/lazy_walk.hpp"

namespace ZEB_T_MT {

class LazyTerminate : public zeb::double_linked_list_element<LazyTerminate, ZEBDLLEParent> {
 public:
  explicit LazyTerminate(int32_t level) noexcept;
  virtual ~LazyTerminate() = default;

  virtual bool initialise() { return true; }
  virtual void terminate() {}
  virtual void forget() {}  // drops what it holds without giving it back

  [[nodiscard]] int32_t level() const noexcept { return level_; }

 private:
  const int32_t level_;
};

}  // namespace ZEB_T_MT

namespace zeb {

using LazyList = double_linked_list<ZEB_T_MT::LazyTerminate>;
extern constinit LazyList lazyList;

using sdk::kHighestLazyLevel;
using sdk::kLowestLazyLevel;

// Initialises the objects whose level lies within the bounds, in list order. When one fails, every
// object before it in the list is terminated, whatever its level, and the result is false.
bool initialiseLazyList(const LazyList& list);

// Terminates every object, in list order.
void terminateLazyList(const LazyList& list);

}  // namespace zeb

#endif
