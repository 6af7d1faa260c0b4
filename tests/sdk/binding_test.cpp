// Bindings: fetched in bulk, fetched again when something was unregistered, refused with a reason.
#include "zeb/sdk/binding.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "sdk/started.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
namespace sdk = zeb::sdk;

using AnswerProc = int32_t (*)();
using LargerAnswerProc = int64_t (*)();

#define ANSWERS_PROCS(X)        \
  X(Answer, Answer, AnswerProc) \
  X(Larger, Larger, LargerAnswerProc)
ZEB_SDK_INTERFACE(Answers, "AnswersInterface", ANSWERS_PROCS);

int32_t one() { return 1; }
int32_t two() { return 2; }
int64_t large() { return int64_t{1} << 40; }

template <class Proc>
void publish(const char* method, const char* name, Proc proc) {
  ASSERT_EQ(sdk::procs<sdk::Frame>().RegisterProcAddress(Answers::kName, method, name,
                                                         reinterpret_cast<ZEBProc>(proc)),
            1);
}

void withdraw() { sdk::procs<sdk::Frame>().UnregisterInterface(Answers::kName); }

std::vector<std::string> logged;
void keepLog(const char* message) { logged.emplace_back(message); }

class Binding : public Started {
 protected:
  Binding() {
    logged.clear();
    sdk::setLog(&keepLog);
  }
  ~Binding() override {
    withdraw();
    sdk::setLog(nullptr);
  }
};

TEST_F(Binding, FindsTheProcsOfTheLibrary) {
  ZEBString* atom = sdk::procs<sdk::Strings>().NewStringAtom("hello");
  EXPECT_STREQ(sdk::procs<sdk::Strings>().GetCString(atom), "hello");
  sdk::procs<sdk::Strings>().DeleteStringAtom(atom);
}

TEST_F(Binding, OptionalInterfaceThatIsMissingIsSilent) {
  EXPECT_EQ(sdk::tryProcs<Answers>(), nullptr);
  EXPECT_THAT(logged, ElementsAre());
}

TEST_F(Binding, RequiredInterfaceThatIsMissingSaysWhichProc) {
  publish("Answer", "AnswerProc", &one);
  try {
    (void)sdk::procs<Answers>();
    FAIL() << "it was bound";
  } catch (const sdk::MissingInterface& failure) {
    EXPECT_STREQ(failure.what(),
                 "AnswersInterface/Larger/LargerAnswerProc is not registered: interface "
                 "\"AnswersInterface\" has no method \"Larger\"");
    EXPECT_THAT(logged, ElementsAre(failure.what()));
  }
}

TEST_F(Binding, SaysThatItsInterfaceWasUnregistered) {
  publish("Answer", "AnswerProc", &one);
  withdraw();
  try {
    (void)sdk::procs<Answers>();
    FAIL() << "it was bound";
  } catch (const sdk::MissingInterface& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("there is no interface \"AnswersInterface\""));
    EXPECT_THAT(failure.what(), HasSubstr("was last unregistered"));
  }
}

TEST_F(Binding, FindsWhatIsPublishedLater) {
  ASSERT_EQ(sdk::tryProcs<Answers>(), nullptr);
  publish("Answer", "AnswerProc", &one);
  publish("Larger", "LargerAnswerProc", &large);
  ASSERT_NE(sdk::tryProcs<Answers>(), nullptr);
  EXPECT_EQ(sdk::procs<Answers>().Answer(), 1);
  EXPECT_EQ(sdk::procs<Answers>().Larger(), int64_t{1} << 40);
}

TEST_F(Binding, FollowsAReplacement) {
  publish("Answer", "AnswerProc", &one);
  publish("Larger", "LargerAnswerProc", &large);
  const Answers::Procs& before = sdk::procs<Answers>();
  withdraw();
  EXPECT_EQ(sdk::tryProcs<Answers>(), nullptr);
  publish("Answer", "AnswerProc", &two);
  publish("Larger", "LargerAnswerProc", &large);
  EXPECT_EQ(sdk::procs<Answers>().Answer(), 2);
  EXPECT_EQ(before.Answer, &one) << "what was handed out stays readable";
}

TEST_F(Binding, KeepsItsProcsWhenAnotherInterfaceGoes) {
  publish("Answer", "AnswerProc", &one);
  publish("Larger", "LargerAnswerProc", &large);
  const Answers::Procs* before = &sdk::procs<Answers>();
  sdk::procs<sdk::Frame>().UnregisterInterface("SomebodyElse");
  EXPECT_EQ(&sdk::procs<Answers>(), before);
}

TEST_F(Binding, RefusesAChangedSignatureWithAReason) {
  publish("Answer", "AnswerProc", &one);
  publish("Answer", "AnswerProc#signature", &sdk::signatureText<int32_t (*)(uint64_t)>);
  publish("Larger", "LargerAnswerProc", &large);
  EXPECT_EQ(sdk::tryProcs<Answers>(), nullptr);
  try {
    (void)sdk::procs<Answers>();
    FAIL() << "it was bound";
  } catch (const sdk::MissingInterface& failure) {
    EXPECT_STREQ(failure.what(),
                 "AnswersInterface/Answer/AnswerProc is published as i32(u64), but this module was "
                 "built for i32()");
  }
}

TEST_F(Binding, AcceptsTheSameSignature) {
  publish("Answer", "AnswerProc", &one);
  publish("Answer", "AnswerProc#signature", &sdk::signatureText<AnswerProc>);
  publish("Larger", "LargerAnswerProc", &large);
  EXPECT_EQ(sdk::procs<Answers>().Answer(), 1);
}

TEST_F(Binding, ServesManyThreadsWhileInterfacesComeAndGo) {
  publish("Answer", "AnswerProc", &one);
  publish("Larger", "LargerAnswerProc", &large);
  std::atomic<bool> done = false;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> callers;
  for (int i = 0; i < 3; ++i) {
    callers.emplace_back([&] {
      do {
        if (sdk::procs<Answers>().Answer() != 1) ++wrong;
      } while (!done);
    });
  }
  for (int i = 0; i < 1000; ++i) sdk::procs<sdk::Frame>().UnregisterInterface("SomebodyElse");
  done = true;
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(wrong, 0);
}

TEST(UnattachedModule, FindsNothingAndSaysSo) {
  EXPECT_EQ(sdk::lookUp(), nullptr);
  EXPECT_EQ(sdk::tryProcs<sdk::Strings>(), nullptr);
  try {
    (void)sdk::procs<sdk::Strings>();
    FAIL() << "it was bound";
  } catch (const sdk::MissingInterface& failure) {
    EXPECT_STREQ(failure.what(), "ZEBStringInterface: this module is not attached to the library");
  }
}

ZEBProc findNothing(const char* /*interface*/, const char* /*method*/, const char* /*proc*/) {
  return nullptr;
}

TEST(UnattachedModule, DoesNotAttachToWhatIsNoLibrary) {
  EXPECT_FALSE(sdk::attach(nullptr));
  EXPECT_FALSE(sdk::attach(&findNothing));
  EXPECT_EQ(sdk::lookUp(), nullptr);
}

}  // namespace
