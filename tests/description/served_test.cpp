// The running library serves what share/zeb/zeb.json describes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "contract/library.h"
#include "contract/proc_rows.h"
#include "description/described_procs.h"

namespace description {
namespace {

using ::testing::IsEmpty;

using Names = std::set<std::string>;

std::string nameOf(const char* interfaceName, const char* methodName, const char* procName) {
  return std::string(interfaceName) + "/" + methodName + "/" + procName;
}

Names described() {
  Names names;
  for (const DescribedProc& proc : describedProcs()) {
    names.insert(nameOf(proc.interfaceName, proc.methodName, proc.procName));
  }
  return names;
}

// Those of `names` that are not among `others`.
std::vector<std::string> missing(const Names& names, const Names& others) {
  std::vector<std::string> found;
  std::set_difference(names.begin(), names.end(), others.begin(), others.end(),
                      std::back_inserter(found));
  return found;
}

TEST(Description, NamesEachProcOnce) { EXPECT_EQ(described().size(), describedProcs().size()); }

TEST(Description, NamesWhatARunningLibraryHasRegistered) {
  const contract::RunningLibrary zeb;
  ZEBInspectProcs inspect{};
  ASSERT_EQ(ZEBFetchInspectProcs(zeb.getProcAddress, &inspect), 1);
  std::uint32_t count = 0;
  ZEBInspectedProc* procs = inspect.NewProcSnapshot(&count);
  Names registered;
  for (const ZEBInspectedProc& proc : std::span(procs, count)) {
    registered.insert(nameOf(proc.interfaceName, proc.methodName, proc.procName));
  }
  inspect.DeleteSnapshot(procs);
  EXPECT_THAT(missing(registered, described()), IsEmpty()) << "registered, but not described";
  EXPECT_THAT(missing(described(), registered), IsEmpty()) << "described, but not registered";
}

TEST(Description, NamesProcsThatCanBeLookedUp) {
  const contract::RunningLibrary zeb;
  std::vector<std::string> unknown;
  for (const DescribedProc& proc : describedProcs()) {
    if (zeb.getProcAddress(proc.interfaceName, proc.methodName, proc.procName) == nullptr) {
      unknown.push_back(nameOf(proc.interfaceName, proc.methodName, proc.procName));
    }
  }
  EXPECT_THAT(unknown, IsEmpty());
}

TEST(Description, NamesTheProcsThatClientsWereBuiltAgainst) {
  Names published;
  for (const contract::ProcRow& row : contract::kProcRows) {
    published.insert(nameOf(row.interfaceName, row.methodName, row.procName));
  }
  EXPECT_THAT(missing(published, described()), IsEmpty());
}

}  // namespace
}  // namespace description
