// Takes the place of a function that the loaded library imports, such as malloc, for this library
// alone: the slot through which it calls the function is pointed elsewhere. The test's own calls
// and those of every other library stay as they are.
#ifndef ZEB_TESTS_CONTRACT_IMPORT_HOOK_H
#define ZEB_TESTS_CONTRACT_IMPORT_HOOK_H

#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace contract {

class ImportHook {
 public:
  // Nothing happens when the library imports no function of this name.
  ImportHook(void* library, const char* name, void* replacement)
      : slots_(SlotsOf(library, name)), original_(slots_.empty() ? nullptr : *slots_.front()) {
    for (void** slot : slots_) Write(slot, replacement);
  }
  ~ImportHook() {
    for (void** slot : slots_) Write(slot, original_);
  }
  ImportHook(const ImportHook&) = delete;
  ImportHook& operator=(const ImportHook&) = delete;

  bool found() const { return !slots_.empty(); }

 private:
  struct Tables {
    const char* texts = nullptr;
    const ElfW(Sym) * symbols = nullptr;
    const ElfW(Rela) * calls = nullptr;
    std::size_t callBytes = 0;
    const ElfW(Rela) * data = nullptr;
    std::size_t dataBytes = 0;
  };

  static const link_map& MapOf(void* library) {
    link_map* map = nullptr;
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) throw std::runtime_error(dlerror());
    return *map;
  }

  static Tables TablesOf(const link_map& map) {
    Tables tables;
    for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
      const auto address = entry->d_un.d_ptr;
      switch (entry->d_tag) {
        case DT_STRTAB:
          tables.texts = reinterpret_cast<const char*>(address);
          break;
        case DT_SYMTAB:
          tables.symbols = reinterpret_cast<const ElfW(Sym)*>(address);
          break;
        case DT_JMPREL:
          tables.calls = reinterpret_cast<const ElfW(Rela)*>(address);
          break;
        case DT_PLTRELSZ:
          tables.callBytes = entry->d_un.d_val;
          break;
        case DT_RELA:
          tables.data = reinterpret_cast<const ElfW(Rela)*>(address);
          break;
        case DT_RELASZ:
          tables.dataBytes = entry->d_un.d_val;
          break;
        default:
          break;
      }
    }
    return tables;
  }

  static std::vector<void**> SlotsOf(void* library, const char* name) {
    const link_map& map = MapOf(library);
    const Tables tables = TablesOf(map);
    std::vector<void**> slots;
    const auto search = [&](const ElfW(Rela) * entries, std::size_t bytes) {
      for (std::size_t i = 0; i < bytes / sizeof(ElfW(Rela)); ++i) {
        const ElfW(Sym)& symbol = tables.symbols[ELF64_R_SYM(entries[i].r_info)];
        if (std::strcmp(tables.texts + symbol.st_name, name) != 0) continue;
        slots.push_back(reinterpret_cast<void**>(map.l_addr + entries[i].r_offset));
      }
    };
    search(tables.calls, tables.callBytes);
    search(tables.data, tables.dataBytes);
    return slots;
  }

  // The loader has made the slots read-only.
  static void Write(void** slot, void* value) {
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto page = reinterpret_cast<std::uintptr_t>(slot) / pageSize * pageSize;
    if (mprotect(reinterpret_cast<void*>(page), pageSize, PROT_READ | PROT_WRITE) != 0) {
      throw std::runtime_error("the slot of an imported function cannot be written");
    }
    *slot = value;
  }

  const std::vector<void**> slots_;
  void* const original_;
};

}  // namespace contract

#endif
