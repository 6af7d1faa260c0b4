#include "check.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace zeb::bench {

void check(bool condition, std::string_view what) {
  if (condition) return;
  fmt::print(stderr, "{}: {}\n", program_invocation_short_name, what);
  std::exit(1);
}

}  // namespace zeb::bench
