#include "util/text_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "support/random.h"

namespace {

using zeb::TextKey;

using Texts = std::vector<std::string>;
using Hash = std::function<uint64_t(const std::string&)>;

uint64_t textHash(const std::string& text) { return zeb::text_hash::of(text.data(), text.size()); }

std::string randomText(zeb_test::Random& random, uint64_t length) {
  std::string text(length, ' ');
  for (char& letter : text) letter = static_cast<char>(random.between(1, 255));
  return text;
}

TEST(TextKey, KnowsTextAndLength) {
  const char* const text = "ZEBMemoryInterface";
  const TextKey key(text);
  EXPECT_EQ(key.text, text);
  EXPECT_EQ(key.length, 18u);
}

TEST(TextKey, IsTheSameAtEveryAddress) {
  zeb_test::Random random(1);
  for (uint64_t length = 0; length <= 200; ++length) {
    const std::string text = randomText(random, length);
    const TextKey expected(text.c_str());
    ASSERT_EQ(expected.length, length);
    for (uint64_t offset = 0; offset < 16; ++offset) {
      // Exactly as much memory as the text takes: an address sanitizer sees one byte too many.
      std::vector<char> place(offset + length + 1, '#');
      std::memcpy(place.data() + offset, text.c_str(), length + 1);
      const TextKey key(place.data() + offset);
      ASSERT_EQ(key.hash, expected.hash) << length << " at " << offset;
      ASSERT_TRUE(key.equals(text.data(), length));
    }
  }
}

TEST(TextKey, ChangesWithEveryByteOfTheText) {
  zeb_test::Random random(2);
  for (uint64_t length = 1; length <= 200; ++length) {
    const std::string text = randomText(random, length);
    for (uint64_t at = 0; at < length; ++at) {
      std::string other = text;
      other[at] = static_cast<char>(other[at] ^ 0x20);
      ASSERT_NE(textHash(text), textHash(other)) << length << ", byte " << at;
      ASSERT_FALSE(TextKey(text.c_str()).equals(other.data(), length)) << length << ", byte " << at;
    }
  }
}

// A hash that took the bytes of the text without its length would call these alike.
TEST(TextKey, TellsRepeatedLettersOfDifferentLengthApart) {
  for (const char letter : {'\x01', 'a', '\xff'}) {
    std::unordered_set<uint64_t> hashes;
    for (uint64_t length = 0; length <= 200; ++length) {
      hashes.insert(textHash(std::string(length, letter)));
    }
    EXPECT_EQ(hashes.size(), 201u);
  }
}

TEST(TextKey, EqualsOnlyTheSameBytesOfTheSameLength) {
  const TextKey key("Alloc");
  EXPECT_TRUE(key.equals("Alloc", 5));
  EXPECT_FALSE(key.equals("Alloc", 4));
  EXPECT_FALSE(key.equals("Allocate", 8));
  EXPECT_FALSE(key.equals("Allob", 5));
  EXPECT_FALSE(key.equals("", 0));
  EXPECT_TRUE(TextKey("").equals("", 0));
}

// Two texts whose hashes are equal by force: the compare must still tell them apart.
TEST(TextKey, IsNotMisledByACollision) {
  TextKey key("Realloc");
  key.hash = TextKey("Alloc12").hash;
  EXPECT_FALSE(key.equals("Alloc12", 7));
  EXPECT_TRUE(key.equals("Realloc", 7));
}

TEST(TextKey, OfNullIsNotTheKeyOfTheEmptyText) {
  const TextKey null(nullptr);
  EXPECT_EQ(null.text, nullptr);
  EXPECT_EQ(null.length, 0u);
  EXPECT_EQ(null.hash, 0u);
  EXPECT_NE(TextKey("").hash, null.hash);
}

// --- How evenly the hashes spread ---

// Names as hosts and modules use them: alike for the most part, different in a few places.
Texts similarTexts(const std::string& before, const std::string& after) {
  Texts texts;
  for (int i = 0; i < 8192; ++i) texts.push_back(before + std::to_string(i) + after);
  return texts;
}

Texts shortTexts() {
  Texts texts;
  for (char a = '0'; a <= 'z'; ++a) {
    for (char b = '0'; b <= 'z'; ++b) texts.push_back({a, b});
  }
  return texts;
}

// Texts of eight bytes that share one letter, moved and repeated.
Texts sparseTexts() {
  Texts texts;
  for (unsigned bits = 0; bits < 8192; ++bits) {
    std::string text(13, 'a');
    for (size_t at = 0; at < text.size(); ++at) {
      if ((bits >> at & 1) != 0) text[at] = 'b';
    }
    texts.push_back(text);
  }
  return texts;
}

std::vector<Texts> families() {
  return {similarTexts("ZEBMem", "Proc"),
          similarTexts("", ""),
          similarTexts(std::string(100, 'x'), ""),
          similarTexts("", std::string(100, 'x')),
          shortTexts(),
          sparseTexts()};
}

// How far, in standard deviations, the number of texts per bucket is from that of chance.
double deviation(const Texts& texts, const Hash& hash, int shift) {
  constexpr size_t kBuckets = 512;
  std::vector<double> counts(kBuckets, 0);
  for (const std::string& text : texts) ++counts[hash(text) >> shift & (kBuckets - 1)];
  const double expected = static_cast<double>(texts.size()) / kBuckets;
  double chiSquare = 0;
  for (const double count : counts) chiSquare += (count - expected) * (count - expected) / expected;
  const double freedom = kBuckets - 1;
  return (chiSquare - freedom) / std::sqrt(2 * freedom);
}

double worstDeviation(const Hash& hash) {
  double worst = 0;
  for (const Texts& texts : families()) {
    for (int shift = 0; shift <= 55; shift += 5) {
      worst = std::max(worst, deviation(texts, hash, shift));
    }
  }
  return worst;
}

constexpr double kTolerated = 6;

TEST(TextHash, SpreadsSimilarTextsEvenlyInAllItsBits) {
  EXPECT_LT(worstDeviation(textHash), kTolerated);
}

// The measure above means something: these do not pass it.
TEST(TextHash, IsHeldToAMeasureThatWeakHashesFail) {
  const Hash sum = [](const std::string& text) {
    uint64_t value = 0;
    for (const char letter : text) value += static_cast<unsigned char>(letter);
    return value;
  };
  const Hash timesThirtyOne = [](const std::string& text) {
    uint64_t value = 0;
    for (const char letter : text) value = value * 31 + static_cast<unsigned char>(letter);
    return value;
  };
  EXPECT_GT(worstDeviation(sum), kTolerated);
  EXPECT_GT(worstDeviation(timesThirtyOne), kTolerated);
}

TEST(TextHash, NeverCollidesOnSimilarTexts) {
  std::unordered_set<std::string> texts;
  for (const Texts& family : families()) texts.insert(family.begin(), family.end());
  std::unordered_set<uint64_t> hashes;
  for (const std::string& text : texts) hashes.insert(textHash(text));
  EXPECT_EQ(hashes.size(), texts.size());
}

TEST(TextHash, FlipsHalfItsBitsWhenOneBitOfTheTextFlips) {
  constexpr int kSamples = 64;
  zeb_test::Random random(3);
  for (const uint64_t length :
       {1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 12u, 15u, 16u, 17u, 24u, 31u, 32u, 33u, 48u, 64u}) {
    for (uint64_t bit = 0; bit < length * 8; ++bit) {
      int flipped = 0;
      for (int sample = 0; sample < kSamples; ++sample) {
        std::string text = randomText(random, length);
        const uint64_t before = textHash(text);
        text[bit / 8] = static_cast<char>(text[bit / 8] ^ (1 << bit % 8));
        flipped += std::popcount(before ^ textHash(text));
      }
      const double mean = static_cast<double>(flipped) / kSamples;
      ASSERT_GT(mean, 28) << "length " << length << ", bit " << bit;
      ASSERT_LT(mean, 36) << "length " << length << ", bit " << bit;
    }
  }
}

}  // namespace
