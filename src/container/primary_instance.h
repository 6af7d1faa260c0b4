// The offset at which clients may look at a container's cached fields.
#ifndef ZEB_CONTAINER_PRIMARY_INSTANCE_H
#define ZEB_CONTAINER_PRIMARY_INSTANCE_H

#include <cstdint>

namespace zeb::container {

// -1 until the library is first initialised.
[[nodiscard]] int64_t offsetToPrimaryInstance() noexcept;

}  // namespace zeb::container

#endif
