// The job that digests in pieces, as a host sees it: what it reports, how it is cancelled, and what
// it does when the change counter moves under it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/support/error.h"
#include "common/support/progress.h"
#include "common/support/shared_buffer.h"
#include "common/tests/running_modules.h"
#include "host/job_client.h"
#include "interfaces/digest.h"
#include "interfaces/digester.h"
#include "interfaces/job.h"
#include "tests/module_folders.h"

namespace examples {
namespace {

using testing::ElementsAre;
using testing::StrEq;

using Report = std::pair<uint64_t, uint64_t>;  // done, total

// Hands each report to a function of the test.
class Listener : public ProgressListener {
 public:
  explicit Listener(std::function<bool(Report)> answer) : answer_(std::move(answer)) {}
  bool report(uint64_t done, uint64_t total) override { return answer_({done, total}); }

 private:
  std::function<bool(Report)> answer_;
};

class PieceJob : public testing::Test {
 protected:
  PieceJob() : running_({kModules}), job_(zeb()) {}

  SharedBuffer share(std::string text) {
    return SharedBuffer::keep(zeb().buffers, std::move(text));
  }

  Progress answerWith(std::function<bool(Report)> answer) {
    return Progress::to(zeb().progress, std::make_unique<Listener>(std::move(answer)));
  }

  uint64_t digestOf(std::string_view text) {
    HostingDigestProcs procs{};
    EXPECT_EQ(HostingFetchDigestProcs(zeb().getProcAddress, &procs), 1);
    uint64_t result = 0;
    EXPECT_FALSE(Error(zeb(), procs.Digest(&result, nullptr, text.data(), text.size())));
    return result;
  }

  HostingJobProcs procs() {
    HostingJobProcs procs{};
    EXPECT_EQ(HostingFetchJobProcs(zeb().getProcAddress, &procs), 1);
    return procs;
  }

  const Services& zeb() { return running_.services(); }

  RunningModules running_;
  JobClient job_;
};

TEST_F(PieceJob, GivesTheDigestOfTheWhole) {
  const SharedBuffer text = share(std::string(1000, 'x') + "end");
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, text, {}));
  EXPECT_EQ(result.digest, digestOf(text.bytes()));
  EXPECT_EQ(result.byteCount, 1003U);
  EXPECT_EQ(result.pieceCount, 39U);  // 38 of 26 bytes and one of 15
}

TEST_F(PieceJob, TakesPiecesOf64KibibytesOfALargeText) {
  const SharedBuffer text = share(std::string(size_t{41} * 65536, 'x'));
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, text, {}));
  EXPECT_EQ(result.digest, digestOf(text.bytes()));
  EXPECT_EQ(result.pieceCount, 41U);
}

TEST_F(PieceJob, DigestsAnEmptyText) {
  std::vector<Report> reports;
  const Progress progress = answerWith([&](Report report) {
    reports.push_back(report);
    return false;
  });
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, share(""), progress));
  EXPECT_EQ(result.digest, digestOf(""));
  EXPECT_THAT(reports, ElementsAre(Report(0, 0)));
}

TEST_F(PieceJob, ReadsTheTextWhereItStands) {
  std::string text = "a text that is long enough to stand in a block of its own";
  const void* const before = text.data();
  const SharedBuffer shared = share(std::move(text));
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, shared, {}));
  EXPECT_EQ(result.textAt, before);
}

TEST_F(PieceJob, ReportsBeforeTheFirstPieceAndAfterEach) {
  std::vector<Report> reports;
  const Progress progress = answerWith([&](Report report) {
    reports.push_back(report);
    return false;
  });
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, share("1234"), progress));
  EXPECT_THAT(reports,
              ElementsAre(Report(0, 4), Report(1, 4), Report(2, 4), Report(3, 4), Report(4, 4)));
}

TEST_F(PieceJob, StopsAtTheFirstYes) {
  std::vector<Report> reports;
  const Progress progress = answerWith([&](Report report) {
    reports.push_back(report);
    return report.first == 2;
  });
  PieceDigest result;
  const Error error = job_.digestInPieces(&result, share("1234"), progress);
  EXPECT_TRUE(JobClient::isCancellation(error));
  EXPECT_THAT(error.message(), StrEq("cancelled after 2 of 4 bytes"));
  EXPECT_THAT(reports, ElementsAre(Report(0, 4), Report(1, 4), Report(2, 4)));
  EXPECT_EQ(result.pieceCount, 0U);
}

TEST_F(PieceJob, StopsAlsoAtTheLastReport) {
  const Progress progress = answerWith([](Report report) { return report.first == report.second; });
  PieceDigest result;
  const Error error = job_.digestInPieces(&result, share("1234"), progress);
  EXPECT_TRUE(JobClient::isCancellation(error));
}

TEST_F(PieceJob, TakesAListenerThatThrowsForANo) {
  const Progress progress = answerWith([](Report) -> bool { throw std::runtime_error("deaf"); });
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, share("1234"), progress));
  EXPECT_EQ(result.pieceCount, 4U);
}

TEST_F(PieceJob, AsksForItsMethodsOnceWhileTheChangeCounterStandsStill) {
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, share("1234"), {}));
  EXPECT_EQ(result.timesAsked, 1U);
}

TEST_F(PieceJob, AsksForItsMethodsAgainWhenTheChangeCounterMoves) {
  const Progress progress = answerWith([&](Report report) {
    if (report.first == 1 || report.first == 3) zeb().frame.UnregisterInterface("AnybodyElses");
    return false;
  });
  const SharedBuffer text = share("1234");
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, text, progress));
  EXPECT_EQ(result.timesAsked, 3U);
  EXPECT_EQ(result.digest, digestOf(text.bytes()));
}

TEST_F(PieceJob, PassesOnThatAMethodHasGoneMeanwhile) {
  const Progress progress = answerWith([&](Report report) {
    if (report.first != 2) return false;
    // With the later one alone gone, the container would answer with the earlier one's Update.
    zeb().frame.UnregisterInterface(HOSTING_CHECKED_DIGESTER_INTERFACE);
    zeb().frame.UnregisterInterface(HOSTING_DIGESTER_INTERFACE);
    return false;
  });
  PieceDigest result;
  const Error error = job_.digestInPieces(&result, share("1234"), progress);
  EXPECT_THAT(error.message(), StrEq("Missing ZEB Method"));
  EXPECT_EQ(result.pieceCount, 0U);
}

TEST_F(PieceJob, TellsThatNobodyPublishesADigest) {
  running_.modules().unload("digest.so");
  PieceDigest result;
  const Error error = job_.digestInPieces(&result, share("1234"), {});
  EXPECT_THAT(error.component(), StrEq(HOSTING_JOB_COMPONENT));
  EXPECT_EQ(error.id(), HOSTING_JOB_ERROR_NO_DIGEST);
}

TEST_F(PieceJob, RefusesMissingTextAndMissingResult) {
  HostingPieceDigest result{};
  const Error noText(zeb(), procs().DigestInPieces(&result, nullptr, nullptr));
  EXPECT_EQ(noText.id(), HOSTING_JOB_ERROR_NO_TEXT);
  const Error noResult(zeb(), procs().DigestInPieces(nullptr, share("1234").get(), nullptr));
  EXPECT_EQ(noResult.id(), HOSTING_JOB_ERROR_NO_RESULT);
}

TEST_F(PieceJob, LeavesTheTextToItsLastHolder) {
  SharedBuffer first = share("a text that is long enough to stand in a block of its own");
  zeb().buffers.AddRef(first.get());
  const SharedBuffer second(zeb().buffers, first.get());
  first = {};
  PieceDigest result;
  ASSERT_FALSE(job_.digestInPieces(&result, second, {}));
  EXPECT_EQ(result.digest, digestOf("a text that is long enough to stand in a block of its own"));
}

}  // namespace
}  // namespace examples
