#include <gtest/gtest.h>

#include <limits>
#include <new>

#include "base/checked_size.h"
#include "base/value_boundary.h"
#include "errors/client_checked.h"
#include "errors/client_error.h"
#include "errors/error_boundary.h"
#include "errors/internal_error.h"
#include "errors/standard_errors.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"

namespace zeb {
namespace {

using test::CountingHost;
using test::StartedLibrary;

class BoundaryTest : public testing::Test {
 protected:
  // What the boundary makes of an exception that `raise` throws.
  template <class Raise>
  static errors::Ref translated(Raise raise) {
    try {
      raise();
    } catch (...) {
      return errors::Ref(translateCurrentException());
    }
    return errors::Ref();
  }

  static const char* messageOf(const errors::Ref& error) {
    return error.get()->message.get()->text();
  }
  static const char* componentOf(const errors::Ref& error) {
    return error.get()->component.get()->text();
  }

  StartedLibrary library_;
};

TEST_F(BoundaryTest, HandsOnTheErrorThatWasRaised) {
  ZEBErrorObject* raised = errors::make("raised", "here", 3);
  const errors::Ref error = translated([&] { raiseError(raised); });
  EXPECT_EQ(error.get(), raised);
  EXPECT_EQ(raised->references.load(), 2u);
  errors::release(raised);
}

TEST_F(BoundaryTest, HandsOnStandardErrorsWithoutAllocating) {
  const int64_t blocks = CountingHost::liveBlocks;
  CountingHost::failAllocation(1);
  const errors::Ref memory = translated([] { raiseStandardKst(kst::kOutOfMemory); });
  const errors::Ref method = translated([] { raiseStandardZeb(zebid::kMissingMethod); });
  EXPECT_TRUE(CountingHost::failureIsPending());
  CountingHost::stopFailing();
  EXPECT_EQ(memory.get(), errors::standardKst(kst::kOutOfMemory));
  EXPECT_EQ(method.get(), errors::standardZeb(zebid::kMissingMethod));
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
}

TEST_F(BoundaryTest, TakesStandardIdsThatDoNotExistForUnknown) {
  EXPECT_EQ(translated([] { raiseStandardKst(4); }).get(), errors::standardKst(0));
  EXPECT_EQ(translated([] { raiseStandardZeb(1); }).get(), errors::standardKst(0));
}

TEST_F(BoundaryTest, MakesNewErrorsOfTheLibrarysComponents) {
  const errors::Ref own = translated([] { raiseNewKst(9, "own text"); });
  EXPECT_STREQ(messageOf(own), "own text");
  EXPECT_STREQ(componentOf(own), "KST");
  EXPECT_EQ(own.get()->id, 9);
  const errors::Ref standard = translated([] { raiseNewKst(kst::kCorruptData, nullptr); });
  EXPECT_STREQ(messageOf(standard), "Corrupt Data");
  EXPECT_NE(standard.get(), errors::standardKst(kst::kCorruptData));
  EXPECT_STREQ(messageOf(translated([] { raiseNewKst(4, nullptr); })), "Unknown Kesto Error");
  const errors::Ref zeb = translated([] { raiseNewZeb(zebid::kMissingMethod, nullptr); });
  EXPECT_STREQ(messageOf(zeb), "Missing ZEB Method");
  EXPECT_STREQ(componentOf(zeb), "ZEB");
  EXPECT_TRUE(CountingHost::reports.empty());  // only what clients make is reported
}

TEST_F(BoundaryTest, RaisesOutOfMemoryInsteadOfAnErrorThatCannotBeMade) {
  CountingHost::failAllocation(1);
  const errors::Ref error = translated([] { raiseNewKst(9, "there is no room for this one"); });
  EXPECT_EQ(error.get(), errors::standardKst(kst::kOutOfMemory));
}

TEST_F(BoundaryTest, KnowsNothingOfForeignExceptions) {
  ZEBErrorObject* unknown = errors::standardKst(kst::kUnknown);
  EXPECT_EQ(translated([] { throw 0; }).get(), unknown);
  EXPECT_EQ(translated([] { throw std::bad_alloc(); }).get(), unknown);
  EXPECT_EQ(translated([] { throw "text"; }).get(), unknown);
  EXPECT_EQ(translated([] { throw KSTException("its text is never seen"); }).get(), unknown);
}

TEST_F(BoundaryTest, NeverAnswersSuccessForAFailureWithoutStandardErrors) {
  library_.stop();
  EXPECT_NE(translated([] { throw 0; }).get(), nullptr);
  EXPECT_NE(translated([] { raiseStandardKst(kst::kOutOfMemory); }).get(), nullptr);
}

void failWith(int32_t* out, int32_t value) {
  clearOut(out);
  *out = value;
  if (value < 0) raiseStandardKst(kst::kCorruptData);
}
using FailWith = ErrorProc<&failWith>;

TEST_F(BoundaryTest, AnswersNullOnSuccess) {
  int32_t out = -1;
  EXPECT_EQ(FailWith::call(&out, 5), nullptr);
  EXPECT_EQ(out, 5);
}

TEST_F(BoundaryTest, AnswersTheErrorOnFailure) {
  int32_t out = 0;
  const errors::Ref error(FailWith::call(&out, -1));
  EXPECT_EQ(error.get(), errors::standardKst(kst::kCorruptData));
}

void failAtOnce(int32_t* out) {
  clearOut(out);
  throw 1;
}

TEST_F(BoundaryTest, ClearsTheOutArgumentBeforeAnythingFails) {
  int32_t out = 77;
  const errors::Ref error(ErrorProc<&failAtOnce>::call(&out));
  EXPECT_EQ(out, 0);
  EXPECT_EQ(error.get(), errors::standardKst(kst::kUnknown));
}

TEST_F(BoundaryTest, RefusesANullOutArgument) {
  const errors::Ref error(FailWith::call(nullptr, 5));
  EXPECT_EQ(error.get(), errors::standardZeb(zebid::kMissingMethod));
}

int32_t* throwingPointer() { throw 1; }
int32_t throwingNumber() { throw 1; }
void throwingNothing() { throw 1; }

TEST_F(BoundaryTest, TurnsFailuresOfValueProcsIntoNullAndZero) {
  EXPECT_EQ(ValueProc<&throwingPointer>::call(), nullptr);
  EXPECT_EQ(ValueProc<&throwingNumber>::call(), 0);
  ValueProc<&throwingNothing>::call();
}

constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();

TEST_F(BoundaryTest, RaisesAProductThatOverflowsAsMemoryThatIsNotThere) {
  EXPECT_EQ(sizeOfPointers(kMost / 8), kMost / 8 * 8);
  const errors::Ref error = translated([] { (void)sizeOfPointers(kMost / 8 + 1); });
  EXPECT_STREQ(messageOf(error), "Math overflow exception");
  EXPECT_STREQ(componentOf(error), "KST");
  EXPECT_EQ(error.get()->id, 1);
}

TEST_F(BoundaryTest, RaisesJoinedTextsThatOverflowBeforeAnyAllocation) {
  EXPECT_EQ(sizeOfJoinedTexts(3, 4), 8u);
  EXPECT_EQ(sizeOfJoinedTexts(kMost - 5, 4), kMost);
  for (const auto& [a, b] : {std::pair{kMost, uint64_t{1}}, std::pair{kMost - 4, uint64_t{4}}}) {
    const errors::Ref error = translated([a = a, b = b] { (void)sizeOfJoinedTexts(a, b); });
    EXPECT_STREQ(messageOf(error), "Math overflow exception");
    EXPECT_EQ(error.get()->id, 0);
  }
}

TEST_F(BoundaryTest, ThrowsJoinedTextsThatOverflowOnTheClientsSideAsAPlainText) {
  EXPECT_EQ(clientSizeOfJoinedTexts(3, 4), 8u);
  try {
    (void)clientSizeOfJoinedTexts(kMost - 4, 4);
    FAIL();
  } catch (const KSTException& failure) {
    EXPECT_STREQ(failure.message(), "Math overflow exception");
  }
}

TEST_F(BoundaryTest, RaisesACopyThatDoesNotFitOnTheClientsSide) {
  char room[4] = {1, 1, 1, 1};
  clientCheckedCopy(room, 4, "abc", 4);
  EXPECT_STREQ(room, "abc");
  clientCheckedCopy(room, 4, nullptr, 0);
  const errors::Ref error = translated([&] { clientCheckedCopy(room, 4, "abcd", 5); });
  EXPECT_STREQ(messageOf(error), "Memory Copy Error");
  EXPECT_STREQ(componentOf(error), "");
  EXPECT_EQ(error.get()->id, 0);
  EXPECT_EQ(room[0], 0);
}

// Hands on what a client answered, or raises.
ZEBErrorObject* clientAnswer(ZEBErrorObject* error) {
  if (error == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  return error;
}

TEST_F(BoundaryTest, HandsOnTheErrorThatAClientAnswered) {
  ZEBErrorObject* error = errors::make("answered", "there", 4);
  EXPECT_EQ(ErrorProc<&clientAnswer>::call(error), error);
  EXPECT_EQ(error->references.load(), 1u);
  errors::release(error);
  const errors::Ref raised(ErrorProc<&clientAnswer>::call(nullptr));
  EXPECT_EQ(raised.get(), errors::standardZeb(zebid::kMissingMethod));
}

TEST_F(BoundaryTest, IsChosenByTheProcsType) {
  using AnswersError = ZEBErrorObject* (*)(int32_t*, int32_t);
  using AnswersNumber = int32_t (*)();
  EXPECT_EQ((withBoundary<AnswersError, &failWith>()), &FailWith::call);
  EXPECT_EQ((withBoundary<ZEBErrorObject* (*)(ZEBErrorObject*), &clientAnswer>()),
            &ErrorProc<&clientAnswer>::call);
  EXPECT_EQ((withBoundary<AnswersNumber, &throwingNumber>()), &ValueProc<&throwingNumber>::call);
}

class ClientErrorTest : public BoundaryTest {};

TEST_F(ClientErrorTest, IsMadeThroughTheInterfaceAndReported) {
  int info = 0;
  const errors::Ref error =
      translated([&] { raiseClientError("from a client", "client", 4, &info, nullptr); });
  EXPECT_STREQ(messageOf(error), "from a client");
  EXPECT_STREQ(componentOf(error), "client");
  EXPECT_EQ(error.get()->id, 4);
  EXPECT_EQ(error.get()->info, &info);
  EXPECT_EQ(error.get()->references.load(), 1u);
  EXPECT_EQ(CountingHost::reports, std::vector<std::string>{"from a client"});
}

TEST_F(ClientErrorTest, RaisesTheKeptStandardErrorsWithoutAllocating) {
  (void)clientErrorProcs();
  CountingHost::failAllocation(1);
  EXPECT_EQ(translated([] { raiseClientStandard(kst::kUnknown); }).get(), errors::standardKst(0));
  EXPECT_EQ(translated([] { raiseClientStandard(kst::kOutOfMemory); }).get(),
            errors::standardKst(1));
  EXPECT_EQ(translated([] { raiseClientStandard(kst::kCorruptData); }).get(),
            errors::standardKst(3));
  EXPECT_TRUE(CountingHost::failureIsPending());
  CountingHost::stopFailing();
}

TEST_F(ClientErrorTest, SharesAnExistingError) {
  ZEBErrorObject* existing = errors::make("existing", "c", 1);
  {
    const errors::Ref error = translated([&] { raiseClientError(existing); });
  }
  EXPECT_EQ(existing->references.load(), 1u);
  errors::release(existing);
}

int deletions = 0;

TEST_F(ClientErrorTest, SaysSoWhenTheErrorInterfaceIsMissing) {
  registry::removeInterface(ZEB_ERROR_INTERFACE);
  deletions = 0;
  const errors::Ref error =
      translated([] { raiseClientError("m", "c", 1, nullptr, [](void*) { ++deletions; }); });
  EXPECT_STREQ(messageOf(error), "Missing Interface");
  EXPECT_STREQ(componentOf(error), "ZEB");
  EXPECT_EQ(error.get()->id, 0);
  EXPECT_EQ(deletions, 1);  // the data was consumed all the same
}

int replacedCalls = 0;
ZEBErrorObject* replacedGetCoreError(int32_t id) {
  ++replacedCalls;
  return errors::shared(errors::standardKst(id));
}

TEST_F(ClientErrorTest, FollowsAReplacedErrorInterface) {
  (void)clientErrorProcs();
  ZEBErrorProcs own = clientErrorProcs();
  registry::removeInterface(ZEB_ERROR_INTERFACE);
  own.GetCoreError = replacedGetCoreError;
  std::array<ZEBProc, sizeof own / sizeof(ZEBProc)> procs{};
  std::memcpy(procs.data(), &own, sizeof own);
  const ZEBProcRequest requests[] = {ZEB_ERROR_PROCS(ZEB_PROC_REQUEST)};
  for (size_t i = 0; i < procs.size(); ++i) {
    ASSERT_TRUE(
        registry::add(ZEB_ERROR_INTERFACE, requests[i].methodName, requests[i].procName, procs[i]));
  }
  replacedCalls = 0;
  EXPECT_EQ(clientErrorProcs().GetCoreError, replacedGetCoreError);
  EXPECT_EQ(replacedCalls, 2);  // the two that are kept
}

TEST_F(ClientErrorTest, GivesEverythingBackWhenTheLibraryStops) {
  (void)clientErrorProcs();
  library_.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
  EXPECT_TRUE(CountingHost::reports.empty());
}

}  // namespace
}  // namespace zeb
