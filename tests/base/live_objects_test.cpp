#include "base/live_objects.h"

#include <gtest/gtest.h>

#include "support/threads.h"

namespace zeb {
namespace {

TEST(LiveTallyTest, CountsWhatIsMadeAndNotEnded) {
  LiveTally tally;
  EXPECT_EQ(tally.live(), 0u);
  tally.made();
  tally.made();
  EXPECT_EQ(tally.live(), 2u);
  tally.ended();
  EXPECT_EQ(tally.live(), 1u);
  tally.ended();
  EXPECT_EQ(tally.live(), 0u);
}

TEST(LiveTallyTest, AddsUpWhatOtherThreadsEnd) {
  LiveTally tally;
  zeb_test::OtherThread other;
  for (int i = 0; i < 10; ++i) tally.made();
  other.run([&] {
    for (int i = 0; i < 7; ++i) tally.ended();
  });
  EXPECT_EQ(tally.live(), 3u);
}

// The end of an object whose making is not seen yet.
TEST(LiveTallyTest, NeverAnswersLessThanNone) {
  LiveTally tally;
  tally.ended();
  EXPECT_EQ(tally.live(), 0u);
  tally.made();
  EXPECT_EQ(tally.live(), 0u);
  tally.made();
  EXPECT_EQ(tally.live(), 1u);
}

TEST(LiveTallyTest, LosesNothingAmongManyThreads) {
  LiveTally tally;
  zeb_test::runTogether(20, [&](unsigned) {
    for (int i = 0; i < 1000; ++i) {
      tally.made();
      tally.made();
      tally.ended();
    }
  });
  EXPECT_EQ(tally.live(), 20'000u);
}

}  // namespace
}  // namespace zeb
