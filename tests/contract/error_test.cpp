// Error objects: the standard ones, those that clients make, the data they carry, and who is told.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

// Client data of an error that remembers being deleted.
struct Info {
  int deletions = 0;
  static void Delete(void* info) { ++static_cast<Info*>(info)->deletions; }
};

class Errors : public ::testing::Test {
 protected:
  explicit Errors(const StartOptions& options = Reports::Told()) : zeb_(options) {
    Reports::Take();
  }

  ZEBErrorObject* NewError(const char* message, const char* component, std::int32_t id = 1,
                           Info* info = nullptr) const {
    return zeb_.error.NewError(message, component, id, info,
                               info == nullptr ? nullptr : &Info::Delete);
  }
  void Release(ZEBErrorObject* error) const { zeb_.error.Release(error); }
  std::string Message(ZEBErrorObject* error) const {
    return zeb_.string.GetCString(zeb_.error.GetErrorMessage(error));
  }
  std::string Component(ZEBErrorObject* error) const {
    return zeb_.string.GetCString(zeb_.error.GetComponent(error));
  }

  RunningLibrary zeb_;
};

using StandardErrors = Errors;

TEST_F(StandardErrors, CarryTheirTexts) {
  const char* const texts[] = {"Unknown Kesto Error", "Out of Memory", "", "Corrupt Data"};
  for (std::int32_t id = 0; id < 4; ++id) {
    ZEBErrorObject* error = zeb_.error.GetCoreError(id);
    ASSERT_NE(error, nullptr) << id;
    EXPECT_EQ(Message(error), texts[id]);
    EXPECT_EQ(Component(error), "KST");
    EXPECT_EQ(zeb_.error.GetID(error), id);
    EXPECT_EQ(zeb_.error.GetErrorInfo(error), nullptr);
    Release(error);
  }
}

TEST_F(StandardErrors, AnswerUnknownIdsWithTheFirst) {
  ZEBErrorObject* unknown = zeb_.error.GetCoreError(ZEB_ERROR_UNKNOWN);
  for (const std::int32_t id : {4, 5, 1000, INT_MAX}) {
    ZEBErrorObject* error = zeb_.error.GetCoreError(id);
    EXPECT_EQ(error, unknown) << id;
    Release(error);
  }
  Release(unknown);
}

TEST_F(StandardErrors, AnswerNegativeIdsWithNull) {
  for (const std::int32_t id : {-1, -2, -1000, INT_MIN}) {
    EXPECT_EQ(zeb_.error.GetCoreError(id), nullptr) << id;
  }
}

TEST_F(StandardErrors, AreTheSameObjectsEachTime) {
  for (std::int32_t id = 0; id < 4; ++id) {
    ZEBErrorObject* first = zeb_.error.GetCoreError(id);
    ZEBErrorObject* second = zeb_.error.GetCoreError(id);
    EXPECT_EQ(first, second);
    Release(first);
    Release(second);
  }
}

TEST_F(StandardErrors, OutliveTheReferencesOfTheirClients) {
  for (int i = 0; i < 10; ++i) Release(zeb_.error.GetCoreError(ZEB_ERROR_CORRUPT_DATA));
  ZEBErrorObject* error = zeb_.error.GetCoreError(ZEB_ERROR_CORRUPT_DATA);
  EXPECT_EQ(Message(error), "Corrupt Data");
  Release(error);
}

TEST_F(StandardErrors, AreNotReported) {
  for (std::int32_t id = 0; id < 6; ++id) Release(zeb_.error.GetCoreError(id));
  EXPECT_THAT(Reports::Take(), IsEmpty());
}

TEST(StartOfTheLibrary, ReportsNoErrors) {
  Reports::Take();
  RunningLibrary(Reports::Told()).Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
}

TEST_F(Errors, CarryWhatTheyWereMadeOf) {
  Info info;
  ZEBErrorObject* error = NewError("the message", "the component", 77, &info);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(Message(error), "the message");
  EXPECT_EQ(Component(error), "the component");
  EXPECT_EQ(zeb_.error.GetID(error), 77);
  EXPECT_EQ(zeb_.error.GetErrorInfo(error), &info);
  Release(error);
}

TEST_F(Errors, TakeAnyId) {
  for (const std::int32_t id : {0, 1, -1, INT_MAX, INT_MIN}) {
    ZEBErrorObject* error = NewError("message", "component", id);
    EXPECT_EQ(zeb_.error.GetID(error), id);
    Release(error);
  }
}

TEST_F(Errors, CopyTheirTexts) {
  char message[] = "the message";
  char component[] = "the component";
  ZEBErrorObject* error = NewError(message, component);
  message[0] = component[0] = '?';
  EXPECT_EQ(Message(error), "the message");
  EXPECT_EQ(Component(error), "the component");
  Release(error);
}

TEST_F(Errors, CountANullTextAsTheEmptyOne) {
  ZEBErrorObject* error = NewError(nullptr, nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(Message(error), "");
  EXPECT_EQ(Component(error), "");
  EXPECT_EQ(zeb_.error.GetID(error), 1);
  EXPECT_THAT(Reports::Take(), ElementsAre(""));
  Release(error);
}

TEST_F(Errors, CountANullMessageAloneAsTheEmptyText) {
  ZEBErrorObject* error = NewError(nullptr, "component");
  EXPECT_EQ(Message(error), "");
  EXPECT_EQ(Component(error), "component");
  EXPECT_THAT(Reports::Take(), ElementsAre(""));
  Release(error);
}

TEST_F(Errors, CountANullComponentAloneAsTheEmptyText) {
  ZEBErrorObject* error = NewError("message", nullptr);
  EXPECT_EQ(Message(error), "message");
  EXPECT_EQ(Component(error), "");
  EXPECT_THAT(Reports::Take(), ElementsAre("message"));
  Release(error);
}

TEST_F(Errors, ShareTheAtomsOfEqualTexts) {
  ZEBErrorObject* first = NewError("shared message", "shared component");
  ZEBErrorObject* second = NewError("shared message", "shared component");
  EXPECT_NE(first, second);
  EXPECT_EQ(zeb_.error.GetErrorMessage(first), zeb_.error.GetErrorMessage(second));
  EXPECT_EQ(zeb_.error.GetComponent(first), zeb_.error.GetComponent(second));
  ZEBString* atom = zeb_.string.NewStringAtom("shared message");
  EXPECT_EQ(zeb_.error.GetErrorMessage(first), atom);
  zeb_.string.DeleteStringAtom(atom);
  Release(first);
  EXPECT_EQ(Message(second), "shared message");
  Release(second);
}

TEST_F(Errors, ShareTheAtomsOfTheStandardErrors) {
  ZEBErrorObject* standard = zeb_.error.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
  ZEBErrorObject* own = NewError("Out of Memory", "KST");
  EXPECT_NE(own, standard);
  EXPECT_EQ(zeb_.error.GetErrorMessage(own), zeb_.error.GetErrorMessage(standard));
  EXPECT_EQ(zeb_.error.GetComponent(own), zeb_.error.GetComponent(standard));
  Release(own);
  Release(standard);
}

TEST_F(Errors, InternTheirTwoTexts) {
  ZEBErrorObject* held = nullptr;
  const AtomEvents first =
      AtomEventsOf(zeb_, [&] { held = NewError("an unseen message", "an unseen component"); });
  EXPECT_EQ(first.found, 0);
  EXPECT_EQ(first.allocated, 2);
  const AtomEvents second =
      AtomEventsOf(zeb_, [&] { Release(NewError("an unseen message", "an unseen component")); });
  EXPECT_EQ(second.found, 2);
  EXPECT_EQ(second.allocated, 0);
  Release(held);
}

TEST_F(Errors, KeepTheirAtomsWhenTheyAreReadOften) {
  ZEBErrorObject* error = NewError("read often", "read often too");
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(Message(error), "read often");
    EXPECT_EQ(Component(error), "read often too");
  }
  Release(error);
  zeb_.Stop();
  EXPECT_THAT(Reports::Take(), ElementsAre("read often"));
}

TEST_F(Errors, LiveUntilTheLastReference) {
  Info info;
  ZEBErrorObject* error = NewError("counted", "component", 5, &info);
  for (int i = 0; i < 10; ++i) zeb_.error.AddRef(error);
  for (int i = 0; i < 10; ++i) {
    Release(error);
    EXPECT_EQ(info.deletions, 0);
    EXPECT_EQ(Message(error), "counted");
  }
  Release(error);
  EXPECT_EQ(info.deletions, 1);
}

TEST_F(Errors, AreCountedAlikeByBothAddRefProcs) {
  const ZEBProc first = zeb_.getProcAddress("ZEBErrorInterface", "AddRef", "ZEBErrorAddRefProc");
  Info info;
  ZEBErrorObject* error = NewError("counted", "component", 5, &info);
  reinterpret_cast<ZEBErrorAddRefProc>(first)(error);
  Release(error);
  EXPECT_EQ(info.deletions, 0);
  Release(error);
  EXPECT_EQ(info.deletions, 1);
}

TEST_F(Errors, PublishOneAddRefFunctionUnderBothNames) {
  EXPECT_EQ(zeb_.getProcAddress("ZEBErrorInterface", "AddRef", "ZEBErrorAddRefProc"),
            AsProc(zeb_.error.AddRef));
}

TEST_F(Errors, NeverCallAMissingDeleteProc) {
  Info info;
  ZEBErrorObject* error = zeb_.error.NewError("message", "component", 1, &info, nullptr);
  EXPECT_EQ(zeb_.error.GetErrorInfo(error), &info);
  Release(error);
  EXPECT_EQ(info.deletions, 0);
}

TEST_F(Errors, GiveTheDeleteProcANullInfoToo) {
  static int calls;
  calls = 0;
  ZEBErrorObject* error = zeb_.error.NewError("message", "component", 1, nullptr, [](void* info) {
    EXPECT_EQ(info, nullptr);
    ++calls;
  });
  EXPECT_EQ(zeb_.error.GetErrorInfo(error), nullptr);
  EXPECT_EQ(calls, 0);
  Release(error);
  EXPECT_EQ(calls, 1);
}

TEST_F(Errors, HarmlesslyTakeNull) {
  zeb_.error.AddRef(nullptr);
  zeb_.error.Release(nullptr);
  EXPECT_EQ(zeb_.error.GetErrorMessage(nullptr), nullptr);
  EXPECT_EQ(zeb_.error.GetComponent(nullptr), nullptr);
  EXPECT_EQ(zeb_.error.GetID(nullptr), 0);
  EXPECT_EQ(zeb_.error.GetErrorInfo(nullptr), nullptr);
  const ZEBProc first = zeb_.getProcAddress("ZEBErrorInterface", "AddRef", "ZEBErrorAddRefProc");
  reinterpret_cast<ZEBErrorAddRefProc>(first)(nullptr);
}

TEST_F(Errors, AreReportedOnceEachWithTheirMessage) {
  Release(NewError("first", "component"));
  Release(NewError("", "component"));
  Release(NewError("first", "component"));
  EXPECT_THAT(Reports::Take(), ElementsAre("first", "", "first"));
}

TEST_F(Errors, AreReportedWithTheCallersOwnText) {
  static const char* reported;
  reported = nullptr;
  zeb_.Stop();
  RunningLibrary zeb({.errorReport = [](const char* message) { reported = message; }});
  const char message[] = "where the caller keeps it";
  zeb.error.Release(zeb.error.NewError(message, "component", 1, nullptr, nullptr));
  EXPECT_EQ(reported, message);
}

TEST_F(Errors, AreNotReportedWhenTheyGo) {
  ZEBErrorObject* error = NewError("made", "component");
  zeb_.error.AddRef(error);
  Reports::Take();
  Release(error);
  Release(error);
  EXPECT_THAT(Reports::Take(), IsEmpty());
}

TEST_F(Errors, AreReportedByTheProcOfTheFrame) {
  EXPECT_EQ(zeb_.frame.ReportError, &Reports::Report);
  zeb_.frame.ReportError("said by a client");
  EXPECT_THAT(Reports::Take(), ElementsAre("said by a client"));
}

TEST_F(Errors, MayBeMadeWhileNobodyIsTold) {
  zeb_.Stop();
  RunningLibrary zeb;
  ZEBErrorObject* error = zeb.error.NewError("unheard", "component", 4, nullptr, nullptr);
  EXPECT_EQ(zeb.error.GetID(error), 4);
  zeb.error.Release(error);
}

// The library's locks are free while client procedures run: each calls back in.
RunningLibrary* g_calledBack = nullptr;
int g_depth = 0;

void UseEveryService(const RunningLibrary& zeb) {
  zeb.string.DeleteStringAtom(zeb.string.NewStringAtom("made by a client's procedure"));
  EXPECT_NE(zeb.getProcAddress("ZEB", "ZEBReportError", "ZEBReportError"), nullptr);
  EXPECT_EQ(zeb.frame.RegisterProcAddress("Nested", "Method", "Proc", FakeProc(16)), 1);
  zeb.frame.UnregisterInterface("Nested");
  zeb.event.DeleteEventCounter(zeb.event.NewEventCounter("nested", 1));
  EXPECT_GE(Snapshot(zeb).size(), 20u);
  zeb.memory.Free(zeb.memory.Alloc(100));
}

void CallBack(const char*) {
  if (g_depth > 0) return;
  ++g_depth;
  UseEveryService(*g_calledBack);
  g_calledBack->error.Release(
      g_calledBack->error.NewError("nested", "component", 1, nullptr, nullptr));
  --g_depth;
}

TEST(ClientProcedures, MayUseTheLibraryFromTheErrorReport) {
  RunningLibrary zeb({.errorReport = &CallBack});
  g_calledBack = &zeb;
  ZEBErrorObject* error = zeb.error.NewError("message", "component", 6, nullptr, nullptr);
  EXPECT_EQ(zeb.error.GetID(error), 6);
  zeb.error.Release(error);
}

TEST(ClientProcedures, MayUseTheLibraryFromTheInfoDelete) {
  RunningLibrary zeb;
  g_calledBack = &zeb;
  static int calls;
  calls = 0;
  zeb.error.Release(zeb.error.NewError("message", "component", 6, nullptr, [](void*) {
    ++calls;
    CallBack(nullptr);
  }));
  EXPECT_EQ(calls, 1);
}

class ErrorsInHostMemory : public Errors {
 protected:
  ErrorsInHostMemory() : Errors(Host::WithObjectProcs(Reports::Told())) {}
};

TEST_F(ErrorsInHostMemory, DeleteTheInfoBeforeAnythingElseGoes) {
  static std::uint64_t freesAtDeletion;
  ForgetRecentAtoms(zeb_);
  ZEBErrorObject* error =
      zeb_.error.NewError("a message of its own", "a component of its own", 1, nullptr,
                          [](void*) { freesAtDeletion = Host::Frees(); });
  ForgetRecentAtoms(zeb_);
  const std::uint64_t before = Host::Frees();
  Release(error);
  EXPECT_EQ(freesAtDeletion, before);
  EXPECT_GT(Host::Frees(), before);
}

TEST_F(ErrorsInHostMemory, GiveEverythingBack) {
  ForgetRecentAtoms(zeb_);
  const std::uint64_t live = Host::LiveBlocks();
  for (int i = 0; i < 100; ++i) {
    const std::string text = "message " + std::to_string(i);
    Release(NewError(text.c_str(), "component"));
  }
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(Host::LiveBlocks(), live);
}

class ErrorsOutOfMemory : public ErrorsInHostMemory {
 protected:
  // Makes an error with the `nth` allocation failing, and all later ones with it.
  ZEBErrorObject* NewErrorFailingAt(std::uint64_t nth, Info* info) {
    Host::FailAt(nth, true);
    ZEBErrorObject* error = NewError("out of memory", "while it was made", 1, info);
    failed_ = Host::StopFailing();
    return error;
  }

  bool failed_ = false;
};

TEST_F(ErrorsOutOfMemory, AreReplacedByTheStandardError) {
  ZEBErrorObject* standard = zeb_.error.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
  std::uint64_t nth = 1;
  for (;; ++nth) {
    ForgetRecentAtoms(zeb_);
    Info info;
    ZEBErrorObject* error = NewErrorFailingAt(nth, &info);
    ASSERT_NE(error, nullptr);
    if (!failed_) {
      EXPECT_EQ(info.deletions, 0);
      Release(error);
      EXPECT_EQ(info.deletions, 1);
      break;
    }
    EXPECT_EQ(error, standard) << nth;
    EXPECT_EQ(info.deletions, 1) << nth;
    EXPECT_THAT(Reports::Take(), IsEmpty()) << nth;
    Release(error);
    EXPECT_EQ(info.deletions, 1) << nth;
  }
  EXPECT_GT(nth, 1u);
  Release(standard);
}

TEST_F(ErrorsOutOfMemory, NeedNoDeleteProc) {
  Host::FailAt(1, true);
  ZEBErrorObject* error = zeb_.error.NewError("out of memory", "unseen", 1, nullptr, nullptr);
  EXPECT_TRUE(Host::StopFailing());
  EXPECT_EQ(zeb_.error.GetID(error), ZEB_ERROR_OUT_OF_MEMORY);
  Release(error);
}

TEST_F(ErrorsOutOfMemory, AreReadCountedAndReleasedWithoutAllocating) {
  Info info;
  ZEBErrorObject* error = NewError("message", "component", 9, &info);
  Host::FailAt(1, true);
  zeb_.error.AddRef(error);
  EXPECT_EQ(Message(error), "message");
  EXPECT_EQ(Component(error), "component");
  EXPECT_EQ(zeb_.error.GetErrorInfo(error), &info);
  Release(error);
  Release(error);
  for (std::int32_t id = 0; id < 5; ++id) Release(zeb_.error.GetCoreError(id));
  EXPECT_FALSE(Host::StopFailing());
  EXPECT_EQ(info.deletions, 1);
}

// A deleting procedure may be slow, and another error may share the texts meanwhile.
TEST_F(Errors, ThatShareTextsGoOneByOne) {
  Info infos[20];
  std::vector<ZEBErrorObject*> errors;
  for (Info& info : infos) errors.push_back(NewError("one text", "one component", 1, &info));
  for (std::size_t i = 0; i < errors.size(); ++i) {
    Release(std::exchange(errors[i], nullptr));
    EXPECT_EQ(infos[i].deletions, 1);
    if (i + 1 < errors.size()) {
      EXPECT_EQ(infos[i + 1].deletions, 0);
      EXPECT_EQ(Message(errors.back()), "one text");
    }
  }
}

}  // namespace
}  // namespace contract
