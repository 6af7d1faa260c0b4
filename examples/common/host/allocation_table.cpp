#include "common/host/allocation_table.h"

#include <string>
#include <vector>

#include "common/host/counting_allocator.h"
#include "common/host/output.h"

namespace examples {
namespace {

std::vector<std::string> row(const char* allocator, const AllocationCounts& counts) {
  return {allocator, grouped(counts.allocations), grouped(counts.peakBytes),
          grouped(counts.liveBlocks), grouped(counts.liveBytes)};
}

}  // namespace

void printAllocationTable() {
  printTable({{"allocator"},
              {"allocations", Align::right},
              {"peak bytes", Align::right},
              {"live blocks", Align::right},
              {"live bytes", Align::right}},
             {row("memory procs", countsOfMemoryProcs()), row("page pair", countsOfPagePair())});
}

}  // namespace examples
