#include "container/primary_instance.h"

#include <cstddef>

#include "base/lazy_list.h"
#include "container/container.h"

namespace zeb::container {

namespace {

constinit int64_t offset = -1;

class OffsetInit final : public ZEB_T_MT::LazyTerminate {
 public:
  static constexpr int32_t kLevel = 2;

  OffsetInit() noexcept : LazyTerminate(kLevel) {}

  bool initialise() override {
    // The type has base classes inside its members, which leaves offsetof to the compiler's
    // goodwill; an object tells for certain.
    const ZEBContainer container;
    offset =
        reinterpret_cast<const char*>(&container.cache) - reinterpret_cast<const char*>(&container);
    return true;
  }
};

OffsetInit offsetInit;

}  // namespace

int64_t offsetToPrimaryInstance() noexcept { return offset; }

}  // namespace zeb::container
