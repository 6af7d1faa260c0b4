// One picture on its way into a JPEG file, over the JPEG library.
#ifndef THUMBNAILS_JPEG_ENCODER_JPEG_ENCODER_H
#define THUMBNAILS_JPEG_ENCODER_JPEG_ENCODER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "common/support/services.h"
#include "modules/jpeg/jpeg_failure.h"

namespace examples {

class JpegEncoder {
 public:
  // Takes pieces of the file; returns an error handle or null.
  using Sink = ZEBErrorObject* (*)(void* context, const void* bytes, size_t size);

  // Throws std::bad_alloc.
  JpegEncoder(const Services& services, Sink sink, void* context);
  ~JpegEncoder();

  JpegEncoder(const JpegEncoder&) = delete;
  JpegEncoder& operator=(const JpegEncoder&) = delete;

  // Before the first byte.
  void setGeometry(uint32_t width, uint32_t height, uint32_t bytesPerPixel);
  void setQuality(float quality);

  // More pixels. Throws CodedError with an id of interfaces/encoder.h, RaisedError, std::bad_alloc;
  // nothing can be written after that.
  void write(std::span<const uint8_t> bytes);

  // Gives a picture up that is not complete. True if there was one.
  bool giveUp() noexcept;

 private:
  enum class Stage { idle, under_way, complete, failed };

  // Where the JPEG library puts the file.
  struct Target {
    jpeg_destination_mgr manager;  // first: the JPEG library hands it back
    Sink sink;
    void* context;
    JOCTET buffer[16384];
  };

  static Target* targetOf(j_compress_ptr jpeg);
  static void emptyInto(j_compress_ptr jpeg, size_t size);
  static void startTarget(j_compress_ptr jpeg);
  static boolean emptyTarget(j_compress_ptr jpeg);
  static void endTarget(j_compress_ptr jpeg);

  void begin();
  void writePart(std::span<const uint8_t> bytes);
  void writeRow(const uint8_t* row);
  [[nodiscard]] size_t rowSize() const { return size_t{width_} * bytesPerPixel_; }

  template <class Step>
  void run(const Step& step);

  const Services& services_;
  JpegFailure failure_{};
  Target target_{};
  jpeg_compress_struct jpeg_{};
  uint32_t width_ = 0;
  uint32_t height_ = 0;
  uint32_t bytesPerPixel_ = 0;
  int quality_ = 75;
  Stage stage_ = Stage::idle;
  std::vector<uint8_t> row_;  // the beginning of a row whose end is yet to come
};

}  // namespace examples

#endif
