// Results as a table on the terminal and as JSON.
#ifndef ZEB_BENCH_REPORT_H
#define ZEB_BENCH_REPORT_H

#include <string>
#include <vector>

#include "harness.h"

namespace zeb::bench {

// Prints rows as they come, a heading per area before the first of its rows.
class TablePrinter {
 public:
  // With `judges` off the verdicts stay away: a smoke run proves nothing about times.
  explicit TablePrinter(bool judges) : judges_(judges) {}

  void printHead(int repetitions) const;
  void print(const Result& result);
  // How many goals were met and which were not.
  void printSummary() const;

 private:
  std::string verdict(const Result& result) const;

  bool judges_;
  std::string area_;
  int met_ = 0;
  std::vector<std::string> missed_;
};

// Writes all results; ends the process with a message when the file cannot be written.
void writeJson(const std::string& path, const std::vector<Result>& results);

}  // namespace zeb::bench

#endif
