// How far two texts are from each other, for telling what somebody may have meant.
#ifndef ZEB_UTIL_EDIT_DISTANCE_H
#define ZEB_UTIL_EDIT_DISTANCE_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace zeb {

// Longer texts are not compared: the work grows with the product of the lengths.
inline constexpr uint64_t kLongestComparedText = 255;

// The least number of bytes to insert, remove or replace to make one text the other. Nothing if one
// of them is too long.
[[nodiscard]] inline std::optional<uint64_t> editDistance(const char* a, uint64_t aLength,
                                                          const char* b,
                                                          uint64_t bLength) noexcept {
  if (aLength > kLongestComparedText || bLength > kLongestComparedText) return std::nullopt;
  // row[j]: the distance between the part of `a` that was looked at and the first j bytes of `b`.
  std::array<uint64_t, kLongestComparedText + 1> row{};
  for (uint64_t j = 0; j <= bLength; ++j) row[j] = j;
  for (uint64_t i = 0; i < aLength; ++i) {
    uint64_t diagonal = row[0];
    row[0] = i + 1;
    for (uint64_t j = 0; j < bLength; ++j) {
      const uint64_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row[bLength];
}

}  // namespace zeb

#endif
