// Smaller pictures by averaging.
#ifndef THUMBNAILS_SCALER_SCALING_H
#define THUMBNAILS_SCALER_SCALING_H

#include <cstdint>
#include <span>

namespace examples {

struct Extent {
  uint32_t width;
  uint32_t height;

  friend bool operator==(const Extent&, const Extent&) = default;
};

// The extent of a picture that has no side longer than `edge` and the proportions of the original.
Extent fitInto(Extent original, uint32_t edge);

// Fills `scaled` with the mean colours of what each of its pixels covers in the original. Neither
// side may be longer than the original's. Three bytes per pixel, in both.
void scaleDown(std::span<const uint8_t> original, Extent from, std::span<uint8_t> scaled,
               Extent to);

}  // namespace examples

#endif
