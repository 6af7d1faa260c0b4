// A picture held for as long as a C++ object lives.
#ifndef THUMBNAILS_SUPPORT_PICTURE_H
#define THUMBNAILS_SUPPORT_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

#include "common/support/shared_buffer.h"
#include "interfaces/picture.h"

namespace examples {

// The bytes of so many pixels. Their number must be within THUMBNAILS_MOST_PIXELS.
constexpr size_t bytesOfPixels(uint64_t pixels) { return pixels * THUMBNAILS_BYTES_PER_PIXEL; }

class Picture {
 public:
  Picture() = default;

  // A picture whose pixels are yet to be filled. Throws std::bad_alloc.
  Picture(const ZEBSharedBufferProcs& procs, uint32_t width, uint32_t height)
      : procs_(&procs),
        width_(width),
        height_(height),
        pixels_(procs, procs.NewBuffer(bytesOfPixels(uint64_t{width} * height), nullptr, nullptr,
                                       nullptr, nullptr)) {
    if (pixels_.get() == nullptr) throw std::bad_alloc();
  }

  // Takes over the reference that comes with the picture of a proc.
  Picture(const ZEBSharedBufferProcs& procs, const ThumbnailsPicture& owned)
      : procs_(&procs), width_(owned.width), height_(owned.height), pixels_(procs, owned.pixels) {}

  [[nodiscard]] uint32_t width() const noexcept { return width_; }
  [[nodiscard]] uint32_t height() const noexcept { return height_; }

  // While the picture is not empty.
  [[nodiscard]] std::span<uint8_t> pixels() const {
    return {static_cast<uint8_t*>(procs_->GetBuffer(pixels_.get())),
            procs_->GetSize(pixels_.get())};
  }

  // The picture as an argument: it stays this object's.
  [[nodiscard]] ThumbnailsPicture lent() const noexcept { return {width_, height_, pixels_.get()}; }

  // Hands the picture to the caller, as when it leaves through an out argument.
  [[nodiscard]] ThumbnailsPicture release() noexcept {
    return {width_, height_, pixels_.release()};
  }

 private:
  const ZEBSharedBufferProcs* procs_ = nullptr;
  uint32_t width_ = 0;
  uint32_t height_ = 0;
  SharedBuffer pixels_;
};

}  // namespace examples

#endif
