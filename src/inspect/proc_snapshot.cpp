#include "inspect/proc_snapshot.h"

#include <algorithm>

#include "atoms/atom.h"
#include "inspect/names.h"
#include "platform/loaded_file.h"
#include "registry/proc_registry.h"

namespace zeb::inspect {

static_assert(sizeof(ZEBInspectedProc) == 48);

namespace {

uint64_t bytesOf(const ZEBString* name) noexcept { return name != nullptr ? name->length + 1 : 0; }

const char* copyName(RecordCopier<ZEBInspectedProc>& copier, const ZEBString* name) noexcept {
  return name != nullptr ? copier.copy(name->text(), name->length) : nullptr;
}

void copyProc(RecordCopier<ZEBInspectedProc>& copier,
              const registry::RegisteredProc& proc) noexcept {
  const auto& [interfaceName, methodName, procName] = proc.names;
  ZEBInspectedProc* record =
      copier.add(bytesOf(interfaceName) + bytesOf(methodName) + bytesOf(procName));
  if (record == nullptr) return;
  *record = {.interfaceName = copyName(copier, interfaceName),
             .methodName = copyName(copier, methodName),
             .procName = copyName(copier, procName),
             .proc = proc.proc,
             .file = nullptr,
             .fileOffset = 0};
}

bool comesBefore(const ZEBInspectedProc& a, const ZEBInspectedProc& b) noexcept {
  if (const int order = compareNames(a.interfaceName, b.interfaceName)) return order < 0;
  if (const int order = compareNames(a.methodName, b.methodName)) return order < 0;
  return compareNames(a.procName, b.procName) < 0;
}

// The path in the snapshot's own memory. There are a few files and many procs, and neighbours in
// the snapshot mostly come from the same file: the paths that are there are looked through
// backwards.
const char* sharedPath(Records<ZEBInspectedProc>& procs, size_t before, const char* path) {
  for (size_t i = before; i-- > 0;) {
    const char* known = procs.all()[i].file;
    if (known != nullptr && std::strcmp(known, path) == 0) return known;
  }
  const uint64_t bytes = std::strlen(path) + 1;
  void* copied = procs.memory.addBlock(bytes);
  return static_cast<const char*>(std::memcpy(copied, path, bytes));
}

}  // namespace

Records<ZEBInspectedProc> copyProcs() {
  auto procs = copyRecords<ZEBInspectedProc>([](RecordCopier<ZEBInspectedProc>& copier) {
    registry::forEachProc([&](const registry::RegisteredProc& proc) { copyProc(copier, proc); });
  });
  std::sort(procs.all().begin(), procs.all().end(), comesBefore);
  return procs;
}

void findFiles(Records<ZEBInspectedProc>& procs) {
  LoadedFile file;
  for (size_t i = 0; i < procs.count; ++i) {
    ZEBInspectedProc& proc = procs.all()[i];
    const void* address = reinterpret_cast<const void*>(proc.proc);
    if (address == nullptr || !findLoadedFile(address, file)) continue;
    proc.file = sharedPath(procs, i, file.path.data());
    proc.fileOffset = reinterpret_cast<uint64_t>(address) - file.base;
  }
}

}  // namespace zeb::inspect
