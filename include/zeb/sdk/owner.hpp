// Owners: each holds one reference to an object of the library, or the object itself where there is
// one owner and no count, and gives it back. They can be moved and not copied; share() adds a
// reference where a second owner is wanted.
#ifndef ZEB_SDK_OWNER_HPP
#define ZEB_SDK_OWNER_HPP

#include <utility>

#include "zeb/sdk/binding.hpp"

namespace zeb::sdk {

// The only owner of something that is not counted, or of nothing. Ending says what it is and how it
// ends: its release is never called with null and must not throw.
template <class Ending>
class SoleOwner {
 public:
  // What is owned.
  using Handle = typename Ending::Handle;

  // Owns nothing.
  constexpr SoleOwner() noexcept = default;
  // Takes over what the caller owns; null is nothing.
  explicit SoleOwner(Handle* owned) noexcept : handle_(owned) {}
  SoleOwner(SoleOwner&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  SoleOwner& operator=(SoleOwner&& other) noexcept {
    SoleOwner(std::move(other)).swap(*this);
    return *this;
  }
  SoleOwner(const SoleOwner&) = delete;
  SoleOwner& operator=(const SoleOwner&) = delete;
  ~SoleOwner() { reset(); }

  // Still this owner's; for calls of procs.
  [[nodiscard]] Handle* get() const noexcept { return handle_; }
  // The caller's from now on.
  [[nodiscard]] Handle* handOver() noexcept { return std::exchange(handle_, nullptr); }
  // Whether anything is owned.
  explicit operator bool() const noexcept { return handle_ != nullptr; }

  // Gives back what is owned.
  void reset() noexcept {
    if (Handle* handle = std::exchange(handle_, nullptr)) Ending::release(handle);
  }
  // Exchanges what both own.
  void swap(SoleOwner& other) noexcept { std::swap(handle_, other.handle_); }

  // For procs that answer through an out argument. What was owned before is given back.
  [[nodiscard]] Handle** out() noexcept {
    reset();
    return &handle_;
  }

 private:
  Handle* handle_ = nullptr;
};

// One reference to an object, or none. Counting says how objects of the kind are counted: its
// addReference and release are never called with null, and release must not throw.
template <class Counting>
class Owner : public SoleOwner<Counting> {
 public:
  // The kind of object that is owned.
  using Handle = typename Counting::Handle;

  // Owns nothing.
  constexpr Owner() noexcept = default;

  // Takes over a reference that the caller owns.
  [[nodiscard]] static Owner adopt(Handle* handle) noexcept { return Owner(handle); }
  // Adds a reference to a handle that stays the caller's.
  [[nodiscard]] static Owner share(Handle* handle) {
    if (handle != nullptr) Counting::addReference(handle);
    return Owner(handle);
  }
  // Adds a reference for a second owner.
  [[nodiscard]] Owner share() const { return share(this->get()); }

 private:
  explicit Owner(Handle* handle) noexcept : SoleOwner<Counting>(handle) {}
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
