// The standard errors, made when the library starts so that raising them needs no memory.
//
//   component "KST"  0 "Unknown Kesto Error"   1 "Out of Memory"   2 ""   3 "Corrupt Data"
//   component "ZEB"  0 "Missing ZEB Method"
//
// The tables are written only while one thread starts or stops the library. If making them fails,
// the library goes on with empty tables; a failure that is raised then is carried by a last-resort
// error without texts, so that it is never mistaken for success.
#ifndef ZEB_ERRORS_STANDARD_ERRORS_H
#define ZEB_ERRORS_STANDARD_ERRORS_H

#include <cstdint>

#include "errors/error_object.h"

namespace zeb::errors {

inline constexpr const char* kKstComponent = "KST";
inline constexpr const char* kZebComponent = "ZEB";

// Fills both tables anew, or leaves both empty.
void makeStandardErrors() noexcept;
void releaseStandardErrors() noexcept;

// The table's entry, with no reference added. "KST": ids of 4 and above give id 0. "ZEB": ids of 1
// and above give "KST" id 0. Null while the tables are empty.
[[nodiscard]] ZEBErrorObject* standardKst(int32_t id) noexcept;
[[nodiscard]] ZEBErrorObject* standardZeb(int32_t id) noexcept;

// The same, or the last-resort error instead of null.
[[nodiscard]] ZEBErrorObject* raisableKst(int32_t id) noexcept;
[[nodiscard]] ZEBErrorObject* raisableZeb(int32_t id) noexcept;

// The text of a standard error, whether or not the tables are filled.
[[nodiscard]] const char* standardKstMessage(int32_t id) noexcept;
[[nodiscard]] const char* standardZebMessage(int32_t id) noexcept;

}  // namespace zeb::errors

#endif
