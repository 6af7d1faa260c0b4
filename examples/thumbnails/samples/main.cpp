// draw_samples: draws the pictures that the example works on, into a folder. The same on each run.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "samples/drawings.h"
#include "samples/picture_files.h"

namespace {

namespace fs = std::filesystem;
using namespace examples;

void drawAll(const fs::path& folder) {
  fs::create_directories(folder);
  writePpm(folder / "hills.ppm", drawHills(640, 400));
  writePpm(folder / "rings.ppm", drawRings(500, 500));
  writeDeepPpm(folder / "sky 16 bit.ppm", drawSky(480, 320));
  writePlainPpm(folder / "tiles plain.ppm", drawTiles(160, 120));
  writePpm(folder / "small.ppm", drawTiles(20, 12));
  writeJpeg(folder / "hills.jpg", drawHills(1200, 750), 90, JpegKind::baseline);
  writeJpeg(folder / "julia.jpg", drawJulia(1024, 768), 85, JpegKind::progressive);
  writeJpeg(folder / "rings tall.JPG", drawRings(300, 900), 90, JpegKind::baseline);
  writeJpeg(folder / "sky grey.jpeg", drawSky(800, 600), 80, JpegKind::grey);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    static_cast<void>(std::fputs("usage: draw_samples FOLDER\n", stderr));
    return 2;
  }
  try {
    drawAll(argv[1]);
  } catch (const std::exception& failure) {
    static_cast<void>(std::fprintf(stderr, "draw_samples: %s\n", failure.what()));
    return 1;
  }
  return 0;
}
