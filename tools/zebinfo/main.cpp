// zebinfo: starts a library, perhaps with modules, and shows what it serves.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "failure.h"
#include "library.h"
#include "module.h"
#include "options.h"
#include "output.h"
#include "report_log.h"
#include "text.h"

namespace {

using zebinfo::ExitStatus;
using zebinfo::Library;
using zebinfo::Module;
using zebinfo::Options;

void complain(const std::string& message) {
  static_cast<void>(std::fflush(stdout));
  static_cast<void>(std::fprintf(stderr, "zebinfo: %s\n", zebinfo::printable(message).c_str()));
}

// The first of two statuses that says anything.
ExitStatus either(ExitStatus first, ExitStatus second) {
  return first != ExitStatus::success ? first : second;
}

std::vector<Module> startModules(const Options& options, const Library& library) {
  std::vector<Module> modules;
  for (const std::string& file : options.modules) {
    modules.emplace_back(file, options.entryNames, library.getProcAddress());
  }
  return modules;
}

ExitStatus judge(const std::vector<Module>& modules) {
  ExitStatus status = ExitStatus::success;
  for (const Module& module : modules) {
    if (module.problem().empty()) continue;
    complain(module.file() + ": " + module.problem());
    status = ExitStatus::badModule;
  }
  return status;
}

void explain(const Library& library, const zebinfo::ProcNames& names) {
  if (!library.inspect()) return;
  ZEBLookupExplanation* explanation = library.inspect()->NewLookupExplanation(
      names.interfaceName.c_str(), names.methodName.c_str(), names.procName.c_str());
  if (explanation == nullptr) return;
  complain(explanation->text);
  library.inspect()->DeleteSnapshot(explanation);
}

ExitStatus lookUp(const Library& library, const zebinfo::ProcNames& names) {
  const ZEBProc found = library.getProcAddress()(names.interfaceName.c_str(),
                                                 names.methodName.c_str(), names.procName.c_str());
  if (found != nullptr) return ExitStatus::success;
  explain(library, names);
  return ExitStatus::missing;
}

void print(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (!written || std::fflush(stdout) != 0) {
    throw zebinfo::Failure(ExitStatus::badOutput, "cannot write");
  }
}

ExitStatus show(const Options& options, const Library& library,
                const std::vector<Module>& modules) {
  if (options.exists) return lookUp(library, *options.exists);
  const zebinfo::Report report = zebinfo::makeReport(library, modules, options.atoms);
  print(options.json ? zebinfo::asJson(report) : zebinfo::asTable(report));
  return ExitStatus::success;
}

ExitStatus tryToShow(const Options& options, const Library& library,
                     const std::vector<Module>& modules) {
  try {
    return show(options, library, modules);
  } catch (const zebinfo::Failure& failure) {
    complain(failure.what());
    return failure.status();
  } catch (
      const std::exception& failure) {  // no memory: modules and library are stopped all the same
    complain(failure.what());
    return ExitStatus::badLibrary;
  }
}

void complainOfReports(const std::string& when) {
  for (const std::string& report : zebinfo::takeReports()) complain(when + report);
}

// What the library reports from here on is about what was not given back.
ExitStatus stop(Library& library, std::vector<Module>& modules) {
  for (auto module = modules.rbegin(); module != modules.rend(); ++module) module->stop();
  complainOfReports("reported while running: ");
  library.stop();
  const auto reports = zebinfo::takeReports();
  for (const std::string& report : reports) complain("reported on stopping: " + report);
  return reports.empty() ? ExitStatus::success : ExitStatus::notGivenBack;
}

ExitStatus run(const Options& options) {
  Library library(options.library);
  std::vector<Module> modules = startModules(options, library);
  const ExitStatus moduleStatus = judge(modules);
  const ExitStatus shown = tryToShow(options, library, modules);
  const ExitStatus stopped = stop(library, modules);
  if (shown == ExitStatus::badLibrary) return shown;
  return either(moduleStatus, either(shown, stopped));
}

}  // namespace

int main(int argc, char** argv) {
  int status = 0;
  try {
    const auto options = zebinfo::parseOptions(argc, argv, &status);
    return options ? static_cast<int>(run(*options)) : status;
  } catch (const zebinfo::Failure& failure) {
    complain(failure.what());
    return static_cast<int>(failure.status());
  } catch (const std::exception& failure) {
    complain(failure.what());
    return static_cast<int>(ExitStatus::badLibrary);
  }
}
