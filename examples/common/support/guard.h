// The barrier between a module's C++ and its callers: no exception leaves a proc.
#ifndef EXAMPLES_COMMON_SUPPORT_GUARD_H
#define EXAMPLES_COMMON_SUPPORT_GUARD_H

#include <cstdint>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "common/support/raised_error.h"
#include "zeb/error.h"

namespace examples {

// Thrown by a module for a failure that has an id of its own.
class CodedError : public std::runtime_error {
 public:
  CodedError(int32_t id, const std::string& message) : std::runtime_error(message), id_(id) {}

  [[nodiscard]] int32_t id() const noexcept { return id_; }

 private:
  int32_t id_;
};

// Runs `body`, which returns an error handle, and turns what it throws into one: an error that
// another proc returned is passed on, shortness of memory becomes the library's standard error,
// which exists already, anything else an error of the component, with its own id or the given one.
template <class Body>
ZEBErrorObject* guarded(const ZEBErrorProcs& errors, const char* component, int32_t id,
                        const Body& body) noexcept {
  try {
    return body();
  } catch (RaisedError& error) {
    return error.release();
  } catch (const std::bad_alloc&) {
    return errors.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
  } catch (const CodedError& failure) {
    return errors.NewError(failure.what(), component, failure.id(), nullptr, nullptr);
  } catch (const std::exception& failure) {
    return errors.NewError(failure.what(), component, id, nullptr, nullptr);
  } catch (...) {
    return errors.GetCoreError(ZEB_ERROR_UNKNOWN);
  }
}

}  // namespace examples

#endif
