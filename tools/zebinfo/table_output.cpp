#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "output.h"
#include "text.h"

namespace zebinfo {

namespace {

// Columns as wide as their widest cell, two spaces apart. Numbers stand at the right.
class Table {
 public:
  enum class Align { left, right };
  struct Column {
    std::string_view title;
    Align align = Align::left;
  };
  using Row = std::vector<std::string>;

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    Row titles;
    for (const Column& column : columns_) titles.emplace_back(column.title);
    add(std::move(titles));
  }

  void add(Row row) { rows_.push_back(std::move(row)); }

  [[nodiscard]] std::string text() const {
    std::string out;
    for (const Row& row : rows_) out += "  " + line(row) + "\n";
    return out;
  }

 private:
  [[nodiscard]] std::size_t width(std::size_t column) const {
    std::size_t widest = 0;
    for (const Row& row : rows_) widest = std::max(widest, characters(row[column]));
    return widest;
  }

  [[nodiscard]] std::string line(const Row& row) const {
    std::string out;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string gap(width(i) - characters(row[i]), ' ');
      const bool right = columns_[i].align == Align::right;
      if (i > 0) out += "  ";
      out += right ? gap + row[i] : row[i] + gap;
    }
    out.erase(out.find_last_not_of(' ') + 1);
    return out;
  }

  std::vector<Column> columns_;
  std::vector<Row> rows_;
};

constexpr auto kRight = Table::Align::right;

std::string shown(const Name& name) { return name ? printable(*name) : "(null)"; }

std::string publisher(const ProcRow& proc) {
  if (!proc.file) return "(no file)";
  return fmt::format("{} +{:#x}", printable(*proc.file), proc.fileOffset);
}

std::string section(std::string_view title, const Table& table) {
  return fmt::format("\n{}\n{}", title, table.text());
}

std::string modulesSection(const std::vector<ModuleRow>& modules) {
  if (modules.empty()) return "";
  Table table({{"file"}, {"state"}});
  for (const ModuleRow& module : modules) {
    const bool runs = module.problem.empty();
    table.add({printable(module.file), runs ? "started" : printable(module.problem)});
  }
  return section("Modules", table);
}

std::string procsSection(const std::vector<ProcRow>& procs) {
  Table table({{"interface"}, {"method"}, {"proc"}, {"address", kRight}, {"published by"}});
  for (const ProcRow& proc : procs) {
    table.add({shown(proc.interfaceName), shown(proc.methodName), shown(proc.procName),
               fmt::format("{:#x}", proc.address), publisher(proc)});
  }
  return section("Procs", table);
}

std::string countersSection(const std::vector<CounterRow>& counters) {
  Table table({{"total", kRight}, {"criticality", kRight}, {"counter"}});
  for (const CounterRow& counter : counters) {
    table.add({fmt::to_string(counter.total), fmt::to_string(counter.criticality),
               printable(counter.name)});
  }
  return section("Event counters", table);
}

std::string objectsSection(const std::vector<ObjectRow>& objects) {
  Table table({{"live", kRight}, {"kept", kRight}, {"objects"}});
  for (const ObjectRow& object : objects) {
    table.add({fmt::to_string(object.live), fmt::to_string(object.kept), printable(object.kind)});
  }
  return section("Live objects", table);
}

std::string atomsSection(const std::vector<AtomRow>& atoms) {
  Table table({{"references", kRight}, {"atom"}});
  for (const AtomRow& atom : atoms) {
    table.add({fmt::to_string(atom.references), printable(atom.text)});
  }
  return section("Live atoms", table);
}

}  // namespace

std::string asTable(const Report& report) {
  std::string out = fmt::format("libzeb {}  {}\nchange counter {}\n", report.version,
                                printable(report.file), report.changeCounter);
  out += modulesSection(report.modules);
  out += procsSection(report.procs);
  out += countersSection(report.counters);
  out += objectsSection(report.objects);
  if (report.atoms) out += atomsSection(*report.atoms);
  return out;
}

}  // namespace zebinfo
