// Publishing an interface from functions and lambdas.
#include "zeb/sdk/publication.hpp"

#include <gtest/gtest.h>

#include <barrier>
#include <stdexcept>
#include <thread>

#include "sdk/started.h"

namespace {

namespace sdk = zeb::sdk;

using ShoutProc = ZEBErrorObject* (*)(int32_t volume);
using CountProc = uint64_t (*)(uint64_t);

#define SHOUTS_PROCS(X)      \
  X(Shout, Shout, ShoutProc) \
  X(Count, Count, CountProc)
ZEB_SDK_INTERFACE(Shouts, "ShoutsInterface", SHOUTS_PROCS);

int32_t heard = 0;

void shout(int32_t volume) {
  if (volume > 10) throw std::runtime_error("too loud");
  heard = volume;
}

Shouts::Procs shouting() {
  return {.Shout = sdk::guarded<&shout>(), .Count = sdk::guarded([](uint64_t n) -> uint64_t {
                                             if (n == 0) throw 1;
                                             return n + 1;
                                           })};
}

class Publishing : public Started {};

TEST_F(Publishing, IsBoundByItsNameAndGoesWithItsScope) {
  {
    const sdk::Publication<Shouts> published(shouting());
    EXPECT_EQ(sdk::procs<Shouts>().Shout(5), nullptr);
    EXPECT_EQ(heard, 5);
    EXPECT_EQ(sdk::procs<Shouts>().Count(1), 2U);
  }
  EXPECT_EQ(sdk::tryProcs<Shouts>(), nullptr);
  const sdk::Publication<Shouts> again(shouting());
  EXPECT_NE(sdk::tryProcs<Shouts>(), nullptr);
}

TEST_F(Publishing, ExceptionsBecomeErrorsOrZero) {
  const sdk::Publication<Shouts> published(shouting());
  const sdk::Error error(sdk::procs<Shouts>().Shout(11));
  EXPECT_EQ(error.message(), "too loud");
  EXPECT_EQ(sdk::procs<Shouts>().Count(0), 0U);
}

TEST_F(Publishing, PutsTheSignatureBesideEachProc) {
  const sdk::Publication<Shouts> published(shouting());
  const auto text = reinterpret_cast<sdk::SignatureProc>(
      library.find()("ShoutsInterface", "Shout", "ShoutProc#signature"));
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(text(), "*ZEBErrorObject(i32)");
}

TEST_F(Publishing, LetsNobodyFindAProcBeforeItsSignature) {
  const auto isThere = [this](const char* name) {
    return library.find()("ShoutsInterface", "Shout", name) != nullptr;
  };
  for (int round = 0; round < 100; ++round) {
    bool unguarded = false;
    std::barrier begin(2);
    std::thread looking([&] {
      begin.arrive_and_wait();
      while (!isThere("ShoutProc")) std::this_thread::yield();
      unguarded = !isThere("ShoutProc#signature");
    });
    begin.arrive_and_wait();
    const sdk::Publication<Shouts> published(shouting());
    looking.join();
    ASSERT_FALSE(unguarded);
  }
}

TEST_F(Publishing, LeavesAnotherPublisherAlone) {
  const sdk::Publication<Shouts> first(shouting());
  EXPECT_THROW(sdk::Publication<Shouts> second(shouting()), sdk::Failure);
  EXPECT_EQ(sdk::procs<Shouts>().Shout(4), nullptr);
}

TEST(UnattachedPublishing, IsRefusedWithAReason) {
  EXPECT_THROW(sdk::Publication<Shouts> published(shouting()), sdk::MissingInterface);
}

}  // namespace
