// Owners, errors and results.
#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>

#include "sdk/started.h"
#include "zeb/sdk/atom.hpp"
#include "zeb/sdk/component.hpp"
#include "zeb/sdk/progress.hpp"
#include "zeb/sdk/shared_buffer.hpp"

namespace {

namespace sdk = zeb::sdk;
using testing::ElementsAre;
using testing::Pair;

class Owners : public Started {};

TEST_F(Owners, EqualTextsAreOneAtom) {
  const sdk::Atom once("hello");
  const sdk::Atom again("hello");
  EXPECT_EQ(once, again);
  EXPECT_EQ(once.text(), "hello");
}

TEST_F(Owners, AtomsAreMadeOfAnyText) {
  const std::string_view line = "hello, world";
  EXPECT_EQ(sdk::Atom(line.substr(0, 5)), sdk::Atom("hello"));
  EXPECT_EQ(sdk::Atom(std::string(line)), sdk::Atom("hello, world"));
  const char* nothing = nullptr;
  EXPECT_EQ(sdk::Atom(nothing), sdk::Atom(""));
}

TEST_F(Owners, MovingAnOwnerHandsItsReferenceOn) {
  sdk::Atom first("hello");
  ZEBString* handle = first.get();
  sdk::Atom second = std::move(first);
  EXPECT_EQ(second.get(), handle);
  second = sdk::Atom("other");
  EXPECT_EQ(second.text(), "other");
  sdk::Atom& same = second;
  second = std::move(same);
  EXPECT_EQ(second.text(), "other");
}

TEST_F(Owners, SharingAddsAReference) {
  sdk::Atom first("a text that nobody else holds");
  const sdk::Atom second = first.share();
  first.reset();
  EXPECT_EQ(second.text(), "a text that nobody else holds");
}

TEST_F(Owners, EmptyOwnersAreHarmless) {
  const sdk::Atom none;
  EXPECT_FALSE(none);
  EXPECT_EQ(none.text(), "");
  EXPECT_FALSE(none.share());
  EXPECT_TRUE(sdk::SharedBuffer().bytes().empty());
  EXPECT_FALSE(sdk::Progress().update(1, 2));
}

TEST_F(Owners, AtomLeftBehindIsReportedAtTheStop) {
  ZEBString* lost = sdk::Atom("lost").handOver();
  count = library.stop();
  EXPECT_THAT(reports, ElementsAre("string memory leak"));
  reports.clear();
  // The atom outlived its table, and any later start can give it back.
  sdk::Library again = sdk::Library::load(ZEB_LIBRARY_PATH, {.unregisterCountStart = count});
  sdk::procs<sdk::Strings>().DeleteStringAtom(lost);
  count = again.stop();
}

TEST_F(Owners, ErrorKnowsItsParts) {
  const sdk::Error error = sdk::Error::make("it broke", "Owners", 7);
  EXPECT_EQ(error.message(), "it broke");
  EXPECT_EQ(error.component(), "Owners");
  EXPECT_EQ(error.id(), 7);
  EXPECT_TRUE(error.is("Owners", 7));
  EXPECT_FALSE(error.is("Owners", 8));
}

TEST_F(Owners, CheckThrowsWhatAProcAnswered) {
  EXPECT_NO_THROW(sdk::check(nullptr));
  try {
    sdk::check(sdk::Error::make("it broke", "Owners", 7).handOver());
    FAIL() << "nothing was thrown";
  } catch (const sdk::Failure& failure) {
    const sdk::Failure copy = failure;
    EXPECT_STREQ(copy.what(), "it broke");
  }
}

TEST_F(Owners, ResultHoldsTheValueOrTheError) {
  sdk::Result<int> value = 3;
  EXPECT_TRUE(value.ok());
  EXPECT_EQ(*value, 3);
  sdk::Result<int> error = sdk::Error::make("it broke", "Owners", 7);
  EXPECT_FALSE(error);
  EXPECT_EQ(error.error().message(), "it broke");
  EXPECT_THROW((void)error.value(), sdk::Failure);
  EXPECT_NO_THROW(sdk::Result<void>().value());
}

TEST_F(Owners, ExceptionsBecomeErrors) {
  const auto translate = [](auto thrower) {
    try {
      thrower();
      return sdk::Error();
    } catch (...) {
      return sdk::Error(sdk::currentExceptionAsError("Owners"));
    }
  };
  EXPECT_EQ(translate([] { throw std::runtime_error("it broke"); }).message(), "it broke");
  EXPECT_TRUE(translate([] { throw std::bad_alloc(); }).is("KST", ZEB_ERROR_OUT_OF_MEMORY));
  EXPECT_TRUE(translate([] { throw 1; }).is("KST", ZEB_ERROR_UNKNOWN));
  EXPECT_TRUE(translate([] { throw sdk::Failure(sdk::Error::make("x", "Y", 9)); }).is("Y", 9));
}

TEST_F(Owners, BufferOverAVectorCopiesNothing) {
  std::vector<std::byte> bytes(100, std::byte{7});
  const std::byte* address = bytes.data();
  const sdk::SharedBuffer buffer = sdk::SharedBuffer::over(std::move(bytes));
  const sdk::SharedBuffer shared = buffer.share();
  EXPECT_EQ(shared.bytes().data(), address);
  EXPECT_EQ(shared.bytes().size(), 100U);
  EXPECT_EQ(sdk::SharedBuffer::over({}).bytes().size(), 0U);
  EXPECT_EQ(sdk::SharedBuffer::make(5).bytes().size(), 5U);
}

TEST_F(Owners, ProgressAsksItsListener) {
  std::vector<std::pair<uint64_t, uint64_t>> heard;
  const sdk::Progress progress = sdk::Progress::to([&](uint64_t done, uint64_t total) {
    heard.emplace_back(done, total);
    if (done == 3) throw std::runtime_error("no more");
    return done == 2;
  });
  EXPECT_FALSE(progress.update(1, 4));
  EXPECT_TRUE(progress.update(2, 4));
  EXPECT_FALSE(progress.update(3, 4));
  EXPECT_THAT(heard, ElementsAre(Pair(1, 4), Pair(2, 4), Pair(3, 4)));
}

struct Tracked {
  explicit Tracked(int* counter) : ended(counter) {}
  Tracked(const Tracked&) = delete;
  Tracked& operator=(const Tracked&) = delete;
  ~Tracked() { ++*ended; }
  int* ended;
};

TEST_F(Owners, ComponentEndsItsInstances) {
  int ended = 0;
  {
    const sdk::Atom name("Tracked");
    const sdk::Component component = sdk::Component::make();
    component.addInterface(sdk::Atom("OneInterface"));
    component.addInterface(sdk::Atom("OtherInterface"));
    component.addInstance(std::make_unique<Tracked>(&ended), name);
    EXPECT_EQ(component.instance<Tracked>(name)->ended, &ended);
    EXPECT_EQ(component.instance<Tracked>(sdk::Atom("Nobody")), nullptr);
    EXPECT_EQ(component.signature(), "OneInterface.OtherInterface");
    EXPECT_EQ(ended, 0);
  }
  EXPECT_EQ(ended, 1);
}

TEST_F(Owners, FullComponentFindsItsMethod) {
  int ended = 0;
  {
    const sdk::Component component = sdk::Component::make(
        std::make_unique<Tracked>(&ended), sdk::Atom("Tracked"), sdk::Atom(ZEB_STRING_INTERFACE));
    const auto make = component.method<ZEBNewStringAtomProc>(sdk::Atom("NewStringAtom"),
                                                             sdk::Atom("ZEBNewStringAtomProc"));
    EXPECT_EQ(make, sdk::procs<sdk::Strings>().NewStringAtom);
    EXPECT_EQ(component.method<ZEBProc>(sdk::Atom("No"), sdk::Atom("NoProc")), nullptr);
  }
  EXPECT_EQ(ended, 1);
}

TEST_F(Owners, FailureTellsItsReasonAfterTheStop) {
  std::optional<sdk::Failure> kept;
  try {
    throw sdk::Failure(sdk::Error::make("it broke", "Owners", 7));
  } catch (const sdk::Failure& failure) {
    kept = failure;
  }
  count = library.stop();
  reports.clear();
  sdk::Failure copy = *kept;
  EXPECT_STREQ(copy.what(), "it broke");
  // Any later start can give the error back.
  sdk::Library again = sdk::Library::load(ZEB_LIBRARY_PATH, {.unregisterCountStart = count});
  EXPECT_STREQ(kept->what(), "it broke");
  copy = sdk::Failure(sdk::Error());
  kept.reset();
  count = again.stop();
}

TEST_F(Owners, ValueOfAFailedResultThrowsEachTime) {
  sdk::Result<int> result(sdk::Error::make("it broke", "Owners", 7));
  for (int i = 0; i < 2; ++i) {
    EXPECT_THROW((void)result.value(), sdk::Failure);
    EXPECT_EQ(result.error().message(), "it broke");
  }
}

TEST_F(Owners, ExceptionNeverBecomesSuccess) {
  const auto answerTo = [](auto exception) {
    try {
      throw exception;
    } catch (...) {
      return sdk::Error(sdk::currentExceptionAsError());
    }
  };
  EXPECT_EQ(answerTo(sdk::Failure(sdk::Error())).message(), "Unknown Kesto Error");
  zeb::sdk::detach();
  sdk::Error detached = answerTo(std::runtime_error("nobody can be told"));
  ASSERT_TRUE(detached);
  ASSERT_TRUE(zeb::sdk::attach(library.find()));
  EXPECT_EQ(detached.message(), "Unknown Kesto Error");
}

}  // namespace
