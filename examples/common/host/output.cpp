#include "common/host/output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace examples {
namespace {

constexpr std::string_view kIndent = "     ";

// Puts the cursor at the start of its line and clears what stands there.
constexpr const char* kClearLine = "\r\x1b[K";

std::string row(std::string_view label, std::string_view value) {
  return fmt::format("{}{:<16}  {}", kIndent, label, value);
}

std::string padded(const std::string& cell, size_t width, Align align) {
  return align == Align::left ? fmt::format("{:<{}}", cell, width)
                              : fmt::format("{:>{}}", cell, width);
}

std::vector<size_t> columnWidths(const std::vector<Column>& columns,
                                 const std::vector<std::vector<std::string>>& rows) {
  std::vector<size_t> widths;
  for (size_t i = 0; i < columns.size(); ++i) {
    size_t width = columns[i].headline.size();
    for (const auto& row : rows) width = std::max(width, row[i].size());
    widths.push_back(width);
  }
  return widths;
}

void printCells(const std::vector<std::string>& cells, const std::vector<Column>& columns,
                const std::vector<size_t>& widths) {
  std::string line(kIndent);
  for (size_t i = 0; i < cells.size(); ++i) {
    if (i != 0) line += "   ";
    line += padded(cells[i], widths[i], columns[i].align);
  }
  line.erase(line.find_last_not_of(' ') + 1);
  fmt::print("{}\n", line);
}

}  // namespace

void printTitle(std::string_view title) { fmt::print("{}\n", title); }

void printStep(std::string_view headline, std::initializer_list<std::string_view> explanation) {
  static int number = 0;
  fmt::print("\n{}. {}\n", ++number, headline);
  for (const std::string_view line : explanation) fmt::print("   {}\n", line);
  fmt::print("\n");
}

void printRow(std::string_view label, std::string_view value) {
  fmt::print("{}\n", row(label, value));
}

void printBlankLine() { fmt::print("\n"); }

bool canRedraw() {
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void drawRow(std::string_view label, std::string_view value) {
  fmt::print("{}{}", kClearLine, row(label, value));
  static_cast<void>(std::fflush(stdout));  // main sees to an output that cannot be written
}

void clearDrawnRow() noexcept { static_cast<void>(std::fputs(kClearLine, stdout)); }

void printTable(const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows) {
  const std::vector<size_t> widths = columnWidths(columns, rows);
  std::vector<std::string> headlines;
  headlines.reserve(columns.size());
  for (const Column& column : columns) headlines.push_back(column.headline);
  printCells(headlines, columns, widths);
  for (const auto& row : rows) printCells(row, columns, widths);
}

std::string grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, 1, ',');
  }
  return text;
}

std::string shortPath(const std::filesystem::path& path) {
  namespace fs = std::filesystem;
  // By the text alone: following links would show libzeb.so.4.0 where libzeb.so.4 was meant.
  const std::string fromHere = fs::absolute(path).lexically_proximate(fs::current_path()).string();
  return fromHere.size() < path.string().size() ? fromHere : path.string();
}

std::string shortened(std::string word) {
  constexpr size_t kLongest = 40;
  if (word.size() <= kLongest) return word;
  size_t end = kLongest;
  // Not in the middle of a UTF-8 sequence.
  while (end > 0 && (static_cast<unsigned char>(word[end]) & 0xC0U) == 0x80U) --end;
  word.resize(end);
  return word + "...";
}

}  // namespace examples
