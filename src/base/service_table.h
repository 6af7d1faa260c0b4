// How a service is published: a constant table of names and functions. The service does not
// register itself; the frame walks the tables.
#ifndef ZEB_BASE_SERVICE_TABLE_H
#define ZEB_BASE_SERVICE_TABLE_H

#include <span>

#include "zeb/types.h"

namespace zeb {

struct ServiceTable {
  const char* interfaceName;
  std::span<const ZEBProcTableEntry> entries;
  std::span<const ZEBProcTableEntry> olderEntries;  // registered after the current ones
};

// A table row. The type that carries the proc's name checks the function's signature.
template <class Proc>
ZEBProcTableEntry tableEntry(const char* method, const char* name, Proc function) noexcept {
  return {method, name, reinterpret_cast<ZEBProc>(function)};
}

}  // namespace zeb

#endif
