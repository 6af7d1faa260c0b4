// An error handle held for as long as a C++ object lives. An empty one is success.
#ifndef EXAMPLES_COMMON_SUPPORT_ERROR_H
#define EXAMPLES_COMMON_SUPPORT_ERROR_H

#include <cstdint>
#include <string>
#include <utility>

#include "common/support/services.h"

namespace examples {

class Error {
 public:
  // Takes over the handle that a proc returned; null is success.
  Error(const Services& services, ZEBErrorObject* owned) noexcept
      : services_(&services), error_(owned) {}

  Error(Error&& other) noexcept
      : services_(other.services_), error_(std::exchange(other.error_, nullptr)) {}
  Error& operator=(Error&&) = delete;
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;

  ~Error() { services_->errors.Release(error_); }

  // True if something failed.
  explicit operator bool() const noexcept { return error_ != nullptr; }

  // The texts live as long as this object. Empty, empty and 0 for a success.
  [[nodiscard]] const char* message() const {
    return text(services_->errors.GetErrorMessage(error_));
  }
  [[nodiscard]] const char* component() const {
    return text(services_->errors.GetComponent(error_));
  }
  [[nodiscard]] int32_t id() const { return services_->errors.GetID(error_); }

 private:
  [[nodiscard]] const char* text(ZEBString* atom) const {
    const char* const text = services_->strings.GetCString(atom);
    return text != nullptr ? text : "";
  }

  const Services* services_;
  ZEBErrorObject* error_;
};

// An error as a row tells it: what went wrong, who says so, and its number for programs.
inline std::string told(const Error& error) {
  return std::string(error.message()) + " (" + error.component() + " " +
         std::to_string(error.id()) + ")";
}

}  // namespace examples

#endif
