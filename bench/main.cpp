// zeb_bench: libzeb against its peers, all in one process run. README.md tells what the rows mean.
//
// Exits 0 also when a goal is missed, the table says so; not 0 when somebody answered wrongly or
// the run itself failed.
#include <fmt/format.h>
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <filesystem>
#include <latch>
#include <regex>
#include <thread>

#include "library.h"
#include "report.h"
#include "rows.h"

namespace {

using namespace zeb::bench;

// Beside the program, which stands in the build folder.
std::string defaultJsonPath() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "results.json";
}

struct Arguments {
  RunOptions run;
  std::string json = defaultJsonPath();
  std::string library = BENCH_LIBRARY;
};

// A process that never had a second thread gets cheaper locks and reference counts from the C and
// C++ libraries. A host of libzeb has several threads; so one is here from the start to the end,
// and neither we nor the peers profit from a shortcut that no host sees.
class SecondThread {
 public:
  SecondThread() : thread_([this] { end_.wait(); }) {
    std::thread([] {}).join();
  }
  ~SecondThread() {
    end_.count_down();
    thread_.join();
  }

 private:
  std::latch end_{1};
  std::thread thread_;
};

// How often the system took a CPU away from this process, since the process began.
long switchesAwayFromUs() {
  rusage usage{};
  check(getrusage(RUSAGE_SELF, &usage) == 0, "the system does not tell what this process used");
  return usage.ru_nivcsw;
}

// A run beside busy neighbours is no good for rows with two threads above all: a thread that is
// taken off its CPU cannot get in the other's way.
void tellIfDisturbed(double seconds, long switches) {
  constexpr double quietPerSecond = 20;
  if (static_cast<double>(switches) < quietPerSecond * seconds) return;
  fmt::print(
      "\nOther processes took the CPUs away {:.0f} times a second: measure again on a quiet "
      "machine.\n",
      static_cast<double>(switches) / seconds);
}

Rows allRows() {
  Rows rows;
  addLookupRows(rows);
  addAtomRows(rows);
  addErrorRows(rows);
  addMemoryRows(rows);
  addPoolRows(rows);
  addEventRows(rows);
  addSnapshotRows(rows);
  addContainerRows(rows);
  addContainerLookupRows(rows);
  addBufferRows(rows);
  addProgressRows(rows);
  addStreamRows(rows);
  addBufferStreamRows(rows);
  addFileStreamRows(rows);
  addClientStreamRows(rows);
  addCacheRows(rows);
  addCachePurgeRows(rows);
  addFilterRows(rows);
  addSdkRows(rows);
  addLifecycleRows(rows);
  return rows;
}

void leaveOutWhatNeedsMoreCpus(Rows& rows) {
  const int cpus = usableCpus();
  const size_t left = std::erase_if(rows, [cpus](const Row& row) { return row.threads > cpus; });
  if (left) fmt::print("{} rows are left out: they need more than the {} CPU here.\n", left, cpus);
}

void run(Arguments& arguments) {
  const SecondThread second;
  loadLibrary(arguments.library);
  Rows rows = allRows();
  leaveOutWhatNeedsMoreCpus(rows);

  TablePrinter table(!arguments.run.quick);
  std::vector<Result> results;
  table.printHead(arguments.run.repetitions);
  const auto begin = std::chrono::steady_clock::now();
  const long switchesBefore = switchesAwayFromUs();
  runRows(std::move(rows), arguments.run, [&](const Result& result) {
    table.print(result);
    results.push_back(result);
  });
  check(!results.empty(), "no row fits the filter");
  table.printSummary();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  if (!arguments.run.quick) tellIfDisturbed(took.count(), switchesAwayFromUs() - switchesBefore);
  writeJson(arguments.json, results);
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Times libzeb against its peers.");
  app.add_option("--filter", arguments.run.filter,
                 "Only rows whose \"area/case\" this regular expression finds");
  app.add_flag("--quick", arguments.run.quick, "A short smoke run of all rows, without verdicts");
  app.add_flag("--alone", arguments.run.alone, "Without the peers, for a profiler to look at ours");
  app.add_option("--repetitions", arguments.run.repetitions,
                 "Repetitions of each side; at least 5 make a median worth its name")
      ->check(CLI::PositiveNumber);
  app.add_option("--json", arguments.json, "Where the results go")->capture_default_str();
  app.add_option("--library", arguments.library, "The libzeb.so.4 to measure")
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  arguments.run.minimumTime = arguments.run.quick ? 0.0001 : 0.05;
  if (arguments.run.quick && !app.count("--repetitions")) arguments.run.repetitions = 1;
  try {
    run(arguments);
  } catch (const std::exception& error) {
    fmt::print(stderr, "zeb_bench: {}\n", error.what());
    return 1;
  }
}
