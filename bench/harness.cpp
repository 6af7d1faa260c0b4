#include "harness.h"

#include <fmt/format.h>
#include <sched.h>

#include <algorithm>
#include <map>
#include <regex>

namespace zeb::bench {

namespace {

// Keeps every repetition's time per operation, by side. Prints nothing.
class Collector : public benchmark::BenchmarkReporter {
 public:
  explicit Collector(const Row& row) : row_(row) {}

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      check(!run.error_occurred, run.error_message);
      if (run.run_type != Run::RT_Iteration) continue;
      times_[run.run_name.function_name].push_back(perOperation(run));
    }
  }

  Timing timingOf(const Side& side) {
    std::vector<double>& times = times_[side.name];
    check(!times.empty(), "no time was taken for " + side.name);
    std::sort(times.begin(), times.end());
    const size_t middle = times.size() / 2;
    const double median =
        times.size() % 2 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
    return {side.name, median, times.front(), times.back()};
  }

 private:
  // Google Benchmark gives the threads' mean wall time and the iterations of all threads together;
  // one thread did its share of them.
  double perOperation(const Run& run) const {
    const double operations = static_cast<double>(run.iterations) /
                              static_cast<double>(run.threads) *
                              static_cast<double>(row_.operations);
    return run.real_accumulated_time / operations * (row_.unit == "us" ? 1e6 : 1e9);
  }

  const Row& row_;
  std::map<std::string, std::vector<double>> times_;
};

// The settings that Google Benchmark takes only as command-line arguments.
void configure(const RunOptions& options) {
  std::vector<std::string> arguments = {
      "zeb_bench",
      "--benchmark_enable_random_interleaving=true",
      fmt::format("--benchmark_repetitions={}", options.repetitions),
      fmt::format("--benchmark_min_time={}", options.minimumTime),
  };
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
}

void registerSide(const Row& row, const Side& side) {
  auto* registered = benchmark::RegisterBenchmark(side.name.c_str(), side.body);
  registered->Threads(row.threads);
  if (row.turns) registered->Iterations(row.turns);
  if (row.manualTime) {
    registered->UseManualTime();
  } else {
    registered->UseRealTime();
  }
}

Result runRow(const Row& row) {
  check(row.ours.has_value(), "row without a side of ours: " + row.name);
  if (row.prepare) row.prepare();

  registerSide(row, *row.ours);
  for (const Side& peer : row.peers) registerSide(row, peer);
  Collector collector(row);
  benchmark::RunSpecifiedBenchmarks(&collector, ".*");
  benchmark::ClearRegisteredBenchmarks();

  Result result{row.area, row.name, row.threads, row.unit, row.goal, collector.timingOf(*row.ours),
                {}};
  for (const Side& peer : row.peers) result.peers.push_back(collector.timingOf(peer));
  const bool needsPeer = result.goal && result.goal->kind != Goal::Kind::time;
  if (needsPeer && !result.bestPeer()) result.goal.reset();
  return result;
}

cpu_set_t usableCpuSet() {
  cpu_set_t set;
  check(sched_getaffinity(0, sizeof(set), &set) == 0, "the CPUs of this process cannot be asked");
  return set;
}

// Taken before the first pinning, which narrows what the process may use.
const cpu_set_t usableAtStart = usableCpuSet();

}  // namespace

const Timing* Result::bestPeer() const {
  const Timing* best = nullptr;
  for (const Timing& peer : peers) {
    const bool counts = !goal || goal->against.empty() ||
                        std::count(goal->against.begin(), goal->against.end(), peer.name);
    if (counts && (!best || peer.median < best->median)) best = &peer;
  }
  return best;
}

std::optional<double> Result::ratio() const {
  const Timing* best = bestPeer();
  if (!best) return std::nullopt;
  return ours.median / best->median;
}

std::optional<bool> Result::met() const {
  if (!goal) return std::nullopt;
  switch (goal->kind) {
    case Goal::Kind::ratio:
      return ratio().value() <= goal->limit;
    case Goal::Kind::difference:
      return ours.median - bestPeer()->median <= goal->limit;
    case Goal::Kind::time:
      return ours.median <= goal->limit;
  }
  return std::nullopt;
}

void runRows(Rows rows, const RunOptions& options,
             const std::function<void(const Result&)>& report) {
  configure(options);
  const std::regex filter(options.filter);
  // All rows that will not run go first: they would keep shared things alive.
  std::erase_if(
      rows, [&](const Row& row) { return !std::regex_search(row.area + "/" + row.name, filter); });
  for (Row& slot : rows) {
    Row row = std::exchange(slot, Row{});
    if (options.alone) row.peers.clear();
    report(runRow(row));
  }
}

void pinThread(int threadNumber) {
  int passed = 0;
  for (size_t cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (!CPU_ISSET(cpu, &usableAtStart) || passed++ != threadNumber) continue;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(cpu, &one);
    check(sched_setaffinity(0, sizeof(one), &one) == 0, "a thread cannot be pinned");
    return;
  }
  check(false, fmt::format("no CPU for thread {}", threadNumber));
}

int usableCpus() { return CPU_COUNT(&usableAtStart); }

}  // namespace zeb::bench
