// The boundary of procs that answer with an error handle: whatever is thrown inside becomes an
// error of which the caller owns one reference. The function behind such a proc returns nothing and
// raises; if it has an out argument, clearOut is the first thing that it calls. One that hands on
// the error of a client's procedure returns that and raises its own.
#ifndef ZEB_ERRORS_ERROR_BOUNDARY_H
#define ZEB_ERRORS_ERROR_BOUNDARY_H

#include <type_traits>

#include "base/failure.h"
#include "base/value_boundary.h"
#include "errors/error_object.h"

namespace zeb {

// Inside a catch block: the error of the current exception, with one more reference. What carries
// no error becomes "Unknown Kesto Error". Never null.
[[nodiscard]] ZEBErrorObject* translateCurrentException() noexcept;

// Refuses a null out argument and clears the one that is there.
template <class T>
void clearOut(T* out) {
  if (out == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  *out = {};
}

template <auto Function>
struct ErrorProc;

template <class... Arguments, void (*Function)(Arguments...)>
struct ErrorProc<Function> {
  static ZEBErrorObject* call(Arguments... arguments) noexcept {
    try {
      Function(arguments...);
      return nullptr;
    } catch (...) {
      return translateCurrentException();
    }
  }
};

template <class... Arguments, ZEBErrorObject* (*Function)(Arguments...)>
struct ErrorProc<Function> {
  static ZEBErrorObject* call(Arguments... arguments) noexcept {
    try {
      return Function(arguments...);
    } catch (...) {
      return translateCurrentException();
    }
  }
};

template <class Function>
inline constexpr bool kAnswersError = false;
template <class... Arguments>
inline constexpr bool kAnswersError<ZEBErrorObject* (*)(Arguments...)> = true;

// The boundary that a proc's type asks for: where the proc answers something and the function
// behind it nothing, the answer is the error; so it is where both answer an error.
template <class Proc, auto Function>
[[nodiscard]] constexpr Proc withBoundary() noexcept {
  if constexpr (kAnswersError<decltype(Function)> ||
                !std::is_convertible_v<decltype(&ValueProc<Function>::call), Proc>) {
    return &ErrorProc<Function>::call;
  } else {
    return &ValueProc<Function>::call;
  }
}

}  // namespace zeb

#endif
