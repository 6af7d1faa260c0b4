#include "modules/jpeg_encoder/jpeg_encoder.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>

#include "common/support/guard.h"
#include "interfaces/encoder.h"

namespace examples {

JpegEncoder::Target* JpegEncoder::targetOf(j_compress_ptr jpeg) {
  return reinterpret_cast<Target*>(jpeg->dest);
}

void JpegEncoder::startTarget(j_compress_ptr jpeg) {
  Target* const target = targetOf(jpeg);
  target->manager.next_output_byte = target->buffer;
  target->manager.free_in_buffer = sizeof(target->buffer);
}

void JpegEncoder::emptyInto(j_compress_ptr jpeg, size_t size) {
  Target* const target = targetOf(jpeg);
  ZEBErrorObject* const error = target->sink(target->context, target->buffer, size);
  if (error != nullptr) stopWith(reinterpret_cast<j_common_ptr>(jpeg), error);
}

// The buffer is full then, whatever is said to be free in it.
boolean JpegEncoder::emptyTarget(j_compress_ptr jpeg) {
  emptyInto(jpeg, sizeof(Target::buffer));
  startTarget(jpeg);
  return TRUE;
}

void JpegEncoder::endTarget(j_compress_ptr jpeg) {
  const size_t filled = sizeof(Target::buffer) - jpeg->dest->free_in_buffer;
  if (filled != 0) emptyInto(jpeg, filled);
}

JpegEncoder::JpegEncoder(const Services& services, Sink sink, void* context) : services_(services) {
  jpeg_.err = prepare(&failure_);
  run([this] { jpeg_create_compress(&jpeg_); });
  target_.manager.init_destination = startTarget;
  target_.manager.empty_output_buffer = emptyTarget;
  target_.manager.term_destination = endTarget;
  target_.sink = sink;
  target_.context = context;
  jpeg_.dest = &target_.manager;
}

JpegEncoder::~JpegEncoder() { jpeg_destroy_compress(&jpeg_); }

void JpegEncoder::setGeometry(uint32_t width, uint32_t height, uint32_t bytesPerPixel) {
  if (stage_ != Stage::idle) return;
  width_ = width;
  height_ = height;
  bytesPerPixel_ = bytesPerPixel;
}

void JpegEncoder::setQuality(float quality) {
  if (stage_ != Stage::idle || std::isnan(quality)) return;
  quality_ = static_cast<int>(std::lround(std::clamp(quality, 1.0F, 100.0F)));
}

void JpegEncoder::write(std::span<const uint8_t> bytes) {
  if (stage_ == Stage::failed) {
    throw CodedError(THUMBNAILS_ENCODER_ERROR_FAILED, "the picture was given up");
  }
  try {
    if (stage_ == Stage::idle) begin();
    writePart(bytes);
  } catch (...) {
    stage_ = Stage::failed;
    throw;
  }
}

bool JpegEncoder::giveUp() noexcept {
  if (stage_ != Stage::under_way) return false;
  stage_ = Stage::failed;
  return true;
}

void JpegEncoder::begin() {
  const bool possible = width_ - 1 < JPEG_MAX_DIMENSION && height_ - 1 < JPEG_MAX_DIMENSION &&
                        (bytesPerPixel_ == 1 || bytesPerPixel_ == 3);
  if (!possible) {
    throw CodedError(THUMBNAILS_ENCODER_ERROR_GEOMETRY,
                     "no JPEG file can be " + std::to_string(width_) + " by " +
                         std::to_string(height_) + " pixels of " + std::to_string(bytesPerPixel_) +
                         " bytes large");
  }
  run([this] {
    jpeg_.image_width = width_;
    jpeg_.image_height = height_;
    jpeg_.input_components = static_cast<int>(bytesPerPixel_);
    jpeg_.in_color_space = bytesPerPixel_ == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg_);
    jpeg_set_quality(&jpeg_, quality_, TRUE);
    jpeg_start_compress(&jpeg_, TRUE);
  });
  stage_ = Stage::under_way;
}

void JpegEncoder::writePart(std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    if (stage_ == Stage::complete) {
      throw CodedError(THUMBNAILS_ENCODER_ERROR_TOO_MANY, "more bytes than the picture has");
    }
    if (row_.empty() && bytes.size() >= rowSize()) {  // where they stand
      writeRow(bytes.data());
      bytes = bytes.subspan(rowSize());
      continue;
    }
    const size_t part = std::min(bytes.size(), rowSize() - row_.size());
    row_.insert(row_.end(), bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(part));
    bytes = bytes.subspan(part);
    if (row_.size() < rowSize()) return;
    writeRow(row_.data());
    row_.clear();
  }
}

void JpegEncoder::writeRow(const uint8_t* row) {
  run([this, row] {
    // The JPEG library only reads what it is given, but does not say so.
    JSAMPROW rows = const_cast<JSAMPROW>(row);
    jpeg_write_scanlines(&jpeg_, &rows, 1);
    if (jpeg_.next_scanline == jpeg_.image_height) jpeg_finish_compress(&jpeg_);
  });
  if (jpeg_.next_scanline == jpeg_.image_height) stage_ = Stage::complete;
}

template <class Step>
void JpegEncoder::run(const Step& step) {
  if (attempt(&failure_, step)) return;
  raiseIfFailed(services_.errors, failure_.passedOn);
  if (failure_.manager.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
  throw CodedError(THUMBNAILS_ENCODER_ERROR_FAILED, failure_.message);
}

}  // namespace examples
