#include "table.h"

#include <algorithm>

#include "text.h"

namespace zebinfo {

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
  Row titles;
  for (const Column& column : columns_) titles.emplace_back(column.title);
  add(std::move(titles));
}

std::string Table::text() const {
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) widths.push_back(width(i));
  std::string out;
  for (const Row& row : rows_) out += "  " + line(row, widths) + "\n";
  return out;
}

std::size_t Table::width(std::size_t column) const {
  std::size_t widest = 0;
  for (const Row& row : rows_) {
    const std::size_t cell = characters(row[column]);
    if (cell <= kWidestColumn) widest = std::max(widest, cell);
  }
  return widest;
}

std::string Table::line(const Row& row, const std::vector<std::size_t>& widths) const {
  std::string out;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::size_t cell = characters(row[i]);
    const std::string gap(cell < widths[i] ? widths[i] - cell : 0, ' ');
    const bool right = columns_[i].align == Align::right;
    if (i > 0) out += "  ";
    out += right ? gap + row[i] : row[i] + gap;
  }
  out.erase(out.find_last_not_of(' ') + 1);
  return out;
}

}  // namespace zebinfo
