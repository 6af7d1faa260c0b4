// What the demo finds wrong on its way, and how it therefore ends.
#ifndef EXAMPLES_COMMON_HOST_VERDICT_H
#define EXAMPLES_COMMON_HOST_VERDICT_H

#include <string>
#include <vector>

#include "common/host/counting_allocator.h"
#include "common/host/failure.h"

namespace examples {

class Verdict {
 public:
  // Notes a problem unless the condition holds; the demo goes on and fails at its end.
  void expect(bool condition, const std::string& problem);

  // The same unless the error report was told exactly this since the last look.
  void expectReports(const std::vector<std::string>& messages);

  // The same unless every block was given back.
  void expectNothingLive(const char* allocator, const AllocationCounts& counts);

  // Prints whether all went well, or what did not.
  [[nodiscard]] ExitStatus conclude() const;

 private:
  std::vector<std::string> problems_;
};

}  // namespace examples

#endif
