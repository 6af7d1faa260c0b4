#include "report.h"

#include <fmt/format.h>

#include <cstdio>
#include <fstream>

namespace zeb::bench {

namespace {

std::string Number(double value) {
  if (value < 10) return fmt::format("{:.2f}", value);
  if (value < 1000) return fmt::format("{:.1f}", value);
  return fmt::format("{:.0f}", value);
}

std::string NumberOrDash(std::optional<double> value) { return value ? Number(*value) : "-"; }

std::string Limit(const Result& result) {
  if (!result.goal) return "-";
  if (result.goal->isTime) return fmt::format("{} {}", result.goal->limit, result.unit);
  return fmt::format("{:.2f}", result.goal->limit);
}

std::string Title(const Result& result) {
  return result.threads == 1 ? result.name
                             : fmt::format("{}, {} threads", result.name, result.threads);
}

std::string Spread(const Timing& timing) {
  return fmt::format("{}..{}", Number(timing.lowest), Number(timing.highest));
}

std::string Peers(const Result& result) {
  std::string list;
  for (const Timing& peer : result.peers)
    list += fmt::format("{}{} {}", list.empty() ? "" : ", ", peer.name, Number(peer.median));
  return list;
}

constexpr const char* layout = "{:<68} {:>4} {:>8} {:>17} {:>8} {:>6} {:>8} {:<6} {}\n";

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string NumberOrNull(std::optional<double> value) {
  return value ? fmt::format("{:.4g}", *value) : "null";
}

std::string PeersObject(const std::vector<Timing>& peers) {
  std::string object;
  for (const Timing& peer : peers)
    object +=
        fmt::format("{}{}: {:.4g}", object.empty() ? "" : ", ", Quoted(peer.name), peer.median);
  return "{" + object + "}";
}

std::string AgainstArray(const Result& result) {
  std::string array;
  if (result.goal)
    for (const std::string& name : result.goal->against)
      array += (array.empty() ? "" : ", ") + Quoted(name);
  return "[" + array + "]";
}

std::string JsonOf(const Result& result) {
  return fmt::format(
      "  {{\"area\": {}, \"case\": {}, \"threads\": {}, \"unit\": {}, \"ours\": {:.4g}, "
      "\"peers\": {}, \"against\": {}, \"limit\": {}, \"ratio\": {}}}",
      Quoted(result.area), Quoted(result.name), result.threads, Quoted(result.unit),
      result.ours.median, PeersObject(result.peers), AgainstArray(result),
      NumberOrNull(result.goal ? std::optional(result.goal->limit) : std::nullopt),
      NumberOrNull(result.Ratio()));
}

}  // namespace

void TablePrinter::PrintHead(int repetitions) const {
  fmt::print(
      "Medians of {} repetitions, ours and the peers in random order, threads pinned. A time is "
      "wall\n"
      "time per operation of one thread, also where two threads work at once. The ratio is ours\n"
      "divided by the fastest peer that the limit speaks of.\n\n",
      repetitions);
  fmt::print(layout, "case", "unit", "ours", "lowest..highest", "best", "ratio", "limit", "",
             "peers");
}

void TablePrinter::Print(const Result& result) {
  if (result.area != area_) fmt::print("\n{}\n", result.area);
  area_ = result.area;

  const Timing* best = result.BestPeer();
  fmt::print(layout, "  " + Title(result), result.unit, Number(result.ours.median),
             Spread(result.ours), NumberOrDash(best ? std::optional(best->median) : std::nullopt),
             NumberOrDash(result.Ratio()), Limit(result), Verdict(result), Peers(result));
  std::fflush(stdout);

  const std::optional<bool> met = result.Met();
  if (!met) return;
  if (*met) {
    ++met_;
  } else {
    missed_.push_back(result.area + ": " + Title(result));
  }
}

std::string TablePrinter::Verdict(const Result& result) const {
  const std::optional<bool> met = result.Met();
  if (!judges_ || !met) return "";
  return *met ? "met" : "MISSED";
}

void TablePrinter::PrintSummary() const {
  if (!judges_) {
    fmt::print("\nA smoke run: too short to judge.\n");
    return;
  }
  fmt::print("\n{} goals met, {} missed.\n", met_, missed_.size());
  for (const std::string& title : missed_) fmt::print("  missed  {}\n", title);
}

void WriteJson(const std::string& path, const std::vector<Result>& results) {
  std::ofstream file(path);
  file << "[\n";
  for (size_t i = 0; i < results.size(); ++i)
    file << JsonOf(results[i]) << (i + 1 < results.size() ? ",\n" : "\n");
  file << "]\n";
  file.close();
  Check(!file.fail(), "cannot write " + path);
}

}  // namespace zeb::bench
