#include "samples/drawings.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace examples {
namespace {

struct Colour {
  double red;
  double green;
  double blue;
};

Colour mix(const Colour& a, const Colour& b, double share) {
  const auto between = [&](double x, double y) { return x + (y - x) * share; };
  return {between(a.red, b.red), between(a.green, b.green), between(a.blue, b.blue)};
}

uint8_t toByte(double value) {
  return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

// Asks for the colour of each pixel by its place, both coordinates from 0 to 1.
template <class ColourAt>
Drawing draw(uint32_t width, uint32_t height, const ColourAt& colourAt) {
  Drawing drawing{width, height, {}};
  drawing.pixels.reserve(size_t{width} * height * 3);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const Colour colour = colourAt((x + 0.5) / width, (y + 0.5) / height);
      for (const double part : {colour.red, colour.green, colour.blue}) {
        drawing.pixels.push_back(toByte(part));
      }
    }
  }
  return drawing;
}

constexpr Colour kHigh{0.16, 0.36, 0.72};
constexpr Colour kLow{0.98, 0.80, 0.62};

}  // namespace

Drawing drawHills(uint32_t width, uint32_t height) {
  return draw(width, height, [](double x, double y) {
    Colour colour = mix(kHigh, kLow, y);
    for (int ridge = 0; ridge < 4; ++ridge) {
      const double top = 0.45 + 0.13 * ridge + 0.08 * std::sin(7.0 * x + 2.1 * ridge) +
                         0.03 * std::sin(23.0 * x + 5.0 * ridge);
      if (y > top) colour = mix({0.45, 0.62, 0.55}, {0.05, 0.16, 0.12}, ridge / 3.0);
    }
    return colour;
  });
}

Drawing drawRings(uint32_t width, uint32_t height) {
  return draw(width, height, [](double x, double y) {
    const double distance = std::hypot(x - 0.5, y - 0.5);
    const double wave = 0.5 + 0.5 * std::cos(distance * 70.0);
    return mix({0.90, 0.30, 0.15}, {0.10, 0.08, 0.30}, wave);
  });
}

Drawing drawSky(uint32_t width, uint32_t height) {
  return draw(width, height, [](double x, double y) {
    const double sun = std::exp(-60.0 * (std::pow(x - 0.7, 2) + std::pow(y - 0.35, 2)));
    return mix(mix(kHigh, kLow, y * y), {1.0, 0.96, 0.80}, sun);
  });
}

Drawing drawTiles(uint32_t width, uint32_t height) {
  return draw(width, height, [](double x, double y) {
    const int column = static_cast<int>(x * 8.0);
    const int row = static_cast<int>(y * 6.0);
    return (column + row) % 2 == 0 ? Colour{0.92, 0.90, 0.84} : Colour{x, 0.35, y};
  });
}

Drawing drawJulia(uint32_t width, uint32_t height) {
  return draw(width, height, [](double x, double y) {
    constexpr int kMostSteps = 120;
    std::complex<double> z((x - 0.5) * 3.2, (y - 0.5) * 2.4);
    int steps = 0;
    while (steps < kMostSteps && std::norm(z) < 16.0) {
      z = z * z + std::complex<double>(-0.79, 0.156);
      ++steps;
    }
    const double share = std::sqrt(static_cast<double>(steps) / kMostSteps);
    return mix({0.02, 0.03, 0.12}, {0.98, 0.86, 0.42}, share);
  });
}

}  // namespace examples
