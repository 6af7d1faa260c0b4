// The inspection's answers as C++ objects.
#include "zeb/sdk/inspection.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "sdk/started.h"
#include "zeb/sdk/atom.hpp"

namespace {

namespace sdk = zeb::sdk;

class Inspecting : public Started {};

TEST_F(Inspecting, RegisteredProcsIncludeTheLibrarys) {
  const auto procs = sdk::registeredProcs();
  EXPECT_TRUE(std::any_of(procs.records().begin(), procs.records().end(), [](const auto& proc) {
    return std::string_view(proc.procName) == "ZEBInspectNewProcSnapshotProc";
  }));
}

TEST_F(Inspecting, LiveAtomsAndObjectsAreCounted) {
  const sdk::Atom atom("an atom to look for");
  const auto atoms = sdk::liveAtoms();
  const auto found = std::find_if(atoms.records().begin(), atoms.records().end(),
                                  [&](const auto& record) { return atom.text() == record.text; });
  EXPECT_NE(found, atoms.records().end());
  const auto objects = sdk::liveObjects();
  EXPECT_EQ(std::string_view(objects.records().front().kind), "proc");
  EXPECT_NE(objects.records().front().live, 0U);
}

TEST_F(Inspecting, LookUpIsExplained) {
  const auto found = sdk::explainLookUp("ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc");
  EXPECT_TRUE(found.found());
  auto missing = sdk::explainLookUp("ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc2");
  EXPECT_FALSE(missing.found());
  ASSERT_EQ(missing.versions().size(), 1U);
  EXPECT_EQ(std::string_view(missing.versions()[0]), "ZEBAddRefStringAtomProc");
  EXPECT_EQ(std::string_view(missing.nearest()[0]), "ZEBAddRefStringAtomProc");
  EXPECT_NE(missing.text().find("ZEBAddRefStringAtomProc2"), std::string_view::npos);
  EXPECT_EQ(missing.get().outcome, ZEB_LOOKUP_UNKNOWN_PROC);
}

TEST_F(Inspecting, AnswersCanBeMoved) {
  auto procs = sdk::registeredProcs();
  const auto size = procs.records().size();
  auto moved = std::move(procs);
  EXPECT_TRUE(procs.records().empty());  // NOLINT(bugprone-use-after-move): that is the point
  EXPECT_EQ(moved.records().size(), size);
  moved = sdk::registeredProcs();
  EXPECT_EQ(moved.records().size(), size);
}

}  // namespace
