#include "util/radix_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/random.h"

namespace zeb {
namespace {

struct Entry {
  uint32_t key;
  size_t origin;
  bool operator==(const Entry&) const = default;
};

std::vector<Entry> sorted(std::vector<Entry> entries) {
  std::vector<Entry> spare(entries.size());
  radixSort(entries.data(), spare.data(), entries.size());
  return entries;
}

void expectStableOrder(const std::vector<Entry>& entries) {
  std::vector<Entry> wanted = entries;
  std::stable_sort(wanted.begin(), wanted.end(),
                   [](const Entry& a, const Entry& b) { return a.key < b.key; });
  EXPECT_EQ(sorted(entries), wanted);
}

TEST(RadixSortTest, TakesNothingAndOne) {
  EXPECT_TRUE(sorted({}).empty());
  expectStableOrder({{7, 0}});
}

TEST(RadixSortTest, LooksAtEveryDigit) {
  expectStableOrder({{0xFFFFFFFF, 0},
                     {0x80000000, 1},
                     {0x00010000, 2},
                     {0x00000100, 3},
                     {0, 4},
                     {0x7FFFFFFF, 5},
                     {1, 6},
                     {0x00FF0000, 7},
                     {0xFF000000, 8}});
}

TEST(RadixSortTest, AgreesWithAStableSort) {
  zeb_test::forEachSeed([](zeb_test::Random& random) {
    for (const uint64_t bound : {uint64_t{2}, uint64_t{300}, uint64_t{1} << 32}) {
      std::vector<Entry> entries(random.between(2, 3000));
      for (size_t i = 0; i < entries.size(); ++i) {
        entries[i] = {static_cast<uint32_t>(random.below(bound)), i};
      }
      expectStableOrder(entries);
    }
  });
}

}  // namespace
}  // namespace zeb
