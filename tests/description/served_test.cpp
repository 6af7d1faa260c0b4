// The running library serves what share/zeb/zeb.json describes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "contract/library.h"
#include "contract/proc_rows.h"
#include "description/described_procs.h"

namespace description {
namespace {

using ::testing::IsEmpty;

std::string nameOf(const char* interfaceName, const char* methodName, const char* procName) {
  return std::string(interfaceName) + "/" + methodName + "/" + procName;
}

TEST(Description, NamesOnlyServedProcs) {
  const contract::RunningLibrary zeb;
  std::vector<std::string> missing;
  for (const DescribedProc& proc : describedProcs()) {
    if (zeb.getProcAddress(proc.interfaceName, proc.methodName, proc.procName) == nullptr) {
      missing.push_back(nameOf(proc.interfaceName, proc.methodName, proc.procName));
    }
  }
  EXPECT_THAT(missing, IsEmpty());
}

TEST(Description, NamesTheProcsThatClientsWereBuiltAgainst) {
  std::set<std::string> described;
  for (const DescribedProc& proc : describedProcs()) {
    described.insert(nameOf(proc.interfaceName, proc.methodName, proc.procName));
  }
  std::vector<std::string> forgotten;
  for (const contract::ProcRow& row : contract::kProcRows) {
    const std::string name = nameOf(row.interfaceName, row.methodName, row.procName);
    if (!described.contains(name)) forgotten.push_back(name);
  }
  EXPECT_THAT(forgotten, IsEmpty());
}

}  // namespace
}  // namespace description
