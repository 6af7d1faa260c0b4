#include "inspect/explanation.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

#include "base/checked_size.h"
#include "inspect/names.h"
#include "inspect/nearest_names.h"
#include "inspect/proc_snapshot.h"
#include "inspect/sentence.h"
#include "registry/proc_registry.h"

namespace zeb::inspect {

static_assert(sizeof(ZEBLookupExplanation) == 56);

namespace {

using Procs = std::span<const ZEBInspectedProc>;
using Names = std::span<const char* const>;
using NameOf = const char* ZEBInspectedProc::*;

bool sameName(const char* a, const char* b) noexcept { return compareNames(a, b) == 0; }

// The procs of that name. They stand together, for their names before this one are equal.
Procs withName(Procs procs, NameOf nameOf, const char* name) noexcept {
  const auto [first, last] = std::equal_range(
      procs.begin(), procs.end(), ZEBInspectedProc{name, name, name, nullptr, nullptr, 0},
      [=](const ZEBInspectedProc& a, const ZEBInspectedProc& b) {
        return compareNames(a.*nameOf, b.*nameOf) < 0;
      });
  return {first, last};
}

NearestNames nearestTo(const char* wanted, Procs procs, NameOf nameOf) noexcept {
  NearestNames nearest(wanted);
  for (size_t i = 0; i < procs.size(); ++i) {
    const char* name = procs[i].*nameOf;
    if (i == 0 || !sameName(procs[i - 1].*nameOf, name)) nearest.offer(name);
  }
  return nearest;
}

struct Question {
  const char* interfaceName;
  const char* methodName;
  const char* procName;
};

// What is known, its texts still those of the registry's snapshot.
struct Findings {
  int32_t outcome = ZEB_LOOKUP_FOUND;
  ZEBProc proc = nullptr;
  std::optional<uint32_t> unregisteredAt;
  Procs versions;
  NearestNames nearest{nullptr};
};

Findings investigate(const Question& asked, Procs all) noexcept {
  const auto unregisteredAt = registry::lastUnregistration(asked.interfaceName);
  const auto unknown = [&](int32_t outcome, Procs versions, NearestNames nearest) {
    return Findings{outcome, nullptr, unregisteredAt, versions, nearest};
  };
  const Procs ofInterface = withName(all, &ZEBInspectedProc::interfaceName, asked.interfaceName);
  if (ofInterface.empty()) {
    return unknown(ZEB_LOOKUP_UNKNOWN_INTERFACE, {},
                   nearestTo(asked.interfaceName, all, &ZEBInspectedProc::interfaceName));
  }
  const Procs ofMethod = withName(ofInterface, &ZEBInspectedProc::methodName, asked.methodName);
  if (ofMethod.empty()) {
    return unknown(ZEB_LOOKUP_UNKNOWN_METHOD, {},
                   nearestTo(asked.methodName, ofInterface, &ZEBInspectedProc::methodName));
  }
  const Procs found = withName(ofMethod, &ZEBInspectedProc::procName, asked.procName);
  if (found.empty()) {
    return unknown(ZEB_LOOKUP_UNKNOWN_PROC, ofMethod,
                   nearestTo(asked.procName, ofMethod, &ZEBInspectedProc::procName));
  }
  const ZEBProc proc = found.front().proc;
  return {proc != nullptr ? ZEB_LOOKUP_FOUND : ZEB_LOOKUP_NULL_FUNCTION, proc, unregisteredAt,
          ofMethod, NearestNames(nullptr)};
}

void addOutcome(Sentence& sentence, const Question& asked, int32_t outcome,
                Names versions) noexcept {
  switch (outcome) {
    case ZEB_LOOKUP_UNKNOWN_INTERFACE:
      sentence.add("there is no interface ").addName(asked.interfaceName);
      return;
    case ZEB_LOOKUP_UNKNOWN_METHOD:
      sentence.add("interface ").addName(asked.interfaceName);
      sentence.add(" has no method ").addName(asked.methodName);
      return;
    case ZEB_LOOKUP_UNKNOWN_PROC:
      sentence.add("method ").addName(asked.methodName);
      sentence.add(" of interface ").addName(asked.interfaceName);
      sentence.add(" has no proc ").addName(asked.procName).add(", but ").addNames(versions);
      return;
    default:
      break;
  }
  sentence.add("proc ").addName(asked.procName).add(" of method ").addName(asked.methodName);
  sentence.add(" of interface ").addName(asked.interfaceName).add(" is registered");
  if (outcome == ZEB_LOOKUP_NULL_FUNCTION) {
    sentence.add(", but with a null function, which a look-up cannot tell from a missing one");
  }
}

// The versions and nearest names have been copied by then.
void addEverything(Sentence& sentence, const Question& asked, const Findings& findings,
                   Names versions, Names nearest) noexcept {
  addOutcome(sentence, asked, findings.outcome, versions);
  if (!nearest.empty()) sentence.add("; nearest: ").addNames(nearest);
  if (!findings.unregisteredAt) return;
  sentence.add("; the interface was last unregistered when the change counter became ");
  sentence.addNumber(*findings.unregisteredAt);
}

// One block: the explanation, the two lists of names, the sentence. The names' texts come after it
// in a block of their own.
class Writer {
 public:
  Writer(const Question& asked, const Findings& findings)
      : asked_(asked),
        findings_(findings),
        memory_(sumOfSizes(sizeof(ZEBLookupExplanation), sizeOfPointers(nameCount()))) {}

  SnapshotMemory write() {
    copyNames();
    const auto& [versions, nearest] = lists();
    auto* explanation = new (memory_.data())
        ZEBLookupExplanation{.outcome = findings_.outcome,
                             .wasUnregistered = findings_.unregisteredAt ? 1 : 0,
                             .unregisteredAt = findings_.unregisteredAt.value_or(0),
                             .versionCount = static_cast<uint32_t>(versions.size()),
                             .nearestCount = static_cast<uint32_t>(nearest.size()),
                             .reserved = 0,
                             .proc = findings_.proc,
                             .versions = versions.empty() ? nullptr : versions.data(),
                             .nearest = nearest.empty() ? nullptr : nearest.data(),
                             .text = writeSentence(versions, nearest)};
    (void)explanation;
    return std::move(memory_);
  }

 private:
  struct Lists {
    Names versions;
    Names nearest;
  };

  [[nodiscard]] uint64_t nameCount() const noexcept {
    return findings_.versions.size() + findings_.nearest.names().size();
  }

  [[nodiscard]] const char** names() const noexcept {
    return reinterpret_cast<const char**>(static_cast<ZEBLookupExplanation*>(memory_.data()) + 1);
  }

  [[nodiscard]] Lists lists() const noexcept {
    const size_t versions = findings_.versions.size();
    return {{names(), versions}, {names() + versions, findings_.nearest.names().size()}};
  }

  // Calls `visit` with each name, the versions first.
  template <class Visit>
  void forEachName(Visit visit) const {
    for (const ZEBInspectedProc& proc : findings_.versions) visit(proc.procName);
    for (const char* name : findings_.nearest.names()) visit(name);
  }

  void copyNames() {
    uint64_t bytes = 0;
    forEachName([&](const char* name) { bytes += name != nullptr ? std::strlen(name) + 1 : 0; });
    char* text = static_cast<char*>(memory_.addBlock(bytes));
    const char** to = names();
    forEachName([&](const char* name) {
      *to++ = name != nullptr ? text : nullptr;
      if (name == nullptr) return;
      const uint64_t size = std::strlen(name) + 1;
      std::memcpy(text, name, size);
      text += size;
    });
  }

  const char* writeSentence(Names versions, Names nearest) {
    Sentence measured(nullptr);
    addEverything(measured, asked_, findings_, versions, nearest);
    char* text = static_cast<char*>(memory_.addBlock(sumOfSizes(measured.length(), 1)));
    Sentence written(text);
    addEverything(written, asked_, findings_, versions, nearest);
    text[written.length()] = 0;
    return text;
  }

  const Question& asked_;
  const Findings& findings_;
  SnapshotMemory memory_;
};

}  // namespace

SnapshotMemory explainLookup(const char* interfaceName, const char* methodName,
                             const char* procName) {
  const Question asked{interfaceName, methodName, procName};
  const auto procs = copyProcs();
  const Findings findings = investigate(asked, procs.all());
  return Writer(asked, findings).write();
}

}  // namespace zeb::inspect
