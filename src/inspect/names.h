// The order of names in snapshots.
#ifndef ZEB_INSPECT_NAMES_H
#define ZEB_INSPECT_NAMES_H

#include <cstring>

namespace zeb::inspect {

// Below 0, 0 or above 0, as strcmp says it; a null name comes before every text.
[[nodiscard]] inline int compareNames(const char* a, const char* b) noexcept {
  if (a == nullptr || b == nullptr) return (a != nullptr ? 1 : 0) - (b != nullptr ? 1 : 0);
  return std::strcmp(a, b);
}

}  // namespace zeb::inspect

#endif
