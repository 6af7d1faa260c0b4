#include "modules/words/word_table.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace examples {
namespace {

bool isCapital(char c) { return c >= 'A' && c <= 'Z'; }

// Independent of the locale, so that a text counts the same everywhere. Bytes above 127 belong to
// words: they are the letters of other alphabets.
bool isWordByte(char c) {
  return (c >= 'a' && c <= 'z') || isCapital(c) || (c >= '0' && c <= '9') ||
         static_cast<unsigned char>(c) > 127;
}

char toSmall(char c) { return isCapital(c) ? static_cast<char>(c - 'A' + 'a') : c; }

bool comesFirst(const WordTable::Row* a, const WordTable::Row* b) {
  if (a->count != b->count) return a->count > b->count;
  return std::strcmp(a->word.text(), b->word.text()) < 0;
}

}  // namespace

void WordTable::addText(std::string_view text) {
  std::string word;
  std::string_view::const_iterator at = text.begin();
  while (true) {
    at = std::find_if(at, text.end(), isWordByte);
    if (at == text.end()) return;
    const std::string_view::const_iterator end = std::find_if_not(at, text.end(), isWordByte);
    word.assign(at, end);
    std::transform(word.begin(), word.end(), word.begin(), toSmall);
    addWord(word);
    at = end;
  }
}

void WordTable::addWord(const std::string& word) {
  Atom atom = Atom::intern(strings_, word.c_str());
  const auto [at, isNew] = rows_.try_emplace(atom.get());
  // A known word gives its second reference back here.
  if (isNew) at->second.word = std::move(atom);
  ++at->second.count;
  ++wordCount_;
}

std::vector<const WordTable::Row*> WordTable::top(size_t most) const {
  std::vector<const Row*> rows;
  rows.reserve(rows_.size());
  for (const auto& entry : rows_) rows.push_back(&entry.second);

  const auto end = rows.begin() + static_cast<ptrdiff_t>(std::min(most, rows.size()));
  std::partial_sort(rows.begin(), end, rows.end(), comesFirst);
  rows.erase(end, rows.end());
  return rows;
}

}  // namespace examples
