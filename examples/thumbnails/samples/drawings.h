// Pictures that are drawn by a formula.
#ifndef THUMBNAILS_SAMPLES_DRAWINGS_H
#define THUMBNAILS_SAMPLES_DRAWINGS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace examples {

// Red, green and blue, a byte each, row by row from the top.
struct Drawing {
  uint32_t width;
  uint32_t height;
  std::vector<uint8_t> pixels;

  [[nodiscard]] const uint8_t* row(uint32_t y) const { return &pixels[size_t{y} * width * 3]; }
};

Drawing drawHills(uint32_t width, uint32_t height);
Drawing drawRings(uint32_t width, uint32_t height);
Drawing drawSky(uint32_t width, uint32_t height);
Drawing drawTiles(uint32_t width, uint32_t height);
Drawing drawJulia(uint32_t width, uint32_t height);

}  // namespace examples

#endif
