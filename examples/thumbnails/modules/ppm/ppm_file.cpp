#include "modules/ppm/ppm_file.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "support/decoder_module.h"

namespace examples {
namespace {

// The largest sample value that the format allows.
constexpr uint32_t kMostMaxval = 65535;

// No number of a header or a sample needs more digits than this; longer ones are not read on.
constexpr size_t kMostDigits = 9;

constexpr bool isSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool isDigit(int c) { return c >= '0' && c <= '9'; }

// The bytes of a stream, one by one, for the parts of a file that are text.
class Scanner {
 public:
  static constexpr int kEnd = -1;

  explicit Scanner(const Stream& stream) : stream_(stream) {}

  // The next byte, or kEnd.
  int next() {
    if (at_ == filled_) {
      filled_ = stream_.read(buffer_);
      at_ = 0;
      if (filled_ == 0) return kEnd;
    }
    return std::to_integer<int>(buffer_[at_++]);
  }

  // The next number, after spaces and comments. Takes the one byte after it as well, which is a
  // space or the end.
  uint32_t number(const char* what) {
    int c = nextOfText();
    while (isSpace(c)) c = nextOfText();
    if (!isDigit(c)) refuseAsDamaged(std::string("there is no ") + what);
    uint32_t value = 0;
    for (size_t digits = 0; isDigit(c); ++digits) {
      if (digits == kMostDigits) refuseAsDamaged(std::string(what) + " has too many digits");
      value = value * 10 + static_cast<uint32_t>(c - '0');
      c = nextOfText();
    }
    if (!isSpace(c) && c != kEnd) refuseAsDamaged(std::string(what) + " is no number");
    return value;
  }

  // The bytes that are not read yet.
  [[nodiscard]] uint64_t remaining() const { return filled_ - at_ + stream_.remaining(); }

  // As many of the bytes as there are; returns their number.
  size_t read(std::span<std::byte> bytes) {
    size_t done = 0;
    while (done < bytes.size() && at_ < filled_) bytes[done++] = buffer_[at_++];
    return done + stream_.read(bytes.subspan(done));
  }

 private:
  // A comment counts as the end of its line.
  int nextOfText() {
    int c = next();
    if (c != '#') return c;
    while (c != '\n' && c != '\r' && c != kEnd) c = next();
    return c;
  }

  const Stream& stream_;
  std::array<std::byte, 16384> buffer_{};
  size_t filled_ = 0;
  size_t at_ = 0;
};

struct Header {
  bool plain = false;  // P3
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t maxval = 0;

  [[nodiscard]] uint64_t samples() const {
    return uint64_t{width} * height * THUMBNAILS_BYTES_PER_PIXEL;
  }
  [[nodiscard]] unsigned bytesPerSample() const { return maxval > 255 ? 2 : 1; }
};

Header readHeader(Scanner& scanner) {
  Header header;
  const int first = scanner.next();
  const int second = scanner.next();
  if (first != 'P' || (second != '3' && second != '6')) {
    refuseAsDamaged("this is no portable pixel map");
  }
  header.plain = second == '3';
  header.width = scanner.number("width");
  header.height = scanner.number("height");
  header.maxval = scanner.number("maxval");
  requirePossibleSize(header.width, header.height);
  if (header.maxval == 0 || header.maxval > kMostMaxval) {
    refuseAsDamaged("a maxval of " + std::to_string(header.maxval));
  }
  return header;
}

[[noreturn]] void refuseAsShort(uint64_t there, uint64_t needed) {
  refuseAsDamaged("the file ends after " + std::to_string(there) + " of " + std::to_string(needed) +
                  " bytes of samples");
}

// Before memory is taken for samples that are not there.
void requireSamples(const Header& header, const Scanner& scanner) {
  // A plain sample is a digit at least, and a space between two of them.
  const uint64_t needed =
      header.plain ? header.samples() * 2 - 1 : header.samples() * header.bytesPerSample();
  const uint64_t there = scanner.remaining();
  if (there < needed) refuseAsShort(there, needed);
}

// Samples of any maxval as bytes, to the nearest.
class ToBytes {
 public:
  explicit ToBytes(uint32_t maxval) : maxval_(maxval) {}

  uint8_t operator()(uint32_t sample) const {
    if (sample > maxval_) {
      refuseAsDamaged("a sample of " + std::to_string(sample) + " with a maxval of " +
                      std::to_string(maxval_));
    }
    return static_cast<uint8_t>((sample * 255 + maxval_ / 2) / maxval_);
  }

 private:
  uint32_t maxval_;
};

void readPlain(const Header& header, Scanner& scanner, std::span<uint8_t> pixels) {
  const ToBytes toByte(header.maxval);
  for (uint8_t& pixel : pixels) pixel = toByte(scanner.number("sample"));
}

void readBinary(const Header& header, Scanner& scanner, std::span<uint8_t> pixels) {
  const ToBytes toByte(header.maxval);
  const unsigned width = header.bytesPerSample();
  std::vector<std::byte> piece(size_t{width} * 8192);
  for (size_t done = 0; done < pixels.size();) {
    const size_t samples = std::min(piece.size() / width, pixels.size() - done);
    const size_t bytes = scanner.read(std::span(piece).first(samples * width));
    if (bytes < samples * width) refuseAsShort(done * width + bytes, pixels.size() * width);
    for (size_t at = 0; at < bytes; at += width) {
      uint32_t sample = std::to_integer<uint32_t>(piece[at]);
      if (width == 2) sample = sample << 8U | std::to_integer<uint32_t>(piece[at + 1]);
      pixels[done++] = toByte(sample);
    }
  }
}

}  // namespace

Picture readPpm(const Services& services, const Stream& stream) {
  Scanner scanner(stream);
  const Header header = readHeader(scanner);
  requireSamples(header, scanner);
  Picture picture(services.buffers, header.width, header.height);
  (header.plain ? readPlain : readBinary)(header, scanner, picture.pixels());
  return picture;
}

}  // namespace examples
