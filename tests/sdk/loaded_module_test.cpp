// Loading, starting, stopping and unloading modules from a host.
#include "zeb/sdk/loaded_module.hpp"

#include <gmock/gmock.h>

#include <fstream>
#include <optional>
#include <vector>

#include "sdk/module_files.h"
#include "sdk/modules/greeting.hpp"
#include "sdk/started.h"
#include "zeb/sdk/atom.hpp"

namespace sdk_test {
namespace {

namespace sdk = zeb::sdk;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;
using Kind = sdk::ModuleFailure::Kind;

class LoadedModule : public Started {
 protected:
  sdk::ModuleFailure failure(const std::string& file,
                             const sdk::ModuleOptions& options = {.unload = kUnload}) const {
    try {
      const sdk::LoadedModule module(file, library.find(), options);
    } catch (const sdk::ModuleFailure& failure) {
      return failure;
    }
    ADD_FAILURE() << file << " was started";
    return {file, Kind::refused, "no failure"};
  }
};

TEST_F(LoadedModule, SaysWhyAFileCannotBeLoaded) {
  const sdk::ModuleFailure missing = failure("./no such module.so");
  EXPECT_EQ(missing.kind(), Kind::notLoaded);
  EXPECT_STREQ(missing.what(), ("./no such module.so: " + missing.reason()).c_str());
  EXPECT_EQ(missing.reason(),
            "cannot be loaded: cannot open shared object file: No such file or directory");
}

TEST_F(LoadedModule, SaysThatAFileIsNoModule) {
  const sdk::ModuleFailure other = failure("libc.so.6");
  EXPECT_EQ(other.kind(), Kind::noModule);
  EXPECT_EQ(other.reason(), "does not export ZEBModuleStart and ZEBModuleStop");
}

TEST_F(LoadedModule, NeedsBothFunctions) {
  for (const sdk::ModuleOptions& options :
       {sdk::ModuleOptions{.unload = kUnload, .startName = "beginQuietly"},
        sdk::ModuleOptions{.unload = kUnload, .stopName = "endBadly"}}) {
    EXPECT_EQ(failure(moduleFile("foreign"), options).kind(), Kind::noModule);
  }
}

TEST_F(LoadedModule, PassesOnWhatTheModuleReportedWhenItRefused) {
  const sdk::ModuleFailure refused = failure(moduleFile("refusing"));
  EXPECT_EQ(refused.kind(), Kind::refused);
  EXPECT_EQ(refused.reason(), "refused to start: no licence found; try again tomorrow");
  EXPECT_THAT(reports, ElementsAre("no licence found", "try again tomorrow", "no licence found"))
      << "the host's own procedure hears everything";
}

TEST_F(LoadedModule, DoesNotTakeOlderReportsForTheReason) {
  sdk::procs<sdk::Frame>().ReportError("something else");
  EXPECT_EQ(failure(moduleFile("silent")).reason(), "refused to start");
}

TEST_F(LoadedModule, IsNotStartedWithoutALibrary) {
  count = library.stop();
  EXPECT_EQ(failure(moduleFile("greeter")).reason(), "refused to start: the library does not run");
}

TEST_F(LoadedModule, MayHaveFunctionsOfOtherNames) {
  const sdk::LoadedModule module(
      moduleFile("foreign"), library.find(),
      {.unload = kUnload, .startName = "beginQuietly", .stopName = "endBadly"});
  EXPECT_NE(module.exported<ZEBModuleStartFunction>("beginBadly"), nullptr);
  EXPECT_EQ(module.exported<ZEBModuleStartFunction>("no such function"), nullptr);
}

TEST_F(LoadedModule, StandsExceptionsOfTheModule) {
  const sdk::ModuleFailure thrown =
      failure(moduleFile("foreign"),
              {.unload = kUnload, .startName = "beginBadly", .stopName = "endBadly"});
  EXPECT_EQ(thrown.kind(), Kind::refused);
  EXPECT_EQ(thrown.reason(), "refused to start: thrown by the module");
}

TEST_F(LoadedModule, StopsOnce) {
  const sdk::SharedObject file(moduleFile("foreign"), kUnload);
  const auto timesEnded = file.find<int32_t (*)()>("timesEnded");
  const int32_t before = timesEnded();
  {
    sdk::LoadedModule module(
        moduleFile("foreign"), library.find(),
        {.unload = kUnload, .startName = "beginQuietly", .stopName = "endBadly"});
    sdk::LoadedModule moved = std::move(module);
    EXPECT_EQ(timesEnded(), before);
    moved.stop();
    EXPECT_EQ(timesEnded(), before + 1);
    moved.stop();
  }
  EXPECT_EQ(timesEnded(), before + 1);
}

TEST_F(LoadedModule, MakesRoomForAnotherOne) {
  const auto started = [this](const char* file) {
    return sdk::LoadedModule(moduleFile(file), library.find(), {.unload = kUnload});
  };
  std::vector<sdk::LoadedModule> modules;
  modules.push_back(started("greeter"));
  ASSERT_NE(sdk::tryProcs<Greeting>(), nullptr);
  modules[0] = started("other_greeter");
  EXPECT_EQ(sdk::tryProcs<Greeting>(), nullptr) << "the greeter was stopped";
  modules.push_back(started("greeter"));
  modules.erase(modules.begin());
  EXPECT_NE(sdk::tryProcs<Greeting>(), nullptr) << "the greeter goes on";
}

// The file is this test's alone: where others have it stay, it cannot go.
TEST_F(LoadedModule, LeavesMemoryWhenThatWasChosen) {
  const std::string file = moduleFile("leaving_greeter");
  std::optional<sdk::LoadedModule> module(std::in_place, file, library.find(),
                                          sdk::ModuleOptions{.unload = sdk::Unload::atEnd});
  EXPECT_TRUE(isMapped(file));
  module.reset();
  EXPECT_FALSE(isMapped(file));
}

TEST_F(LoadedModule, StaysInMemoryOtherwise) {
  const std::string file = moduleFile("silent");
  EXPECT_EQ(failure(file, {}).kind(), Kind::refused);
  EXPECT_TRUE(isMapped(file));
  if (contract::kSanitized) return;
  void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  dlclose(handle);
  dlclose(handle);  // what the loader keeps for it would count as lost
  EXPECT_FALSE(isMapped(file));
}

TEST_F(LoadedModule, IsReplacedByAnotherFileOfItsName) {
  const std::string file = moduleFile("replaced");
  const auto replaceBy = [&](const std::string& name) {
    std::remove(file.c_str());
    std::ofstream(file, std::ios::binary)
        << std::ifstream(moduleFile(name), std::ios::binary).rdbuf();
  };
  replaceBy("greeter");
  {
    const sdk::LoadedModule module(file, library.find(), {.unload = sdk::Unload::atEnd});
    EXPECT_NE(sdk::tryProcs<Greeting>(), nullptr);
  }
  replaceBy("other_greeter");
  {
    const sdk::LoadedModule module(file, library.find(), {.unload = sdk::Unload::atEnd});
    EXPECT_EQ(sdk::tryProcs<Greeting>(), nullptr);
    EXPECT_NE(sdk::tryProcs<OtherGreeting>(), nullptr);
  }
  std::remove(file.c_str());
}

TEST(SharedObject, SaysWhichFileCannotBeLoadedAndWhy) {
  try {
    const sdk::SharedObject file("./no such file.so");
    FAIL() << "it was loaded";
  } catch (const sdk::LoadFailure& failure) {
    EXPECT_THAT(failure.what(), StartsWith("./no such file.so cannot be loaded: "));
    EXPECT_THAT(failure.what(), EndsWith(failure.reason()));
    EXPECT_THAT(failure.reason(), StartsWith("cannot open shared object file"));
  }
}

TEST(SharedObject, HasNoFunctionsWhenItWasClosed) {
  sdk::SharedObject file(moduleFile("silent"), kUnload);
  sdk::SharedObject moved = std::move(file);
  EXPECT_EQ(file.find<ZEBModuleStopFunction>(ZEB_MODULE_STOP), nullptr);
  EXPECT_NE(moved.find<ZEBModuleStopFunction>(ZEB_MODULE_STOP), nullptr);
  moved.close();
  EXPECT_EQ(moved.find<ZEBModuleStopFunction>(ZEB_MODULE_STOP), nullptr);
}

}  // namespace
}  // namespace sdk_test
