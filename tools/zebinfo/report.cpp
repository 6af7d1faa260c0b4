#include "report.h"

#include <fmt/format.h>

#include <memory>
#include <span>

#include "failure.h"
#include "library.h"
#include "module.h"
#include "standing.h"

namespace zebinfo {

namespace {

Name nameOf(const char* name) { return name != nullptr ? Name(name) : std::nullopt; }

ProcRow rowOf(const ZEBInspectedProc& proc) {
  return {nameOf(proc.interfaceName), nameOf(proc.methodName),
          nameOf(proc.procName),      reinterpret_cast<uint64_t>(proc.proc),
          nameOf(proc.file),          proc.fileOffset};
}
CounterRow rowOf(const ZEBEventRecord& record) {
  return {record.name, record.total, record.criticality};
}
ObjectRow rowOf(const ZEBInspectedKind& kind) { return {kind.kind, kind.live, kind.kept}; }
AtomRow rowOf(const ZEBInspectedAtom& atom) { return {atom.text, atom.references}; }

// Takes a snapshot, copies its records as rows and gives it back.
template <class Row, class New, class Delete>
std::vector<Row> rowsOf(New newSnapshot, Delete deleteSnapshot) {
  uint32_t count = 0;
  auto* records = newSnapshot(&count);
  if (records == nullptr) throw Failure(ExitStatus::badLibrary, "no memory for a snapshot");
  const auto giveBack = [&](void*) { deleteSnapshot(records); };
  const std::unique_ptr<void, decltype(giveBack)> guard(records, giveBack);
  std::vector<Row> rows;
  for (const auto& record : std::span(records, count)) rows.push_back(rowOf(record));
  return rows;
}

std::vector<ModuleRow> rowsOf(const std::vector<Module>& modules) {
  std::vector<ModuleRow> rows;
  for (const Module& module : modules) rows.push_back({module.file(), module.problem()});
  return rows;
}

}  // namespace

Report makeReport(const Library& library, const std::vector<Module>& modules, bool withAtoms) {
  if (!library.inspect()) {
    throw Failure(ExitStatus::badLibrary, "the library has no " ZEB_INSPECT_INTERFACE);
  }
  const ZEBInspectProcs& inspect = *library.inspect();
  const ZEBEventProcs& events = library.events();
  Report report{
      .version = fmt::format("{}.{}", library.version() >> 16, library.version() & 0xFFFF),
      .file = library.file(),
      .changeCounter = library.frame().GetUnregisterCount(),
      .modules = rowsOf(modules),
      .procs = rowsOf<ProcRow>(inspect.NewProcSnapshot, inspect.DeleteSnapshot),
      .missing = {},
      .counters = rowsOf<CounterRow>(events.NewEventSnapshot, events.DeleteEventSnapshot),
      .objects = rowsOf<ObjectRow>(inspect.NewObjectSnapshot, inspect.DeleteSnapshot),
      .atoms = std::nullopt};
  compareWithDescription(report, library);
  findPublishedSignatures(report.procs);
  if (withAtoms) report.atoms = rowsOf<AtomRow>(inspect.NewAtomSnapshot, inspect.DeleteSnapshot);
  return report;
}

}  // namespace zebinfo
