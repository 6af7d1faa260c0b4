// Error objects: a message, a component, an id and perhaps client data; counted, never changed.
#ifndef ZEB_ERRORS_ERROR_OBJECT_H
#define ZEB_ERRORS_ERROR_OBJECT_H

#include <atomic>
#include <cstdint>

#include "atoms/atom.h"
#include "base/live_objects.h"
#include "zeb/exports.h"
#include "zeb/types.h"

namespace zeb {
using InfoDelete = void (*)(void* info);
}

struct ZEBErrorObject {
  std::atomic<uint32_t> references{1};
  int32_t id = 0;
  zeb::atoms::Ref message;
  zeb::atoms::Ref component;
  void* info = nullptr;
  zeb::InfoDelete infoDelete = nullptr;
  // The host's procedure that the object's memory goes back through; null: the process's allocator.
  // Clients may hold an error over a restart, when another host's would be the wrong one.
  ZEBObjFree freeThrough = nullptr;
};

namespace zeb::errors {

// A new error with one reference for the caller and no client data. The host is not told. Raises
// what allocation raises.
[[nodiscard]] ZEBErrorObject* make(const char* message, const char* component, int32_t id);

// Null is ignored by both.
void addReference(ZEBErrorObject* error) noexcept;
void release(ZEBErrorObject* error) noexcept;

[[nodiscard]] LiveObjects live() noexcept;

// The same error with one more reference.
inline ZEBErrorObject* shared(ZEBErrorObject* error) noexcept {
  addReference(error);
  return error;
}

// Owns one reference.
class Ref {
 public:
  constexpr Ref() noexcept = default;
  // Takes the caller's reference over.
  explicit Ref(ZEBErrorObject* owned) noexcept : error_(owned) {}
  Ref(const Ref& other) noexcept : error_(shared(other.error_)) {}
  Ref(Ref&& other) noexcept : error_(std::exchange(other.error_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(error_, other.error_);
    return *this;
  }
  ~Ref() { release(error_); }

  [[nodiscard]] ZEBErrorObject* get() const noexcept { return error_; }
  [[nodiscard]] ZEBErrorObject* handOver() noexcept { return std::exchange(error_, nullptr); }

 private:
  ZEBErrorObject* error_ = nullptr;
};

}  // namespace zeb::errors

#endif
