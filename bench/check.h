#ifndef ZEB_BENCH_CHECK_H
#define ZEB_BENCH_CHECK_H

#include <string_view>

namespace zeb::bench {

// Ends the process with a message when a side answered wrongly: its result would mean nothing.
void check(bool condition, std::string_view what);

}  // namespace zeb::bench

#endif
