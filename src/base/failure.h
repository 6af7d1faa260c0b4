// How a failure is raised, for rooms that stand below the error service. The error service defines
// these; each throws and does not return. They are cold: what calls them is kept out of the way of
// the calls that succeed.
#ifndef ZEB_BASE_FAILURE_H
#define ZEB_BASE_FAILURE_H

#include <cstdint>

namespace zeb {

// Ids of the standard errors of component "KST".
namespace kst {
inline constexpr int32_t kUnknown = 0;
inline constexpr int32_t kOutOfMemory = 1;
inline constexpr int32_t kEmpty = 2;
inline constexpr int32_t kCorruptData = 3;
}  // namespace kst

// Ids of the standard errors of component "ZEB".
namespace zebid {
inline constexpr int32_t kMissingMethod = 0;
}

inline constexpr const char* kMathOverflowMessage = "Math overflow exception";
inline constexpr const char* kMemoryCopyMessage = "Memory Copy Error";

// A standard error. Allocates nothing.
[[noreturn, gnu::cold]] void raiseStandardKst(int32_t id);
[[noreturn, gnu::cold]] void raiseStandardZeb(int32_t id);

// A new error of component "KST" or "ZEB"; a null message means that of the standard error `id`.
[[noreturn, gnu::cold]] void raiseNewKst(int32_t id, const char* message);
[[noreturn, gnu::cold]] void raiseNewZeb(int32_t id, const char* message);

}  // namespace zeb

#endif
