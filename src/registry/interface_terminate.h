// Empties the registry when the library stops.
#ifndef ZEB_REGISTRY_INTERFACE_TERMINATE_H
#define ZEB_REGISTRY_INTERFACE_TERMINATE_H

#include "base/lazy_list.h"

namespace zeb::registry {

// Destroys every entry and gives back the string table's first user. The frame links it after all
// others and so at the head of the lazy list: when stopping, nothing can be looked up any more by
// the time that the others are terminated.
class InterfaceTerminate final : public ZEB_T_MT::LazyTerminate {
 public:
  static constexpr int32_t kLevel = 3;

  InterfaceTerminate() noexcept : LazyTerminate(kLevel) {}

  void terminate() override;
  void forget() override;
};

}  // namespace zeb::registry

#endif
