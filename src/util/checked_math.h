// Arithmetic on sizes that come from callers. These functions only answer whether a result can be
// represented; what an overflow means is decided by whoever asks.
#ifndef ZEB_UTIL_CHECKED_MATH_H
#define ZEB_UTIL_CHECKED_MATH_H

#include <cstdint>
#include <limits>
#include <optional>

namespace zeb {

[[nodiscard]] constexpr std::optional<uint64_t> checkedAdd(uint64_t a, uint64_t b) noexcept {
  if (b > std::numeric_limits<uint64_t>::max() - a) return std::nullopt;
  return a + b;
}

[[nodiscard]] constexpr std::optional<uint64_t> checkedMultiply(uint64_t a, uint64_t b) noexcept {
  if (b != 0 && a > std::numeric_limits<uint64_t>::max() / b) return std::nullopt;
  return a * b;
}

// a + b + 1: the room for two texts joined and their final zero.
[[nodiscard]] constexpr std::optional<uint64_t> checkedJoinedSize(uint64_t a, uint64_t b) noexcept {
  const auto both = checkedAdd(a, b);
  return both ? checkedAdd(*both, 1) : std::nullopt;
}

}  // namespace zeb

#endif
