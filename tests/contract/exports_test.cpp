// The dynamic symbols of the built library, and the exports that are the same in every state.

#include <dlfcn.h>
#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "contract/library.h"

namespace contract {
namespace {

using ::testing::UnorderedElementsAre;

std::vector<char> BytesOfLibrary() {
  std::ifstream file(ZEB_LIBRARY_PATH, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

template <class Record>
Record RecordAt(const std::vector<char>& bytes, std::size_t offset) {
  Record record;
  std::memcpy(&record, bytes.data() + offset, sizeof(record));
  return record;
}

std::vector<ElfW(Shdr)> Sections(const std::vector<char>& file) {
  const auto header = RecordAt<ElfW(Ehdr)>(file, 0);
  std::vector<ElfW(Shdr)> sections;
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    sections.push_back(RecordAt<ElfW(Shdr)>(file, header.e_shoff + i * sizeof(ElfW(Shdr))));
  }
  return sections;
}

// The names that the library defines for others to find.
std::vector<std::string> DefinedNames() {
  const std::vector<char> file = BytesOfLibrary();
  const auto sections = Sections(file);
  std::vector<std::string> names;
  for (const auto& section : sections) {
    if (section.sh_type != SHT_DYNSYM) continue;
    const char* texts = file.data() + sections[section.sh_link].sh_offset;
    for (std::size_t at = 0; at < section.sh_size; at += sizeof(ElfW(Sym))) {
      const auto symbol = RecordAt<ElfW(Sym)>(file, section.sh_offset + at);
      if (symbol.st_shndx != SHN_UNDEF) names.emplace_back(texts + symbol.st_name);
    }
  }
  return names;
}

std::string Soname() {
  link_map* map = nullptr;
  if (dlinfo(Library().handle, RTLD_DI_LINKMAP, &map) != 0) return dlerror();
  const char* texts = nullptr;
  ElfW(Xword) name = 0;
  for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag == DT_STRTAB) texts = reinterpret_cast<const char*>(entry->d_un.d_ptr);
    if (entry->d_tag == DT_SONAME) name = entry->d_un.d_val;
  }
  return texts + name;
}

TEST(LoadedLibrary, DefinesExactlyElevenNames) {
  EXPECT_THAT(DefinedNames(),
              UnorderedElementsAre("ZEBGetVersion", "ZEBGetGetProcAddress", "ZEBInitialize",
                                   "ZEBInitialize2", "ZEBInitialize3", "ZEBInitialize4",
                                   "ZEBTerminate", "ZEBLockSmithLockImpl", "ZEBLockSmithUnlockImpl",
                                   "ZEBLockSmithDeleteImpl", "ZEBLockSmithAssertNoLocksImpl"));
}

TEST(LoadedLibrary, IsNamedForItsMajorVersion) { EXPECT_EQ(Soname(), "libzeb.so.4"); }

TEST(LoadedLibrary, ReportsVersionFourPointZeroInEveryState) {
  EXPECT_EQ(exports().GetVersion(), 0x40000u);
  {
    RunningLibrary zeb;
    EXPECT_EQ(exports().GetVersion(), 0x40000u);
  }
  EXPECT_EQ(exports().GetVersion(), 0x40000u);
  EXPECT_EQ(ZEB_VERSION, 0x40000u);
}

void ExpectInertLockExports() {
  int value = 0;
  EXPECT_EQ(exports().LockSmithLock(), 0);
  exports().LockSmithUnlock();
  exports().LockSmithDelete();
  EXPECT_EQ(exports().LockSmithLock(), 0);
  EXPECT_EQ(exports().LockSmithAssertNoLocks(&value), &value);
  EXPECT_EQ(exports().LockSmithAssertNoLocks(nullptr), nullptr);
  void* allBits = reinterpret_cast<void*>(UINTPTR_MAX);
  EXPECT_EQ(exports().LockSmithAssertNoLocks(allBits), allBits);
}

TEST(LockExports, DoNothingInEveryState) {
  ExpectInertLockExports();
  {
    RunningLibrary zeb;
    ExpectInertLockExports();
    ZEBString* atom = zeb.string.NewStringAtom("after the lock exports");
    EXPECT_STREQ(zeb.string.GetCString(atom), "after the lock exports");
    zeb.string.DeleteStringAtom(atom);
  }
  ExpectInertLockExports();
}

}  // namespace
}  // namespace contract
