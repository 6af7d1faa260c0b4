// The boundary of procs that answer with a value: whatever is thrown inside becomes null, 0 or
// nothing. Put ValueProc<&function>::call into the service table.
#ifndef ZEB_BASE_VALUE_BOUNDARY_H
#define ZEB_BASE_VALUE_BOUNDARY_H

namespace zeb {

template <auto Function>
struct ValueProc;

template <class Result, class... Arguments, bool NoThrow,
          Result (*Function)(Arguments...) noexcept(NoThrow)>
struct ValueProc<Function> {
  static Result call(Arguments... arguments) noexcept {
    if constexpr (NoThrow) {
      return Function(arguments...);
    } else {
      try {
        return Function(arguments...);
      } catch (...) {
        return Result();
      }
    }
  }
};

}  // namespace zeb

#endif
