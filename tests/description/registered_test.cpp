// The services register what share/zeb/zeb.json describes, in its order and nothing besides.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "description/described_procs.h"
#include "frame/services.h"

namespace zeb {
namespace {

using ::testing::ElementsAreArray;

using Names = std::vector<std::string>;

void append(Names& names, const char* interfaceName, std::span<const ZEBProcTableEntry> entries) {
  for (const ZEBProcTableEntry& entry : entries) {
    names.push_back(std::string(interfaceName) + "/" + entry.methodName + "/" + entry.procName);
  }
}

void append(Names& names, const ServiceTable& table) {
  append(names, table.interfaceName, table.entries);
  append(names, table.interfaceName, table.olderEntries);
}

// Interface "ZEB" is registered after the services; the description begins with it.
Names registered() {
  Names names;
  append(names, frame::frameService());
  for (const frame::Service& service : frame::services()) append(names, service.table());
  return names;
}

Names described() {
  Names names;
  for (const description::DescribedProc& proc : description::describedProcs()) {
    names.push_back(std::string(proc.interfaceName) + "/" + proc.methodName + "/" + proc.procName);
  }
  return names;
}

TEST(Services, RegisterWhatIsDescribed) {
  EXPECT_THAT(registered(), ElementsAreArray(described()));
}

}  // namespace
}  // namespace zeb
