// Shows what the passes over a folder did.
#ifndef THUMBNAILS_HOST_PASS_TABLE_H
#define THUMBNAILS_HOST_PASS_TABLE_H

#include <chrono>
#include <cstdint>
#include <vector>

#include "host/maker.h"

namespace examples {

struct Pass {
  Tallies done;           // by this pass alone
  int64_t cacheSize = 0;  // bytes kept at its end
  std::chrono::nanoseconds took{};
};

// What was done between two moments.
Tallies since(const Tallies& earlier, const Tallies& later);

void printPassTable(const std::vector<Pass>& passes);

}  // namespace examples

#endif
