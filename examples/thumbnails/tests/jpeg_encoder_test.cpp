// The encoder: a filter of the library with the module as its client.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/host/error_log.h"
#include "host/counting_filter.h"
#include "host/data_sink.h"
#include "interfaces/encoder.h"
#include "samples/drawings.h"
#include "tests/direct_jpeg.h"
#include "tests/module_fixture.h"

namespace examples {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;

class JpegEncoder : public ModuleFixture {
 protected:
  JpegEncoder() {
    EXPECT_EQ(ThumbnailsFetchEncoderProcs(zeb().getProcAddress, &procs_), 1);
    sink_ = makeDataSink(zeb(), [this](ZEBDataSink** out) {
      return zeb().filters.NewClientDataSink(out, this, collect, nullptr);
    });
  }

  // A filter in front of the collecting sink, set up for the pixels.
  DataSink newEncoder(const Pixels& pixels, float quality) {
    DataSink encoder = newEncoder();
    zeb().filters.SetImageParameters(encoder.get(), pixels.width, pixels.height,
                                     pixels.bytesPerPixel);
    zeb().filters.SetCompressionParameters(encoder.get(), quality);
    return encoder;
  }

  DataSink newEncoder() {
    return makeDataSink(zeb(),
                        [this](ZEBDataSink** out) { return procs_.NewEncoder(out, sink_.get()); });
  }

  Error write(const DataSink& encoder, const void* bytes, size_t size) {
    return error(zeb().filters.Write(encoder.get(), bytes, size));
  }

  std::string encoded(const Pixels& pixels, float quality, size_t piece) {
    collected_.clear();
    const DataSink encoder = newEncoder(pixels, quality);
    for (size_t at = 0; at < pixels.bytes.size(); at += piece) {
      const size_t size = std::min(piece, pixels.bytes.size() - at);
      const Error failure = write(encoder, &pixels.bytes[at], size);
      EXPECT_FALSE(failure) << failure.message();
    }
    return collected_;
  }

  static Pixels hills(uint32_t width, uint32_t height) {
    return {width, height, 3, drawHills(width, height).pixels};
  }

  static ZEBErrorObject* collect(void* self, const void* data, uint64_t size) {
    auto* const test = static_cast<JpegEncoder*>(self);
    if (test->collected_.size() >= test->room_) {
      return test->zeb().errors.NewError("no room", "Sink", 28, nullptr, nullptr);
    }
    test->collected_.append(static_cast<const char*>(data), size);
    return nullptr;
  }

  ThumbnailsEncoderProcs procs_{};
  std::string collected_;
  size_t room_ = SIZE_MAX;
  DataSink sink_;
};

TEST_F(JpegEncoder, WritesWhatTheJpegLibraryWritesByteForByte) {
  for (const auto& [width, height] : {std::pair{1U, 1U}, {17U, 3U}, {3U, 17U}, {640U, 400U}}) {
    const Pixels pixels = hills(width, height);
    for (const int quality : {1, 50, 75, 85, 100}) {
      EXPECT_EQ(encoded(pixels, static_cast<float>(quality), SIZE_MAX / 2), jpegOf(pixels, quality))
          << width << " by " << height << ", quality " << quality;
    }
  }
}

TEST_F(JpegEncoder, WritesGreyAsTheJpegLibraryDoes) {
  Pixels grey{60, 45, 1, {}};
  for (size_t i = 0; i < 2700; ++i) grey.bytes.push_back(static_cast<uint8_t>(i % 256));
  EXPECT_EQ(encoded(grey, 80, SIZE_MAX / 2), jpegOf(grey, 80));
}

TEST_F(JpegEncoder, TakesPiecesOfAnySize) {
  const Pixels pixels = hills(50, 20);
  const std::string direct = jpegOf(pixels, 85);
  for (const size_t piece : {1U, 2U, 7U, 149U, 150U, 151U, 300U, 1000U, 2999U}) {
    EXPECT_EQ(encoded(pixels, 85, piece), direct) << piece;
  }
}

TEST_F(JpegEncoder, IsCompleteWithTheLastPixel) {
  const Pixels pixels = hills(8, 8);
  const DataSink encoder = newEncoder(pixels, 85);
  EXPECT_FALSE(write(encoder, pixels.bytes.data(), pixels.bytes.size()));
  EXPECT_EQ(collected_, jpegOf(pixels, 85));
  zeb().filters.Close(encoder.get());
  EXPECT_EQ(collected_, jpegOf(pixels, 85));
}

TEST_F(JpegEncoder, TakesQualities75WhenNobodySaysOtherwise) {
  const Pixels pixels = hills(8, 8);
  const DataSink encoder = newEncoder();
  zeb().filters.SetImageParameters(encoder.get(), 8, 8, 3);
  EXPECT_FALSE(write(encoder, pixels.bytes.data(), pixels.bytes.size()));
  EXPECT_EQ(collected_, jpegOf(pixels, 75));
}

TEST_F(JpegEncoder, BringsAQualityIntoItsRange) {
  const Pixels pixels = hills(8, 8);
  EXPECT_EQ(encoded(pixels, -5, 1000), jpegOf(pixels, 1));
  EXPECT_EQ(encoded(pixels, 1000, 1000), jpegOf(pixels, 100));
  EXPECT_EQ(encoded(pixels, 49.6F, 1000), jpegOf(pixels, 50));
}

TEST_F(JpegEncoder, RefusesAGeometryThatCannotBe) {
  const uint8_t bytes[3] = {};
  for (const auto& [width, height, bytesPerPixel] : {std::tuple{0U, 1U, 3U},
                                                     {1U, 0U, 3U},
                                                     {1U, 1U, 0U},
                                                     {1U, 1U, 2U},
                                                     {1U, 1U, 4U},
                                                     {65501U, 1U, 3U},
                                                     {1U, 4294967295U, 3U}}) {
    const DataSink encoder = newEncoder();
    zeb().filters.SetImageParameters(encoder.get(), width, height, bytesPerPixel);
    EXPECT_EQ(write(encoder, bytes, 3).id(), THUMBNAILS_ENCODER_ERROR_GEOMETRY)
        << width << " " << height << " " << bytesPerPixel;
  }
  EXPECT_THAT(collected_, IsEmpty());
}

TEST_F(JpegEncoder, RefusesPixelsWithoutAGeometry) {
  const uint8_t bytes[3] = {};
  EXPECT_EQ(write(newEncoder(), bytes, 3).id(), THUMBNAILS_ENCODER_ERROR_GEOMETRY);
}

TEST_F(JpegEncoder, RefusesMorePixelsThanThereAre) {
  Pixels pixels = hills(8, 8);
  const DataSink encoder = newEncoder(pixels, 85);
  pixels.bytes.push_back(0);
  EXPECT_EQ(write(encoder, pixels.bytes.data(), pixels.bytes.size()).id(),
            THUMBNAILS_ENCODER_ERROR_TOO_MANY);
}

TEST_F(JpegEncoder, PassesOnWhatItsTargetAnswers) {
  room_ = 0;
  const Pixels pixels = hills(8, 8);
  const DataSink encoder = newEncoder(pixels, 85);
  const Error failure = write(encoder, pixels.bytes.data(), pixels.bytes.size());
  EXPECT_THAT(failure.message(), StrEq("no room"));
  EXPECT_EQ(failure.id(), 28);
  EXPECT_EQ(write(encoder, pixels.bytes.data(), 1).id(), THUMBNAILS_ENCODER_ERROR_FAILED);
}

TEST_F(JpegEncoder, PassesOnAFailureInTheMiddleOfALargePicture) {
  room_ = 20000;
  const Pixels pixels = hills(1000, 800);
  const Error failure = write(newEncoder(pixels, 100), pixels.bytes.data(), pixels.bytes.size());
  EXPECT_THAT(failure.message(), StrEq("no room"));
}

TEST_F(JpegEncoder, ReportsAPictureThatIsGivenUp) {
  const Pixels pixels = hills(8, 8);
  const DataSink encoder = newEncoder(pixels, 85);
  EXPECT_FALSE(write(encoder, pixels.bytes.data(), 100));
  takeErrorLog();
  zeb().filters.Close(encoder.get());
  zeb().filters.Close(encoder.get());
  EXPECT_THAT(takeErrorLog(),
              ElementsAre("a JPEG filter was closed before the picture was complete"));
  EXPECT_EQ(write(encoder, pixels.bytes.data(), 1).id(), THUMBNAILS_ENCODER_ERROR_FAILED);
}

TEST_F(JpegEncoder, HasAPostScriptCounterpart) {
  EXPECT_THAT(zeb().filters.GetPostScriptFilter(newEncoder().get()), StrEq("DCTEncode"));
}

TEST_F(JpegEncoder, IsCountedByTheFilterBehindIt) {
  const Pixels pixels = hills(400, 300);
  const CountingFilter counter(zeb(), sink_.get());
  const DataSink encoder =
      makeDataSink(zeb(), [&](ZEBDataSink** out) { return procs_.NewEncoder(out, counter.get()); });
  zeb().filters.SetImageParameters(encoder.get(), 400, 300, 3);
  zeb().filters.SetCompressionParameters(encoder.get(), 100);
  EXPECT_FALSE(write(encoder, pixels.bytes.data(), pixels.bytes.size()));
  EXPECT_EQ(counter.bytes(), collected_.size());
  EXPECT_GT(counter.writes(), 1U);
}

TEST_F(JpegEncoder, RefusesMissingArguments) {
  ZEBDataSink* made = nullptr;
  EXPECT_EQ(error(procs_.NewEncoder(&made, nullptr)).id(),
            THUMBNAILS_ENCODER_ERROR_MISSING_ARGUMENT);
  EXPECT_EQ(error(procs_.NewEncoder(nullptr, sink_.get())).id(),
            THUMBNAILS_ENCODER_ERROR_MISSING_ARGUMENT);
  EXPECT_EQ(made, nullptr);
}

}  // namespace
}  // namespace examples
