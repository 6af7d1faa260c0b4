// A zero-terminated text with its length and hash: what the tables of texts search by.
//
// The hash narrows, a compare of the bytes decides; a collision costs a compare and never a wrong
// answer. It folds 16 bytes per 64x64->128 bit multiplication and is stable within a process only.
#ifndef ZEB_UTIL_TEXT_KEY_H
#define ZEB_UTIL_TEXT_KEY_H

#include <cstdint>
#include <cstring>

namespace zeb {

namespace text_hash {

inline constexpr uint64_t kSeed = 0x9e3779b97f4a7c15u;
inline constexpr uint64_t kFactor = 0xd6e8feb86659fd93u;

// The product's two halves folded into one word: every bit of both factors reaches every bit below.
inline uint64_t fold(uint64_t a, uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

template <class Word>
uint64_t load(const char* at) noexcept {
  Word word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

inline uint64_t tail(const char* text, uint64_t length, uint64_t state) noexcept {
  if (length >= 8) {
    return fold(load<uint64_t>(text) ^ kFactor, load<uint64_t>(text + length - 8) ^ state);
  }
  if (length >= 4) {
    return fold(load<uint32_t>(text) ^ kFactor, load<uint32_t>(text + length - 4) ^ state);
  }
  if (length == 0) return fold(kFactor, state);
  const uint64_t bytes = load<uint8_t>(text) << 16 | load<uint8_t>(text + length / 2) << 8 |
                         load<uint8_t>(text + length - 1);
  return fold(bytes ^ kFactor, state);
}

// Names are mostly shorter than 33 bytes: for those there is no loop, and the two products of the
// longer half do not wait for each other.
inline uint64_t of(const char* text, uint64_t length) noexcept {
  uint64_t state = kSeed ^ length;
  if (length <= 16) return fold(tail(text, length, state), kSeed);
  for (; length > 32; text += 16, length -= 16) {
    state = fold(load<uint64_t>(text) ^ kFactor, load<uint64_t>(text + 8) ^ state);
  }
  const char* const last = text + length - 16;
  const uint64_t front = fold(load<uint64_t>(text) ^ kFactor, load<uint64_t>(text + 8) ^ state);
  const uint64_t back = fold(load<uint64_t>(last) ^ kSeed, load<uint64_t>(last + 8) ^ state);
  return fold(front ^ kFactor, back ^ kSeed);
}

}  // namespace text_hash

// memcmp's answer, without a call for texts of up to 32 bytes.
inline bool sameBytes(const char* a, const char* b, uint64_t length) noexcept {
  using text_hash::load;
  const auto differ = [&](auto word, uint64_t at) {
    using Word = decltype(word);
    return load<Word>(a + at) ^ load<Word>(b + at);
  };
  if (length > 32) return std::memcmp(a, b, length) == 0;
  if (length >= 16) {
    return (differ(uint64_t{}, 0) | differ(uint64_t{}, 8) | differ(uint64_t{}, length - 16) |
            differ(uint64_t{}, length - 8)) == 0;
  }
  if (length >= 8) return (differ(uint64_t{}, 0) | differ(uint64_t{}, length - 8)) == 0;
  if (length >= 4) return (differ(uint32_t{}, 0) | differ(uint32_t{}, length - 4)) == 0;
  for (uint64_t i = 0; i < length; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

struct TextKey {
  const char* text;  // null is a key of its own
  uint64_t length;
  uint64_t hash;

  explicit TextKey(const char* name) noexcept
      : text(name),
        length(name != nullptr ? std::strlen(name) : 0),
        hash(name != nullptr ? text_hash::of(name, length) : 0) {}

  [[nodiscard]] bool equals(const char* other, uint64_t otherLength) const noexcept {
    return length == otherLength && sameBytes(text, other, length);
  }
};

}  // namespace zeb

#endif
