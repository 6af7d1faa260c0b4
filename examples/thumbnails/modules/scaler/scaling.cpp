#include "modules/scaler/scaling.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace examples {
namespace {

constexpr size_t kChannels = 3;

// One side of the picture, measured so that both old and new pixels have whole lengths: an old
// pixel is as long as there are new ones, a new pixel as long as there are old ones.
class Side {
 public:
  Side(uint32_t from, uint32_t to) : from_(from), to_(to) {}

  // The old pixels that a new one covers, wholly or in part.
  [[nodiscard]] uint64_t first(uint64_t pixel) const { return pixel * from_ / to_; }
  [[nodiscard]] uint64_t last(uint64_t pixel) const { return ((pixel + 1) * from_ - 1) / to_; }

  // How much of an old pixel a new one covers.
  [[nodiscard]] uint64_t overlap(uint64_t pixel, uint64_t old) const {
    return std::min((pixel + 1) * from_, (old + 1) * to_) - std::max(pixel * from_, old * to_);
  }

 private:
  uint64_t from_;
  uint64_t to_;
};

}  // namespace

Extent fitInto(Extent original, uint32_t edge) {
  const uint32_t longest = std::max(original.width, original.height);
  if (longest <= edge) return original;
  const auto fitted = [&](uint32_t side) {
    const uint64_t nearest = (uint64_t{side} * edge + longest / 2) / longest;
    return static_cast<uint32_t>(std::max<uint64_t>(nearest, 1));
  };
  return {fitted(original.width), fitted(original.height)};
}

void scaleDown(std::span<const uint8_t> original, Extent from, std::span<uint8_t> scaled,
               Extent to) {
  const Side across(from.width, to.width);
  const Side down(from.height, to.height);
  // What a new pixel covers, in the units of Side: each of them covers as much.
  const uint64_t area = uint64_t{from.width} * from.height;
  std::vector<std::array<uint64_t, kChannels>> sums(to.width);
  for (uint64_t y = 0; y < to.height; ++y) {
    std::fill(sums.begin(), sums.end(), std::array<uint64_t, kChannels>{});
    for (uint64_t oldY = down.first(y); oldY <= down.last(y); ++oldY) {
      const uint64_t height = down.overlap(y, oldY);
      for (uint64_t x = 0; x < to.width; ++x) {
        for (uint64_t oldX = across.first(x); oldX <= across.last(x); ++oldX) {
          const uint64_t weight = height * across.overlap(x, oldX);
          const uint8_t* const pixel = &original[(oldY * from.width + oldX) * kChannels];
          for (size_t i = 0; i < kChannels; ++i) sums[x][i] += weight * pixel[i];
        }
      }
    }
    for (uint64_t x = 0; x < to.width; ++x) {
      uint8_t* const pixel = &scaled[(y * to.width + x) * kChannels];
      for (size_t i = 0; i < kChannels; ++i) {
        pixel[i] = static_cast<uint8_t>((sums[x][i] + area / 2) / area);
      }
    }
  }
}

}  // namespace examples
