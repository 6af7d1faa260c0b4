// Counts words by their atoms.
//
// Equal words are the same atom, so the table is keyed by pointers: no text is hashed or compared
// here. It holds one reference for each distinct word.
#ifndef HOSTING_WORDS_WORD_TABLE_H
#define HOSTING_WORDS_WORD_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/support/atom.h"

namespace examples {

class WordTable {
 public:
  struct Row {
    Atom word;
    uint64_t count = 0;
  };

  explicit WordTable(const ZEBStringProcs& strings) : strings_(strings) {}

  // Adds all words of a text; interfaces/job.h tells what a word is. Throws std::bad_alloc.
  void addText(std::string_view text);

  [[nodiscard]] uint64_t wordCount() const noexcept { return wordCount_; }
  [[nodiscard]] uint64_t distinctWordCount() const noexcept { return rows_.size(); }

  // The most frequent words, at most `most` of them; equally frequent ones by text. The rows stay
  // the table's.
  [[nodiscard]] std::vector<const Row*> top(size_t most) const;

 private:
  void addWord(const std::string& word);

  const ZEBStringProcs& strings_;
  std::unordered_map<ZEBString*, Row> rows_;
  uint64_t wordCount_ = 0;
};

}  // namespace examples

#endif
