#include "host/pass_table.h"

#include <fmt/format.h>

#include <string>

#include "common/host/output.h"

namespace examples {
namespace {

std::string milliseconds(std::chrono::nanoseconds time) {
  return fmt::format("{:.1f} ms", std::chrono::duration<double, std::milli>(time).count());
}

Lookups since(const Lookups& earlier, const Lookups& later) {
  return {later.hits - earlier.hits, later.misses - earlier.misses};
}

std::vector<std::string> row(size_t number, const Pass& pass) {
  const Tallies& done = pass.done;
  return {fmt::to_string(number),
          grouped(done.thumbnails.hits),
          grouped(done.thumbnails.misses),
          grouped(done.pictures.hits),
          grouped(done.pictures.misses),
          grouped(done.evictions),
          grouped(static_cast<uint64_t>(pass.cacheSize)),
          milliseconds(pass.took),
          milliseconds(done.saved)};
}

}  // namespace

Tallies since(const Tallies& earlier, const Tallies& later) {
  return {since(earlier.thumbnails, later.thumbnails), since(earlier.pictures, later.pictures),
          later.evictions - earlier.evictions,         later.filesWritten - earlier.filesWritten,
          later.bytesWritten - earlier.bytesWritten,   later.saved - earlier.saved};
}

void printPassTable(const std::vector<Pass>& passes) {
  std::vector<std::vector<std::string>> rows;
  for (const Pass& pass : passes) rows.push_back(row(rows.size() + 1, pass));
  printTable({{"pass"},
              {"thumbnail hits", Align::right},
              {"misses", Align::right},
              {"picture hits", Align::right},
              {"misses", Align::right},
              {"evictions", Align::right},
              {"bytes kept", Align::right},
              {"took", Align::right},
              {"saved", Align::right}},
             rows);
}

}  // namespace examples
