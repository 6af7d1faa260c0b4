// A text that is put together from pieces: once to measure it, once to write it.
#ifndef ZEB_INSPECT_SENTENCE_H
#define ZEB_INSPECT_SENTENCE_H

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace zeb::inspect {

class Sentence {
 public:
  // Only measures while `out` is null.
  explicit Sentence(char* out) noexcept : out_(out) {}

  Sentence& add(std::string_view text) noexcept {
    if (out_ != nullptr) std::memcpy(out_ + length_, text.data(), text.size());
    length_ += text.size();
    return *this;
  }

  // In quotation marks; a null name without.
  Sentence& addName(const char* name) noexcept {
    if (name == nullptr) return add("(null)");
    return add("\"").add(name).add("\"");
  }

  // Separated by commas.
  Sentence& addNames(std::span<const char* const> names) noexcept {
    const char* separator = "";
    for (const char* name : names) {
      add(separator).addName(name);
      separator = ", ";
    }
    return *this;
  }

  Sentence& addNumber(uint64_t number) noexcept {
    std::array<char, 20> digits{};
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return add({digits.data(), static_cast<size_t>(end - digits.data())});
  }

  [[nodiscard]] uint64_t length() const noexcept { return length_; }

 private:
  char* out_;
  uint64_t length_ = 0;
};

}  // namespace zeb::inspect

#endif
