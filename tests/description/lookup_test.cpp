// What is described is found in the tables, at compile time as well, and nothing else is.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "zeb/sdk/description.hpp"

namespace {

namespace description = zeb::sdk::description;
using description::findExport;
using description::findInterface;
using description::findNewest;
using description::findProc;
using description::Threads;

constexpr const auto* kNewAtom =
    findProc("ZEBStringInterface", "NewStringAtom", "ZEBNewStringAtomProc");
static_assert(kNewAtom->signature == "*ZEBString(*const i8)");
static_assert(kNewAtom->since == 0x00040000);
static_assert(kNewAtom->result.handle->release == "ZEBStringInterface/DeleteStringAtom");
static_assert(has(kNewAtom->threads, Threads::anyThread));
static_assert(!has(kNewAtom->threads, Threads::frameThread));

TEST(DescribedProc, IsFoundByItsThreeNames) {
  for (const description::Interface& interface : description::interfaces()) {
    EXPECT_EQ(findInterface(interface.name), &interface);
    for (const description::Proc& proc : interface.procs) {
      EXPECT_EQ(findProc(interface.name, proc.method, proc.name), &proc) << proc.name;
    }
  }
}

TEST(DescribedProc, IsNotFoundByAnyOtherName) {
  EXPECT_EQ(findInterface("ZEBString"), nullptr);
  EXPECT_EQ(findInterface(""), nullptr);
  EXPECT_EQ(findProc("ZEBStringInterface", "NewStringAtom", "ZEBAddRefStringAtomProc"), nullptr);
  EXPECT_EQ(findProc("ZEBStringInterface", "AddRefs", "ZEBAddRefStringAtomProc"), nullptr);
  EXPECT_EQ(findProc("ZEBMemoryInterface", "AddRef", "ZEBAddRefStringAtomProc"), nullptr);
  EXPECT_EQ(findExport("ZEBNewStringAtomProc"), nullptr);
}

TEST(DescribedProc, IsTheNewestOfItsMethodByItsVersion) {
  const auto* containers = findInterface("ZEBContainerInterface");
  ASSERT_NE(containers, nullptr);
  const auto* newest = findNewest(*containers, "GetMethod");
  ASSERT_NE(newest, nullptr);
  EXPECT_EQ(newest->name, "ZEBGetMethodV3Proc");
  EXPECT_FALSE(newest->older);
  EXPECT_TRUE(findProc(*containers, "GetMethod", "ZEBGetMethodV2Proc")->older);
  EXPECT_EQ(findNewest(*containers, "GetMethods"), nullptr);
}

TEST(DescribedProc, NamesTheParameterThatEndsItsClientData) {
  const auto* proc = findNewest(*findInterface("ZEBErrorInterface"), "NewError");
  ASSERT_NE(proc, nullptr);
  std::set<std::string_view> names;
  std::set<std::string_view> ended;
  for (const description::Parameter& parameter : proc->parameters) {
    names.insert(parameter.name);
    if (!parameter.endedBy.empty()) ended.insert(parameter.endedBy);
  }
  EXPECT_EQ(ended, std::set<std::string_view>{"infoDelete"});
  EXPECT_TRUE(names.contains("infoDelete"));
}

TEST(DescribedExport, IsFoundByItsName) {
  EXPECT_EQ(description::exports().size(), 11u);
  for (const description::Function& function : description::exports()) {
    EXPECT_EQ(findExport(function.name), &function);
  }
  EXPECT_EQ(findExport("ZEBGetVersion")->signature, "u32()");
}

TEST(DescribedTexts, EndWithAZero) {
  for (const description::Interface& interface : description::interfaces()) {
    EXPECT_EQ(interface.name.data()[interface.name.size()], '\0');
    for (const description::Proc& proc : interface.procs) {
      for (const std::string_view text : {proc.name, proc.method, proc.signature, proc.summary}) {
        EXPECT_EQ(text.data()[text.size()], '\0') << text;
      }
    }
  }
}

}  // namespace
