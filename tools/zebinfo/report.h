// What zebinfo shows: everything copied out of the library, for the table and for JSON alike.
#ifndef ZEBINFO_REPORT_H
#define ZEBINFO_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zeb/sdk/description_types.hpp"

namespace zebinfo {

class Library;
class Module;

// A name of the registry; nothing is the null name.
using Name = std::optional<std::string>;

struct ModuleRow {
  std::string file;
  std::string problem;  // empty: it runs
};

// What a registered proc is to the library, whose procs the tables of zeb/sdk/description.hpp
// describe.
enum class Standing {
  foreign,       // it is of another interface
  own,           // it is described, and lies in the library or is the host's report procedure
  replaced,      // it is described, but lies elsewhere
  notDescribed,  // of the library's interface, it is not described
};

struct ProcRow {
  Name interfaceName;
  Name methodName;
  Name procName;
  uint64_t address = 0;
  std::optional<std::string> file;  // nothing: in no loaded file
  uint64_t fileOffset = 0;
  Standing standing = Standing::foreign;
  const zeb::sdk::description::Proc* described = nullptr;
  // The text that was published beside it, see zeb/sdk/signature.hpp.
  std::optional<std::string> publishedSignature = std::nullopt;
  // This is such a text: the name of the proc that it was published beside.
  std::optional<std::string> signatureOf = std::nullopt;
};

// A described proc that is not registered.
struct MissingRow {
  std::string interfaceName;
  const zeb::sdk::description::Proc* proc;
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
  std::vector<MissingRow> missing;   // in the order of the description
  std::vector<CounterRow> counters;  // the latest first
  std::vector<ObjectRow> objects;
  std::optional<std::vector<AtomRow>> atoms;  // sorted; nothing: not asked for
};

// Throws Failure when the library cannot be inspected or has no memory for a snapshot.
Report makeReport(const Library& library, const std::vector<Module>& modules, bool withAtoms);

}  // namespace zebinfo

#endif
