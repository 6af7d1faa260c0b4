#include "base/lazy_list.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Log = std::vector<std::string>;

// Notes what happens to it. It leaves the process's list at once, so that each test has a list of
// its own to which it adds what it wants, in the order that it wants.
class Noted final : public ZEB_T_MT::LazyTerminate {
 public:
  Noted(Log& log, std::string name, int32_t level, bool succeeds = true)
      : LazyTerminate(level), log_(log), name_(std::move(name)), succeeds_(succeeds) {
    zeb::lazyList.remove(this);
  }

  bool initialise() override {
    log_.push_back("init " + name_);
    return succeeds_;
  }
  void terminate() override { log_.push_back("term " + name_); }

 private:
  Log& log_;
  const std::string name_;
  const bool succeeds_;
};

class LazyList : public testing::Test {
 protected:
  // The first object of the list is the one added last.
  void add(const std::string& name, int32_t level, bool succeeds = true) {
    objects_.push_back(std::make_unique<Noted>(log, name, level, succeeds));
    list.pushHead(objects_.back().get());
  }

  Log log;
  zeb::LazyList list;

 private:
  std::vector<std::unique_ptr<Noted>> objects_;
};

TEST_F(LazyList, InitialisesInListOrder) {
  add("a", 1);
  add("b", 2);
  add("c", 0);
  EXPECT_TRUE(zeb::initialiseLazyList(list));
  EXPECT_EQ(log, (Log{"init c", "init b", "init a"}));
}

TEST_F(LazyList, TerminatesInListOrder) {
  add("a", 1);
  add("b", 2);
  add("c", 0);
  zeb::terminateLazyList(list);
  EXPECT_EQ(log, (Log{"term c", "term b", "term a"}));
}

TEST_F(LazyList, InitialisesTheLowestAndTheHighestLevel) {
  add("high", 65000);
  add("low", 0);
  EXPECT_TRUE(zeb::initialiseLazyList(list));
  EXPECT_EQ(log, (Log{"init low", "init high"}));
}

TEST_F(LazyList, LeavesLevelsOutsideTheBoundsAlone) {
  add("just above", 65001);
  add("highest", INT32_MAX);
  add("inside", 7);
  add("just below", -1);
  add("lowest", INT32_MIN);
  EXPECT_TRUE(zeb::initialiseLazyList(list));
  EXPECT_EQ(log, Log{"init inside"});
}

TEST_F(LazyList, TerminatesLevelsOutsideTheBoundsToo) {
  add("above", 65001);
  add("below", -1);
  zeb::terminateLazyList(list);
  EXPECT_EQ(log, (Log{"term below", "term above"}));
}

TEST_F(LazyList, TerminatesWhatItPassedWhenOneFails) {
  add("never reached", 1);
  add("fails", 1, false);
  add("skipped", 65001);
  add("first", 1);
  EXPECT_FALSE(zeb::initialiseLazyList(list));
  EXPECT_EQ(log, (Log{"init first", "init fails", "term first", "term skipped"}));
}

TEST_F(LazyList, TerminatesNothingWhenTheFirstFails) {
  add("never reached", 1);
  add("fails", 1, false);
  EXPECT_FALSE(zeb::initialiseLazyList(list));
  EXPECT_EQ(log, Log{"init fails"});
}

TEST_F(LazyList, DoesNotMindAFailureOutsideTheBounds) {
  add("last", 1);
  add("would fail", -1, false);
  EXPECT_TRUE(zeb::initialiseLazyList(list));
  EXPECT_EQ(log, Log{"init last"});
}

TEST_F(LazyList, SucceedsWhenItIsEmpty) {
  EXPECT_TRUE(zeb::initialiseLazyList(list));
  zeb::terminateLazyList(list);
  EXPECT_EQ(log, Log{});
}

// --- The process's own list ---

TEST(LazyTerminate, LinksItselfAtTheHeadOfTheProcessList) {
  const auto* const oldHead = zeb::lazyList.head();
  const uint64_t oldCount = zeb::lazyList.count();
  const ZEB_T_MT::LazyTerminate first(1);
  const ZEB_T_MT::LazyTerminate second(2);
  EXPECT_EQ(zeb::lazyList.head(), &second);
  EXPECT_EQ(second.older(), &first);
  EXPECT_EQ(first.older(), oldHead);
  EXPECT_EQ(zeb::lazyList.count(), oldCount + 2);
  EXPECT_EQ(first.level(), 1);
  EXPECT_EQ(second.level(), 2);
}

TEST(LazyTerminate, LeavesTheProcessListWhenItIsDestroyed) {
  const auto* const oldHead = zeb::lazyList.head();
  const uint64_t oldCount = zeb::lazyList.count();
  auto first = std::make_unique<ZEB_T_MT::LazyTerminate>(1);
  auto second = std::make_unique<ZEB_T_MT::LazyTerminate>(1);
  first.reset();
  EXPECT_EQ(zeb::lazyList.head(), second.get());
  EXPECT_EQ(second->older(), oldHead);
  second.reset();
  EXPECT_EQ(zeb::lazyList.head(), oldHead);
  EXPECT_EQ(zeb::lazyList.count(), oldCount);
}

TEST(LazyTerminate, InitialisesToSuccessUnlessItIsToldOtherwise) {
  ZEB_T_MT::LazyTerminate plain(1);
  EXPECT_TRUE(plain.initialise());
  plain.terminate();
  plain.forget();
  EXPECT_EQ(zeb::lazyList.head(), &plain);
}

}  // namespace
