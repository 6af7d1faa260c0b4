// Methods and instances by name: the latest interface and the latest instance first, nothing
// remembered between two look-ups.

#include <gtest/gtest.h>

#include <string>

#include "contract/component_library.h"

namespace contract {
namespace {

const ZEBProc kBase = FakeProc(16);
const ZEBProc kMiddle = FakeProc(32);
const ZEBProc kTop = FakeProc(48);

// A container of three interfaces, "top" registered last.
class MethodLookup : public ComponentTest {
 protected:
  MethodLookup() : made_(zeb_.NewEmpty()) {
    for (const char* name : {"base", "middle", "top"}) zeb_.AddInterface(made_, name);
  }

  void TearDown() override {
    zeb_.container.Release(made_);
    ComponentTest::TearDown();
  }

  void Register(const char* interfaceName, const char* method, ZEBProc proc) {
    EXPECT_EQ(zeb_.frame.RegisterProcAddress(interfaceName, method, "proc", proc), 1);
  }

  ZEBProc Find(const char* method) { return zeb_.MethodOf(made_, method, "proc"); }
  ZEBProc FindAfter(const char* current, const char* method) {
    return zeb_.ParentMethodOf(made_, current, method, "proc");
  }

  ZEBContainer* made_;
};

TEST_F(MethodLookup, AsksTheLatestInterfaceFirst) {
  Register("base", "method", kBase);
  EXPECT_EQ(Find("method"), kBase);
  Register("middle", "method", kMiddle);
  EXPECT_EQ(Find("method"), kMiddle);
  Register("top", "method", kTop);
  EXPECT_EQ(Find("method"), kTop);
}

TEST_F(MethodLookup, GoesOnToTheNextInterface) {
  Register("base", "only in base", kBase);
  Register("top", "only in top", kTop);
  EXPECT_EQ(Find("only in base"), kBase);
  EXPECT_EQ(Find("only in top"), kTop);
  EXPECT_EQ(Find("nowhere"), nullptr);
}

TEST_F(MethodLookup, ComparesMethodAndProc) {
  Register("base", "method", kBase);
  EXPECT_EQ(zeb_.MethodOf(made_, "method", "another proc"), nullptr);
  EXPECT_EQ(zeb_.MethodOf(made_, "another method", "proc"), nullptr);
  EXPECT_EQ(zeb_.MethodOf(made_, "proc", "method"), nullptr);
}

TEST_F(MethodLookup, IgnoresInterfacesThatTheContainerDoesNotHave) {
  Register("stranger", "method", kBase);
  EXPECT_EQ(Find("method"), nullptr);
  zeb_.AddInterface(made_, "stranger");
  EXPECT_EQ(Find("method"), kBase);
}

TEST_F(MethodLookup, FindsTheLibrarysOwnProcs) {
  zeb_.AddInterface(made_, ZEB_CONTAINER_INTERFACE);
  EXPECT_EQ(zeb_.MethodOf(made_, "GetMethod", "ZEBGetMethodV3Proc"),
            AsProc(zeb_.container.GetMethod));
}

TEST_F(MethodLookup, LeavesARepeatedInterfaceWhereItIs) {
  Register("base", "method", kBase);
  Register("top", "method", kTop);
  zeb_.AddInterface(made_, "base");
  EXPECT_EQ(Find("method"), kTop);
}

TEST_F(MethodLookup, LosesTheMethodsOfAnUnregisteredInterface) {
  Register("base", "method", kBase);
  Register("top", "method", kTop);
  Register("top", "only in top", kTop);
  ZEBContainer* other = zeb_.NewFull(nullptr, {"instance", "top", nullptr});
  zeb_.frame.UnregisterInterface("top");
  EXPECT_EQ(Find("method"), kBase);
  EXPECT_EQ(Find("only in top"), nullptr);
  EXPECT_EQ(zeb_.MethodOf(other, "method", "proc"), nullptr);
  // Registered again, it is found again.
  Register("top", "method", kMiddle);
  EXPECT_EQ(Find("method"), kMiddle);
  EXPECT_EQ(zeb_.MethodOf(other, "method", "proc"), kMiddle);
  zeb_.container.Release(other);
}

TEST_F(MethodLookup, RaisesAMissingMethodIfToldTo) {
  for (const std::int32_t flag : {1, -1, 0x10000}) {
    ZEBProc found = kBase;
    EXPECT_EQ(zeb_.Outcome(zeb_.container.GetMethod(&found, made_, zeb_.Name("method"),
                                                    zeb_.Name("proc"), flag)),
              kMissingMethod)
        << flag;
    EXPECT_EQ(found, nullptr);
    found = kBase;
    EXPECT_EQ(zeb_.Outcome(zeb_.container.GetParentMethod(
                  &found, made_, zeb_.Name("top"), zeb_.Name("method"), zeb_.Name("proc"), flag)),
              kMissingMethod)
        << flag;
    EXPECT_EQ(found, nullptr);
  }
}

TEST_F(MethodLookup, RaisesTheOneStandardError) {
  ZEBProc found = nullptr;
  ZEBErrorObject* first =
      zeb_.container.GetMethod(&found, made_, zeb_.Name("m"), zeb_.Name("p"), 1);
  ZEBErrorObject* second =
      zeb_.olderContainer.GetMethodV2(&found, made_, zeb_.Name("m"), zeb_.Name("p"));
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  zeb_.error.Release(first);
  zeb_.error.Release(second);
}

TEST_F(MethodLookup, RaisesNothingForAMethodThatIsThere) {
  Register("base", "method", kBase);
  ZEBProc found = nullptr;
  EXPECT_EQ(zeb_.Outcome(
                zeb_.container.GetMethod(&found, made_, zeb_.Name("method"), zeb_.Name("proc"), 1)),
            kSuccess);
  EXPECT_EQ(found, kBase);
}

TEST_F(MethodLookup, AnswersOlderClientsInTheirConventions) {
  Register("middle", "method", kMiddle);
  ZEBString* method = zeb_.Name("method");
  ZEBString* missing = zeb_.Name("missing");
  ZEBString* proc = zeb_.Name("proc");
  EXPECT_EQ(zeb_.olderContainer.GetMethodV1(made_, method, proc), kMiddle);
  EXPECT_EQ(zeb_.olderContainer.GetMethodV1(made_, missing, proc), nullptr);
  ZEBProc found = nullptr;
  EXPECT_EQ(zeb_.Outcome(zeb_.olderContainer.GetMethodV2(&found, made_, method, proc)), kSuccess);
  EXPECT_EQ(found, kMiddle);
  EXPECT_EQ(zeb_.Outcome(zeb_.olderContainer.GetMethodV2(&found, made_, missing, proc)),
            kMissingMethod);
  EXPECT_EQ(found, nullptr);
  ZEBString* top = zeb_.Name("top");
  EXPECT_EQ(zeb_.olderContainer.GetParentMethodV1(made_, top, method, proc), kMiddle);
  EXPECT_EQ(zeb_.olderContainer.GetParentMethodV1(made_, top, missing, proc), nullptr);
  EXPECT_EQ(zeb_.olderContainer.GetParentMethodV1(made_, zeb_.Name("base"), method, proc), nullptr);
}

TEST_F(MethodLookup, AsksForParentsAfterTheCurrentInterface) {
  Register("base", "method", kBase);
  Register("middle", "method", kMiddle);
  Register("top", "method", kTop);
  EXPECT_EQ(FindAfter("top", "method"), kMiddle);
  EXPECT_EQ(FindAfter("middle", "method"), kBase);
  EXPECT_EQ(FindAfter("base", "method"), nullptr);
}

TEST_F(MethodLookup, SkipsParentsWithoutTheMethod) {
  Register("base", "method", kBase);
  Register("top", "method", kTop);
  EXPECT_EQ(FindAfter("top", "method"), kBase);
}

TEST_F(MethodLookup, HasNoParentsOfAStranger) {
  Register("base", "method", kBase);
  Register("stranger", "method", kTop);
  EXPECT_EQ(FindAfter("stranger", "method"), nullptr);
  EXPECT_EQ(FindAfter("", "method"), nullptr);
}

TEST_F(MethodLookup, CountsNothing) {
  Register("base", "method", kBase);
  EXPECT_EQ(zeb_.EventsOf([&] {
    Find("method");
    Find("missing");
    FindAfter("top", "method");
    zeb_.container.GetSignature(made_);
  }),
            Events{});
}

TEST_F(MethodLookup, LeavesTheNamesWithTheirOwner) {
  Register("base", "method", kBase);
  Find("method");
  Find("a method of no interface");
  FindAfter("top", "a method of no parent");
  zeb_.ReleaseNames();
  zeb_.frame.UnregisterInterface("base");
  ForgetRecentAtoms(zeb_);
  for (const char* text : {"a method of no interface", "a method of no parent"}) {
    EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name(text); }), (AtomEvents{.allocated = 1})) << text;
  }
}

// ---- Instances

class InstanceLookup : public ComponentTest {
 protected:
  InstanceLookup() : full_(zeb_.NewFull(&data_)) {}

  void TearDown() override {
    zeb_.container.Release(full_);
    ComponentTest::TearDown();
  }

  std::string NewerOutcome(void** out, ZEBContainer* asked, const char* name) {
    return zeb_.Outcome(zeb_.container.NGetInstance(out, asked, zeb_.Name(name)));
  }

  Data data_;
  Data second_;
  Data other_;
  ZEBContainer* full_;
};

TEST_F(InstanceLookup, FindsTheDataByName) {
  void* found = nullptr;
  EXPECT_EQ(zeb_.InstanceOf(full_, "instance"), &data_);
  EXPECT_EQ(NewerOutcome(&found, full_, "instance"), kSuccess);
  EXPECT_EQ(found, &data_);
}

TEST_F(InstanceLookup, FindsTheLatestOfTheSameName) {
  zeb_.AddInstance(full_, "instance", &second_);
  zeb_.AddInstance(full_, "other", &other_);
  void* found = nullptr;
  EXPECT_EQ(zeb_.InstanceOf(full_, "instance"), &second_);
  EXPECT_EQ(NewerOutcome(&found, full_, "instance"), kSuccess);
  EXPECT_EQ(found, &second_);
  EXPECT_EQ(zeb_.InstanceOf(full_, "other"), &other_);
}

TEST_F(InstanceLookup, AnswersNullForAMissingName) {
  void* found = &found;
  EXPECT_EQ(zeb_.InstanceOf(full_, "missing"), nullptr);
  EXPECT_EQ(NewerOutcome(&found, full_, "missing"), kMissingMethod);
  EXPECT_EQ(found, nullptr);
}

TEST_F(InstanceLookup, AnswersNullForANullContainer) {
  void* found = &found;
  EXPECT_EQ(zeb_.EventsOf([&] { EXPECT_EQ(zeb_.InstanceOf(nullptr, "instance"), nullptr); }),
            Events{});
  EXPECT_EQ(NewerOutcome(&found, nullptr, "instance"), kMissingMethod);
  EXPECT_EQ(found, nullptr);
}

TEST_F(InstanceLookup, SharesItsErrorWithMissingMethods) {
  void* found = nullptr;
  ZEBProc method = nullptr;
  ZEBErrorObject* first = zeb_.container.NGetInstance(&found, full_, zeb_.Name("missing"));
  ZEBErrorObject* second =
      zeb_.container.GetMethod(&method, full_, zeb_.Name("m"), zeb_.Name("p"), 1);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  zeb_.error.Release(first);
  zeb_.error.Release(second);
}

TEST_F(InstanceLookup, CountsEveryCall) {
  void* found = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.InstanceOf(full_, "instance"); }),
            (Events{{kGetInstance, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.InstanceOf(full_, "missing"); }), (Events{{kGetInstance, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { NewerOutcome(&found, full_, "instance"); }),
            (Events{{kGetInstance, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { NewerOutcome(&found, full_, "missing"); }),
            (Events{{kGetInstance, 1}}));
}

TEST_F(InstanceLookup, FindsNullDataAsPresent) {
  zeb_.AddInstance(full_, "nothing", &other_);
  zeb_.AddInstance(full_, "nothing", nullptr, nullptr);
  void* found = &found;
  EXPECT_EQ(NewerOutcome(&found, full_, "nothing"), kSuccess);
  EXPECT_EQ(found, nullptr);
}

}  // namespace
}  // namespace contract
