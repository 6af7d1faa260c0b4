// The ways in which a host's memory can run out.
#ifndef ZEB_TESTS_CONTRACT_FAILURE_H
#define ZEB_TESTS_CONTRACT_FAILURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "contract/host_memory.h"

namespace contract {

enum class Failure { kTheNthAlone, kAllFromTheNth, kByThrowing };

// For INSTANTIATE_TEST_SUITE_P: every way, and its name.
inline const auto kEveryFailure =
    ::testing::Values(Failure::kTheNthAlone, Failure::kAllFromTheNth, Failure::kByThrowing);

inline std::string NameOfFailure(const ::testing::TestParamInfo<Failure>& variant) {
  switch (variant.param) {
    case Failure::kTheNthAlone:
      return "TheNthAlone";
    case Failure::kAllFromTheNth:
      return "AllFromTheNth";
    case Failure::kByThrowing:
      break;
  }
  return "ByThrowing";
}

// The host's nth allocation from here on fails in this way.
inline void FailAt(Failure failure, std::uint64_t nth) {
  HostMemory<0>::FailAt(nth, failure != Failure::kTheNthAlone, failure == Failure::kByThrowing);
}

}  // namespace contract

#endif
