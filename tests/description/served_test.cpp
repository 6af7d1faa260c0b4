// The running library serves what is described.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contract/library.h"
#include "contract/proc_rows.h"
#include "zeb/sdk/description.hpp"

namespace description {
namespace {

using ::testing::IsEmpty;

using zeb::sdk::description::Interface;
using zeb::sdk::description::interfaces;
using zeb::sdk::description::Proc;
using Names = std::set<std::string>;

std::string nameOf(std::string_view interfaceName, std::string_view methodName,
                   std::string_view procName) {
  return std::string(interfaceName).append("/").append(methodName).append("/").append(procName);
}

Names described() {
  Names names;
  for (const Interface& interface : interfaces()) {
    for (const Proc& proc : interface.procs) {
      names.insert(nameOf(interface.name, proc.method, proc.name));
    }
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

TEST(Description, NamesEachProcOnce) {
  std::size_t procs = 0;
  for (const Interface& interface : interfaces()) procs += interface.procs.size();
  EXPECT_EQ(described().size(), procs);
}

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
  for (const Interface& interface : interfaces()) {
    for (const Proc& proc : interface.procs) {
      // The tables' texts are literals, which end with a zero.
      if (zeb.getProcAddress(interface.name.data(), proc.method.data(), proc.name.data()) ==
          nullptr) {
        unknown.push_back(nameOf(interface.name, proc.method, proc.name));
      }
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
