// Inspection while other threads change what it looks at.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "contract/inspected_library.h"

namespace contract {
namespace {

constexpr int kRounds = 200;

// Runs `disturb(thread)` in several threads again and again until `observe()` has been called
// kRounds times here.
template <class Disturb, class Observe>
void ObserveWhileDisturbed(Disturb disturb, Observe observe) {
  std::atomic<bool> over{false};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 3; ++thread) {
    threads.emplace_back([&over, &disturb, thread] {
      do disturb(thread);
      while (!over);
    });
  }
  for (int i = 0; i < kRounds && !::testing::Test::HasFailure(); ++i) observe();
  over = true;
  for (std::thread& thread : threads) thread.join();
}

TEST(BusyInspection, SeesAnInterfaceWhollyOrInPartButNeverTwice) {
  InspectedLibrary zeb;
  const auto own = zeb.InspectedProcs().size();
  ObserveWhileDisturbed(
      [&](int thread) {
        const std::string name = "Client " + std::to_string(thread);
        for (const char* method : {"a", "b", "c"}) zeb.Register(name.c_str(), method, "Proc");
        zeb.frame.UnregisterInterface(name.c_str());
      },
      [&] {
        const auto procs = zeb.InspectedProcs();
        EXPECT_GE(procs.size(), own);
        EXPECT_LE(procs.size(), own + 9);
        const auto key = [](const InspectedProc& it) {
          return std::tuple(it.interfaceName, it.methodName, it.procName);
        };
        const auto notRising = [&](const InspectedProc& a, const InspectedProc& b) {
          return !(key(a) < key(b));
        };
        EXPECT_EQ(std::adjacent_find(procs.begin(), procs.end(), notRising), procs.end());
      });
  EXPECT_EQ(zeb.InspectedProcs().size(), own);
}

TEST(BusyInspection, SeesHeldAtomsAmongThoseThatComeAndGo) {
  InspectedLibrary zeb;
  ZEBString* held = zeb.string.NewStringAtom("held all the time");
  ObserveWhileDisturbed(
      [&](int thread) {
        for (int i = 0; i < 100; ++i) {
          const std::string text = "passing " + std::to_string(thread) + " " + std::to_string(i);
          zeb.string.DeleteStringAtom(zeb.string.NewStringAtom(text.c_str()));
        }
      },
      [&] {
        const auto atoms = zeb.Atoms();
        EXPECT_EQ(atoms.count("held all the time"), 1u);
        for (const auto& [text, references] : atoms) EXPECT_GT(references, 0u) << text;
      });
  zeb.string.DeleteStringAtom(held);
}

TEST(BusyInspection, ExplainsWhileInterfacesComeAndGo) {
  InspectedLibrary zeb;
  ObserveWhileDisturbed(
      [&](int thread) {
        const std::string name = "Client " + std::to_string(thread);
        zeb.Register(name.c_str(), "Method", "Proc", 32);
        zeb.frame.UnregisterInterface(name.c_str());
      },
      [&] {
        const Explanation it = zeb.Explain("Client 1", "Method", "Proc");
        if (it.outcome == ZEB_LOOKUP_FOUND) {
          EXPECT_EQ(it.proc, FakeProc(32));
        } else {
          EXPECT_EQ(it.outcome, ZEB_LOOKUP_UNKNOWN_INTERFACE);
          EXPECT_EQ(it.proc, nullptr);
        }
      });
  EXPECT_EQ(zeb.Explain("Client 1", "Method", "Proc").wasUnregistered, 1);
}

TEST(BusyInspection, CountsObjectsThatComeAndGo) {
  InspectedLibrary zeb;
  ZEBString* name = zeb.Name("name");
  const auto before = zeb.Objects();
  ObserveWhileDisturbed(
      [&](int) {
        ZEBContainer* container = nullptr;
        EXPECT_EQ(zeb.container.NewFullContainer(&container, nullptr, name, nullptr, name, nullptr,
                                                 nullptr, 0),
                  nullptr);
        ZEBSharedBuffer* buffer = zeb.buffer.NewBuffer(8, nullptr, nullptr, nullptr, nullptr);
        ZEBErrorObject* error = zeb.error.NewError("m", "c", 1, nullptr, nullptr);
        ZEBProgress* progress = zeb.progress.NewNullProgress();
        zeb.progress.Release(progress);
        zeb.error.Release(error);
        zeb.buffer.Release(buffer);
        zeb.container.Release(container);
      },
      [&] {
        const auto now = zeb.Objects();
        for (const char* kind : {"shared buffer", "progress"}) {
          // A thread that is not seen at one moment may be seen twice, not more.
          EXPECT_LE(now.at(kind).live, before.at(kind).live + 6) << kind;
        }
        EXPECT_GE(now.at("container").live, now.at("container").kept);
      });
  const auto after = zeb.Objects();
  for (const char* kind : {"shared buffer", "progress", "error"}) {
    EXPECT_EQ(after.at(kind), before.at(kind)) << kind;
  }
  const LiveCount containers = after.at("container");
  EXPECT_EQ(containers.live - containers.kept,
            before.at("container").live - before.at("container").kept);
  zeb.DrainRecycled();
}

}  // namespace
}  // namespace contract
