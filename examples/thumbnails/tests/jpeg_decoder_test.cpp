// The decoder of JPEG files: what it takes, and what it refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "samples/drawings.h"
#include "tests/direct_jpeg.h"
#include "tests/module_fixture.h"

namespace examples {
namespace {

using testing::HasSubstr;

class JpegDecoder : public ModuleFixture {
 protected:
  Picture decoded(const std::string& file) { return ModuleFixture::decoded("jpg", file); }
  Error refusal(const std::string& file) { return ModuleFixture::refusal("jpg", file); }

  static std::string hills(uint32_t width, uint32_t height) {
    return jpegOf({width, height, 3, drawHills(width, height).pixels}, 85);
  }

  void expectSamePixels(const std::string& file) {
    const Picture picture = decoded(file);
    const Pixels direct = pixelsOf(file);
    ASSERT_EQ(picture.width(), direct.width);
    ASSERT_EQ(picture.height(), direct.height);
    const auto pixels = picture.pixels();
    EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), direct.bytes.begin(), direct.bytes.end()));
  }

  // Where the header of the frame keeps the height; the width follows.
  static size_t placeOfHeight(const std::string& file) { return file.find("\xff\xc0") + 5; }
};

TEST_F(JpegDecoder, ReadsWhatTheJpegLibraryReads) {
  expectSamePixels(hills(160, 100));
  expectSamePixels(hills(1, 1));
  expectSamePixels(hills(401, 299));
}

TEST_F(JpegDecoder, MakesColoursOfGrey) {
  expectSamePixels(jpegOf({50, 40, 1, std::vector<uint8_t>(2000, 77)}, 90));
}

TEST_F(JpegDecoder, IsFoundUnderBothEndings) {
  EXPECT_NE(decoderOf("jpg"), nullptr);
  EXPECT_EQ(decoderOf("jpeg"), decoderOf("jpg"));
  EXPECT_EQ(decoderOf("png"), nullptr);
}

TEST_F(JpegDecoder, RefusesWhatIsNone) {
  EXPECT_THAT(refusal("P6 1 1 255\nabc").message(), HasSubstr("damaged: Not a JPEG file"));
  EXPECT_THAT(refusal("").message(), HasSubstr("damaged: the file ends too early"));
}

TEST_F(JpegDecoder, RefusesEveryFileThatEndsTooEarly) {
  const std::string whole = hills(40, 30);
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(refusal(whole.substr(0, size)).id(), THUMBNAILS_DECODER_ERROR_DAMAGED) << size;
  }
}

// Which bytes may change without harm is the format's secret; that nothing worse happens than a
// refusal is what counts, and the sanitizers watch.
TEST_F(JpegDecoder, SurvivesEveryChangedByte) {
  const std::string whole = hills(40, 30);
  size_t refused = 0;
  for (size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0x5a);
    ThumbnailsPicture picture{};
    if (error(decoderOf("jpg")(&picture, streamOf(changed).get()))) ++refused;
    zeb().buffers.Release(picture.pixels);
  }
  EXPECT_GT(refused, 0U);
  expectSamePixels(whole);
}

TEST_F(JpegDecoder, RefusesMorePixelsThanAPictureMayHave) {
  std::string file = hills(40, 30);
  const size_t height = placeOfHeight(file);
  file.replace(height, 4, "\xfd\xe8\xfd\xe8");  // 65000 by 65000
  EXPECT_EQ(refusal(file).id(), THUMBNAILS_DECODER_ERROR_TOO_LARGE);
}

TEST_F(JpegDecoder, RefusesColoursThatItDoesNotKnow) {
  EXPECT_EQ(refusal(cmykJpeg()).id(), THUMBNAILS_DECODER_ERROR_DAMAGED);
}

TEST_F(JpegDecoder, PassesOnWhatTheStreamAnswers) {
  ZEBContainer* stream = nullptr;
  ASSERT_FALSE(error(
      zeb().streamFactory.NewClientSimpleStream(&stream, nullptr, nullptr, nullptr, nullptr)));
  const Stream unreadable(zeb(), stream);
  ThumbnailsPicture picture{};
  EXPECT_THAT(error(decoderOf("jpg")(&picture, unreadable.get())).message(),
              testing::StrEq("Missing ZEB Method"));
}

TEST_F(JpegDecoder, RefusesMissingArguments) {
  ThumbnailsPicture picture{};
  EXPECT_EQ(error(decoderOf("jpg")(&picture, nullptr)).id(),
            THUMBNAILS_DECODER_ERROR_MISSING_ARGUMENT);
  EXPECT_EQ(error(decoderOf("jpg")(nullptr, streamOf("").get())).id(),
            THUMBNAILS_DECODER_ERROR_MISSING_ARGUMENT);
}

}  // namespace
}  // namespace examples
