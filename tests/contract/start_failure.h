// What a start under failing allocations may come to. It fails, with two exceptions that it shows
// afterwards: a failure while the standard errors are made leaves it without any of them, and an
// event counter that cannot be made is missing.
#ifndef ZEB_TESTS_CONTRACT_START_FAILURE_H
#define ZEB_TESTS_CONTRACT_START_FAILURE_H

#include <gtest/gtest.h>

#include <algorithm>

#include "contract/child_process.h"
#include "contract/event_totals.h"
#include "contract/library.h"

namespace contract {

inline constexpr std::size_t kLibraryCounterCount = 20;

// What a child that tries one start answers its parent.
enum StartOutcome : int {
  kRefused = ChildEnd::kPassed,  // null, as it should be
  kNeededFewer = 2,              // no allocation failed any more
  kDegraded = 3,                 // started although one failed
};

inline std::int64_t StandardErrorsOf(const Procs& zeb) {
  const std::int32_t ids[] = {0, 1, 2, 3};
  return std::count_if(std::begin(ids), std::end(ids), [&](std::int32_t id) {
    ZEBErrorObject* error = zeb.error.GetCoreError(id);
    zeb.error.Release(error);
    return error != nullptr;
  });
}

// A library that started although an allocation failed: exactly one of the two shows, and the rest
// works.
inline void ExpectDegraded(ZEBGetProcAddress find) {
  const Procs zeb = FetchAll(find);
  const std::int64_t errors = StandardErrorsOf(zeb);
  const std::size_t counters = Snapshot(zeb).size();
  if (errors == 4) {
    EXPECT_EQ(counters, kLibraryCounterCount - 1);
  } else {
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(counters, kLibraryCounterCount);
  }
  ZEBErrorObject* error = zeb.error.NewError("message", "component", 6, nullptr, nullptr);
  EXPECT_EQ(zeb.error.GetID(error), 6);
  zeb.error.Release(error);
  MakeNewAtoms(zeb, 100);
  zeb.string.AddRef(nullptr);
  EXPECT_EQ(zeb.frame.RegisterProcAddress("i", "m", "p", FakeProc(16)), 1);
  EXPECT_EQ(find("i", "m", "p"), FakeProc(16));
}

}  // namespace contract

#endif
