// A host and a module that declare counters and accumulators as static objects, over the built
// library.

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "contract/event_totals.h"
#include "contract/library.h"
#include "sdk/counting_module.h"
#include "sdk/report_file.h"
#include "zeb/sdk/client_start.hpp"
#include "zeb/sdk/event_accumulator.hpp"
#include "zeb/sdk/event_counter.hpp"
#include "zeb/sdk/module_entry.h"

namespace sdk_test {
namespace {

using contract::RunningLibrary;
using contract::Snapshot;
using contract::Total;
using zeb::sdk::EventSession;

constexpr const char* kHostEvent = "the host's event";
constexpr const char* kAtomAllocated = contract::kAtomAllocated;

const ReportFile& File() {
  static const ReportFile file("host");
  return file;
}

zeb::sdk::EventCounter counter(kHostEvent, 40);
ZEB_T_MT::CZEBEventAccumulator accumulator(File().Name(), 40, true);

bool IsRegistered(const contract::Procs& zeb, const std::string& name) {
  for (const ZEBEventRecord& record : Snapshot(zeb)) {
    if (name == record.name) return true;
  }
  return false;
}

// The counting module, loaded.
class CountingModule {
 public:
  CountingModule() = default;
  ~CountingModule() { dlclose(handle_); }
  CountingModule(const CountingModule&) = delete;
  CountingModule& operator=(const CountingModule&) = delete;

 private:
  static void* Load() {
    void* handle = dlopen(COUNTING_MODULE_PATH,
                          RTLD_NOW | RTLD_LOCAL | (contract::kSanitized ? RTLD_NODELETE : 0));
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return handle;
  }
  void* const handle_ = Load();

 public:
  const ZEBModuleStartFunction start =
      contract::Exported<ZEBModuleStartFunction>(handle_, ZEB_MODULE_START);
  const ZEBModuleStopFunction stop =
      contract::Exported<ZEBModuleStopFunction>(handle_, ZEB_MODULE_STOP);
  const CountingModuleSignal signal =
      contract::Exported<CountingModuleSignal>(handle_, "signalModule");
  const CountingModuleObjects objects =
      contract::Exported<CountingModuleObjects>(handle_, "countModuleObjects");
};

class SdkHost : public ::testing::Test {
 protected:
  SdkHost() { EXPECT_TRUE(zeb::sdk::startClient(Zeb().getProcAddress)); }
  void TearDown() override {
    zeb::sdk::stopClient();
    EXPECT_FALSE(IsRegistered(Zeb(), kHostEvent));
  }

  const RunningLibrary& Zeb() const { return *library_; }

  std::optional<RunningLibrary> library_{std::in_place};
};

TEST_F(SdkHost, SeesItsCounterInTheLibrarysSnapshot) {
  EXPECT_TRUE(counter.registered());
  counter.signal(3);
  counter.signal();
  EXPECT_EQ(Total(Zeb(), kHostEvent), 4);
}

TEST_F(SdkHost, ReportsWhatTheSessionsCounted) {
  counter.signal(100);
  for (int i = 1; i <= 2; ++i) {
    const EventSession session(accumulator);
    counter.signal(3);
    Zeb().string.DeleteStringAtom(
        Zeb().string.NewStringAtom(("an atom of session " + std::to_string(i)).c_str()));
  }
  counter.signal(100);
  const auto found = accumulator.find(kHostEvent);
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->total, 6);
  EXPECT_EQ(found->criticality, 40);
  ASSERT_TRUE(accumulator.find(kAtomAllocated).has_value());
  EXPECT_EQ(accumulator.find(kAtomAllocated)->total, 2);
  zeb::sdk::stopClient();
  const std::string text = File().Text();
  EXPECT_TRUE(
      text.starts_with("Total Number of Sessions: 2\n\nEvent List"
                       " - only listing events that signaled at least once\n"
                       "============================================================"
                       "\n\nthe host's event\n  Criticality:          40\n"
                       "  Total Signals:        6\n  Signals Per Session:  3.000000"))
      << text;
  EXPECT_NE(text.find("\n\n" + std::string(kAtomAllocated) +
                      "\n  Criticality:          60\n  Total Signals:        2\n"
                      "  Signals Per Session:  1.000000"),
            std::string::npos)
      << text;
}

TEST_F(SdkHost, SaysWhenNothingWasMeasured) {
  zeb::sdk::stopClient();
  EXPECT_EQ(File().Text(),
            "Total Number of Sessions: 0\n\nEvent List"
            " - only listing events that signaled at least once\n"
            "============================================================"
            "\n(no monitoring sessions -- nothing to report)");
}

TEST_F(SdkHost, HasSessionsOnAllItsThreads) {
  constexpr int kThreads = 4;
  constexpr int kSessions = 100;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([] {
      for (int session = 0; session < kSessions; ++session) {
        const EventSession measured(accumulator);
        counter.signal();
        (void)accumulator.find(kHostEvent);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(accumulator.sessions(), kThreads * kSessions);
  EXPECT_EQ(Total(Zeb(), kHostEvent), kThreads * kSessions);
  const auto found = accumulator.find(kHostEvent);
  ASSERT_TRUE(found.has_value()) << "the last session to end was the only one open";
  EXPECT_GT(found->total, 0);
}

TEST_F(SdkHost, StartsAgainWithAnotherLibrary) {
  counter.signal();
  zeb::sdk::stopClient();
  library_.reset();
  library_.emplace();
  ASSERT_TRUE(zeb::sdk::startClient(Zeb().getProcAddress));
  counter.signal(2);
  EXPECT_EQ(Total(Zeb(), kHostEvent), 2);
}

TEST_F(SdkHost, KeepsApartFromItsModule) {
  const CountingModule module;
  EXPECT_EQ(module.objects(), 1u);
  EXPECT_FALSE(IsRegistered(Zeb(), COUNTING_MODULE_EVENT));
  ASSERT_EQ(module.start(Zeb().getProcAddress), 1);
  EXPECT_EQ(module.start(Zeb().getProcAddress), 0);
  module.signal(5);
  counter.signal(1);
  EXPECT_EQ(Total(Zeb(), COUNTING_MODULE_EVENT), 5);
  EXPECT_EQ(Total(Zeb(), kHostEvent), 1);
  zeb::sdk::stopClient();
  EXPECT_TRUE(IsRegistered(Zeb(), COUNTING_MODULE_EVENT));
  EXPECT_FALSE(IsRegistered(Zeb(), kHostEvent));
  module.stop();
  EXPECT_FALSE(IsRegistered(Zeb(), COUNTING_MODULE_EVENT));
}

TEST_F(SdkHost, MeasuresItsModulesEventsToo) {
  const CountingModule module;
  ASSERT_EQ(module.start(Zeb().getProcAddress), 1);
  {
    const EventSession session(accumulator);
    module.signal(7);
  }
  ASSERT_TRUE(accumulator.find(COUNTING_MODULE_EVENT).has_value());
  EXPECT_EQ(accumulator.find(COUNTING_MODULE_EVENT)->total, 7);
  zeb::sdk::stopClient();  // writes the report while the module's name is there
  module.stop();
}

TEST_F(SdkHost, LosesAServiceThatIsUnregisteredForGood) {
  zeb::sdk::Module module;  // the loss is for ever
  const ReportFile file("lost");
  const zeb::sdk::EventCounter lost("a lost event", 1, module);
  zeb::sdk::EventAccumulator sum(file.Name(), 0, false, module);
  ASSERT_TRUE(zeb::sdk::startClient(Zeb().getProcAddress, {}, module));
  Zeb().frame.UnregisterInterface(ZEB_EVENT_INTERFACE);
  lost.signal(2);  // through the service that registered it
  EXPECT_EQ(Total(Zeb(), "a lost event"), 2);
  { const EventSession session(sum); }
  EXPECT_EQ(sum.sessions(), 1);
  EXPECT_EQ(sum.find("a lost event"), std::nullopt);
  zeb::sdk::stopClient(module);
  EXPECT_FALSE(IsRegistered(Zeb(), "a lost event"));
  EXPECT_EQ(file.Text(),
            "Total Number of Sessions: 1\n\nEvent List\n=========="
            "\n(ZEB event registry unsupported)");
}

}  // namespace
}  // namespace sdk_test
