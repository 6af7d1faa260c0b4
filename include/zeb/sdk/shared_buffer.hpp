// Shared buffers: bytes of a fixed size that several owners hold.
#ifndef ZEB_SDK_SHARED_BUFFER_HPP
#define ZEB_SDK_SHARED_BUFFER_HPP

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "zeb/sdk/error.hpp"

namespace zeb::sdk {

// A block of bytes, and one reference to it.
class SharedBuffer : public Owner<detail::Counted<ZEBSharedBuffer, SharedBuffers>> {
 public:
  using Base = Owner<detail::Counted<ZEBSharedBuffer, SharedBuffers>>;

  SharedBuffer() noexcept = default;
  // Takes a reference over.
  explicit SharedBuffer(ZEBSharedBuffer* owned) noexcept : Base(adopt(owned)) {}

  // A buffer of the library's own memory, not cleared. Throws std::bad_alloc.
  [[nodiscard]] static SharedBuffer make(uint64_t size) {
    return made(procs<SharedBuffers>().NewBuffer(size, nullptr, nullptr, nullptr, nullptr));
  }

  // A buffer over the vector's own bytes; nothing is copied. Throws std::bad_alloc.
  [[nodiscard]] static SharedBuffer over(std::vector<std::byte> bytes) {
    if (bytes.empty()) return make(0);
    auto kept = std::make_unique<std::vector<std::byte>>(std::move(bytes));
    const auto end = [](void* vector) { delete static_cast<std::vector<std::byte>*>(vector); };
    SharedBuffer buffer = made(
        procs<SharedBuffers>().NewBuffer(kept->size(), kept->data(), end, nullptr, kept.get()));
    (void)kept.release();
    return buffer;
  }

  [[nodiscard]] SharedBuffer share() const { return SharedBuffer(Base::share().handOver()); }

  // Empty when there is no buffer.
  [[nodiscard]] std::span<std::byte> bytes() const {
    if (get() == nullptr) return {};
    const auto& buffers = procs<SharedBuffers>();
    return {static_cast<std::byte*>(buffers.GetBuffer(get())), buffers.GetSize(get())};
  }

 private:
  static SharedBuffer made(ZEBSharedBuffer* buffer) {
    if (buffer == nullptr) throw std::bad_alloc();
    return SharedBuffer(buffer);
  }
};

}  // namespace zeb::sdk

#endif
