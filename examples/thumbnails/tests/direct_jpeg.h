// JPEG files as the JPEG library itself writes and reads them, to compare with.
#ifndef THUMBNAILS_TESTS_DIRECT_JPEG_H
#define THUMBNAILS_TESTS_DIRECT_JPEG_H

#include <cstdint>
#include <string>
#include <vector>

namespace examples {

struct Pixels {
  uint32_t width;
  uint32_t height;
  uint32_t bytesPerPixel;
  std::vector<uint8_t> bytes;
};

std::string jpegOf(const Pixels& pixels, int quality);

// As red, green and blue.
Pixels pixelsOf(const std::string& jpeg);

// Four bytes per pixel, which no decoder of the example understands.
std::string cmykJpeg();

}  // namespace examples

#endif
