// Interface "ZEBStringInterface".
#include <array>

#include "atoms/atom.h"
#include "atoms/atom_service.h"
#include "base/value_boundary.h"
#include "zeb/atom.h"

namespace zeb {

namespace {

namespace procs {

ZEBString* NewStringAtom(const char* text) {
  return atoms::make(TextKey(text != nullptr ? text : ""));
}
void DeleteStringAtom(ZEBString* atom) noexcept { atoms::release(atom); }
const char* GetCString(ZEBString* atom) noexcept {
  return atom != nullptr ? atom->text() : nullptr;
}
void AddRef(ZEBString* atom) noexcept { atoms::addReference(atom); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_STRING_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable atomService() { return {ZEB_STRING_INTERFACE, entries, {}}; }

}  // namespace zeb
