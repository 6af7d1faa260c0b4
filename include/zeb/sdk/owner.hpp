// Owners: each holds one reference to an object of the library and gives it back. They can be moved
// and not copied; share() adds a reference where a second owner is wanted.
#ifndef ZEB_SDK_OWNER_HPP
#define ZEB_SDK_OWNER_HPP

#include <utility>

#include "zeb/sdk/binding.hpp"

namespace zeb::sdk {

// One reference to an object, or none. Counting says how objects of the kind are counted: its
// addReference and release are never called with null, and release must not throw.
template <class Counting>
class Owner {
 public:
  // The kind of object that is owned.
  using Handle = typename Counting::Handle;

  // Owns nothing.
  constexpr Owner() noexcept = default;
  Owner(Owner&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Owner& operator=(Owner&& other) noexcept {
    Owner(std::move(other)).swap(*this);
    return *this;
  }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() { reset(); }

  // Takes over a reference that the caller owns.
  [[nodiscard]] static Owner adopt(Handle* handle) noexcept { return Owner(handle); }
  // Adds a reference to a handle that stays the caller's.
  [[nodiscard]] static Owner share(Handle* handle) {
    if (handle != nullptr) Counting::addReference(handle);
    return Owner(handle);
  }
  // Adds a reference for a second owner.
  [[nodiscard]] Owner share() const { return share(handle_); }

  // Still this owner's; for calls of procs.
  [[nodiscard]] Handle* get() const noexcept { return handle_; }
  // The caller's from now on.
  [[nodiscard]] Handle* handOver() noexcept { return std::exchange(handle_, nullptr); }
  // Whether anything is owned.
  explicit operator bool() const noexcept { return handle_ != nullptr; }

  // Gives back what is owned.
  void reset() noexcept {
    if (Handle* handle = std::exchange(handle_, nullptr)) Counting::release(handle);
  }
  // Exchanges what both own.
  void swap(Owner& other) noexcept { std::swap(handle_, other.handle_); }

  // For procs that answer through an out argument. What was owned before is given back.
  [[nodiscard]] Handle** out() noexcept {
    reset();
    return &handle_;
  }

 private:
  explicit Owner(Handle* handle) noexcept : handle_(handle) {}

  Handle* handle_ = nullptr;
};

namespace detail {

// The usual counting: AddRef and Release of one interface. An object whose interface is gone cannot
// be given back any more; it is left where it is.
template <class HandleType, Interface I>
struct Counted {
  using Handle = HandleType;
  static void addReference(Handle* handle) { sdk::procs<I>().AddRef(handle); }
  static void release(Handle* handle) noexcept {
    if (const auto* procs = tryProcs<I>()) procs->Release(handle);
  }
};

struct AtomCounting {
  using Handle = ZEBString;
  static void addReference(Handle* handle) { sdk::procs<Strings>().AddRef(handle); }
  static void release(Handle* handle) noexcept {
    if (const auto* procs = tryProcs<Strings>()) procs->DeleteStringAtom(handle);
  }
};

}  // namespace detail

}  // namespace zeb::sdk

#endif
