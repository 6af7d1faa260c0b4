// Inspection when memory runs out: every allocation of every snapshot fails once, alone and with
// all that follow. And what inspection leaves behind, which is nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "contract/child_process.h"
#include "contract/inspected_library.h"

namespace contract {
namespace {

using ::testing::IsEmpty;

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

class FailingSnapshot : public ::testing::TestWithParam<bool> {
 protected:
  // `take(zeb)` answers a snapshot or null.
  template <class Take>
  static void Sweep(Take take) {
    ExpectPassesInFreshChild([&] {
      InspectedLibrary zeb(Host::WithObjectProcs(Reports::Told()));
      zeb.Register("Client", "Method", "Proc");
      const std::uint64_t live = Host::LiveBlocks();
      std::uint64_t nth = 0;
      for (bool failed = true; failed;) {
        SCOPED_TRACE(++nth);
        Host::FailAt(nth, GetParam());
        void* snapshot = take(zeb);
        failed = Host::StopFailing();
        EXPECT_EQ(snapshot == nullptr, failed);
        zeb.inspect.DeleteSnapshot(snapshot);
        EXPECT_EQ(Host::LiveBlocks(), live);
      }
      EXPECT_GT(nth, 1u) << "the snapshot allocates nothing";
      EXPECT_THAT(Reports::Take(), IsEmpty());
      zeb.Stop();
      EXPECT_THAT(Reports::Take(), IsEmpty());
      EXPECT_EQ(Host::LiveBlocks(), 0u);
      EXPECT_EQ(Host::ForeignFrees(), 0u);
    });
  }
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingSnapshot, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "AllFromTheNth" : "TheNthAlone");
});

TEST_P(FailingSnapshot, ShowsNoProcs) {
  Sweep([](const InspectedLibrary& zeb) {
    std::uint32_t count = 77;
    void* snapshot = zeb.inspect.NewProcSnapshot(&count);
    EXPECT_EQ(count == 0, snapshot == nullptr);
    return snapshot;
  });
}

TEST_P(FailingSnapshot, ShowsNoAtoms) {
  Sweep([](const InspectedLibrary& zeb) {
    std::uint32_t count = 77;
    void* snapshot = zeb.inspect.NewAtomSnapshot(&count);
    EXPECT_EQ(count == 0, snapshot == nullptr);
    return snapshot;
  });
}

TEST_P(FailingSnapshot, ShowsNoObjects) {
  Sweep([](const InspectedLibrary& zeb) {
    std::uint32_t count = 77;
    void* snapshot = zeb.inspect.NewObjectSnapshot(&count);
    EXPECT_EQ(count == 0, snapshot == nullptr);
    return snapshot;
  });
}

TEST_P(FailingSnapshot, ExplainsNothing) {
  Sweep([](const InspectedLibrary& zeb) -> void* {
    return zeb.inspect.NewLookupExplanation("Client", "Method", "Prox");
  });
}

TEST(InspectionMemory, IsGivenBackWithTheSnapshot) {
  ExpectPassesInFreshChild([] {
    InspectedLibrary zeb(Host::WithObjectProcs());
    const std::uint64_t live = Host::LiveBlocks();
    zeb.InspectedProcs();
    zeb.Atoms();
    zeb.Objects();
    zeb.Explain("unknown", "unknown", "unknown");
    EXPECT_EQ(Host::LiveBlocks(), live);
  });
}

// Names that are remembered hold neither memory nor atoms.
TEST(InspectionMemory, HoldsNothingForUnregisteredNames) {
  ExpectPassesInFreshChild([] {
    InspectedLibrary zeb(Host::WithObjectProcs(Reports::Told()));
    ForgetRecentAtoms(zeb);
    const std::uint64_t live = Host::LiveBlocks();
    const auto atoms = zeb.Atoms().size();
    for (int i = 0; i < 100; ++i) {
      const std::string name = "Client " + std::to_string(i);
      zeb.Register(name.c_str(), "Method", "Proc");
      zeb.frame.UnregisterInterface(name.c_str());
    }
    ForgetRecentAtoms(zeb);
    EXPECT_EQ(zeb.Explain("Client 99", "Method", "Proc").wasUnregistered, 1);
    EXPECT_EQ(Host::LiveBlocks(), live);
    EXPECT_EQ(zeb.Atoms().size(), atoms);
    zeb.Stop();
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
  });
}

}  // namespace
}  // namespace contract
