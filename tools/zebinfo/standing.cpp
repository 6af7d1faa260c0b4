#include "standing.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "library.h"
#include "report_log.h"
#include "zeb/sdk/description.hpp"
#include "zeb/sdk/signature.hpp"

namespace zebinfo {

namespace {

namespace description = zeb::sdk::description;
using zeb::sdk::kSignatureSuffix;
using zeb::sdk::SignatureProc;

template <class Function>
uint64_t addressOf(Function* function) {
  return reinterpret_cast<uint64_t>(function);
}

// The library's file as the snapshot names it, by a proc that was bound before any module ran.
std::optional<std::string> libraryFile(const Report& report, const Library& library) {
  const uint64_t address = addressOf(library.frame().GetUnregisterCount);
  const auto row = std::find_if(report.procs.begin(), report.procs.end(),
                                [&](const ProcRow& proc) { return proc.address == address; });
  return row != report.procs.end() ? row->file : report.file;
}

// The text published by a module's function. What a module throws is its own loss.
std::optional<std::string> askedFor(const ProcRow& text) {
  const auto ask = reinterpret_cast<SignatureProc>(text.address);
  if (ask == nullptr) return std::nullopt;
  try {
    const char* answer = ask();
    return answer != nullptr ? std::optional<std::string>(answer) : std::nullopt;
  } catch (...) {
    return std::nullopt;
  }
}

ProcRow* find(std::vector<ProcRow>& procs, const ProcRow& like, std::string_view procName) {
  const auto row = std::find_if(procs.begin(), procs.end(), [&](const ProcRow& proc) {
    return proc.procName == procName && proc.methodName == like.methodName &&
           proc.interfaceName == like.interfaceName;
  });
  return row != procs.end() ? &*row : nullptr;
}

}  // namespace

void compareWithDescription(Report& report, const Library& library) {
  const auto file = libraryFile(report, library);
  std::set<const description::Proc*> registered;
  for (ProcRow& row : report.procs) {
    const auto* interface = description::findInterface(row.interfaceName.value_or(""));
    if (interface == nullptr) continue;
    row.standing = Standing::notDescribed;
    row.described =
        description::findProc(*interface, row.methodName.value_or(""), row.procName.value_or(""));
    if (row.described == nullptr) continue;
    registered.insert(row.described);
    const bool own = row.file == file || row.address == addressOf(&keepReport);
    row.standing = own ? Standing::own : Standing::replaced;
  }
  for (const auto& interface : description::interfaces()) {
    for (const auto& proc : interface.procs) {
      if (registered.contains(&proc)) continue;
      report.missing.push_back({std::string(interface.name), &proc});
    }
  }
}

void findPublishedSignatures(std::vector<ProcRow>& procs) {
  for (ProcRow& text : procs) {
    if (!text.procName || !text.procName->ends_with(kSignatureSuffix)) continue;
    const std::string name =
        text.procName->substr(0, text.procName->size() - kSignatureSuffix.size());
    ProcRow* proc = find(procs, text, name);
    // What another file says of the proc is that file's, and a row of its own.
    if (proc == nullptr || proc->signatureOf || proc->file != text.file) continue;
    proc->publishedSignature = askedFor(text);
    if (proc->publishedSignature) text.signatureOf = name;
  }
}

}  // namespace zebinfo
