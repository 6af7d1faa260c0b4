// Every proc that is described, called with a null in each place where a pointer goes, and with
// each of its allocations failing: it answers as share/zeb/zeb.json says, gives back what it took,
// and ends the client's data as often as it is described to.

#include "description/sweep.h"

#include <gtest/gtest.h>

#include <string>

#include "zeb/sdk/description.hpp"

namespace description {

namespace {

std::string nameOf(const ::testing::TestParamInfo<SweepCase>& info) { return info.param.name; }

class NullArgument : public ::testing::TestWithParam<SweepCase> {};

TEST_P(NullArgument, IsAnsweredAsDescribed) {
  Sweep sweep(Sweep::HostOfPages());
  GetParam().call(sweep);
}

INSTANTIATE_TEST_SUITE_P(Of, NullArgument, ::testing::ValuesIn(nullSweep()), nameOf);

class FailedAllocation : public ::testing::TestWithParam<SweepCase> {};

TEST_P(FailedAllocation, IsAnsweredAsDescribed) {
  for (std::uint64_t nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    Sweep sweep(Sweep::HostOfObjects(), nth);
    GetParam().call(sweep);
    if (!sweep.allocationFailed() || HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Of, FailedAllocation, ::testing::ValuesIn(failureSweep()), nameOf);

TEST(FailureSweep, CallsEveryDescribedProc) {
  std::size_t procs = 0;
  for (const auto& interface : zeb::sdk::description::interfaces()) procs += interface.procs.size();
  EXPECT_EQ(failureSweep().size(), procs);
}

}  // namespace
}  // namespace description
