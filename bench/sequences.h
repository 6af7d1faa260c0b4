// Prepared random orders and texts. Everything is seeded: each run and each side sees the same.
#ifndef ZEB_BENCH_SEQUENCES_H
#define ZEB_BENCH_SEQUENCES_H

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace zeb::bench {

using Random = std::mt19937_64;

// `count` numbers from 0 to limit - 1.
inline std::vector<uint32_t> randomNumbers(size_t count, uint32_t limit, uint64_t seed) {
  Random random(seed);
  std::uniform_int_distribution<uint32_t> number(0, limit - 1);
  std::vector<uint32_t> numbers(count);
  for (uint32_t& slot : numbers) slot = number(random);
  return numbers;
}

// Distinct texts of one length, zero-terminated, as callers hold them. The first letters are
// random; the last five spell the text's index and make it unlike the others.
class Texts {
 public:
  Texts(size_t count, size_t length, uint64_t seed)
      : count_(count), stride_(length + 1), characters_(count * (length + 1)) {
    Random random(seed);
    std::uniform_int_distribution<int> letter('a', 'z');
    for (size_t index = 0; index < count; ++index) {
      char* text = characters_.data() + index * stride_;
      for (size_t i = 0; i + kIndexDigits < length; ++i)
        text[i] = static_cast<char>(letter(random));
      size_t rest = index;
      for (size_t i = 0; i < kIndexDigits; ++i, rest /= 26)
        text[length - 1 - i] = static_cast<char>('a' + rest % 26);
    }
  }

  size_t count() const { return count_; }
  const char* operator[](size_t index) const { return characters_.data() + index * stride_; }

 private:
  static constexpr size_t kIndexDigits = 5;

  size_t count_;
  size_t stride_;
  std::vector<char> characters_;
};

}  // namespace zeb::bench

#endif
