// Bytes that are handed from module to module without copying, held for as long as a C++ object
// lives.
#ifndef EXAMPLES_COMMON_SUPPORT_SHARED_BUFFER_H
#define EXAMPLES_COMMON_SUPPORT_SHARED_BUFFER_H

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "common/support/handle.h"
#include "zeb/shared_buffer.h"

namespace examples {

// The bytes of a buffer, as long as somebody holds the buffer.
inline std::string_view bytesOf(const ZEBSharedBufferProcs& procs, ZEBSharedBuffer* buffer) {
  return {static_cast<const char*>(procs.GetBuffer(buffer)), procs.GetSize(buffer)};
}

class SharedBuffer
    : public Handle<ZEBSharedBuffer, ZEBSharedBufferProcs, &ZEBSharedBufferProcs::Release> {
 public:
  using Handle::Handle;

  // A buffer that keeps the text alive and shares its bytes where they stand. Throws
  // std::bad_alloc.
  static SharedBuffer keep(const ZEBSharedBufferProcs& procs, std::string text) {
    auto kept = std::make_unique<std::string>(std::move(text));
    ZEBSharedBuffer* const buffer =
        procs.NewBuffer(kept->size(), kept->data(), deleteText, nullptr, kept.get());
    if (buffer == nullptr) throw std::bad_alloc();
    static_cast<void>(kept.release());  // the buffer's from here on
    return {procs, buffer};
  }

  // Empty for no buffer.
  [[nodiscard]] std::string_view bytes() const {
    return get() != nullptr ? bytesOf(procs(), get()) : std::string_view();
  }

 private:
  // Called with the delete context: the string, not its bytes.
  static void deleteText(void* text) { delete static_cast<std::string*>(text); }
};

}  // namespace examples

#endif
