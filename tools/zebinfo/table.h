// Columns of text.
#ifndef ZEBINFO_TABLE_H
#define ZEBINFO_TABLE_H

#include <string>
#include <string_view>
#include <vector>

namespace zebinfo {

// Columns as wide as their widest cell, two spaces apart. Numbers stand at the right. A cell of
// more than kWidestColumn characters stands out of line, lest every row be as long.
class Table {
 public:
  static constexpr std::size_t kWidestColumn = 200;

  enum class Align { left, right };
  struct Column {
    std::string_view title;
    Align align = Align::left;
  };
  using Row = std::vector<std::string>;

  // Begins with the titles of the columns.
  explicit Table(std::vector<Column> columns);

  void add(Row row) { rows_.push_back(std::move(row)); }

  [[nodiscard]] std::string text() const;

 private:
  [[nodiscard]] std::size_t width(std::size_t column) const;
  [[nodiscard]] std::string line(const Row& row, const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<Row> rows_;
};

}  // namespace zebinfo

#endif
