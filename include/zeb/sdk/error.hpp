// Errors as C++ knows them.
//
// An operation that can fail comes in two forms, and the caller chooses: `read(...)` throws
// Failure, `tryRead(...)` returns a Result, which holds the value or the Error.
#ifndef ZEB_SDK_ERROR_HPP
#define ZEB_SDK_ERROR_HPP

#include <exception>
#include <memory>
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

// An Error on its way through C++. Its text outlives the library, so that a handler behind the
// library's stop still learns what happened.
class Failure : public std::exception {
 public:
  // Takes the error over.
  explicit Failure(Error error) : shared_(std::make_shared<const Shared>(std::move(error))) {}

  // The error; it lives as long as this Failure and its copies.
  [[nodiscard]] const Error& error() const noexcept { return shared_->error; }
  // The error's message.
  [[nodiscard]] const char* what() const noexcept override { return shared_->text.c_str(); }

 private:
  struct Shared {
    explicit Shared(Error owned) : error(std::move(owned)), text(textOf(error)) {}

    static std::string textOf(const Error& error) {
      try {
        return std::string(error.message());
      } catch (const MissingInterface&) {
        return "the library is gone";
      }
    }

    Error error;
    std::string text;
  };

  std::shared_ptr<const Shared> shared_;
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
      throw Failure(std::get_if<1>(&held_)->share());
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
      throw Failure(error_.share());
  }
  // Only when not ok().
  [[nodiscard]] const Error& error() const noexcept { return error_; }

 private:
  Error error_;
};

namespace detail {

// The standard error that stands for one that cannot be told. Null only for a module that has never
// been attached.
inline ZEBErrorObject* standardError(int32_t id) noexcept {
  const ZEBGetCoreErrorProc find = attachment.coreError();
  return find != nullptr ? find(id) : nullptr;
}

}  // namespace detail

// Inside a catch block: the current exception as an error handle of which the caller owns one
// reference, for procs that answer with one. A Failure gives its own error; another exception
// becomes a new error with its text and `component`. What cannot be told, because memory is short
// or the module is detached by now, becomes a standard error: never null, which would mean success.
[[nodiscard]] inline ZEBErrorObject* currentExceptionAsError(
    const char* component = "C++") noexcept {
  const auto* errors = tryProcs<Errors>();
  if (errors == nullptr) return detail::standardError(ZEB_ERROR_UNKNOWN);
  try {
    throw;
  } catch (const Failure& failure) {
    ZEBErrorObject* error = failure.error().get();
    if (error == nullptr) return detail::standardError(ZEB_ERROR_UNKNOWN);
    errors->AddRef(error);
    return error;
  } catch (const std::bad_alloc&) {
    return detail::standardError(ZEB_ERROR_OUT_OF_MEMORY);
  } catch (const std::exception& failure) {
    ZEBErrorObject* error = errors->NewError(failure.what(), component, 0, nullptr, nullptr);
    return error != nullptr ? error : detail::standardError(ZEB_ERROR_OUT_OF_MEMORY);
  } catch (...) {
    return detail::standardError(ZEB_ERROR_UNKNOWN);
  }
}

}  // namespace zeb::sdk

#endif
