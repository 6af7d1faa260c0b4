// The boundary of procs that answer with an error handle: whatever is thrown inside becomes an
// error of which the caller owns one reference. Put ErrorProc<&function>::call into the service
// table.
//
// The function behind it returns nothing and raises. If the proc has an out argument, name its
// position: the boundary refuses a null one with "Missing ZEB Method" and clears it before anything
// can fail.
#ifndef ZEB_ERRORS_ERROR_BOUNDARY_H
#define ZEB_ERRORS_ERROR_BOUNDARY_H

#include <cstddef>
#include <tuple>

#include "base/failure.h"
#include "errors/error_object.h"

namespace zeb {

// Inside a catch block: the error of the current exception, with one more reference. What carries
// no error becomes "Unknown Kesto Error". Never null.
[[nodiscard]] ZEBErrorObject* translateCurrentException() noexcept;

inline constexpr size_t kNoOutArgument = static_cast<size_t>(-1);

template <auto Function, size_t OutArgument = kNoOutArgument>
struct ErrorProc;

template <class... Arguments, void (*Function)(Arguments...), size_t OutArgument>
struct ErrorProc<Function, OutArgument> {
  static ZEBErrorObject* call(Arguments... arguments) noexcept {
    try {
      if constexpr (OutArgument != kNoOutArgument) {
        auto* out = std::get<OutArgument>(std::tie(arguments...));
        if (out == nullptr) raiseStandardZeb(zebid::kMissingMethod);
        *out = {};
      }
      Function(arguments...);
      return nullptr;
    } catch (...) {
      return translateCurrentException();
    }
  }
};

}  // namespace zeb

#endif
