// A stable sort by 32-bit keys, smallest first, in time that grows with the count alone.
//
// `Entry` has a member `uint32_t key`. Both arrays have `count` entries; the sorted ones end up in
// `entries`, and `spare` is room to work in.
#ifndef ZEB_UTIL_RADIX_SORT_H
#define ZEB_UTIL_RADIX_SORT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace zeb {

namespace radix_sort {

inline constexpr unsigned kDigits = 4;  // an even number: the last pass ends where the first began
inline constexpr unsigned kDigitBits = 8;
inline constexpr size_t kDigitValues = size_t{1} << kDigitBits;

using Counts = std::array<uint32_t, kDigitValues>;

inline size_t digitOf(uint32_t key, unsigned digit) noexcept {
  return (key >> (digit * kDigitBits)) & (kDigitValues - 1);
}

// From how many entries have a digit to where the first of them goes.
inline void turnIntoPositions(Counts& counts) noexcept {
  uint32_t position = 0;
  for (uint32_t& count : counts) position += std::exchange(count, position);
}

}  // namespace radix_sort

template <class Entry>
void radixSort(Entry* entries, Entry* spare, size_t count) noexcept {
  std::array<radix_sort::Counts, radix_sort::kDigits> counts{};
  for (size_t i = 0; i < count; ++i) {
    for (unsigned digit = 0; digit < radix_sort::kDigits; ++digit) {
      ++counts[digit][radix_sort::digitOf(entries[i].key, digit)];
    }
  }
  for (unsigned digit = 0; digit < radix_sort::kDigits; ++digit) {
    radix_sort::Counts& positions = counts[digit];
    radix_sort::turnIntoPositions(positions);
    for (size_t i = 0; i < count; ++i) {
      spare[positions[radix_sort::digitOf(entries[i].key, digit)]++] = entries[i];
    }
    std::swap(entries, spare);
  }
}

}  // namespace zeb

#endif
