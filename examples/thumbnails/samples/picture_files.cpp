#include "samples/picture_files.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "support/jpeg_library.h"

namespace examples {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& path) {
  throw std::runtime_error(path.string() + ": " + std::generic_category().message(errno));
}

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream stream(path, std::ios::binary);
  stream << bytes;
  stream.close();
  if (!stream) refuse(path);
}

std::string header(const char* magic, const Drawing& drawing, const char* maxval) {
  return std::string(magic) + "\n# drawn by a formula\n" + std::to_string(drawing.width) + " " +
         std::to_string(drawing.height) + "\n" + maxval + "\n";
}

struct CloseFile {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

}  // namespace

void writePpm(const std::filesystem::path& path, const Drawing& drawing) {
  std::string bytes = header("P6", drawing, "255");
  bytes.append(drawing.pixels.begin(), drawing.pixels.end());
  writeFile(path, bytes);
}

// Each sample twice: 0xabab of 65535 is 0xab of 255.
void writeDeepPpm(const std::filesystem::path& path, const Drawing& drawing) {
  std::string bytes = header("P6", drawing, "65535");
  for (const uint8_t sample : drawing.pixels) bytes.append(2, static_cast<char>(sample));
  writeFile(path, bytes);
}

void writePlainPpm(const std::filesystem::path& path, const Drawing& drawing) {
  std::string bytes = header("P3", drawing, "255");
  size_t onLine = 0;
  for (const uint8_t sample : drawing.pixels) {
    bytes += std::to_string(sample);
    bytes += ++onLine % 15 == 0 ? '\n' : ' ';
  }
  writeFile(path, bytes);
}

void writeJpeg(const std::filesystem::path& path, const Drawing& drawing, int quality,
               JpegKind kind) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "wb"));
  if (file == nullptr) refuse(path);
  jpeg_error_mgr errors;
  jpeg_compress_struct jpeg;
  jpeg.err = jpeg_std_error(&errors);  // ends the program, which has nothing better to do
  jpeg_create_compress(&jpeg);
  jpeg_stdio_dest(&jpeg, file.get());
  jpeg.image_width = drawing.width;
  jpeg.image_height = drawing.height;
  jpeg.input_components = 3;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  if (kind == JpegKind::grey) jpeg_set_colorspace(&jpeg, JCS_GRAYSCALE);
  if (kind == JpegKind::progressive) jpeg_simple_progression(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  while (jpeg.next_scanline < jpeg.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(drawing.row(jpeg.next_scanline));
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  if (std::fflush(file.get()) != 0) refuse(path);
}

}  // namespace examples
