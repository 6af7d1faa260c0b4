// The scaling itself, and the scaler as a proc.
#include "modules/scaler/scaling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "interfaces/scaler.h"
#include "tests/module_fixture.h"

namespace examples {
namespace {

using testing::Each;
using testing::ElementsAre;

std::vector<uint8_t> scaled(const std::vector<uint8_t>& original, Extent from, Extent to) {
  std::vector<uint8_t> result(size_t{to.width} * to.height * 3);
  scaleDown(original, from, result, to);
  return result;
}

TEST(FitInto, KeepsTheProportions) {
  EXPECT_EQ(fitInto({640, 400}, 128), (Extent{128, 80}));
  EXPECT_EQ(fitInto({400, 640}, 128), (Extent{80, 128}));
  EXPECT_EQ(fitInto({500, 500}, 128), (Extent{128, 128}));
  EXPECT_EQ(fitInto({1000, 333}, 100), (Extent{100, 33}));
}

TEST(FitInto, NeverEnlarges) {
  EXPECT_EQ(fitInto({20, 12}, 128), (Extent{20, 12}));
  EXPECT_EQ(fitInto({128, 128}, 128), (Extent{128, 128}));
}

TEST(FitInto, LeavesAPixelOfTheShorterSide) {
  EXPECT_EQ(fitInto({10000, 1}, 10), (Extent{10, 1}));
  EXPECT_EQ(fitInto({1, 10000}, 1), (Extent{1, 1}));
}

TEST(FitInto, TakesTheLargestPicturesThereAre) {
  EXPECT_EQ(fitInto({100000000, 1}, 4096), (Extent{4096, 1}));
}

TEST(ScaleDown, TakesTheMeanOfWholePixels) {
  const std::vector<uint8_t> original{0, 10, 20, 4, 30, 20, 8, 10, 60, 12, 30, 60};
  EXPECT_THAT(scaled(original, {2, 2}, {1, 1}), ElementsAre(6, 20, 40));
  EXPECT_THAT(scaled(original, {2, 2}, {2, 1}), ElementsAre(4, 10, 40, 8, 30, 40));
  EXPECT_THAT(scaled(original, {2, 2}, {1, 2}), ElementsAre(2, 20, 20, 10, 20, 60));
}

TEST(ScaleDown, WeighsPixelsThatAreCoveredInPart) {
  // Each new pixel covers one old one and half of the middle one.
  const std::vector<uint8_t> original{0, 0, 0, 60, 60, 60, 90, 90, 90};
  EXPECT_THAT(scaled(original, {3, 1}, {2, 1}), ElementsAre(20, 20, 20, 80, 80, 80));
}

TEST(ScaleDown, RoundsToTheNearest) {
  const std::vector<uint8_t> original{0, 1, 254, 1, 2, 255};
  EXPECT_THAT(scaled(original, {2, 1}, {1, 1}), ElementsAre(1, 2, 255));
}

TEST(ScaleDown, CopiesWhatFits) {
  std::vector<uint8_t> original(size_t{7} * 5 * 3);
  std::iota(original.begin(), original.end(), uint8_t{0});
  EXPECT_EQ(scaled(original, {7, 5}, {7, 5}), original);
}

TEST(ScaleDown, LeavesOneColourAsItIs) {
  const std::vector<uint8_t> white(size_t{97} * 89 * 3, 255);
  EXPECT_THAT(scaled(white, {97, 89}, {13, 11}), Each(255));
}

class Scaler : public ModuleFixture {
 protected:
  Scaler() { EXPECT_EQ(ThumbnailsFetchScalerProcs(zeb().getProcAddress, &procs_), 1); }

  ThumbnailsScalerProcs procs_{};
};

TEST_F(Scaler, LeavesTheOriginalAsItIs) {
  const Picture original(zeb().buffers, 4, 2);
  std::fill(original.pixels().begin(), original.pixels().end(), uint8_t{9});
  const ThumbnailsPicture lent = original.lent();
  ThumbnailsPicture made{};
  ASSERT_FALSE(error(procs_.Scale(&made, &lent, 2)));
  const Picture scaledPicture(zeb().buffers, made);
  EXPECT_EQ(scaledPicture.width(), 2U);
  EXPECT_EQ(scaledPicture.height(), 1U);
  EXPECT_THAT(scaledPicture.pixels(), Each(9));
  EXPECT_THAT(original.pixels(), Each(9));
}

TEST_F(Scaler, RefusesWhatIsNoPicture) {
  const Picture picture(zeb().buffers, 4, 2);
  const ThumbnailsPicture whole = picture.lent();
  ThumbnailsPicture made{};
  const auto idOf = [&](ThumbnailsPicture* to, const ThumbnailsPicture* from, uint32_t edge) {
    return error(procs_.Scale(to, from, edge)).id();
  };
  const ThumbnailsPicture wider{5, 2, whole.pixels};
  const ThumbnailsPicture wrapped{4, 0x80000002U, whole.pixels};
  const ThumbnailsPicture flat{0, 0, whole.pixels};
  const ThumbnailsPicture none{4, 2, nullptr};
  for (const ThumbnailsPicture* const bad : {&wider, &wrapped, &flat, &none}) {
    EXPECT_EQ(idOf(&made, bad, 2), THUMBNAILS_SCALER_ERROR_BAD_ARGUMENT);
  }
  EXPECT_EQ(idOf(nullptr, &whole, 2), THUMBNAILS_SCALER_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(idOf(&made, nullptr, 2), THUMBNAILS_SCALER_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(idOf(&made, &whole, 0), THUMBNAILS_SCALER_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(made.pixels, nullptr);
}

}  // namespace
}  // namespace examples
