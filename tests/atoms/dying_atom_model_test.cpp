// Why an atom's count never rises from 0: two makers and a releaser in every order of their steps.
#include <gtest/gtest.h>

#include "support/interleavings.h"

namespace zeb::atoms {
namespace {

using test::Interleavings;
using test::Step;

struct Maker {
  int at = 0;
  int seenCount = 0;
  int holds = 0;  // the atom that is being released
};

struct State {
  int count = 1;  // the releaser's reference
  int inTable = 1;
  Maker makers[2];
  int releaserAt = 0;
};

// Adds a reference by a compare-and-swap from a count above 0.
Step makeByComparing(State& s, Maker& maker) {
  switch (maker.at) {
    case 0:                               // find
      maker.at = s.inTable != 0 ? 1 : 3;  // not there: a new atom is made
      return Step::done;
    case 1:
      maker.seenCount = s.count;
      maker.at = maker.seenCount != 0 ? 2 : 0;  // dying: search again
      return Step::done;
    case 2:
      if (s.count == maker.seenCount) {
        ++s.count;
        maker.holds = 1;
        maker.at = 3;
      } else {
        maker.at = 1;
      }
      return Step::done;
    default:
      return Step::finished;
  }
}

// Adds a reference first and takes it back if the count was 0.
Step makeByAddingFirst(State& s, Maker& maker) {
  switch (maker.at) {
    case 0:
      maker.at = s.inTable != 0 ? 1 : 3;
      return Step::done;
    case 1:
      maker.seenCount = s.count++;
      maker.holds = maker.seenCount != 0 ? 1 : 0;
      maker.at = maker.holds != 0 ? 3 : 2;
      return Step::done;
    case 2:
      --s.count;
      maker.at = 0;
      return Step::done;
    default:
      return Step::finished;
  }
}

Step release(State& s) {
  switch (s.releaserAt) {
    case 0:
      s.releaserAt = --s.count == 0 ? 1 : 2;
      return Step::done;
    case 1:  // the last reference went: out of the table
      s.inTable = 0;
      s.releaserAt = 2;
      return Step::done;
    default:
      return Step::finished;
  }
}

bool somebodyHoldsARemovedAtom(const State& s) {
  return s.inTable == 0 && (s.makers[0].holds != 0 || s.makers[1].holds != 0);
}

template <class Make>
Interleavings<State> explore(Make make) {
  return {State{},
          {[make](State& s) { return make(s, s.makers[0]); },
           [make](State& s) { return make(s, s.makers[1]); }, release},
          somebodyHoldsARemovedAtom};
}

TEST(DyingAtomModelTest, IsNeverHeldByAMakerThatCompares) {
  const auto all = explore(makeByComparing);
  EXPECT_FALSE(all.wentWrong());
  EXPECT_GT(all.states(), 50u);
}

TEST(DyingAtomModelTest, IsHeldByASecondMakerIfReferencesAreAddedFirst) {
  EXPECT_TRUE(explore(makeByAddingFirst).wentWrong());
}

}  // namespace
}  // namespace zeb::atoms
