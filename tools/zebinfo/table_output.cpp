#include <fmt/format.h>

#include <string_view>

#include "output.h"
#include "proc_words.h"
#include "table.h"
#include "text.h"

namespace zebinfo {

namespace {

constexpr auto kRight = Table::Align::right;

std::string shown(const Name& name) { return name ? printable(*name) : "(null)"; }

std::string publisher(const ProcRow& proc) {
  if (!proc.file) return "(no file)";
  return fmt::format("{} +{:#x}", printable(*proc.file), proc.fileOffset);
}

// What the description says about the proc, and whether this is the one that it speaks of.
std::string versionCell(const ProcRow& proc) {
  switch (proc.standing) {
    case Standing::own:
      return version(*proc.described);
    case Standing::replaced:
      return version(*proc.described) + " replaced";
    case Standing::notDescribed:
      return "not described";
    case Standing::foreign:
      break;
  }
  return "-";
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
  Table table({{"interface"},
               {"method"},
               {"proc"},
               {"version"},
               {"since"},
               {"address", kRight},
               {"published by"},
               {"signature"}});
  for (const ProcRow& proc : procs) {
    if (proc.signatureOf) continue;  // shown with the proc that it belongs to
    table.add({shown(proc.interfaceName), shown(proc.methodName), shown(proc.procName),
               versionCell(proc), proc.described != nullptr ? since(*proc.described) : "-",
               fmt::format("{:#x}", proc.address), publisher(proc),
               printable(proc.publishedSignature.value_or(""))});
  }
  return section("Procs", table);
}

std::string missingSection(const std::vector<MissingRow>& missing) {
  if (missing.empty()) return "";
  Table table({{"interface"}, {"method"}, {"proc"}, {"version"}, {"since"}});
  for (const MissingRow& row : missing) {
    table.add({row.interfaceName, std::string(row.proc->method), std::string(row.proc->name),
               version(*row.proc), since(*row.proc)});
  }
  return section("Missing procs", table);
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
  out += missingSection(report.missing);
  out += countersSection(report.counters);
  out += objectsSection(report.objects);
  if (report.atoms) out += atomsSection(*report.atoms);
  return out;
}

}  // namespace zebinfo
