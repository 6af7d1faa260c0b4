// A running library with its inspection interface, the snapshots as values of the test's own.
#ifndef ZEB_TESTS_CONTRACT_INSPECTED_LIBRARY_H
#define ZEB_TESTS_CONTRACT_INSPECTED_LIBRARY_H

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "contract/component_library.h"

namespace contract {

// A name of the registry; nothing stands for the null name.
using RegistryName = std::optional<std::string>;

inline RegistryName NameOf(const char* name) {
  return name != nullptr ? RegistryName(name) : std::nullopt;
}

struct InspectedProc {
  RegistryName interfaceName;
  RegistryName methodName;
  RegistryName procName;
  ZEBProc proc = nullptr;
  RegistryName file;
  std::uint64_t fileOffset = 0;
};

struct LiveCount {
  std::uint64_t live = 0;
  std::uint64_t kept = 0;

  bool operator==(const LiveCount&) const = default;
};

inline void PrintTo(const LiveCount& count, std::ostream* out) {
  *out << "{live " << count.live << ", kept " << count.kept << "}";
}

struct Explanation {
  std::int32_t outcome = -1;
  std::int32_t wasUnregistered = -1;
  std::uint32_t unregisteredAt = 0;
  ZEBProc proc = nullptr;
  std::vector<RegistryName> versions;
  std::vector<RegistryName> nearest;
  std::string text;
};

class InspectedLibrary : public ComponentLibrary {
 public:
  explicit InspectedLibrary(const StartOptions& options = {}) : ComponentLibrary(options) {
    if (ZEBFetchInspectProcs(getProcAddress, &inspect) == 0) {
      throw std::runtime_error("a started library lacks its inspection interface");
    }
  }

  std::vector<InspectedProc> InspectedProcs() const {
    std::uint32_t count = 0;
    ZEBInspectedProc* records = inspect.NewProcSnapshot(&count);
    EXPECT_NE(records, nullptr);
    std::vector<InspectedProc> copies;
    for (std::uint32_t i = 0; i < count; ++i) {
      const ZEBInspectedProc& record = records[i];
      copies.push_back({NameOf(record.interfaceName), NameOf(record.methodName),
                        NameOf(record.procName), record.proc, NameOf(record.file),
                        record.fileOffset});
    }
    inspect.DeleteSnapshot(records);
    return copies;
  }

  // The references of each live atom.
  std::map<std::string, std::uint32_t> Atoms() const {
    std::uint32_t count = 0;
    ZEBInspectedAtom* records = inspect.NewAtomSnapshot(&count);
    EXPECT_NE(records, nullptr);
    std::map<std::string, std::uint32_t> atoms;
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto [at, isNew] = atoms.emplace(records[i].text, records[i].references);
      EXPECT_TRUE(isNew) << at->first;
    }
    inspect.DeleteSnapshot(records);
    return atoms;
  }

  std::map<std::string, LiveCount> Objects() const {
    std::uint32_t count = 0;
    ZEBInspectedKind* records = inspect.NewObjectSnapshot(&count);
    EXPECT_NE(records, nullptr);
    std::map<std::string, LiveCount> kinds;
    for (std::uint32_t i = 0; i < count; ++i) {
      kinds[records[i].kind] = {records[i].live, records[i].kept};
    }
    inspect.DeleteSnapshot(records);
    return kinds;
  }
  LiveCount Objects(const std::string& kind) const {
    const auto kinds = Objects();
    const auto at = kinds.find(kind);
    if (at == kinds.end()) throw std::runtime_error("there is no kind " + kind);
    return at->second;
  }

  Explanation Explain(const char* interfaceName, const char* method, const char* proc) const {
    ZEBLookupExplanation* record = inspect.NewLookupExplanation(interfaceName, method, proc);
    EXPECT_NE(record, nullptr);
    if (record == nullptr) return {};
    Explanation copy{record->outcome,
                     record->wasUnregistered,
                     record->unregisteredAt,
                     record->proc,
                     Names(record->versions, record->versionCount),
                     Names(record->nearest, record->nearestCount),
                     record->text};
    EXPECT_EQ(record->reserved, 0u);
    inspect.DeleteSnapshot(record);
    return copy;
  }

  void Register(const char* interfaceName, const char* method, const char* proc,
                std::uintptr_t address = 16) const {
    EXPECT_EQ(frame.RegisterProcAddress(interfaceName, method, proc, FakeProc(address)), 1);
  }

  ZEBInspectProcs inspect;

 private:
  static std::vector<RegistryName> Names(const char* const* names, std::uint32_t count) {
    EXPECT_EQ(names == nullptr, count == 0);
    std::vector<RegistryName> copies;
    for (std::uint32_t i = 0; i < count; ++i) copies.push_back(NameOf(names[i]));
    return copies;
  }
};

}  // namespace contract

#endif
