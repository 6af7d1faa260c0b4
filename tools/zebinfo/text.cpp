#include "text.h"

#include <fmt/format.h>

#include <algorithm>

namespace zebinfo {

namespace {

unsigned byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool continues(unsigned byte) { return (byte & 0xC0) == 0x80; }

// The length of the well-formed UTF-8 sequence at the beginning of the text, 0 if there is none:
// neither overlong forms nor surrogates nor code points beyond the last one are well formed.
std::size_t sequenceLength(std::string_view text) {
  const unsigned first = byteAt(text, 0);
  const unsigned second = byteAt(text, 1);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4 || !continues(second)) return 0;
  if (first < 0xE0) return 2;
  if (!continues(byteAt(text, 2))) return 0;
  if (first == 0xE0 && second < 0xA0) return 0;
  if (first == 0xED && second > 0x9F) return 0;
  if (first < 0xF0) return 3;
  if (!continues(byteAt(text, 3))) return 0;
  if (first == 0xF0 && second < 0x90) return 0;
  if (first == 0xF4 && second > 0x8F) return 0;
  return 4;
}

// Whether the well-formed sequence at the beginning of the text is one that a terminal obeys
// instead of showing: U+0080 to U+009F, and the controls that turn the direction of what follows.
bool commandsTerminal(std::string_view text) {
  const unsigned first = byteAt(text, 0);
  const unsigned second = byteAt(text, 1);
  const unsigned third = byteAt(text, 2);
  if (first == 0xC2) return second < 0xA0;
  if (first != 0xE2) return false;
  const bool overrides = second == 0x80 && third >= 0xAA && third <= 0xAE;  // U+202A to U+202E
  const bool isolates = second == 0x81 && third >= 0xA6 && third <= 0xA9;   // U+2066 to U+2069
  return overrides || isolates;
}

// Copies what is printable and hands `escape(out, byte)` the rest.
template <class NeedsEscape, class Escape>
std::string escaped(std::string_view text, NeedsEscape needsEscape, Escape escape) {
  std::string out;
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    const std::string_view sequence = text.substr(0, std::max<std::size_t>(length, 1));
    if (length == 0 || needsEscape(sequence)) {
      for (std::size_t i = 0; i < sequence.size(); ++i) out += escape(byteAt(sequence, i));
    } else {
      out += sequence;
    }
    text.remove_prefix(sequence.size());
  }
  return out;
}

}  // namespace

std::string printable(std::string_view text) {
  return escaped(
      text,
      [](std::string_view sequence) {
        const unsigned byte = byteAt(sequence, 0);
        return byte < 0x20 || byte == 0x7F || byte == '\\' || commandsTerminal(sequence);
      },
      [](unsigned byte) {
        return byte == '\\' ? std::string("\\\\") : fmt::format("\\x{:02x}", byte);
      });
}

std::string jsonQuoted(std::string_view text) {
  const std::string inside = escaped(
      text,
      [](std::string_view sequence) {
        const unsigned byte = byteAt(sequence, 0);
        return byte < 0x20 || byte == '"' || byte == '\\';
      },
      [](unsigned byte) {
        if (byte == '"' || byte == '\\') return fmt::format("\\{}", static_cast<char>(byte));
        return fmt::format("\\u{:04x}", byte < 0x80 ? byte : 0xDC00 + byte);
      });
  return "\"" + inside + "\"";
}

std::size_t characters(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return !continues(static_cast<unsigned char>(byte));
  }));
}

}  // namespace zebinfo
