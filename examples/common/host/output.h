// How the demo talks: numbered steps, each with a sentence of explanation and indented rows.
//
// Plain text without colours, alike on a terminal and in a file. Only a drawn row is for terminals.
#ifndef EXAMPLES_COMMON_HOST_OUTPUT_H
#define EXAMPLES_COMMON_HOST_OUTPUT_H

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace examples {

void printTitle(std::string_view title);

// A step's headline, numbered, and the lines that explain it.
void printStep(std::string_view headline, std::initializer_list<std::string_view> explanation);

// One row: a label and what it is.
void printRow(std::string_view label, std::string_view value);

void printBlankLine();

// Whether the output is a terminal on which a row can be drawn over.
bool canRedraw();

// A row in the place of the one that was drawn last; clearDrawnRow takes it away again.
void drawRow(std::string_view label, std::string_view value);
void clearDrawnRow() noexcept;

enum class Align { left, right };

struct Column {
  std::string headline;
  Align align = Align::left;
};

// Rows under headlines, each column as wide as its widest cell.
void printTable(const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows);

// 1234567 as "1,234,567".
std::string grouped(uint64_t number);

// A path as the reader of the output would type it.
std::string shortPath(const std::filesystem::path& path);

// A word with its end cut off if it would break the line, as base64 would.
std::string shortened(std::string word);

}  // namespace examples

#endif
