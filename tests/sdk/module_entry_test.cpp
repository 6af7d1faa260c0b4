// Modules that are a class each, started and stopped over the built library.
#include "zeb/sdk/module_entry.hpp"

#include <gmock/gmock.h>

#include "sdk/module_files.h"
#include "sdk/modules/greeting.hpp"
#include "sdk/started.h"
#include "zeb/event.h"
#include "zeb/sdk/publication.hpp"

namespace sdk_test {
namespace {

namespace sdk = zeb::sdk;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kGoes = "the greeter goes";

Mood wanted = Mood::good;
int32_t answerMood() { return static_cast<int32_t>(wanted); }

std::vector<std::string> logged;
void keepLogged(const char* message) { logged.emplace_back(message); }

class ModuleClass : public Started {
 protected:
  ModuleClass() {
    wanted = Mood::good;
    logged.clear();
  }

  sdk::LoadedModule start(const std::string& name) const {
    return {moduleFile(name), library.find(), {.unload = kUnload}};
  }

  // Why the module is refused; empty if it is not.
  std::string refusal(const std::string& name) const {
    try {
      const sdk::LoadedModule module = start(name);
      return "";
    } catch (const sdk::ModuleFailure& failure) {
      EXPECT_EQ(failure.kind(), sdk::ModuleFailure::Kind::refused);
      return failure.reason();
    }
  }

  // The same for a construction that ends so.
  std::string refusalIn(Mood mood) const {
    wanted = mood;
    const sdk::Publication<Moods> moods({.Mood = &answerMood});
    return refusal("greeter");
  }

  static uint64_t totalOf(const std::string& counter) {
    const auto& events = sdk::procs<sdk::Events>();
    uint32_t count = 0;
    ZEBEventRecord* const records = events.NewEventSnapshot(&count);
    uint64_t total = 0;
    for (uint32_t i = 0; i < count; ++i) {
      if (records[i].name == counter) total = static_cast<uint64_t>(records[i].total);
    }
    events.DeleteEventSnapshot(records);
    return total;
  }
};

TEST_F(ModuleClass, PublishesBetweenStartAndStop) {
  sdk::LoadedModule module = start("greeter");
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
  module.stop();
  EXPECT_EQ(sdk::tryProcs<Greeting>(), nullptr);
  EXPECT_THAT(reports, ElementsAre(kGoes)) << "and nothing else is reported";
}

TEST_F(ModuleClass, GivesItsObjectToItsProcs) {
  const sdk::LoadedModule module = start("greeter");
  for (uint64_t greeted = 1; greeted <= 3; ++greeted) {
    EXPECT_EQ(sdk::procs<Greeting>().Greet(), greeted);
  }
}

TEST_F(ModuleClass, StartsItsStaticObjectsToo) {
  const sdk::LoadedModule module = start("greeter");
  sdk::procs<Greeting>().Greet();
  sdk::procs<Greeting>().Greet();
  EXPECT_EQ(totalOf(kGreetingEvent), 2U);
}

TEST_F(ModuleClass, MakesAnObjectAnewForEachStart) {
  for (int run = 0; run < 2; ++run) {
    const sdk::LoadedModule module = start("greeter");
    EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
  }
  EXPECT_THAT(reports, ElementsAre(kGoes, kGoes));
}

TEST_F(ModuleClass, IsRefusedASecondStartAndGoesOn) {
  const sdk::LoadedModule module = start("greeter");
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
  EXPECT_EQ(refusal("greeter"), "refused to start: this module is running already");
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 2U);
  EXPECT_THAT(reports, Not(Contains(kGoes)));
}

TEST_F(ModuleClass, LetsNoExceptionOutOfItsStart) {
  EXPECT_EQ(refusalIn(Mood::exception), "refused to start: in no mood");
  EXPECT_EQ(refusalIn(Mood::number), "refused to start: an unknown exception was thrown");
  EXPECT_EQ(refusalIn(Mood::error), "refused to start: no greetings left");
  EXPECT_EQ(refusalIn(Mood::noMemory), "refused to start: std::bad_alloc");
  EXPECT_THAT(reports, Not(Contains(kGoes))) << "what was never made does not end";
}

TEST_F(ModuleClass, LeavesNothingBehindWhenItsConstructionFails) {
  EXPECT_NE(refusalIn(Mood::exception), "");
  EXPECT_EQ(sdk::tryProcs<Greeting>(), nullptr);
  EXPECT_EQ(totalOf(kGreetingEvent), 0U);
  const sdk::LoadedModule module = start("greeter");
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
}

TEST_F(ModuleClass, TellsTheHostsErrorReportWhyItDoesNotStart) {
  EXPECT_NE(refusalIn(Mood::exception), "");
  EXPECT_THAT(reports, ElementsAre("in no mood"));
}

TEST_F(ModuleClass, TellsItsLogWhyItDoesNotStart) {
  const sdk::SharedObject file(moduleFile("greeter"), kUnload);
  file.find<void (*)(sdk::Log)>("setModuleLog")(&keepLogged);
  EXPECT_NE(refusalIn(Mood::exception), "");
  EXPECT_THAT(logged, ElementsAre("in no mood"));
  file.find<void (*)(sdk::Log)>("setModuleLog")(nullptr);
}

TEST_F(ModuleClass, SaysWhichInterfaceItMissesAndLogsItOnce) {
  const sdk::SharedObject file(moduleFile("needing_greeter"), kUnload);
  file.find<void (*)(sdk::Log)>("setModuleLog")(&keepLogged);
  const std::string missing =
      "MoodInterface/Mood/MoodProc is not registered: there is no interface \"MoodInterface\"";
  EXPECT_THAT(refusal("needing_greeter"), testing::StartsWith("refused to start: " + missing));
  EXPECT_THAT(logged, ElementsAre(testing::StartsWith(missing)));
  EXPECT_THAT(reports, ElementsAre(testing::StartsWith(missing)));
  file.find<void (*)(sdk::Log)>("setModuleLog")(nullptr);

  const sdk::Publication<Moods> moods({.Mood = &answerMood});
  const sdk::LoadedModule module = start("needing_greeter");
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
}

TEST_F(ModuleClass, RefusesWhatIsNoLibrary) {
  const sdk::SharedObject file(moduleFile("greeter"), kUnload);
  file.find<void (*)(sdk::Log)>("setModuleLog")(&keepLogged);
  const auto start = file.find<ZEBModuleStartFunction>(ZEB_MODULE_START);
  EXPECT_EQ(start(nullptr), 0);
  EXPECT_EQ(start([](const char*, const char*, const char*) -> ZEBProc { return nullptr; }), 0);
  EXPECT_THAT(logged, ElementsAre(testing::StartsWith("the library cannot be reached"),
                                  testing::StartsWith("the library cannot be reached")));
  file.find<void (*)(sdk::Log)>("setModuleLog")(nullptr);
}

TEST_F(ModuleClass, IgnoresAStopWithoutAStart) {
  const sdk::SharedObject file(moduleFile("greeter"), kUnload);
  file.find<ZEBModuleStopFunction>(ZEB_MODULE_STOP)();
  EXPECT_THAT(reports, IsEmpty());
  sdk::LoadedModule module = start("greeter");
  module.stop();
  file.find<ZEBModuleStopFunction>(ZEB_MODULE_STOP)();
  EXPECT_THAT(reports, ElementsAre(kGoes));
}

TEST_F(ModuleClass, StandsBesideAnotherOfTheSameName) {
  const sdk::LoadedModule module = start("greeter");
  {
    const sdk::LoadedModule other = start("other_greeter");
    EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
    EXPECT_EQ(sdk::procs<OtherGreeting>().Greet(), 1U);
  }
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 2U);
  EXPECT_EQ(sdk::tryProcs<OtherGreeting>(), nullptr);
}

TEST_F(ModuleClass, LeavesAnothersInterfaceAlone) {
  const sdk::LoadedModule module = start("greeter");
  EXPECT_EQ(refusal("exporting_greeter"),
            "refused to start: GreetingInterface/Greet/GreetProc is published by somebody else");
  EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
}

TEST_F(ModuleClass, StartsAgainWithTheLibrary) {
  const sdk::SharedObject stays(moduleFile("greeter"), kUnload);
  {
    const sdk::LoadedModule module = start("greeter");
    EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
  }
  count = library.stop();
  sdk::Library again =
      sdk::Library::load(ZEB_LIBRARY_PATH, {.errorReport = &report, .unregisterCountStart = count});
  {
    const sdk::LoadedModule module(moduleFile("greeter"), again.find(), {.unload = kUnload});
    EXPECT_EQ(sdk::procs<Greeting>().Greet(), 1U);
    EXPECT_EQ(totalOf(kGreetingEvent), 1U);
  }
  count = again.stop();
  EXPECT_THAT(reports, Each(kGoes));
}

// This program exports its symbols, the SDK's inline functions among them, and the loader prefers
// them to those of a module that exports its own.
TEST(ModuleOfAnExportingHost, KeepsApartFromItsHost) {
  const sdk::SharedObject library(ZEB_LIBRARY_PATH, kUnload);
  const ZEBGetProcAddress find =
      library.find<ZEBInitializeFunction>("ZEBInitialize")(nullptr, nullptr, nullptr);
  ASSERT_NE(find, nullptr);
  {
    const sdk::LoadedModule module(moduleFile("exporting_greeter"), find, {.unload = kUnload});
    EXPECT_EQ(sdk::lookUp(), nullptr) << "the host itself is not attached";
    const auto greet = reinterpret_cast<GreetProc>(find("GreetingInterface", "Greet", "GreetProc"));
    ASSERT_NE(greet, nullptr);
    EXPECT_EQ(greet(), 1U);
  }
  EXPECT_EQ(find("GreetingInterface", "Greet", "GreetProc"), nullptr);
  library.find<ZEBTerminateFunction>("ZEBTerminate")();
}

}  // namespace
}  // namespace sdk_test
