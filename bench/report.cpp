#include "report.h"

#include <fmt/format.h>

#include <cstdio>
#include <fstream>
#include <map>

namespace zeb::bench {

namespace {

std::string number(double value) {
  if (value < 10) return fmt::format("{:.2f}", value);
  if (value < 1000) return fmt::format("{:.1f}", value);
  return fmt::format("{:.0f}", value);
}

std::string numberOrDash(std::optional<double> value) { return value ? number(*value) : "-"; }

std::string limit(const Result& result) {
  if (!result.goal) return "-";
  switch (result.goal->kind) {
    case Goal::Kind::ratio:
      return fmt::format("{:.2f}", result.goal->limit);
    case Goal::Kind::difference:
      return fmt::format("+{} {}", result.goal->limit, result.unit);
    case Goal::Kind::time:
      return fmt::format("{} {}", result.goal->limit, result.unit);
  }
  return "-";
}

std::string title(const Result& result) {
  return result.threads == 1 ? result.name
                             : fmt::format("{}, {} threads", result.name, result.threads);
}

std::string spread(const Timing& timing) {
  return fmt::format("{}..{}", number(timing.lowest), number(timing.highest));
}

std::string peers(const Result& result) {
  std::string list;
  for (const Timing& peer : result.peers)
    list += fmt::format("{}{} {}", list.empty() ? "" : ", ", peer.name, number(peer.median));
  return list;
}

constexpr const char* kLayout = "{:<68} {:>4} {:>8} {:>17} {:>8} {:>6} {:>8} {:<6} {}\n";

std::string quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string numberOrNull(std::optional<double> value) {
  return value ? fmt::format("{:.4g}", *value) : "null";
}

std::string peersObject(const std::vector<Timing>& peers) {
  std::string object;
  for (const Timing& peer : peers)
    object +=
        fmt::format("{}{}: {:.4g}", object.empty() ? "" : ", ", quoted(peer.name), peer.median);
  return "{" + object + "}";
}

std::string againstArray(const Result& result) {
  std::string array;
  if (result.goal)
    for (const std::string& name : result.goal->against)
      array += (array.empty() ? "" : ", ") + quoted(name);
  return "[" + array + "]";
}

std::string kindOrNull(const Result& result) {
  if (!result.goal) return "null";
  static const std::map<Goal::Kind, const char*> names = {{Goal::Kind::ratio, "ratio"},
                                                          {Goal::Kind::difference, "difference"},
                                                          {Goal::Kind::time, "time"}};
  return quoted(names.at(result.goal->kind));
}

std::string jsonOf(const Result& result) {
  return fmt::format(
      "  {{\"area\": {}, \"case\": {}, \"threads\": {}, \"unit\": {}, \"ours\": {:.4g}, "
      "\"peers\": {}, \"against\": {}, \"goal\": {}, \"limit\": {}, \"ratio\": {}}}",
      quoted(result.area), quoted(result.name), result.threads, quoted(result.unit),
      result.ours.median, peersObject(result.peers), againstArray(result), kindOrNull(result),
      numberOrNull(result.goal ? std::optional(result.goal->limit) : std::nullopt),
      numberOrNull(result.ratio()));
}

}  // namespace

void TablePrinter::printHead(int repetitions) const {
  fmt::print(
      "Medians of {} repetitions, ours and the peers in random order, threads pinned. A time is "
      "wall\n"
      "time per operation of one thread, also where two threads work at once. The ratio is ours\n"
      "divided by the fastest peer that the limit speaks of.\n\n",
      repetitions);
  fmt::print(kLayout, "case", "unit", "ours", "lowest..highest", "best", "ratio", "limit", "",
             "peers");
}

void TablePrinter::print(const Result& result) {
  if (result.area != area_) fmt::print("\n{}\n", result.area);
  area_ = result.area;

  const Timing* best = result.bestPeer();
  fmt::print(kLayout, "  " + title(result), result.unit, number(result.ours.median),
             spread(result.ours), numberOrDash(best ? std::optional(best->median) : std::nullopt),
             numberOrDash(result.ratio()), limit(result), verdict(result), peers(result));
  std::fflush(stdout);

  const std::optional<bool> met = result.met();
  if (!met) return;
  if (*met) {
    ++met_;
  } else {
    missed_.push_back(result.area + ": " + title(result));
  }
}

std::string TablePrinter::verdict(const Result& result) const {
  const std::optional<bool> met = result.met();
  if (!judges_ || !met) return "";
  return *met ? "met" : "MISSED";
}

void TablePrinter::printSummary() const {
  if (!judges_) {
    fmt::print("\nA smoke run: too short to judge.\n");
    return;
  }
  fmt::print("\n{} goals met, {} missed.\n", met_, missed_.size());
  for (const std::string& title : missed_) fmt::print("  missed  {}\n", title);
}

void writeJson(const std::string& path, const std::vector<Result>& results) {
  std::ofstream file(path);
  file << "[\n";
  for (size_t i = 0; i < results.size(); ++i)
    file << jsonOf(results[i]) << (i + 1 < results.size() ? ",\n" : "\n");
  file << "]\n";
  file.close();
  check(!file.fail(), "cannot write " + path);
}

}  // namespace zeb::bench
