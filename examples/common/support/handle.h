// A reference to an object of the library, given back when the C++ object goes.
#ifndef EXAMPLES_COMMON_SUPPORT_HANDLE_H
#define EXAMPLES_COMMON_SUPPORT_HANDLE_H

#include <utility>

namespace examples {

// Procs is the struct of fetched procs that serves this kind of object, Release its member that
// gives a reference back. The procs must outlive the handle.
template <class Object, class Procs, void (*Procs::*Release)(Object*)>
class Handle {
 public:
  Handle() = default;

  // Takes over one reference that the caller owns; null is an empty handle.
  Handle(const Procs& procs, Object* owned) noexcept : procs_(&procs), object_(owned) {}

  Handle(Handle&& other) noexcept : procs_(other.procs_), object_(other.release()) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(procs_, other.procs_);
    std::swap(object_, other.object_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  ~Handle() {
    if (object_ != nullptr) (procs_->*Release)(object_);
  }

  [[nodiscard]] Object* get() const noexcept { return object_; }

  // Hands the reference to the caller, as when an object leaves through an out argument.
  [[nodiscard]] Object* release() noexcept { return std::exchange(object_, nullptr); }

 protected:
  // Only while the handle is not empty.
  [[nodiscard]] const Procs& procs() const noexcept { return *procs_; }

 private:
  const Procs* procs_ = nullptr;
  Object* object_ = nullptr;
};

}  // namespace examples

#endif
