// Bodies that several streams share, and the cursors over them.
//
// A body is counted; each stream holds one reference and has a cursor of its own. Making a second
// stream over a body makes the body read-only, for ever: until then its only stream may change it,
// from then on nobody does, which is why reading needs no lock.
//
//   body      a position is valid
//   buffer    up to the end
//   memory    while it can be written anywhere, then up to the end
//   file      anywhere
//
// "Anywhere" ends before 2^63: what lies there is a subtraction that wrapped.
#ifndef ZEB_STREAMS_SHARED_STREAM_H
#define ZEB_STREAMS_SHARED_STREAM_H

#include <atomic>
#include <cstdint>
#include <utility>

#include "base/object_bases.h"
#include "memory/object_memory.h"
#include "streams/stream_impl.h"

namespace zeb::streams {

inline constexpr const char* kReadOnlyMessage = "Attempt to write read-only stream";

// What safe_shared_object counts. The first reference is the maker's.
class SharedStreamDataRef : public ZEB_T_MT::CZEBVirtualClientBasePMT {
 public:
  void addReference() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void dropReference() noexcept {
    // The only holder needs no atomic subtraction: nobody else can add a reference any more.
    if (references_.load(std::memory_order_acquire) != 1 &&
        references_.fetch_sub(1, std::memory_order_acq_rel) != 1) {
      return;
    }
    destroyObject(this);
  }

 private:
  std::atomic<uint32_t> references_{1};
};

// Holds one reference to an object of makeObject: adds one when it is copied, drops it at its end.
template <class Counted, class Object>
class safe_shared_object {
 public:
  // Takes the maker's reference over.
  explicit safe_shared_object(Object* made) noexcept : object_(made) {}
  safe_shared_object(const safe_shared_object& other) noexcept : object_(other.object_) {
    counted().addReference();
  }
  safe_shared_object(safe_shared_object&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)) {}
  safe_shared_object& operator=(const safe_shared_object&) = delete;
  ~safe_shared_object() {
    if (object_ != nullptr) counted().dropReference();
  }

  [[nodiscard]] Object* get() const noexcept { return object_; }
  Object* operator->() const noexcept { return object_; }

 private:
  [[nodiscard]] Counted& counted() const noexcept { return *object_; }

  Object* object_;
};

class SharedStreamData : public SharedStreamDataRef {
 public:
  [[nodiscard]] virtual uint64_t Begin() const noexcept { return 0; }
  [[nodiscard]] virtual uint64_t End() const = 0;
  [[nodiscard]] virtual bool IsValidPosition(uint64_t position) const noexcept = 0;

  [[nodiscard]] bool isReadOnly() const noexcept {
    return readOnly_.load(std::memory_order_relaxed);
  }
  // Threads that read the body may each do this at the same time.
  void makeReadOnly() noexcept { readOnly_.store(true, std::memory_order_relaxed); }

 protected:
  [[nodiscard]] static bool isBelowWrapping(uint64_t position) noexcept {
    return position <= INT64_MAX;
  }

 private:
  std::atomic<bool> readOnly_{false};
};

using SharedBody = safe_shared_object<SharedStreamDataRef, SharedStreamData>;

class SharedStreamDataStream : public PositionableStreamImpl {
 public:
  ZEBContainer* CreateIndependentlyRewindableStream() final {
    return CreateIndependentlyPositionableStream();
  }
  void Rewind() override { cursor_ = body_->Begin(); }
  uint64_t Mark() override { return cursor_; }
  // Leaves the cursor where it was when it fails.
  void Seek(int64_t offset, uint32_t origin) final;

 protected:
  explicit SharedStreamDataStream(SharedBody body) noexcept : body_(std::move(body)) {}

  [[nodiscard]] const SharedBody& body() const noexcept { return body_; }
  [[nodiscard]] uint64_t cursor() const noexcept { return cursor_; }
  void setCursor(uint64_t position) noexcept { cursor_ = position; }

 private:
  [[nodiscard]] uint64_t baseOf(uint32_t origin);

  const SharedBody body_;
  uint64_t cursor_ = 0;
};

}  // namespace zeb::streams

#endif
