#include "common/host/verdict.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "common/host/error_log.h"
#include "common/host/output.h"

namespace examples {

void Verdict::expect(bool condition, const std::string& problem) {
  if (!condition) problems_.push_back(problem);
}

void Verdict::expectReports(const std::vector<std::string>& messages) {
  const std::vector<std::string> told = takeErrorLog();
  expect(told == messages, fmt::format("the error report was told {} and not {}", told, messages));
}

void Verdict::expectNothingLive(const char* allocator, const AllocationCounts& counts) {
  expect(counts.liveBlocks == 0, fmt::format("{} blocks of the {} were not given back",
                                             grouped(counts.liveBlocks), allocator));
}

ExitStatus Verdict::conclude() const {
  if (problems_.empty()) {
    fmt::print("\nEvery step worked and nothing leaked.\n");
    return ExitStatus::success;
  }
  fmt::print("\nNot everything is as it must be:\n");
  for (const std::string& problem : problems_) fmt::print("  - {}\n", problem);
  return ExitStatus::failed;
}

}  // namespace examples
