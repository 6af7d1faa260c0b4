#include "modules/jpeg_decoder/jpeg_file.h"

#include <new>

#include "common/support/raised_error.h"
#include "modules/jpeg/jpeg_failure.h"
#include "support/decoder_module.h"

namespace examples {
namespace {

// A progressive file may repeat its scans without end, each of which costs as much as the picture.
constexpr int kMostScans = 200;

// Where the JPEG library gets its bytes from.
struct Source {
  jpeg_source_mgr manager;  // first: the JPEG library hands it back
  const Services* services;
  ZEBContainer* stream;
  JOCTET buffer[16384];
};

Source* sourceOf(j_decompress_ptr jpeg) { return reinterpret_cast<Source*>(jpeg->src); }

void doNothing(j_decompress_ptr /*jpeg*/) {}

boolean fillBuffer(j_decompress_ptr jpeg) {
  Source* const source = sourceOf(jpeg);
  uint64_t count = 0;
  ZEBErrorObject* const error = source->services->simpleStreams.Read(
      source->stream, &count, source->buffer, sizeof(source->buffer));
  if (error != nullptr) stopWith(reinterpret_cast<j_common_ptr>(jpeg), error);
  if (count == 0) stopWith(reinterpret_cast<j_common_ptr>(jpeg), "the file ends too early");
  source->manager.next_input_byte = source->buffer;
  source->manager.bytes_in_buffer = count;
  return TRUE;
}

void skip(j_decompress_ptr jpeg, long count) {
  if (count <= 0) return;
  auto left = static_cast<size_t>(count);
  jpeg_source_mgr* const manager = jpeg->src;
  while (left > manager->bytes_in_buffer) {
    left -= manager->bytes_in_buffer;
    fillBuffer(jpeg);
  }
  manager->next_input_byte += left;
  manager->bytes_in_buffer -= left;
}

void stopAtTooManyScans(j_common_ptr jpeg) {
  const auto* const decompressor = reinterpret_cast<j_decompress_ptr>(jpeg);
  if (decompressor->input_scan_number > kMostScans) stopWith(jpeg, "it has too many scans");
}

class Decoder {
 public:
  Decoder(const Services& services, ZEBContainer* stream) : services_(services) {
    jpeg_.err = prepare(&failure_);
    run([this] { jpeg_create_decompress(&jpeg_); });
    source_.manager.init_source = doNothing;
    source_.manager.fill_input_buffer = fillBuffer;
    source_.manager.skip_input_data = skip;
    source_.manager.resync_to_restart = jpeg_resync_to_restart;
    source_.manager.term_source = doNothing;
    source_.services = &services;
    source_.stream = stream;
    jpeg_.src = &source_.manager;
    progress_.progress_monitor = stopAtTooManyScans;
    jpeg_.progress = &progress_;
  }
  ~Decoder() { jpeg_destroy_decompress(&jpeg_); }

  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  Picture decode() {
    run([this] { jpeg_read_header(&jpeg_, TRUE); });
    requirePossibleSize(jpeg_.image_width, jpeg_.image_height);
    jpeg_.out_color_space = JCS_RGB;
    Picture picture(services_.buffers, jpeg_.image_width, jpeg_.image_height);
    uint8_t* const pixels = picture.pixels().data();
    run([this, pixels] { readRows(pixels); });
    return picture;
  }

 private:
  void readRows(uint8_t* pixels) {
    jpeg_start_decompress(&jpeg_);
    while (jpeg_.output_scanline < jpeg_.output_height) {
      JSAMPROW row = pixels + size_t{jpeg_.output_scanline} * bytesOfPixels(jpeg_.output_width);
      jpeg_read_scanlines(&jpeg_, &row, 1);
    }
    jpeg_finish_decompress(&jpeg_);
  }

  template <class Step>
  void run(const Step& step) {
    if (attempt(&failure_, step)) return;
    raiseIfFailed(services_.errors, failure_.passedOn);
    if (failure_.manager.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
    refuseAsDamaged(failure_.message);
  }

  const Services& services_;
  JpegFailure failure_{};
  Source source_{};
  jpeg_progress_mgr progress_{};
  jpeg_decompress_struct jpeg_{};
};

}  // namespace

Picture readJpeg(const Services& services, ZEBContainer* stream) {
  return Decoder(services, stream).decode();
}

}  // namespace examples
