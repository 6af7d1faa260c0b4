#include "util/edit_distance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

namespace {

std::optional<uint64_t> distance(const std::string& a, const std::string& b) {
  return zeb::editDistance(a.data(), a.size(), b.data(), b.size());
}

TEST(EditDistance, IsZeroForEqualTexts) {
  EXPECT_EQ(distance("", ""), 0u);
  EXPECT_EQ(distance("a text", "a text"), 0u);
}

TEST(EditDistance, CountsInsertedRemovedAndReplacedBytes) {
  EXPECT_EQ(distance("text", "texts"), 1u);
  EXPECT_EQ(distance("text", "tet"), 1u);
  EXPECT_EQ(distance("text", "test"), 1u);
  EXPECT_EQ(distance("text", "etxt"), 2u);
  EXPECT_EQ(distance("abc", "xyz"), 3u);
}

TEST(EditDistance, OfAnEmptyTextIsTheOthersLength) {
  EXPECT_EQ(distance("", "seven b"), 7u);
  EXPECT_EQ(distance("seven b", ""), 7u);
}

TEST(EditDistance, ComparesTextsUpToTheLongest) {
  const std::string longest(zeb::kLongestComparedText, 'x');
  const std::string other(zeb::kLongestComparedText, 'y');
  EXPECT_EQ(distance(longest, other), zeb::kLongestComparedText);
  EXPECT_EQ(distance(longest, ""), zeb::kLongestComparedText);
  EXPECT_EQ(distance(longest + "x", longest), std::nullopt);
  EXPECT_EQ(distance("", longest + "x"), std::nullopt);
}

// The definition itself, far too slow for anything but short texts.
uint64_t byDefinition(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return std::max(a.size(), b.size());
  const uint64_t same = byDefinition(a.substr(1), b.substr(1));
  if (a[0] == b[0]) return same;
  return 1 + std::min({same, byDefinition(a.substr(1), b), byDefinition(a, b.substr(1))});
}

TEST(EditDistance, AgreesWithItsDefinition) {
  std::map<uint64_t, int> seen;
  const std::string letters = "ab";
  for (unsigned i = 0; i < 64; ++i) {
    for (unsigned j = 0; j < 64; ++j) {
      std::string a;
      std::string b;
      for (unsigned bit = 0; bit < 6; ++bit) {
        if (bit < i % 7) a += letters[(i >> bit) & 1];
        if (bit < j % 7) b += letters[(j >> bit) & 1];
      }
      const auto found = distance(a, b);
      ASSERT_EQ(found, byDefinition(a, b)) << a << " " << b;
      ++seen[*found];
    }
  }
  EXPECT_GT(seen.size(), 4u);
}

}  // namespace
