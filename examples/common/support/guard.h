// The barrier between a module's C++ and its callers: no exception leaves a proc.
#ifndef EXAMPLES_COMMON_SUPPORT_GUARD_H
#define EXAMPLES_COMMON_SUPPORT_GUARD_H

#include <exception>
#include <new>

#include "zeb/error.h"

namespace examples {

// Runs `body`, which returns an error handle, and turns what it throws into one: shortness of
// memory into the library's standard error, which exists already, anything else into an error of
// the given component and id.
template <class Body>
ZEBErrorObject* guarded(const ZEBErrorProcs& errors, const char* component, int32_t id,
                        const Body& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return errors.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
  } catch (const std::exception& failure) {
    return errors.NewError(failure.what(), component, id, nullptr, nullptr);
  } catch (...) {
    return errors.GetCoreError(ZEB_ERROR_UNKNOWN);
  }
}

}  // namespace examples

#endif
