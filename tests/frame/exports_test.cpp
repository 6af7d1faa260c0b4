#include "zeb/exports.h"

#include <gtest/gtest.h>

TEST(FrameExports, ReportVersionFourPointZero) { EXPECT_EQ(ZEBGetVersion(), 0x40000u); }
