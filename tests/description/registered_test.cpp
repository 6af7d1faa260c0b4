// The services register what is described, in its order and nothing besides.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "frame/services.h"
#include "zeb/sdk/description.hpp"

namespace zeb {
namespace {

using ::testing::ElementsAreArray;

using Names = std::vector<std::string>;

std::string fullName(std::string_view interfaceName, std::string_view method,
                     std::string_view proc) {
  return std::string(interfaceName).append("/").append(method).append("/").append(proc);
}

void append(Names& names, const char* interfaceName, std::span<const ZEBProcTableEntry> entries) {
  for (const ZEBProcTableEntry& entry : entries) {
    names.push_back(fullName(interfaceName, entry.methodName, entry.procName));
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
  for (const sdk::description::Interface& interface : sdk::description::interfaces()) {
    for (const sdk::description::Proc& proc : interface.procs) {
      names.push_back(fullName(interface.name, proc.method, proc.name));
    }
  }
  return names;
}

TEST(Services, RegisterWhatIsDescribed) {
  EXPECT_THAT(registered(), ElementsAreArray(described()));
}

}  // namespace
}  // namespace zeb
