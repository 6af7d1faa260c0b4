#include "tests/direct_jpeg.h"

#include <cstdlib>

#include "support/jpeg_library.h"

namespace examples {
namespace {

// A failure ends the program: the JPEG library's own error procedure does so, and it suits a test.
std::string encoded(const Pixels& pixels, int quality, J_COLOR_SPACE space) {
  jpeg_error_mgr errors;
  jpeg_compress_struct jpeg;
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = pixels.width;
  jpeg.image_height = pixels.height;
  jpeg.input_components = static_cast<int>(pixels.bytesPerPixel);
  jpeg.in_color_space = space;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  const size_t rowSize = size_t{pixels.width} * pixels.bytesPerPixel;
  std::vector<uint8_t> row(rowSize);
  while (jpeg.next_scanline < jpeg.image_height) {
    const auto from = pixels.bytes.begin() + static_cast<ptrdiff_t>(jpeg.next_scanline * rowSize);
    row.assign(from, from + static_cast<ptrdiff_t>(rowSize));
    JSAMPROW rows = row.data();
    jpeg_write_scanlines(&jpeg, &rows, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::string result(reinterpret_cast<const char*>(bytes), size);
  std::free(bytes);
  return result;
}

}  // namespace

std::string jpegOf(const Pixels& pixels, int quality) {
  return encoded(pixels, quality, pixels.bytesPerPixel == 1 ? JCS_GRAYSCALE : JCS_RGB);
}

Pixels pixelsOf(const std::string& jpegFile) {
  jpeg_error_mgr errors;
  jpeg_decompress_struct jpeg;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(jpegFile.data()), jpegFile.size());
  jpeg_read_header(&jpeg, TRUE);
  jpeg.out_color_space = JCS_RGB;
  jpeg_start_decompress(&jpeg);
  Pixels pixels{jpeg.output_width, jpeg.output_height, 3, {}};
  const size_t rowSize = size_t{jpeg.output_width} * 3;
  pixels.bytes.resize(rowSize * jpeg.output_height);
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW rows = &pixels.bytes[jpeg.output_scanline * rowSize];
    jpeg_read_scanlines(&jpeg, &rows, 1);
  }
  jpeg_finish_decompress(&jpeg);
  jpeg_destroy_decompress(&jpeg);
  return pixels;
}

std::string cmykJpeg() { return encoded({8, 8, 4, std::vector<uint8_t>(256, 100)}, 75, JCS_CMYK); }

}  // namespace examples
