// cache_policy: how much work a cache saves, by what it keeps. Replays traces through libzeb's
// cache and through other policies, and tells the share of requests that hit and the share of cost
// that the hits saved. ../README.md tells more.
//
// Exits 0 also when a goal is missed, the table says so; not 0 when a cache behaved wrongly.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <fstream>
#include <limits>

#include "../check.h"
#include "../library.h"
#include "policies.h"
#include "workload.h"

namespace {

using namespace zeb::bench;

constexpr int kPercents[] = {1, 5, 10, 25};
constexpr size_t kRequests = 500'000;
constexpr size_t kQuickRequests = 40'000;

struct Outcome {
  std::string policy;
  double hits;   // the share of requests
  double saved;  // the share of cost
};

// A workload with caches of a share of its footprint.
struct Cell {
  std::string workload;
  size_t requests;
  int percent;
  std::vector<Outcome> outcomes;
};

struct Arguments {
  std::string library = BENCH_LIBRARY;
  std::string trace;
  std::string json;
  bool quick = false;
};

// Sizes such that the budget, a share of the footprint, is kBudget units.
std::vector<Item> scaled(const Workload& workload, int percent) {
  const double unit = workload.footprint() * percent / 100 / static_cast<double>(kBudget);
  std::vector<Item> items;
  items.reserve(workload.objects.size());
  for (const Object& object : workload.objects)
    items.push_back({std::max<uint64_t>(1, static_cast<uint64_t>(std::llround(object.size / unit))),
                     object.cost});
  return items;
}

Outcome replay(const Workload& workload, const std::vector<Item>& items, const Policy& policy) {
  const std::unique_ptr<Cache> cache = policy.makeCache(items);
  size_t hits = 0;
  double saved = 0;
  double total = 0;
  for (const uint32_t object : workload.requests) {
    const auto cost = static_cast<double>(items[object].cost);
    total += cost;
    if (!cache->request(object)) continue;
    ++hits;
    saved += cost;
  }
  return {policy.name, static_cast<double>(hits) / static_cast<double>(workload.requests.size()),
          saved / total};
}

Cell replayAll(const Workload& workload, int percent) {
  Cell cell{workload.name, workload.requests.size(), percent, {}};
  const std::vector<Item> items = scaled(workload, percent);
  for (const Policy& policy : allPolicies())
    cell.outcomes.push_back(replay(workload, items, policy));
  return cell;
}

const Outcome& outcomeOf(const Cell& cell, std::string_view policy) {
  for (const Outcome& outcome : cell.outcomes)
    if (outcome.policy == policy) return outcome;
  check(false, fmt::format("no policy {}", policy));
  return cell.outcomes.front();
}

bool meetsGoal(const Cell& cell) {
  return outcomeOf(cell, "libzeb").saved > outcomeOf(cell, "LRU").saved;
}

// --- tables -----------------------------------------------------------------------------------

void printHead() {
  fmt::print(
      "Share of cost saved (share of requests that hit), in percent. The goal is to save more "
      "than\n"
      "LRU.\n\n{:<34}{:>6}",
      "workload", "cache");
  for (const Policy& policy : allPolicies()) fmt::print("{:>17}", policy.name);
  fmt::print("\n");
}

void print(const Cell& cell, bool judges) {
  fmt::print("{:<34}{:>4} %", cell.workload, cell.percent);
  for (const Outcome& outcome : cell.outcomes)
    fmt::print("{:>17}", fmt::format("{:.1f} ({:.1f})", outcome.saved * 100, outcome.hits * 100));
  fmt::print("{}\n", !judges ? "" : meetsGoal(cell) ? "  met" : "  MISSED");
  std::fflush(stdout);
}

std::string jsonOf(const Cell& cell) {
  std::string outcomes;
  for (const Outcome& outcome : cell.outcomes)
    outcomes +=
        fmt::format("{}{{\"policy\": \"{}\", \"hits\": {:.5f}, \"saved\": {:.5f}}}",
                    outcomes.empty() ? "" : ", ", outcome.policy, outcome.hits, outcome.saved);
  return fmt::format(
      "  {{\"workload\": \"{}\", \"requests\": {}, \"percent\": {}, \"outcomes\": [{}]}}",
      cell.workload, cell.requests, cell.percent, outcomes);
}

void writeJson(const std::string& path, const std::vector<Cell>& cells) {
  std::ofstream file(path);
  file << "[\n";
  for (size_t i = 0; i < cells.size(); ++i)
    file << jsonOf(cells[i]) << (i + 1 < cells.size() ? ",\n" : "\n");
  file << "]\n";
  file.close();
  check(!file.fail(), "cannot write " + path);
}

void run(const Arguments& arguments) {
  loadLibrary(arguments.library);
  checkPolicies();
  const size_t requests = arguments.quick ? kQuickRequests : kRequests;
  const std::vector<Workload> workloads =
      arguments.trace.empty()
          ? generatedWorkloads(requests)
          : recordedWorkloads(arguments.trace, arguments.quick
                                                   ? kQuickRequests
                                                   : std::numeric_limits<size_t>::max());
  printHead();
  std::vector<Cell> cells;
  size_t missed = 0;
  for (const Workload& workload : workloads)
    for (const int percent : kPercents) {
      cells.push_back(replayAll(workload, percent));
      print(cells.back(), !arguments.quick);
      if (!meetsGoal(cells.back())) ++missed;
    }
  if (arguments.quick) {
    fmt::print("\nA smoke run: too short to judge.\n");
  } else {
    fmt::print("\n{} goals met, {} missed.\n", cells.size() - missed, missed);
  }
  if (!arguments.json.empty()) writeJson(arguments.json, cells);
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Replays traces through libzeb's cache and through other policies.");
  app.add_option("--trace", arguments.trace,
                 "A file of keys, little-endian 32-bit numbers, instead of generated workloads");
  app.add_option("--json", arguments.json, "Where the results go, if anywhere");
  app.add_flag("--quick", arguments.quick, "A short smoke run, without verdicts");
  app.add_option("--library", arguments.library, "The libzeb.so.4 to replay through")
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    run(arguments);
  } catch (const std::exception& error) {
    fmt::print(stderr, "cache_policy: {}\n", error.what());
    return 1;
  }
}
