// The digester as its clients meet it: a component of which they know names only. Every case runs
// with each of the two publishers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string_view>

#include "common/support/atom.h"
#include "common/support/container.h"
#include "common/support/error.h"
#include "common/tests/running_modules.h"
#include "interfaces/digest.h"
#include "interfaces/digester.h"
#include "tests/module_folders.h"

namespace examples {
namespace {

using testing::StrEq;

constexpr std::string_view kText = "Tick tock, said the clock; the clock said tick.";
constexpr const char* kUpdateProc = "HostingDigesterUpdateProc";
constexpr const char* kFinishProc = "HostingDigesterFinishProc";

struct Publisher {
  const char* name;
  const char* folder;
};

void PrintTo(const Publisher& publisher, std::ostream* out) { *out << publisher.name; }

class Digester : public testing::TestWithParam<Publisher> {
 protected:
  Digester() : running_({GetParam().folder}) {}

  Atom atom(const char* text) { return Atom::intern(zeb().strings, text); }

  HostingDigestProcs digest() {
    HostingDigestProcs procs{};
    EXPECT_EQ(HostingFetchDigestProcs(zeb().getProcAddress, &procs), 1);
    return procs;
  }

  Container newDigester() {
    ZEBContainer* made = nullptr;
    EXPECT_FALSE(Error(zeb(), digest().NewDigester(&made)));
    return {zeb().containers, made};
  }

  HostingDigesterProcs methodsOf(const Container& digester) {
    static constexpr ZEBProcRequest kMethods[] = {HOSTING_DIGESTER_PROCS(ZEB_PROC_REQUEST)};
    HostingDigesterProcs methods{};
    EXPECT_FALSE(Error(zeb(), askForMethods(zeb(), digester.get(), kMethods, &methods)));
    return methods;
  }

  ZEBProc registered(const char* interfaceName, const char* method, const char* proc) {
    return zeb().getProcAddress(interfaceName, method, proc);
  }

  const HostingDigestState* stateOf(const Container& digester) {
    const Atom name = atom(HOSTING_DIGEST_STATE);
    return static_cast<const HostingDigestState*>(
        zeb().containers.GetInstance(digester.get(), name.get()));
  }

  Error update(const Container& digester, const void* bytes, uint64_t size) {
    return {zeb(), methodsOf(digester).Update(digester.get(), bytes, size)};
  }
  void updateWith(const Container& digester, std::string_view text) {
    EXPECT_FALSE(update(digester, text.data(), text.size()));
  }

  uint64_t finish(const Container& digester) {
    uint64_t result = 0;
    EXPECT_FALSE(Error(zeb(), methodsOf(digester).Finish(digester.get(), &result)));
    return result;
  }

  uint64_t digestOfWhole(std::string_view text) {
    uint64_t result = 0;
    EXPECT_FALSE(Error(zeb(), digest().Digest(&result, nullptr, text.data(), text.size())));
    return result;
  }

  const Services& zeb() { return running_.services(); }

  RunningModules running_;
};

INSTANTIATE_TEST_SUITE_P(Publishers, Digester,
                         testing::Values(Publisher{"First", kModules},
                                         Publisher{"Replacement", kReplacement}),
                         [](const auto& publisher) { return publisher.param.name; });

TEST_P(Digester, NamesItsInterfacesTheEarliestFirst) {
  const Container digester = newDigester();
  EXPECT_THAT(zeb().containers.GetSignature(digester.get()),
              StrEq(HOSTING_DIGESTER_INTERFACE "." HOSTING_CHECKED_DIGESTER_INTERFACE));
}

TEST_P(Digester, AnswersWithTheLaterInterfacesMethod) {
  const Container digester = newDigester();
  const HostingDigesterProcs methods = methodsOf(digester);
  const auto update = reinterpret_cast<ZEBProc>(methods.Update);
  EXPECT_EQ(update, registered(HOSTING_CHECKED_DIGESTER_INTERFACE, "Update", kUpdateProc));
  EXPECT_NE(update, registered(HOSTING_DIGESTER_INTERFACE, "Update", kUpdateProc));
}

TEST_P(Digester, AnswersWithTheEarlierInterfacesMethodWhereNothingOverridesIt) {
  const Container digester = newDigester();
  const auto finish = reinterpret_cast<ZEBProc>(methodsOf(digester).Finish);
  EXPECT_EQ(finish, registered(HOSTING_DIGESTER_INTERFACE, "Finish", kFinishProc));
  EXPECT_EQ(registered(HOSTING_CHECKED_DIGESTER_INTERFACE, "Finish", kFinishProc), nullptr);
}

TEST_P(Digester, HasTheOverriddenMethodBehindTheLaterInterfaceOnly) {
  const Container digester = newDigester();
  const Atom earlier = atom(HOSTING_DIGESTER_INTERFACE);
  const Atom later = atom(HOSTING_CHECKED_DIGESTER_INTERFACE);
  const Atom method = atom("Update");
  const Atom proc = atom(kUpdateProc);
  const auto parentOf = [&](const Atom& current) {
    ZEBProc found = nullptr;
    EXPECT_FALSE(
        Error(zeb(), zeb().containers.GetParentMethod(&found, digester.get(), current.get(),
                                                      method.get(), proc.get(), 0)));
    return found;
  };
  EXPECT_EQ(parentOf(later), registered(HOSTING_DIGESTER_INTERFACE, "Update", kUpdateProc));
  EXPECT_EQ(parentOf(earlier), nullptr);
}

TEST_P(Digester, GivesTheDigestOfTheWholeForPiecesOfAnySize) {
  const uint64_t whole = digestOfWhole(kText);
  for (size_t size = 1; size <= kText.size(); ++size) {
    const Container digester = newDigester();
    for (size_t at = 0; at < kText.size(); at += size) {
      updateWith(digester, kText.substr(at, size));
    }
    EXPECT_EQ(finish(digester), whole) << "pieces of " << size << " bytes";
  }
}

TEST_P(Digester, GivesTheDigestOfNothingAtFirst) {
  const Container digester = newDigester();
  EXPECT_EQ(finish(digester), digestOfWhole(""));
}

TEST_P(Digester, GoesOnAfterADigestWasAsked) {
  const Container digester = newDigester();
  updateWith(digester, kText.substr(0, 10));
  EXPECT_EQ(finish(digester), digestOfWhole(kText.substr(0, 10)));
  updateWith(digester, kText.substr(10));
  EXPECT_EQ(finish(digester), digestOfWhole(kText));
}

TEST_P(Digester, IsApartFromEveryOther) {
  const Container one = newDigester();
  const Container other = newDigester();
  updateWith(one, "tick");
  updateWith(other, "tock");
  EXPECT_EQ(finish(one), digestOfWhole("tick"));
  EXPECT_EQ(finish(other), digestOfWhole("tock"));
  EXPECT_EQ(stateOf(one)->byteCount, 4U);
}

TEST_P(Digester, CountsInItsState) {
  const Container digester = newDigester();
  const HostingDigestState* const state = stateOf(digester);
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(state->byteCount, 0U);
  updateWith(digester, "tick");
  updateWith(digester, "");
  updateWith(digester, "tock!");
  EXPECT_EQ(state->byteCount, 9U);
  EXPECT_EQ(state->pieceCount, 3U);
}

TEST_P(Digester, CountsInTheOverridingMethodAndDigestsInTheOverriddenOne) {
  const auto overridden = reinterpret_cast<HostingDigesterUpdateProc>(
      registered(HOSTING_DIGESTER_INTERFACE, "Update", kUpdateProc));
  const Container digester = newDigester();
  ASSERT_FALSE(Error(zeb(), overridden(digester.get(), "tick", 4)));
  EXPECT_EQ(finish(digester), digestOfWhole("tick"));
  EXPECT_EQ(stateOf(digester)->byteCount, 0U);
}

TEST_P(Digester, RefusesAPieceWithoutBytesAndStaysAsItWas) {
  const Container digester = newDigester();
  updateWith(digester, "tick");
  const Error error = update(digester, nullptr, 5);
  ASSERT_TRUE(error);
  EXPECT_THAT(error.component(), StrEq(HOSTING_DIGEST_COMPONENT));
  EXPECT_EQ(error.id(), HOSTING_DIGEST_ERROR_NO_BYTES);
  EXPECT_EQ(finish(digester), digestOfWhole("tick"));
  EXPECT_EQ(stateOf(digester)->pieceCount, 1U);
}

TEST_P(Digester, RefusesToGiveItsResultToNobody) {
  const Container digester = newDigester();
  const Error noDigest(zeb(), methodsOf(digester).Finish(digester.get(), nullptr));
  EXPECT_EQ(noDigest.id(), HOSTING_DIGEST_ERROR_NO_RESULT);
  const Error noDigester(zeb(), digest().NewDigester(nullptr));
  EXPECT_EQ(noDigester.id(), HOSTING_DIGEST_ERROR_NO_RESULT);
}

TEST_P(Digester, PassesOnThatAComponentHasNoDigestState) {
  ZEBContainer* made = nullptr;
  ASSERT_FALSE(Error(zeb(), zeb().containers.NewContainer(&made)));
  const Container stranger(zeb().containers, made);
  const HostingDigesterProcs methods = methodsOf(newDigester());
  uint64_t digest = 7;
  const Error error(zeb(), methods.Finish(stranger.get(), &digest));
  EXPECT_THAT(error.message(), StrEq("Missing ZEB Method"));
  EXPECT_EQ(digest, 7U);
}

TEST_P(Digester, LivesAsLongAsSomebodyHoldsIt) {
  Container first = newDigester();
  ASSERT_EQ(zeb().containers.AddRef(first.get()), 1);
  const Container second(zeb().containers, first.get());
  first = {};
  updateWith(second, "tick");
  EXPECT_EQ(finish(second), digestOfWhole("tick"));
}

}  // namespace
}  // namespace examples
