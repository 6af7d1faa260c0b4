// Errors as C++ knows them.
//
// An operation that can fail comes in two forms, and the caller chooses: `read(...)` throws
// Failure, `tryRead(...)` returns a Result, which holds the value or the Error.
#ifndef ZEB_SDK_ERROR_HPP
#define ZEB_SDK_ERROR_HPP

#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <variant>

#include "zeb/sdk/owner.hpp"

namespace zeb::sdk {

// An error object of the library, or none: a default-made one stands for success.
class Error : public Owner<detail::Counted<ZEBErrorObject, Errors>> {
 public:
  using Base = Owner<detail::Counted<ZEBErrorObject, Errors>>;

  Error() noexcept = default;
  // Takes over what a proc answered; null is success.
  explicit Error(ZEBErrorObject* answered) noexcept : Base(adopt(answered)) {}

  // A new error; the host's error-report procedure is told.
  [[nodiscard]] static Error make(const char* message, const char* component, int32_t id) {
    return Error(procs<Errors>().NewError(message, component, id, nullptr, nullptr));
  }
  [[nodiscard]] static Error make(const std::string& message, const char* component, int32_t id) {
    return make(message.c_str(), component, id);
  }

  [[nodiscard]] Error share() const { return Error(Base::share().handOver()); }

  // The texts live as long as the error; empty when there is none.
  [[nodiscard]] std::string_view message() const { return text(procs<Errors>().GetErrorMessage); }
  // The name of the component that failed.
  [[nodiscard]] std::string_view component() const { return text(procs<Errors>().GetComponent); }
  // The number within the component; 0 when there is no error.
  [[nodiscard]] int32_t id() const { return procs<Errors>().GetID(get()); }
  // Whether it is the component's error of that number.
  [[nodiscard]] bool is(std::string_view component, int32_t id) const {
    return this->id() == id && this->component() == component;
  }

 private:
  [[nodiscard]] std::string_view text(ZEBErrorGetMessageProc part) const {
    const char* text = get() != nullptr ? procs<Strings>().GetCString(part(get())) : nullptr;
    return text != nullptr ? text : "";
  }
};

// An Error on its way through C++.
class Failure : public std::exception {
 public:
  // Carries the error.
  explicit Failure(Error error) : error_(std::move(error)) {}
  Failure(const Failure& other) : std::exception(other), error_(other.error_.share()) {}
  Failure& operator=(const Failure&) = delete;

  // The error; it lives as long as the Failure.
  [[nodiscard]] const Error& error() const noexcept { return error_; }
  // The error's message.
  [[nodiscard]] const char* what() const noexcept override {
    try {
      const std::string_view message = error_.message();
      return message.data();  // an atom's text, zero-terminated
    } catch (...) {
      return "the library is gone";
    }
  }

 private:
  Error error_;
};

// What a proc answered: nothing happens on success, and anything else is thrown as Failure.
inline void check(ZEBErrorObject* answered) {
  if (answered != nullptr) [[unlikely]]
    throw Failure(Error(answered));
}

// A value, or the error that stands in its place.
template <class T>
class [[nodiscard]] Result {
 public:
  // NOLINTBEGIN(google-explicit-constructor): `return value;` and `return error;` are the point
  // A result that holds the value.
  Result(T value) : held_(std::in_place_index<0>, std::move(value)) {}
  // A result without a value.
  Result(Error error) : held_(std::in_place_index<1>, std::move(error)) {}
  // NOLINTEND(google-explicit-constructor)

  // Whether there is a value.
  [[nodiscard]] bool ok() const noexcept { return held_.index() == 0; }
  // The same.
  explicit operator bool() const noexcept { return ok(); }

  // The value; throws the error as Failure when there is none.
  [[nodiscard]] T& value() & {
    check();
    return *std::get_if<0>(&held_);
  }
  [[nodiscard]] T value() && {
    check();
    return std::move(*std::get_if<0>(&held_));
  }
  // Only when ok().
  [[nodiscard]] T& operator*() noexcept { return *std::get_if<0>(&held_); }
  // Only when ok().
  [[nodiscard]] T* operator->() noexcept { return std::get_if<0>(&held_); }
  // Only when not ok().
  [[nodiscard]] const Error& error() const noexcept { return *std::get_if<1>(&held_); }

 private:
  void check() {
    if (!ok()) [[unlikely]]
      throw Failure(std::move(*std::get_if<1>(&held_)));
  }

  std::variant<T, Error> held_;
};

// Success, or the error that stands in its place.
template <>
class [[nodiscard]] Result<void> {
 public:
  // Success.
  Result() noexcept = default;
  // A failure; success when there is no error.
  // NOLINTNEXTLINE(google-explicit-constructor): `return error;` is the point
  Result(Error error) noexcept : error_(std::move(error)) {}

  // Whether it is success.
  [[nodiscard]] bool ok() const noexcept { return !error_; }
  // The same.
  explicit operator bool() const noexcept { return ok(); }
  // Throws the error as Failure when there is one.
  void value() {
    if (!ok()) [[unlikely]]
      throw Failure(std::move(error_));
  }
  // Only when not ok().
  [[nodiscard]] const Error& error() const noexcept { return error_; }

 private:
  Error error_;
};

// Inside a catch block: the current exception as an error handle of which the caller owns one
// reference, for procs that answer with one. A Failure gives its own error; another exception
// becomes a new error with its text and `component`.
[[nodiscard]] inline ZEBErrorObject* currentExceptionAsError(
    const char* component = "C++") noexcept {
  const auto* errors = tryProcs<Errors>();
  if (errors == nullptr) return nullptr;
  try {
    throw;
  } catch (const Failure& failure) {
    errors->AddRef(failure.error().get());
    return failure.error().get();
  } catch (const std::bad_alloc&) {
    return errors->GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
  } catch (const std::exception& failure) {
    return errors->NewError(failure.what(), component, 0, nullptr, nullptr);
  } catch (...) {
    return errors->GetCoreError(ZEB_ERROR_UNKNOWN);
  }
}

}  // namespace zeb::sdk

#endif
