// The library and the example's modules, running for the duration of a test.
#ifndef THUMBNAILS_TESTS_MODULE_FIXTURE_H
#define THUMBNAILS_TESTS_MODULE_FIXTURE_H

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

#include "common/support/error.h"
#include "common/support/stream.h"
#include "common/tests/running_modules.h"
#include "host/budget.h"
#include "interfaces/decoder.h"
#include "support/picture.h"

namespace examples {

class ModuleFixture : public testing::Test {
 protected:
  ModuleFixture() : running_({THUMBNAILS_TEST_MODULES}, keepToBudget) {}

  const Services& zeb() { return running_.services(); }

  // A proc's result, kept for questions.
  Error error(ZEBErrorObject* owned) { return {zeb(), owned}; }

  // A stream over these bytes, at their beginning.
  Stream streamOf(std::string_view bytes) {
    Stream stream = Stream::overMemory(zeb());
    stream.write(std::as_bytes(std::span(bytes)));
    stream.seek(0);
    return stream;
  }

  ThumbnailsDecodeProc decoderOf(const char* ending) {
    const std::string name = std::string(THUMBNAILS_DECODER_INTERFACE_PREFIX) + ending;
    return reinterpret_cast<ThumbnailsDecodeProc>(
        zeb().getProcAddress(name.c_str(), "Decode", "ThumbnailsDecodeProc"));
  }

  // What the decoder of an ending makes of a file: a picture, or the error that the file deserves.
  Picture decoded(const char* ending, std::string_view file) {
    ThumbnailsPicture picture{};
    const Error failure = error(decoderOf(ending)(&picture, streamOf(file).get()));
    EXPECT_FALSE(failure) << failure.message();
    return {zeb().buffers, picture};
  }

  Error refusal(const char* ending, std::string_view file) {
    ThumbnailsPicture picture{};
    Error failure = error(decoderOf(ending)(&picture, streamOf(file).get()));
    EXPECT_EQ(picture.pixels, nullptr);
    zeb().buffers.Release(picture.pixels);
    return failure;
  }

 private:
  RunningModules running_;
};

}  // namespace examples

#endif
