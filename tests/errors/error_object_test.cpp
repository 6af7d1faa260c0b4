#include "errors/error_object.h"

#include <gtest/gtest.h>

#include <thread>

#include "base/failure.h"
#include "errors/standard_errors.h"
#include "support/started_library.h"
#include "zeb/error.h"

namespace zeb::errors {
namespace {

using test::CountingHost;
using test::StartedLibrary;

int deletions = 0;
void* deletedInfo = nullptr;
void countDeletion(void* info) {
  ++deletions;
  deletedInfo = info;
}

class ErrorObjectTest : public testing::Test {
 protected:
  void SetUp() override {
    deletions = 0;
    deletedInfo = nullptr;
    newError_ = library_.proc<ZEBNewErrorProc>(ZEB_ERROR_INTERFACE, "NewError", "ZEBNewErrorProc");
  }

  StartedLibrary library_;
  ZEBNewErrorProc newError_ = nullptr;
  int info_ = 0;
};

TEST_F(ErrorObjectTest, CarriesWhatItWasMadeOf) {
  ZEBErrorObject* error = newError_("message", "component", -7, &info_, nullptr);
  EXPECT_STREQ(error->message.get()->text(), "message");
  EXPECT_STREQ(error->component.get()->text(), "component");
  EXPECT_EQ(error->id, -7);
  EXPECT_EQ(error->info, &info_);
  release(error);
  EXPECT_EQ(deletions, 0);
}

TEST_F(ErrorObjectTest, DeletesItsInfoOnceWithTheLastReference) {
  ZEBErrorObject* error = newError_("m", "c", 1, &info_, countDeletion);
  addReference(error);
  release(error);
  EXPECT_EQ(deletions, 0);
  release(error);
  EXPECT_EQ(deletions, 1);
  EXPECT_EQ(deletedInfo, &info_);
}

TEST_F(ErrorObjectTest, StillHasItsTextsWhenItsInfoIsDeleted) {
  static ZEBErrorObject* dying;
  static std::string seen;
  dying = newError_("seen from the end", "c", 1, &info_,
                    [](void*) { seen = dying->message.get()->text(); });
  release(dying);
  EXPECT_EQ(seen, "seen from the end");
}

TEST_F(ErrorObjectTest, GoesThoughItsInfoDeleteThrows) {
  const int64_t before = CountingHost::liveBlocks;
  ZEBErrorObject* error = newError_("m", "c", 1, nullptr, [](void*) { throw 7; });
  release(error);
  // Message and component stay in the ring of recent atoms.
  EXPECT_EQ(CountingHost::liveBlocks, before + 2);
}

TEST_F(ErrorObjectTest, SharesOneMessageAtomBetweenEqualMessages) {
  ZEBErrorObject* first = newError_("same", "c", 1, nullptr, nullptr);
  ZEBErrorObject* second = newError_("same", "c", 2, nullptr, nullptr);
  EXPECT_EQ(first->message.get(), second->message.get());
  release(first);
  release(second);
}

TEST_F(ErrorObjectTest, TellsTheHostEveryMessageAsItWasPassed) {
  release(newError_("told", "c", 1, nullptr, nullptr));
  release(newError_(nullptr, nullptr, 1, nullptr, nullptr));
  EXPECT_EQ(CountingHost::reports, (std::vector<std::string>{"told", ""}));
}

TEST_F(ErrorObjectTest, TakesNullTextsForEmptyOnes) {
  ZEBErrorObject* error = newError_(nullptr, nullptr, 1, nullptr, nullptr);
  EXPECT_STREQ(error->message.get()->text(), "");
  EXPECT_STREQ(error->component.get()->text(), "");
  release(error);
}

TEST_F(ErrorObjectTest, AnswersAFailureToMakeItWithTheFailuresError) {
  for (int64_t nth = 1;; ++nth) {
    deletions = 0;
    const size_t reports = CountingHost::reports.size();
    CountingHost::failAllocation(nth);
    ZEBErrorObject* error =
        newError_("a message nobody has", "a component too", 5, &info_, countDeletion);
    const bool failed = !CountingHost::failureIsPending();
    CountingHost::stopFailing();
    ASSERT_NE(error, nullptr);
    if (!failed) {
      EXPECT_EQ(error->id, 5);
      release(error);
      EXPECT_GT(nth, 2);
      break;
    }
    EXPECT_EQ(error, standardKst(kst::kOutOfMemory));
    EXPECT_EQ(deletions, 1);
    EXPECT_EQ(CountingHost::reports.size(), reports);
    release(error);
  }
  library_.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST_F(ErrorObjectTest, SurvivesAReportProcedureThatThrows) {
  const int64_t before = CountingHost::liveBlocks;
  hostState.errorReport = [](const char*) { throw std::string("from the host"); };
  ZEBErrorObject* error = newError_("m", "c", 5, &info_, countDeletion);
  hostState.errorReport = CountingHost::report;
  EXPECT_EQ(error, standardKst(kst::kUnknown));
  EXPECT_EQ(deletions, 1);
  release(error);
  EXPECT_EQ(CountingHost::liveBlocks, before + 2);  // the two atoms in the ring
}

TEST_F(ErrorObjectTest, IsCountedExactlyByManyThreads) {
  ZEBErrorObject* error = newError_("shared", "c", 1, &info_, countDeletion);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    addReference(error);
    threads.emplace_back([error] {
      for (int i = 0; i < 5000; ++i) {
        addReference(error);
        release(error);
      }
      release(error);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(error->references.load(), 1u);
  release(error);
  EXPECT_EQ(deletions, 1);
}

TEST_F(ErrorObjectTest, KnowsTheStandardErrors) {
  const char* const messages[] = {"Unknown Kesto Error", "Out of Memory", "", "Corrupt Data"};
  for (int32_t id = 0; id < 4; ++id) {
    EXPECT_STREQ(standardKst(id)->message.get()->text(), messages[id]);
    EXPECT_STREQ(standardKst(id)->component.get()->text(), "KST");
    EXPECT_EQ(standardKst(id)->id, id);
  }
  EXPECT_STREQ(standardZeb(0)->message.get()->text(), "Missing ZEB Method");
  EXPECT_STREQ(standardZeb(0)->component.get()->text(), "ZEB");
  EXPECT_EQ(standardKst(4), standardKst(0));
  EXPECT_EQ(standardKst(1000), standardKst(0));
  EXPECT_EQ(standardZeb(1), standardKst(0));
  EXPECT_EQ(standardKst(-1), nullptr);
}

TEST(StandardErrorsTest, AreAbsentOutsideARunningLibrary) {
  { const StartedLibrary library; }
  EXPECT_EQ(standardKst(0), nullptr);
  EXPECT_EQ(standardZeb(0), nullptr);
  EXPECT_NE(raisableKst(kst::kOutOfMemory), nullptr);
  EXPECT_NE(raisableZeb(zebid::kMissingMethod), nullptr);
}

TEST(StandardErrorsTest, AreAllThereOrNoneWhenMemoryIsShort) {
  StartedLibrary library;
  for (int64_t nth = 1;; ++nth) {
    releaseStandardErrors();
    CountingHost::failAllocation(nth);
    makeStandardErrors();
    const bool failed = !CountingHost::failureIsPending();
    CountingHost::stopFailing();
    for (int32_t id = 0; id < 4; ++id) ASSERT_EQ(standardKst(id) == nullptr, failed);
    ASSERT_EQ(standardZeb(0) == nullptr, failed);
    if (!failed) break;
  }
  library.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

}  // namespace
}  // namespace zeb::errors
