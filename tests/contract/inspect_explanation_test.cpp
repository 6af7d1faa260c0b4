// Why a look-up finds what it finds: every outcome, unregistered interfaces, similar names.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "contract/inspected_library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

static_assert(sizeof(ZEBLookupExplanation) == 56);
static_assert(offsetof(ZEBLookupExplanation, outcome) == 0);
static_assert(offsetof(ZEBLookupExplanation, wasUnregistered) == 4);
static_assert(offsetof(ZEBLookupExplanation, unregisteredAt) == 8);
static_assert(offsetof(ZEBLookupExplanation, versionCount) == 12);
static_assert(offsetof(ZEBLookupExplanation, nearestCount) == 16);
static_assert(offsetof(ZEBLookupExplanation, reserved) == 20);
static_assert(offsetof(ZEBLookupExplanation, proc) == 24);
static_assert(offsetof(ZEBLookupExplanation, versions) == 32);
static_assert(offsetof(ZEBLookupExplanation, nearest) == 40);
static_assert(offsetof(ZEBLookupExplanation, text) == 48);

class Explanations : public ::testing::Test {
 protected:
  InspectedLibrary zeb_;
};

TEST_F(Explanations, TellWhatIsRegistered) {
  const Explanation it =
      zeb_.Explain("ZEBStringInterface", "NewStringAtom", "ZEBNewStringAtomProc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_FOUND);
  EXPECT_EQ(it.proc, AsProc(zeb_.string.NewStringAtom));
  EXPECT_EQ(it.wasUnregistered, 0);
  EXPECT_EQ(it.unregisteredAt, 0u);
  EXPECT_THAT(it.versions, ElementsAre("ZEBNewStringAtomProc"));
  EXPECT_THAT(it.nearest, IsEmpty());
  EXPECT_EQ(it.text,
            "proc \"ZEBNewStringAtomProc\" of method \"NewStringAtom\" of interface "
            "\"ZEBStringInterface\" is registered");
}

TEST_F(Explanations, TellOfAnUnknownInterface) {
  const Explanation it =
      zeb_.Explain("ZEBStringsInterface", "NewStringAtom", "ZEBNewStringAtomProc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_UNKNOWN_INTERFACE);
  EXPECT_EQ(it.proc, nullptr);
  EXPECT_EQ(it.wasUnregistered, 0);
  EXPECT_THAT(it.versions, IsEmpty());
  ASSERT_FALSE(it.nearest.empty());
  EXPECT_EQ(it.nearest[0], "ZEBStringInterface");
  EXPECT_THAT(it.text, ::testing::StartsWith("there is no interface \"ZEBStringsInterface\"; "
                                             "nearest: \"ZEBStringInterface\""));
}

TEST_F(Explanations, TellOfAnUnknownMethod) {
  const Explanation it =
      zeb_.Explain("ZEBStringInterface", "NewStringAtoms", "ZEBNewStringAtomProc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_UNKNOWN_METHOD);
  EXPECT_EQ(it.proc, nullptr);
  EXPECT_THAT(it.versions, IsEmpty());
  EXPECT_THAT(it.nearest, ElementsAre("NewStringAtom"));
  EXPECT_EQ(it.text,
            "interface \"ZEBStringInterface\" has no method \"NewStringAtoms\"; nearest: "
            "\"NewStringAtom\"");
}

TEST_F(Explanations, TellTheOtherVersionsOfAMethod) {
  const Explanation it = zeb_.Explain("ZEBContainerInterface", "GetMethod", "ZEBGetMethodV4Proc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_UNKNOWN_PROC);
  EXPECT_EQ(it.proc, nullptr);
  EXPECT_THAT(it.versions,
              ElementsAre("ZEBGetMethodProc", "ZEBGetMethodV2Proc", "ZEBGetMethodV3Proc"));
  EXPECT_THAT(it.nearest,
              ElementsAre("ZEBGetMethodV2Proc", "ZEBGetMethodV3Proc", "ZEBGetMethodProc"));
  EXPECT_EQ(it.text,
            "method \"GetMethod\" of interface \"ZEBContainerInterface\" has no proc "
            "\"ZEBGetMethodV4Proc\", but \"ZEBGetMethodProc\", \"ZEBGetMethodV2Proc\", "
            "\"ZEBGetMethodV3Proc\"; nearest: \"ZEBGetMethodV2Proc\", \"ZEBGetMethodV3Proc\", "
            "\"ZEBGetMethodProc\"");
}

TEST_F(Explanations, TellOfANullFunction) {
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("Client", "Method", "Proc", nullptr), 1);
  const Explanation it = zeb_.Explain("Client", "Method", "Proc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_NULL_FUNCTION);
  EXPECT_EQ(it.proc, nullptr);
  EXPECT_THAT(it.versions, ElementsAre("Proc"));
  EXPECT_EQ(it.text,
            "proc \"Proc\" of method \"Method\" of interface \"Client\" is registered, but with a "
            "null function, which a look-up cannot tell from a missing one");
}

TEST_F(Explanations, TakeNullForANameOfItsOwn) {
  zeb_.Register(nullptr, nullptr, nullptr, 32);
  zeb_.Register(nullptr, nullptr, "", 48);
  const Explanation found = zeb_.Explain(nullptr, nullptr, nullptr);
  EXPECT_EQ(found.outcome, ZEB_LOOKUP_FOUND);
  EXPECT_EQ(found.proc, FakeProc(32));
  EXPECT_THAT(found.versions, ElementsAre(std::nullopt, ""));
  EXPECT_EQ(found.text, "proc (null) of method (null) of interface (null) is registered");

  EXPECT_EQ(zeb_.Explain("", nullptr, nullptr).outcome, ZEB_LOOKUP_UNKNOWN_INTERFACE);
  EXPECT_EQ(zeb_.Explain(nullptr, "", nullptr).outcome, ZEB_LOOKUP_UNKNOWN_METHOD);
  const Explanation missing = zeb_.Explain(nullptr, nullptr, "p");
  EXPECT_EQ(missing.outcome, ZEB_LOOKUP_UNKNOWN_PROC);
  EXPECT_THAT(missing.versions, ElementsAre(std::nullopt, ""));
  EXPECT_THAT(missing.nearest, IsEmpty());
  EXPECT_EQ(missing.text, "method (null) of interface (null) has no proc \"p\", but (null), \"\"");
}

TEST_F(Explanations, FindNothingNearToANullName) {
  zeb_.Register("Client", "Method", "Proc");
  EXPECT_THAT(zeb_.Explain(nullptr, "Method", "Proc").nearest, IsEmpty());
  EXPECT_THAT(zeb_.Explain("Client", nullptr, "Proc").nearest, IsEmpty());
  EXPECT_THAT(zeb_.Explain("Client", "Method", nullptr).nearest, IsEmpty());
}

TEST_F(Explanations, AgreeWithTheLookUp) {
  zeb_.Register("Client", "Method", "Proc", 32);
  const char* names[] = {"Client", "Method", "Proc", "", nullptr, "ZEB"};
  for (const char* interfaceName : names) {
    for (const char* method : names) {
      for (const char* proc : names) {
        const Explanation it = zeb_.Explain(interfaceName, method, proc);
        const ZEBProc found = zeb_.getProcAddress(interfaceName, method, proc);
        EXPECT_EQ(it.proc, found);
        EXPECT_EQ(it.outcome == ZEB_LOOKUP_FOUND, found != nullptr);
      }
    }
  }
}

// Of equally near names the first in order; not more than five; nothing that is not similar.
TEST_F(Explanations, OfferTheFiveNearestNames) {
  for (const char* method : {"abcdefgh9", "abcdefghi2", "abcdefgh1", "abcdefgh5", "abcdefgh3",
                             "abcdefgh7", "abcdef", "xyz", "abcdefgX"}) {
    zeb_.Register("Client", method, "Proc");
  }
  const Explanation it = zeb_.Explain("Client", "abcdefgh", "Proc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_UNKNOWN_METHOD);
  EXPECT_THAT(it.nearest,
              ElementsAre("abcdefgX", "abcdefgh1", "abcdefgh3", "abcdefgh5", "abcdefgh7"));
}

TEST_F(Explanations, PutNearerNamesBeforeEarlierOnes) {
  for (const char* method : {"a method", "b method", "the methods", "the method!"}) {
    zeb_.Register("Client", method, "Proc");
  }
  // Three letters to replace of "a method" and "b method", one to add for the others.
  EXPECT_THAT(zeb_.Explain("Client", "the method", "Proc").nearest,
              ElementsAre("the method!", "the methods", "a method", "b method"));
}

TEST_F(Explanations, OfferWhatDiffersInAThirdAtTheMost) {
  zeb_.Register("Client", "abcdefghi", "Proc");
  EXPECT_THAT(zeb_.Explain("Client", "abcdef---", "Proc").nearest, ElementsAre("abcdefghi"));
  EXPECT_THAT(zeb_.Explain("Client", "abcde----", "Proc").nearest, IsEmpty());
}

TEST_F(Explanations, OfferEachNameOnce) {
  zeb_.Register("Client", "Method", "Proc");
  zeb_.Register("Client", "Method", "ProcV2");
  zeb_.Register("Client", "Another", "Proc");
  EXPECT_THAT(zeb_.Explain("Clients", "Method", "Proc").nearest, ElementsAre("Client"));
  EXPECT_THAT(zeb_.Explain("Client", "Methods", "Proc").nearest, ElementsAre("Method"));
}

TEST_F(Explanations, ComparesNamesOfUpTo255Bytes) {
  const std::string longest(255, 'x');
  const std::string tooLong(256, 'x');
  zeb_.Register("Client", longest.c_str(), "Proc");
  zeb_.Register("Client", tooLong.c_str(), "Proc");
  EXPECT_THAT(zeb_.Explain("Client", std::string(254, 'x').c_str(), "Proc").nearest,
              ElementsAre(longest));
  EXPECT_THAT(zeb_.Explain("Client", std::string(257, 'x').c_str(), "Proc").nearest, IsEmpty());
}

TEST_F(Explanations, MayListHundredsOfVersions) {
  std::vector<RegistryName> expected;
  for (int i = 100; i < 400; ++i) {
    expected.emplace_back("Proc" + std::to_string(i));
    zeb_.Register("Client", "Method", expected.back()->c_str());
  }
  const Explanation it = zeb_.Explain("Client", "Method", "none of these");
  EXPECT_EQ(it.versions, expected);
}

TEST_F(Explanations, KnowThatAnInterfaceWasUnregistered) {
  zeb_.Register("Client", "Method", "Proc");
  EXPECT_EQ(zeb_.Explain("Client", "Method", "Proc").wasUnregistered, 0);
  zeb_.frame.UnregisterInterface("Client");
  const std::uint32_t counter = zeb_.frame.GetUnregisterCount();
  zeb_.frame.UnregisterInterface("something else");
  const Explanation it = zeb_.Explain("Client", "Method", "Proc");
  EXPECT_EQ(it.outcome, ZEB_LOOKUP_UNKNOWN_INTERFACE);
  EXPECT_EQ(it.wasUnregistered, 1);
  EXPECT_EQ(it.unregisteredAt, counter);
  EXPECT_EQ(it.text,
            "there is no interface \"Client\"; the interface was last unregistered when the "
            "change counter became " +
                std::to_string(counter));
}

TEST_F(Explanations, KnowItAlsoOfAnInterfaceThatIsBack) {
  zeb_.Register("Client", "Old", "Proc");
  zeb_.frame.UnregisterInterface("Client");
  const std::uint32_t counter = zeb_.frame.GetUnregisterCount();
  zeb_.Register("Client", "New", "Proc");
  const Explanation gone = zeb_.Explain("Client", "Old", "Proc");
  EXPECT_EQ(gone.outcome, ZEB_LOOKUP_UNKNOWN_METHOD);
  EXPECT_EQ(gone.unregisteredAt, counter);
  const Explanation found = zeb_.Explain("Client", "New", "Proc");
  EXPECT_EQ(found.outcome, ZEB_LOOKUP_FOUND);
  EXPECT_EQ(found.wasUnregistered, 1);
  EXPECT_EQ(found.unregisteredAt, counter);
}

TEST_F(Explanations, KnowTheLastOfSeveralUnregistrations) {
  for (int i = 0; i < 3; ++i) {
    zeb_.Register("Client", "Method", "Proc");
    zeb_.frame.UnregisterInterface("Client");
  }
  EXPECT_EQ(zeb_.Explain("Client", "Method", "Proc").unregisteredAt,
            zeb_.frame.GetUnregisterCount());
}

TEST_F(Explanations, CallNothingUnregisteredThatWasNeverThere) {
  zeb_.frame.UnregisterInterface("Client");
  EXPECT_EQ(zeb_.Explain("Client", "Method", "Proc").wasUnregistered, 0);
}

TEST_F(Explanations, KnowTheNullNameUnregistered) {
  zeb_.Register(nullptr, "Method", "Proc");
  zeb_.frame.UnregisterInterface(nullptr);
  EXPECT_EQ(zeb_.Explain(nullptr, "Method", "Proc").wasUnregistered, 1);
  EXPECT_EQ(zeb_.Explain("", "Method", "Proc").wasUnregistered, 0);
}

TEST_F(Explanations, RememberTheLast64UnregisteredNames) {
  const auto name = [](int i) { return "Client " + std::to_string(i); };
  for (int i = 0; i < 65; ++i) {
    zeb_.Register(name(i).c_str(), "Method", "Proc");
    zeb_.frame.UnregisterInterface(name(i).c_str());
  }
  EXPECT_EQ(zeb_.Explain(name(0).c_str(), "Method", "Proc").wasUnregistered, 0);
  for (int i = 1; i < 65; ++i) {
    EXPECT_EQ(zeb_.Explain(name(i).c_str(), "Method", "Proc").wasUnregistered, 1) << i;
  }
}

TEST_F(Explanations, TellLongNamesApartThatBeginAlike) {
  const std::string first = std::string(500, 'n') + "1";
  const std::string second = std::string(500, 'n') + "2";
  zeb_.Register(first.c_str(), "Method", "Proc");
  zeb_.frame.UnregisterInterface(first.c_str());
  EXPECT_EQ(zeb_.Explain(first.c_str(), "Method", "Proc").wasUnregistered, 1);
  EXPECT_EQ(zeb_.Explain(second.c_str(), "Method", "Proc").wasUnregistered, 0);
}

TEST_F(Explanations, ForgetUnregisteredNamesAtAStop) {
  zeb_.Register("Client", "Method", "Proc");
  zeb_.frame.UnregisterInterface("Client");
  zeb_.Stop();
  const InspectedLibrary again;
  EXPECT_EQ(again.Explain("Client", "Method", "Proc").wasUnregistered, 0);
}

TEST_F(Explanations, OwnTheirTexts) {
  zeb_.Register("Client", "Method", "A passing proc");
  ZEBLookupExplanation* it =
      zeb_.inspect.NewLookupExplanation("Client", "Method", "A passing prox");
  ASSERT_NE(it, nullptr);
  zeb_.frame.UnregisterInterface("Client");
  ForgetRecentAtoms(zeb_);
  EXPECT_STREQ(it->versions[0], "A passing proc");
  EXPECT_STREQ(it->nearest[0], "A passing proc");
  zeb_.inspect.DeleteSnapshot(it);
}

}  // namespace
}  // namespace contract
