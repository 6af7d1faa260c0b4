// The protocol of base/read_section.h in every order of its steps, with a store buffer between the
// reader and memory as real processors have one.
#include <gtest/gtest.h>

#include "support/interleavings.h"

namespace zeb {
namespace {

using test::Interleavings;
using test::Step;

struct State {
  // Memory.
  int cell = 0;    // the reader's: odd while it is in a section
  int linked = 1;  // the object can be found
  int freed = 0;
  // The reader: two sections, one after the other.
  int readerAt = 0;
  int bufferedCell = -1;  // stored, but not yet seen by others
  int found = 0;
  int usedFreed = 0;
  // The writer.
  int writerAt = 0;
  int seenCell = 0;
};

struct Rules {
  bool heavyFence = true;
  bool unlinkFirst = true;
  bool announceFirst = true;
};

int ownCell(const State& s) { return s.bufferedCell >= 0 ? s.bufferedCell : s.cell; }

Step announce(State& s) {
  if (s.bufferedCell >= 0) return Step::blocked;  // one entry: the older store drains first
  s.bufferedCell = s.cell + 1;
  return Step::done;
}

Step search(State& s) {
  s.found = s.linked;
  return Step::done;
}

Step reader(State& s, const Rules& rules) {
  constexpr int kStepsPerSection = 4;
  if (s.readerAt == 2 * kStepsPerSection) return Step::finished;
  Step step = Step::done;
  switch (s.readerAt % kStepsPerSection) {
    case 0:
      step = rules.announceFirst ? announce(s) : search(s);
      break;
    case 1:
      step = rules.announceFirst ? search(s) : announce(s);
      break;
    case 2:
      if (s.found != 0 && s.freed != 0) s.usedFreed = 1;
      break;
    case 3:  // leaving is a release store: it drains after everything before it
      if (s.bufferedCell >= 0) return Step::blocked;
      s.bufferedCell = ownCell(s) + 1;
      break;
    default:
      break;
  }
  if (step == Step::done) ++s.readerAt;
  return step;
}

Step drain(State& s) {
  if (s.bufferedCell < 0) return Step::finished;
  s.cell = s.bufferedCell;
  s.bufferedCell = -1;
  return Step::done;
}

Step writer(State& s, const Rules& rules) {
  const auto unlink = [&] { s.linked = 0; };
  const auto look = [&] { s.seenCell = s.cell; };
  switch (s.writerAt++) {
    case 0:
      rules.unlinkFirst ? unlink() : look();
      return Step::done;
    case 1:
      if (rules.heavyFence) drain(s);
      return Step::done;
    case 2:
      rules.unlinkFirst ? look() : unlink();
      return Step::done;
    case 3:
      if (s.seenCell % 2 != 0 && s.cell == s.seenCell) {
        --s.writerAt;
        return Step::blocked;
      }
      s.freed = 1;
      return Step::done;
    default:
      --s.writerAt;
      return Step::finished;
  }
}

Interleavings<State> explore(const Rules& rules) {
  return {State{},
          {[rules](State& s) { return reader(s, rules); }, drain,
           [rules](State& s) { return writer(s, rules); }},
          [](const State& s) { return s.usedFreed != 0; }};
}

TEST(ReadSectionModelTest, NeverFreesWhatAReaderMayUse) {
  const auto all = explore({});
  EXPECT_FALSE(all.wentWrong());
  EXPECT_FALSE(all.deadlocked());
  EXPECT_GT(all.states(), 50u);
}

TEST(ReadSectionModelTest, NeedsTheHeavyFence) {
  EXPECT_TRUE(explore({.heavyFence = false}).wentWrong());
}

TEST(ReadSectionModelTest, NeedsTheWriterToUnlinkBeforeItLooks) {
  EXPECT_TRUE(explore({.unlinkFirst = false}).wentWrong());
}

TEST(ReadSectionModelTest, NeedsTheReaderToAnnounceItselfBeforeItSearches) {
  EXPECT_TRUE(explore({.announceFirst = false}).wentWrong());
}

}  // namespace
}  // namespace zeb
