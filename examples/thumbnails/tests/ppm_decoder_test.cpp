// The decoder of portable pixel maps: what it takes, and what it refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/module_fixture.h"

namespace examples {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StrEq;

class PpmDecoder : public ModuleFixture {
 protected:
  Picture decoded(const std::string& file) { return ModuleFixture::decoded("ppm", file); }
  Error refusal(const std::string& file) { return ModuleFixture::refusal("ppm", file); }
};

TEST_F(PpmDecoder, ReadsBytes) {
  const Picture picture = decoded("P6\n2 1\n255\n\x01\x02\x03\xfd\xfe\xff"s);
  EXPECT_EQ(picture.width(), 2U);
  EXPECT_EQ(picture.height(), 1U);
  EXPECT_THAT(picture.pixels(), ElementsAre(1, 2, 3, 253, 254, 255));
}

TEST_F(PpmDecoder, ReadsDecimalNumbers) {
  const Picture picture = decoded("P3 1 2 255 1 2 3\n253 254\t255");
  EXPECT_EQ(picture.width(), 1U);
  EXPECT_EQ(picture.height(), 2U);
  EXPECT_THAT(picture.pixels(), ElementsAre(1, 2, 3, 253, 254, 255));
}

TEST_F(PpmDecoder, ReadsTwoBytesPerSampleToTheNearestByte) {
  const Picture picture = decoded("P6 1 1 65535\n\x00\x00\x80\x00\xff\xff"s);
  EXPECT_THAT(picture.pixels(), ElementsAre(0, 128, 255));
}

TEST_F(PpmDecoder, SpreadsSmallMaxvals) {
  EXPECT_THAT(decoded("P6 1 1 1\n\x00\x01\x00"s).pixels(), ElementsAre(0, 255, 0));
  EXPECT_THAT(decoded("P6 1 1 3\n\x01\x02\x03"s).pixels(), ElementsAre(85, 170, 255));
  EXPECT_THAT(decoded("P6 1 1 256\n\x00\x80\x01\x00\x00\x01"s).pixels(), ElementsAre(128, 255, 1));
}

TEST_F(PpmDecoder, PassesOverCommentsInTheHeader) {
  const Picture picture =
      decoded("P6# one\n#two\n 1 # 7 8 9\n\n#\n1\r\n# last\n255\n\x09\x08\x07"s);
  EXPECT_THAT(picture.pixels(), ElementsAre(9, 8, 7));
}

TEST_F(PpmDecoder, TakesOneSpaceOnlyAfterTheHeader) {
  EXPECT_THAT(decoded("P6 1 1 255\n\n\n\n"s).pixels(), ElementsAre('\n', '\n', '\n'));
  EXPECT_THAT(decoded("P6 1 1 255\n#ab"s).pixels(), ElementsAre('#', 'a', 'b'));
}

TEST_F(PpmDecoder, ReadsTheFirstOfSeveralPictures) {
  EXPECT_THAT(decoded("P6 1 1 255\nabcP6 1 1 255\ndef"s).pixels(), ElementsAre('a', 'b', 'c'));
}

TEST_F(PpmDecoder, ReadsPicturesLargerThanItsBuffers) {
  std::string samples;
  for (int i = 0; i < 300 * 200 * 3; ++i) samples += static_cast<char>(i * 7 % 251);
  const Picture picture = decoded("P6 300 200 255\n" + samples);
  const auto pixels = picture.pixels();
  EXPECT_EQ(std::string(pixels.begin(), pixels.end()), samples);
}

TEST_F(PpmDecoder, RefusesWhatIsNone) {
  for (const char* const file : {"", "P", "P5 1 1 255 a", "p6 1 1 255 abc", "JFIF"}) {
    EXPECT_THAT(refusal(file).message(), StrEq("damaged: this is no portable pixel map")) << file;
  }
}

TEST_F(PpmDecoder, RefusesAHeaderThatIsNotComplete) {
  for (const char* const file : {"P6", "P6 ", "P6 1", "P6 1 1", "P6 1 1 ", "P6 # all 1 1 255"}) {
    EXPECT_EQ(refusal(file).id(), THUMBNAILS_DECODER_ERROR_DAMAGED) << file;
  }
}

TEST_F(PpmDecoder, RefusesNumbersThatAreNone) {
  for (const char* const file :
       {"P6 -1 1 255\nabc", "P6 1 +1 255\nabc", "P6 1x1 255\nabc", "P6 1 1 255abc",
        "P6 0x1 1 255 a", "P6 1.0 1 255\nabc", "P3 1 1 255 1 2 x", "P3 1 1 255 1 2 -3"}) {
    EXPECT_EQ(refusal(file).id(), THUMBNAILS_DECODER_ERROR_DAMAGED) << file;
  }
}

TEST_F(PpmDecoder, RefusesNumbersThatWouldOverflow) {
  for (const char* const file :
       {"P6 4294967297 1 255\nabc", "P6 1 18446744073709551617 255\nabc", "P6 1 1 4294967551\nabc",
        "P6 0000000001 1 255\nabc", "P3 1 1 255 1 2 4294967299"}) {
    EXPECT_THAT(refusal(file).message(), HasSubstr("too many digits")) << file;
  }
}

TEST_F(PpmDecoder, RefusesImpossibleSizes) {
  for (const char* const file : {"P6 0 1 255\n", "P6 1 0 255\n", "P6 100000001 1 255\n",
                                 "P6 10001 10000 255\n", "P6 999999999 999999999 255\n"}) {
    EXPECT_EQ(refusal(file).id(), THUMBNAILS_DECODER_ERROR_TOO_LARGE) << file;
  }
}

TEST_F(PpmDecoder, RefusesImpossibleMaxvals) {
  EXPECT_THAT(refusal("P6 1 1 0\nabc").message(), StrEq("damaged: a maxval of 0"));
  EXPECT_THAT(refusal("P6 1 1 65536\nabcdef").message(), StrEq("damaged: a maxval of 65536"));
}

TEST_F(PpmDecoder, RefusesSamplesAboveTheMaxval) {
  EXPECT_THAT(refusal("P6 1 1 100\nabe"s).message(),
              StrEq("damaged: a sample of 101 with a maxval of 100"));
  EXPECT_THAT(refusal("P3 1 1 100 1 2 101").message(),
              StrEq("damaged: a sample of 101 with a maxval of 100"));
}

TEST_F(PpmDecoder, RefusesMissingSamplesBeforeItTakesMemoryForThem) {
  const uint64_t before = countsOfMemoryProcs().peakBytes;
  EXPECT_THAT(refusal("P6 10000 10000 65535\nabc").message(),
              StrEq("damaged: the file ends after 3 of 600000000 bytes of samples"));
  EXPECT_THAT(refusal("P3 10000 10000 255\n1 2 3").message(),
              HasSubstr("the file ends after 5 of"));
  EXPECT_LT(countsOfMemoryProcs().peakBytes - before, 1000000U);
}

TEST_F(PpmDecoder, RefusesAPlainFileWithTooFewNumbers) {
  EXPECT_THAT(refusal("P3 1 1 255 100 200    ").message(), StrEq("damaged: there is no sample"));
}

TEST_F(PpmDecoder, PassesOnWhatTheStreamAnswers) {
  ZEBContainer* stream = nullptr;
  ASSERT_FALSE(error(zeb().streamFactory.NewClientPositionableStream(
      &stream, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)));
  const Stream unreadable(zeb(), stream);
  ThumbnailsPicture picture{};
  EXPECT_THAT(error(decoderOf("ppm")(&picture, unreadable.get())).message(),
              StrEq("Missing ZEB Method"));
}

TEST_F(PpmDecoder, RefusesMissingArguments) {
  ThumbnailsPicture picture{};
  EXPECT_EQ(error(decoderOf("ppm")(&picture, nullptr)).id(),
            THUMBNAILS_DECODER_ERROR_MISSING_ARGUMENT);
  EXPECT_EQ(error(decoderOf("ppm")(nullptr, streamOf("P6").get())).id(),
            THUMBNAILS_DECODER_ERROR_MISSING_ARGUMENT);
}

}  // namespace
}  // namespace examples
