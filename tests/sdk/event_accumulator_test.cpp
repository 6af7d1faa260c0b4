// What an accumulator adds up and what it reports, to the letter, over snapshots that the test
// decides.

#include "zeb/sdk/event_accumulator.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "sdk/fake_service.h"
#include "sdk/report_file.h"
#include "zeb/sdk/client_start.hpp"

namespace sdk_test {
namespace {

using zeb::sdk::EventSession;
using zeb::sdk::EventSnapshot;
using Accumulator = ZEB_T_MT::CZEBEventAccumulator;
using Records = std::vector<ZEBEventRecord>;

constexpr char kA[] = "event a";
constexpr char kB[] = "event b";
constexpr char kC[] = "event c";
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

const std::string kEvery = "\n==========";
const std::string kSignalled =
    " - only listing events that signaled at least once\n"
    "============================================================";

std::string Header(int sessions) {
  return "Total Number of Sessions: " + std::to_string(sessions) + "\n\nEvent List";
}

std::string Entry(const std::string& name, const std::string& criticality, const std::string& total,
                  const std::string& perSession) {
  return "\n\n" + name + "\n  Criticality:          " + criticality +
         "\n  Total Signals:        " + total + "\n  Signals Per Session: " + perSession;
}

ZEBEventRecord Record(const char* name, std::int64_t total, std::int32_t criticality = 10) {
  return {.total = total, .name = name, .criticality = criticality, .reserved = 0};
}

class EventReport : public ::testing::Test {
 protected:
  EventReport() { FakeService::Reset(); }
  void TearDown() override {
    Stop();
    EXPECT_EQ(FakeService::LiveSnapshots(), 0u);
    EXPECT_EQ(FakeService::liveCounters, 0);
  }

  void Start() { EXPECT_TRUE(zeb::sdk::startClient(&FakeService::GetProcAddress, {}, module_)); }
  void Stop() { zeb::sdk::stopClient(module_); }

  static EventSnapshot Snapshot(zeb::sdk::EventBinding& events, const Records& records) {
    FakeService::next = records;
    return EventSnapshot::take(events);
  }

  // A session that began and ended with these snapshots.
  void Session(Accumulator& to, const Records& start, const Records& end) {
    FakeService::next = start;
    EventSnapshot begun = to.beginSession();
    FakeService::next = end;
    to.endSession(std::move(begun));
  }

  // The total accumulated under a name; -1 when there is none.
  static std::int64_t Total(const Accumulator& of, const char* name) {
    const auto record = of.find(name);
    return record ? record->total : -1;
  }

  zeb::sdk::Module module_;
  Accumulator sum_{nullptr, 0, false, module_};  // writes no report
  ReportFile file_{"accumulator"};
};

// ---- Merging

TEST_F(EventReport, AddsTheDifferencesOfSessions) {
  EXPECT_EQ(sum_.level(), 8);
  Start();
  Session(sum_, {Record(kA, 10), Record(kB, 5)}, {Record(kA, 17), Record(kB, 5)});
  EXPECT_EQ(Total(sum_, kA), 7);
  EXPECT_EQ(Total(sum_, kB), 0);
  Session(sum_, {Record(kA, 100), Record(kB, 6)}, {Record(kA, 101), Record(kB, 9)});
  EXPECT_EQ(Total(sum_, kA), 8);
  EXPECT_EQ(Total(sum_, kB), 3);
  EXPECT_EQ(sum_.sessions(), 2);
}

TEST_F(EventReport, TellsCountersApartByTheAddressOfTheirName) {
  const std::string twin = kA;
  Start();
  Session(sum_, {Record(kA, 1), Record(twin.c_str(), 1)}, {Record(twin.c_str(), 4), Record(kA, 3)});
  EXPECT_EQ(Total(sum_, kA), 2);
  Session(sum_, {Record(twin.c_str(), 0)}, {Record(twin.c_str(), 50)});
  EXPECT_EQ(Total(sum_, kA), 2);
}

TEST_F(EventReport, TriesTheSameIndexFirst) {
  Start();
  Session(sum_, {Record(kB, 0), Record(kA, 0)}, {Record(kA, 100), Record(kA, 3)});
  EXPECT_EQ(Total(sum_, kA), 3);
  EXPECT_EQ(Total(sum_, kB), 0);
  Session(sum_, {Record(kA, 50), Record(kA, 1)}, {Record(kA, 500), Record(kA, 2)});
  EXPECT_EQ(Total(sum_, kA), 4);
}

TEST_F(EventReport, CountsNothingForACounterThatIsGoneAtTheEnd) {
  Start();
  Session(sum_, {Record(kA, 10), Record(kB, 1)}, {Record(kB, 2)});
  EXPECT_EQ(Total(sum_, kA), 0);
  EXPECT_EQ(Total(sum_, kB), 1);
}

TEST_F(EventReport, LeavesARecordThatALaterSessionLacks) {
  Start();
  Session(sum_, {Record(kA, 0), Record(kB, 0)}, {Record(kA, 5), Record(kB, 6)});
  Session(sum_, {Record(kA, 7)}, {Record(kB, 9), Record(kA, 8)});
  Session(sum_, {Record(kB, 7)}, {Record(kA, 9)});
  EXPECT_EQ(Total(sum_, kA), 6);
  EXPECT_EQ(Total(sum_, kB), 6);
}

TEST_F(EventReport, KnowsNoCounterMadeAfterItsFirstSessionBegan) {
  Start();
  Session(sum_, {Record(kA, 0)}, {Record(kB, 1), Record(kA, 1)});
  Session(sum_, {Record(kB, 1), Record(kA, 1)}, {Record(kB, 2), Record(kA, 2)});
  EXPECT_EQ(sum_.find(kB), std::nullopt);
  EXPECT_EQ(Total(sum_, kA), 2);
}

TEST_F(EventReport, SurvivesTotalsThatWrapAround) {
  Start();
  Session(sum_, {Record(kA, kMost)}, {Record(kA, std::numeric_limits<std::int64_t>::min())});
  EXPECT_EQ(Total(sum_, kA), 1);
  Session(sum_, {Record(kA, 0)}, {Record(kA, kMost)});
  EXPECT_EQ(Total(sum_, kA), std::numeric_limits<std::int64_t>::min());
}

TEST_F(EventReport, CountsOfOverlappingSessionsTheOneThatEndsLast) {
  Start();
  FakeService::next = {Record(kA, 0)};
  EventSnapshot first = sum_.beginSession();
  FakeService::next = {Record(kA, 10)};
  EventSnapshot second = sum_.beginSession();
  FakeService::next = {Record(kA, 15)};
  sum_.endSession(std::move(first));
  EXPECT_EQ(sum_.find(kA), std::nullopt);
  EXPECT_EQ(sum_.sessions(), 1);
  FakeService::next = {Record(kA, 30)};
  sum_.endSession(std::move(second));
  EXPECT_EQ(Total(sum_, kA), 20);
  EXPECT_EQ(sum_.sessions(), 2);
  EXPECT_EQ(FakeService::LiveSnapshots(), 1u);
}

TEST_F(EventReport, TakesSnapshotsFromElsewhere) {
  Start();
  const EventSnapshot unused = sum_.beginSession();
  sum_.endSession(Snapshot(module_.events, {Record(kA, 1)}),
                 Snapshot(module_.events, {Record(kA, 4)}));
  EXPECT_EQ(Total(sum_, kA), 3);
}

TEST_F(EventReport, MeasuresASessionByItsScope) {
  Start();
  FakeService::next = {Record(kA, 2)};
  {
    const EventSession session(sum_);
    EXPECT_EQ(sum_.sessions(), 0);
    FakeService::next = {Record(kA, 5)};
  }
  EXPECT_EQ(Total(sum_, kA), 3);
}

TEST_F(EventReport, FindsByTheTextOfTheName) {
  Start();
  EXPECT_EQ(sum_.find(kA), std::nullopt);
  Session(sum_, {Record(nullptr, 0), Record(kA, 0, -1)}, {Record(kA, 2, -1)});
  const auto found = sum_.find(std::string(kA).c_str());
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->name, static_cast<const char*>(kA));
  EXPECT_EQ(found->total, 2);
  EXPECT_EQ(found->criticality, -1);
  EXPECT_EQ(sum_.find("event"), std::nullopt);
  EXPECT_EQ(sum_.find(nullptr), std::nullopt);
}

// ---- The report

TEST_F(EventReport, SaysThatThereWasNoSession) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  EXPECT_EQ(file_.Text(), "");
  Stop();
  EXPECT_EQ(file_.Text(), Header(0) + kEvery + "\n(no monitoring sessions -- nothing to report)");
}

TEST_F(EventReport, SaysThatThereWasNoSessionOfSignals) {
  Accumulator signalled(file_.Name(), 0, true, module_);
  Start();
  Stop();
  EXPECT_EQ(file_.Text(),
            Header(0) + kSignalled + "\n(no monitoring sessions -- nothing to report)");
}

TEST_F(EventReport, ListsTheEventsInTheOrderOfTheirRecords) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(kB, 0, 5), Record(kA, 0, 1000), Record(kC, 0, 0)},
          {Record(kB, 7, 5), Record(kA, 0, 1000), Record(kC, 2000000, 0)});
  Session(every, {Record(kB, 0, 5)}, {Record(kB, 0, 5)});
  Session(every, {}, {});
  Stop();
  EXPECT_EQ(file_.Text(), Header(3) + kEvery + Entry(kB, "5", "7", " 2.333333") +
                              Entry(kA, "1000", "0", " 0.000000") +
                              Entry(kC, "0", "2000000", "666666.666667"));
}

TEST_F(EventReport, LeavesOutWhatIsBelowTheThreshold) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(kA, 0, -1), Record(kB, 0, 0)}, {Record(kA, 9, -1), Record(kB, 1, 0)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + Entry(kB, "0", "1", " 1.000000"));
}

TEST_F(EventReport, ListsEverythingFromALowEnoughThreshold) {
  Accumulator every(file_.Name(), -1, false, module_);
  Start();
  Session(every, {Record(kA, 0, -1)}, {Record(kA, 9, -1)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + Entry(kA, "-1", "9", " 9.000000"));
}

TEST_F(EventReport, ListsOnlyWhatWasSignalled) {
  Accumulator signalled(file_.Name(), 0, true, module_);
  Start();
  Session(signalled, {Record(kA, 3), Record(kB, 3), Record(kC, 3)},
          {Record(kA, 3), Record(kB, 4), Record(kC, 2)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kSignalled + Entry(kB, "10", "1", " 1.000000"));
}

TEST_F(EventReport, ListsNegativeTotalsAmongAll) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(kC, 3)}, {Record(kC, 2)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + Entry(kC, "10", "-1", "-1.000000"));
}

TEST_F(EventReport, SaysThatNoEventQualified) {
  Accumulator signalled(file_.Name(), 0, true, module_);
  Start();
  Session(signalled, {Record(kA, 3)}, {Record(kA, 3)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kSignalled + "\n(no events occured meeting given criteria)");
}

TEST_F(EventReport, SaysThatNoEventIsRegistered) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {}, {});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + "\n(no registered events)");
}

TEST_F(EventReport, SaysThatEventsAreUnsupportedWithoutAService) {
  FakeService::hasEvents = false;
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(kA, 1)}, {Record(kA, 2)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + "\n(ZEB event registry unsupported)");
}

TEST_F(EventReport, SaysThatEventsAreUnsupportedWhenNoCounterCanBeMade) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  FakeService::makesSnapshots = FakeService::makesCounters = false;
  Session(every, {}, {});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + "\n(ZEB event registry unsupported)");
}

TEST_F(EventReport, CutsAnEntryAt1024Characters) {
  const std::string name(2000, 'n');
  const std::string fitting(1024 - Entry("", "10", "1", " 1.000000").size(), 'f');
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(name.c_str(), 0), Record(fitting.c_str(), 0)},
          {Record(name.c_str(), 1), Record(fitting.c_str(), 1)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + "\n\n" + name.substr(0, 1022) +
                              Entry(fitting, "10", "1", " 1.000000"));
}

TEST_F(EventReport, IsTheSameForANameOfNoText) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(nullptr, 0)}, {Record(nullptr, 1)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + Entry("", "10", "1", " 1.000000"));
}

TEST_F(EventReport, BeginsAnewWithEachStart) {
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  Session(every, {Record(kA, 0)}, {Record(kA, 1)});
  Stop();
  EXPECT_EQ(FakeService::LiveSnapshots(), 0u);
  Start();
  EXPECT_EQ(file_.Text(), "");
  EXPECT_EQ(every.find(kA), std::nullopt);
  Session(every, {Record(kA, 0)}, {Record(kA, 3)});
  Stop();
  EXPECT_EQ(file_.Text(), Header(1) + kEvery + Entry(kA, "10", "3", " 3.000000"));
}

TEST_F(EventReport, IsNotWrittenWhereItCannotBeOpened) {
  const ReportFile lost("no such directory/report");
  Accumulator unwritable(lost.Name(), 0, false, module_);
  Accumulator unnamed(nullptr, 0, false, module_);
  Accumulator directory(".", 0, false, module_);
  Start();
  for (Accumulator* each : {&unwritable, &unnamed, &directory}) {
    Session(*each, {Record(kA, 0)}, {Record(kA, 1)});
    EXPECT_EQ(Total(*each, kA), 1);
  }
  Stop();
  EXPECT_FALSE(lost.Exists());
}

TEST_F(EventReport, IsNotWrittenByAnAccumulatorThatWasNotInitialised) {
  Accumulator every(file_.Name(), 0, false, module_);
  EXPECT_TRUE(
      zeb::sdk::startClient(&FakeService::GetProcAddress, {.lowest = 0, .highest = 7}, module_));
  Session(every, {Record(kA, 0)}, {Record(kA, 1)});
  Stop();
  EXPECT_FALSE(file_.Exists());
}

TEST_F(EventReport, LandsBesideTheExecutableWhateverTheCurrentDirectory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path("/");
  Accumulator every(file_.Name(), 0, false, module_);
  Start();
  EXPECT_EQ(std::filesystem::current_path(), "/");
  Stop();
  std::filesystem::current_path(before);
  EXPECT_TRUE(file_.Exists());
}

TEST_F(EventReport, MayHaveAnAbsolutePath) {
  const std::string path = file_.Path().string();
  Accumulator every(path.c_str(), 0, false, module_);
  Start();
  Stop();
  EXPECT_TRUE(file_.Exists());
}

TEST_F(EventReport, IsAbandonedWithItsRecordsWhenNobodyStops) {
  {
    Accumulator every(file_.Name(), 0, false, module_);
    Start();
    Session(every, {Record(kA, 0)}, {Record(kA, 1)});
    every.forget();
    EXPECT_EQ(every.find(kA), std::nullopt);
  }
  EXPECT_EQ(file_.Text(), "");
  EXPECT_EQ(FakeService::LiveSnapshots(), 1u);
  FakeService::Reset();
}

}  // namespace
}  // namespace sdk_test
