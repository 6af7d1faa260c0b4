// What zebinfo shows: everything copied out of the library, for the table and for JSON alike.
#ifndef ZEBINFO_REPORT_H
#define ZEBINFO_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zebinfo {

class Library;
class Module;

// A name of the registry; nothing is the null name.
using Name = std::optional<std::string>;

struct ModuleRow {
  std::string file;
  std::string problem;  // empty: it runs
};

struct ProcRow {
  Name interfaceName;
  Name methodName;
  Name procName;
  uint64_t address;
  std::optional<std::string> file;  // nothing: in no loaded file
  uint64_t fileOffset;
};

struct CounterRow {
  std::string name;
  int64_t total;
  int32_t criticality;
};

struct ObjectRow {
  std::string kind;
  uint64_t live;
  uint64_t kept;
};

struct AtomRow {
  std::string text;
  uint32_t references;
};

struct Report {
  std::string version;
  std::string file;
  uint32_t changeCounter;
  std::vector<ModuleRow> modules;
  std::vector<ProcRow> procs;        // sorted by the three names
  std::vector<CounterRow> counters;  // the latest first
  std::vector<ObjectRow> objects;
  std::optional<std::vector<AtomRow>> atoms;  // sorted; nothing: not asked for
};

// Throws Failure when the library cannot be inspected or has no memory for a snapshot.
Report makeReport(const Library& library, const std::vector<Module>& modules, bool withAtoms);

}  // namespace zebinfo

#endif
