// What becomes of a running module when another file wants to take its place unasked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/tests/running_modules.h"
#include "interfaces/digest.h"
#include "tests/module_folders.h"

namespace examples {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::StrEq;

bool isPublished(const Services& zeb) {
  HostingDigestProcs procs{};
  return HostingFetchDigestProcs(zeb.getProcAddress, &procs) == 1;
}

TEST(RunningModule, StaysWhenItsFileIsLoadedAgain) {
  RunningModules running{kReplacement};
  EXPECT_THAT(running.modules().loadFolder(kReplacement),
              ElementsAre(Field(&LoadOutcome::problem,
                                StrEq("refused to start: this module is running already"))));
  EXPECT_TRUE(isPublished(running.services()));
}

TEST(RunningModule, StaysWhenAnotherWantsToPublishItsNames) {
  RunningModules running{kReplacement};
  EXPECT_THAT(running.modules().loadFolder(kModules),
              ElementsAre(Field(&LoadOutcome::problem,
                                StrEq("refused to start: HostingDigesterInterface is published "
                                      "already")),
                          Field(&LoadOutcome::problem, IsEmpty())));
  EXPECT_TRUE(isPublished(running.services()));
}

}  // namespace
}  // namespace examples
