// String atoms while the library runs: identity, texts, references, the atoms kept for a while, and
// the events that each operation counts.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

using Host = HostMemory<0>;

class Atoms : public ::testing::Test {
 protected:
  explicit Atoms(const StartOptions& options = {}) : zeb_(options) {}

  ZEBString* Make(const char* text) const { return zeb_.string.NewStringAtom(text); }
  void Release(ZEBString* atom) const { zeb_.string.DeleteStringAtom(atom); }
  const char* Text(ZEBString* atom) const { return zeb_.string.GetCString(atom); }
  void MakeAndRelease(const char* text) const { Release(Make(text)); }

  template <class Operation>
  AtomEvents EventsOf(Operation operation) const {
    return AtomEventsOf(zeb_, operation);
  }

  RunningLibrary zeb_;
};

TEST_F(Atoms, AreTheSameForEqualTexts) {
  ZEBString* first = Make("abc");
  ZEBString* second = Make(std::string("abc").c_str());
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  Release(first);
  EXPECT_STREQ(Text(second), "abc");
  Release(second);
}

TEST_F(Atoms, DifferForDifferentTexts) {
  const char* const texts[] = {"",    "a",   "A",   "ab",   "ba",  "abc",
                               "abd", " ab", "ab ", "\x80", "\xFF"};
  std::vector<ZEBString*> atoms;
  for (const char* text : texts) atoms.push_back(Make(text));
  for (std::size_t i = 0; i < atoms.size(); ++i) {
    EXPECT_STREQ(Text(atoms[i]), texts[i]);
    for (std::size_t j = 0; j < i; ++j) EXPECT_NE(atoms[i], atoms[j]) << texts[i];
  }
  for (ZEBString* atom : atoms) Release(atom);
}

TEST_F(Atoms, KeepACopyOfTheText) {
  char text[] = "before";
  ZEBString* atom = Make(text);
  EXPECT_NE(Text(atom), text);
  std::strcpy(text, "after!");
  EXPECT_STREQ(Text(atom), "before");
  Release(atom);
}

TEST_F(Atoms, KeepTheirTextInPlace) {
  ZEBString* atom = Make("in place");
  const char* text = Text(atom);
  ZEBString* again = Make("in place");
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(Text(atom), text);
  EXPECT_EQ(Text(again), text);
  Release(atom);
  Release(again);
}

TEST_F(Atoms, TakeANullTextForTheEmptyOne) {
  ZEBString* ofNull = Make(nullptr);
  ZEBString* ofEmpty = Make("");
  ASSERT_NE(ofNull, nullptr);
  EXPECT_EQ(ofNull, ofEmpty);
  EXPECT_STREQ(Text(ofNull), "");
  Release(ofNull);
  Release(ofEmpty);
}

TEST_F(Atoms, HaveTextsOfAnyLength) {
  for (const std::size_t length : {1u, 15u, 16u, 47u, 255u, 256u, 65535u, 65536u, 1u << 20}) {
    const std::string text(length, 'x');
    ZEBString* atom = Make(text.c_str());
    ZEBString* same = Make(text.c_str());
    ZEBString* longer = Make((text + "x").c_str());
    EXPECT_EQ(Text(atom), text);
    EXPECT_EQ(atom, same);
    EXPECT_NE(atom, longer);
    for (ZEBString* made : {atom, same, longer}) Release(made);
  }
}

TEST_F(Atoms, HaveTextsOfAnyBytes) {
  std::string text;
  for (int byte = 1; byte < 256; ++byte) text += static_cast<char>(byte);
  ZEBString* atom = Make(text.c_str());
  EXPECT_EQ(Text(atom), text);
  Release(atom);
}

TEST_F(Atoms, StayApartInGreatNumber) {
  constexpr int kAtoms = 5000;
  std::vector<ZEBString*> atoms;
  for (int i = 0; i < kAtoms; ++i) atoms.push_back(Make(std::to_string(i).c_str()));
  for (int i = 0; i < kAtoms; ++i) {
    const std::string text = std::to_string(i);
    EXPECT_EQ(Text(atoms[static_cast<std::size_t>(i)]), text);
    ZEBString* again = Make(text.c_str());
    EXPECT_EQ(again, atoms[static_cast<std::size_t>(i)]);
    Release(again);
  }
  for (ZEBString* atom : atoms) Release(atom);
}

TEST_F(Atoms, LiveUntilTheLastReference) {
  ZEBString* atom = Make("counted");
  zeb_.string.AddRef(atom);
  EXPECT_EQ(Make("counted"), atom);
  Release(atom);
  Release(atom);
  ForgetRecentAtoms(zeb_);
  EXPECT_STREQ(Text(atom), "counted");
  EXPECT_EQ(EventsOf([&] { MakeAndRelease("counted"); }), (AtomEvents{.found = 1}));
  Release(atom);
  EXPECT_EQ(EventsOf([&] { MakeAndRelease("counted"); }), (AtomEvents{.allocated = 1}));
}

TEST_F(Atoms, HarmlesslyTakeNull) {
  Release(nullptr);
  zeb_.string.AddRef(nullptr);
  EXPECT_EQ(Text(nullptr), nullptr);
}

using Utf16Atoms = Atoms;

constexpr char kMarkOnly[] = "\xFE\xFF";

TEST_F(Utf16Atoms, EndInThreeZeroBytes) {
  for (const std::string text : {"\xFE\xFF", "\xFE\xFFx", "\xFE\xFFxy", "\xFE\xFFxyz"}) {
    ZEBString* atom = Make(text.c_str());
    const char* copy = Text(atom);
    EXPECT_EQ(std::string(copy, text.size() + 3), text + std::string(3, '\0'));
    Release(atom);
  }
}

// The two bytes past a plain text belong to nobody; a sanitizer sees a copy that touches them.
TEST_F(Utf16Atoms, AreToldFromTextsThatOnlyBeginAlike) {
  for (const char* text : {"\xFE", "\xFF\xFE", "\xFF", "\xFEx\xFF", "x\xFE\xFF"}) {
    ZEBString* atom = Make(text);
    EXPECT_STREQ(Text(atom), text);
    Release(atom);
  }
}

TEST_F(Utf16Atoms, AreTheSameUpToTheFirstZeroByte) {
  const char ab[] = "\xFE\xFF\0A\0B";
  const char ac[] = "\xFE\xFF\0A\0C";
  ZEBString* first = Make(ab);
  EXPECT_EQ(Make(ac), first);
  EXPECT_EQ(Make(kMarkOnly), first);
  EXPECT_EQ(std::string(Text(first), 5), std::string("\xFE\xFF\0\0\0", 5));
  for (int i = 0; i < 3; ++i) Release(first);
}

TEST_F(Utf16Atoms, DifferBeforeTheFirstZeroByte) {
  const char first[] = "\xFE\xFFq\0";
  const char second[] = "\xFE\xFFr\0";
  ZEBString* one = Make(first);
  ZEBString* other = Make(second);
  EXPECT_NE(one, other);
  Release(one);
  Release(other);
}

using RecentAtoms = Atoms;

TEST_F(RecentAtoms, SurviveTheNextSixtyThreeNewOnes) {
  MakeAndRelease("recent");
  MakeNewAtoms(zeb_, kRecentAtoms - 1);
  EXPECT_EQ(EventsOf([&] { MakeAndRelease("recent"); }), (AtomEvents{.found = 1}));
}

TEST_F(RecentAtoms, AreForgottenWithTheSixtyFourthNewOne) {
  MakeAndRelease("recent");
  MakeNewAtoms(zeb_, kRecentAtoms);
  EXPECT_EQ(EventsOf([&] { MakeAndRelease("recent"); }), (AtomEvents{.allocated = 1}));
}

TEST_F(RecentAtoms, AreNotRenewedByBeingFound) {
  MakeAndRelease("recent");
  MakeNewAtoms(zeb_, kRecentAtoms - 1);
  MakeAndRelease("recent");
  MakeNewAtoms(zeb_, 1);
  EXPECT_EQ(EventsOf([&] { MakeAndRelease("recent"); }), (AtomEvents{.allocated = 1}));
}

TEST_F(RecentAtoms, CountTheNewOnesThatClientsHold) {
  MakeAndRelease("recent");
  std::vector<ZEBString*> held;
  for (int i = 0; i < kRecentAtoms; ++i) {
    held.push_back(Make(("held " + std::to_string(i)).c_str()));
  }
  EXPECT_EQ(EventsOf([&] { MakeAndRelease("recent"); }), (AtomEvents{.allocated = 1}));
  for (ZEBString* atom : held) Release(atom);
}

TEST_F(RecentAtoms, AreForgottenRoundAfterRound) {
  for (int round = 0; round < 5; ++round) {
    EXPECT_EQ(EventsOf([&] { MakeAndRelease("recent"); }), (AtomEvents{.allocated = 1}));
    MakeNewAtoms(zeb_, kRecentAtoms - 1);
    EXPECT_EQ(EventsOf([&] { MakeAndRelease("recent"); }), (AtomEvents{.found = 1}));
    MakeNewAtoms(zeb_, 1);
  }
}

TEST_F(RecentAtoms, NeverIncludeThePermanentDot) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(EventsOf([&] { MakeAndRelease("."); }), (AtomEvents{.found = 1}));
    ForgetRecentAtoms(zeb_);
  }
}

using AtomEventCounts = Atoms;

TEST_F(AtomEventCounts, TellNewTextsFromKnownOnes) {
  ZEBString* atom = nullptr;
  EXPECT_EQ(EventsOf([&] { atom = Make("never seen"); }), (AtomEvents{.allocated = 1}));
  EXPECT_EQ(EventsOf([&] { Make("never seen"); }), (AtomEvents{.found = 1}));
  EXPECT_EQ(EventsOf([&] { Make("never seen"); }), (AtomEvents{.found = 1}));
  for (int i = 0; i < 3; ++i) Release(atom);
}

TEST_F(AtomEventCounts, CountEveryAddRef) {
  ZEBString* atom = Make("counted");
  EXPECT_EQ(EventsOf([&] { zeb_.string.AddRef(atom); }), (AtomEvents{.addRefs = 1}));
  EXPECT_EQ(EventsOf([&] { zeb_.string.AddRef(nullptr); }), (AtomEvents{.addRefs = 1}));
  Release(atom);
  Release(atom);
}

TEST_F(AtomEventCounts, IgnoreReadingAndReleasing) {
  ZEBString* atom = Make("read and released");
  EXPECT_EQ(EventsOf([&] {
              Text(atom);
              Text(nullptr);
              Release(atom);
              Release(nullptr);
            }),
            AtomEvents());
}

TEST_F(AtomEventCounts, TakeANullTextForTheKnownEmptyOne) {
  EXPECT_EQ(EventsOf([&] { MakeAndRelease(nullptr); }), (AtomEvents{.found = 1}));
  EXPECT_EQ(EventsOf([&] { MakeAndRelease(""); }), (AtomEvents{.found = 1}));
}

// The library itself holds the names of the stream interfaces as long as it runs.
TEST_F(AtomEventCounts, KnowTheNamesThatTheLibraryHolds) {
  ForgetRecentAtoms(zeb_);
  for (const char* name :
       {"ZEBSimpleStreamZEBImpl", "ZEBSimpleStreamInterface", "ZEBRewindableStreamInterface",
        "ZEBPositionableStreamInterface", "ZEBStreamInterface", "KST", "ZEB", "Out of Memory",
        "Missing ZEB Method", "ZEBMemoryInterface", "ZEBMemAllocProc"}) {
    EXPECT_EQ(EventsOf([&] { MakeAndRelease(name); }), (AtomEvents{.found = 1})) << name;
  }
}

class AtomsInHostMemory : public Atoms {
 protected:
  AtomsInHostMemory() : Atoms(Host::WithObjectProcs()) {}
};

TEST_F(AtomsInHostMemory, GiveTheirBlocksBackWhenForgotten) {
  ForgetRecentAtoms(zeb_);
  const std::uint64_t live = Host::LiveBlocks();
  ZEBString* atom = Make("in the host's memory");
  const std::uint64_t withAtom = Host::LiveBlocks();
  Release(atom);
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(Host::LiveBlocks(), live);
  EXPECT_GE(withAtom, live);
}

// The event tells that a text had to be copied, whether or not there was memory to do so.
TEST_F(AtomsInHostMemory, CountATextThatCouldNotBeCopied) {
  const AtomEvents events = EventsOf([&] {
    Host::FailAt(1, true);
    EXPECT_EQ(Make("no memory for this"), nullptr);
    EXPECT_TRUE(Host::StopFailing());
  });
  EXPECT_EQ(events, (AtomEvents{.allocated = 1}));
}

TEST_F(AtomsInHostMemory, StayWhileTheyAreHeld) {
  std::vector<ZEBString*> held;
  for (int i = 0; i < 3 * kRecentAtoms; ++i) {
    held.push_back(Make(("held " + std::to_string(i)).c_str()));
  }
  const std::uint64_t live = Host::LiveBlocks();
  ForgetRecentAtoms(zeb_);
  for (std::size_t i = 0; i < held.size(); ++i)
    EXPECT_EQ(Text(held[i]), "held " + std::to_string(i));
  EXPECT_GE(Host::LiveBlocks(), live);
  for (ZEBString* atom : held) Release(atom);
  EXPECT_LT(Host::LiveBlocks(), live);
}

TEST_F(AtomsInHostMemory, EndInThreeZeroBytesOnBlocksThatWereNotCleared) {
  for (const std::string text : {"\xFE\xFF", "\xFE\xFFx", "\xFE\xFF some more of it"}) {
    ZEBString* atom = Make(text.c_str());
    EXPECT_EQ(std::string(Text(atom), text.size() + 3), text + std::string(3, '\0'));
    Release(atom);
  }
}

}  // namespace
}  // namespace contract
