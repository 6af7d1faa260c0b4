// When a search without a lock may call a node absent: a removal that moves it, in every order.
#include <gtest/gtest.h>

#include "support/interleavings.h"

namespace zeb {
namespace {

using test::Interleavings;
using test::Step;

// Nodes 1 and 2 belong into the first slot; 2 had to go to the second. The writer removes 1, which
// moves 2 down; the reader searches 2, which is there all the time.
struct State {
  int version = 0;
  int slots[3] = {1, 2, 0};
  int writerAt = 0;
  int readerAt = 0;
  int versionBefore = 0;
  int position = 0;
  int found = 0;
  int claimsAbsence = 0;
};

Step removeFirst(State& s) {
  switch (s.writerAt++) {
    case 0:
      ++s.version;
      return Step::done;
    case 1:
      s.slots[0] = s.slots[1];
      return Step::done;
    case 2:
      s.slots[1] = 0;
      return Step::done;
    case 3:
      ++s.version;
      return Step::done;
    default:
      --s.writerAt;
      return Step::finished;
  }
}

Step searchSecond(State& s, bool checksVersion) {
  switch (s.readerAt) {
    case 0:
      s.versionBefore = s.version;
      s.readerAt = 1;
      return Step::done;
    case 1: {
      const int node = s.slots[s.position++];
      if (node == 2) s.found = 1;
      if (node == 2 || node == 0) s.readerAt = 2;
      return Step::done;
    }
    case 2: {
      const bool undisturbed = s.versionBefore % 2 == 0 && s.version == s.versionBefore;
      s.claimsAbsence = s.found == 0 && (undisturbed || !checksVersion) ? 1 : 0;
      s.readerAt = 3;
      return Step::done;
    }
    default:
      return Step::finished;
  }
}

Interleavings<State> explore(bool checksVersion) {
  return {State{},
          {removeFirst, [=](State& s) { return searchSecond(s, checksVersion); }},
          [](const State& s) { return s.claimsAbsence != 0; }};
}

TEST(TableSearchModelTest, NeverClaimsTheAbsenceOfAMovedNode) {
  EXPECT_FALSE(explore(true).wentWrong());
}

TEST(TableSearchModelTest, WouldClaimItWithoutTheVersion) {
  EXPECT_TRUE(explore(false).wentWrong());
}

}  // namespace
}  // namespace zeb
