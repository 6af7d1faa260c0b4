// Progress objects: what they tell the client, what they answer to the operation, and who ends the
// client's data.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "contract/component_library.h"

namespace contract {
namespace {

// A client that remembers what it was told.
struct Client {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> told;
  std::int32_t answer = 0;
  int deleted = 0;

  static std::int32_t Update(void* data, std::uint64_t done, std::uint64_t total) {
    auto* self = static_cast<Client*>(data);
    self->told.emplace_back(done, total);
    return self->answer;
  }
  static void Delete(void* data) { ++static_cast<Client*>(data)->deleted; }
};

class Progress : public ComponentTest {
 protected:
  ZEBProgress* NewClient() {
    return zeb_.progress.NewClientProgress(&client_, &Client::Update, &Client::Delete);
  }

  Client client_;
};

TEST_F(Progress, OfNobodyAnswersNo) {
  ZEBProgress* progress = zeb_.progress.NewNullProgress();
  ASSERT_NE(progress, nullptr);
  EXPECT_EQ(zeb_.progress.Update(progress, 0, 0), 0);
  EXPECT_EQ(zeb_.progress.Update(progress, 5, 10), 0);
  EXPECT_EQ(zeb_.progress.Update(progress, ~std::uint64_t{0}, ~std::uint64_t{0}), 0);
  zeb_.progress.Release(progress);
}

TEST_F(Progress, OfNobodyIsAnObjectOfItsOwn) {
  const std::uint64_t before = Host::LiveBlocks();
  ZEBProgress* first = zeb_.progress.NewNullProgress();
  ZEBProgress* second = zeb_.progress.NewNullProgress();
  EXPECT_NE(first, second);
  EXPECT_EQ(Host::LiveBlocks(), before + 2);
  zeb_.progress.AddRef(first);
  zeb_.progress.Release(first);
  EXPECT_EQ(Host::LiveBlocks(), before + 2);
  zeb_.progress.Release(first);
  zeb_.progress.Release(second);
  EXPECT_EQ(Host::LiveBlocks(), before);
}

TEST_F(Progress, PassesWhatItIsToldOnUnchanged) {
  ZEBProgress* progress = NewClient();
  const std::vector<std::pair<std::uint64_t, std::uint64_t>> reports = {
      {0, 0}, {1, 2}, {7, 3}, {~std::uint64_t{0}, 1}, {0x100000000u, 0x8000000000000000u}};
  for (const auto& [done, total] : reports) zeb_.progress.Update(progress, done, total);
  EXPECT_EQ(client_.told, reports);
  zeb_.progress.Release(progress);
}

TEST_F(Progress, AnswersYesForEverythingButZero) {
  ZEBProgress* progress = NewClient();
  for (const std::int32_t answer :
       {1, 2, -1, 0x100, 0x10000, std::numeric_limits<std::int32_t>::min()}) {
    client_.answer = answer;
    EXPECT_EQ(zeb_.progress.Update(progress, 1, 2), 1) << answer;
  }
  client_.answer = 0;
  EXPECT_EQ(zeb_.progress.Update(progress, 1, 2), 0);
  zeb_.progress.Release(progress);
}

TEST_F(Progress, DeletesItsClientsDataOnceWithTheLastReference) {
  ZEBProgress* progress = NewClient();
  zeb_.progress.AddRef(progress);
  zeb_.progress.AddRef(progress);
  zeb_.progress.Release(progress);
  zeb_.progress.Release(progress);
  EXPECT_EQ(client_.deleted, 0);
  EXPECT_EQ(zeb_.progress.Update(progress, 1, 2), 0);
  EXPECT_EQ(client_.told.size(), 1u);
  const std::uint64_t live = Host::LiveBlocks();
  zeb_.progress.Release(progress);
  EXPECT_EQ(client_.deleted, 1);
  EXPECT_EQ(Host::LiveBlocks(), live - 1);
}

TEST_F(Progress, MayHaveNullData) {
  static int updates;
  static int deletions;
  updates = deletions = 0;
  ZEBProgress* progress = zeb_.progress.NewClientProgress(
      nullptr,
      [](void* data, std::uint64_t, std::uint64_t) -> std::int32_t {
        updates += data == nullptr ? 1 : 100;
        return 1;
      },
      [](void* data) { deletions += data == nullptr ? 1 : 100; });
  EXPECT_EQ(zeb_.progress.Update(progress, 1, 2), 1);
  zeb_.progress.Release(progress);
  EXPECT_EQ(updates, 1);
  EXPECT_EQ(deletions, 1);
}

TEST_F(Progress, RefusesNullProceduresAndConsumesTheData) {
  const std::uint64_t live = Host::LiveBlocks();
  EXPECT_EQ(zeb_.progress.NewClientProgress(&client_, nullptr, &Client::Delete), nullptr);
  EXPECT_EQ(client_.deleted, 1);
  EXPECT_EQ(zeb_.progress.NewClientProgress(&client_, &Client::Update, nullptr), nullptr);
  EXPECT_EQ(zeb_.progress.NewClientProgress(&client_, nullptr, nullptr), nullptr);
  EXPECT_EQ(client_.deleted, 1);
  EXPECT_TRUE(client_.told.empty());
  EXPECT_EQ(Host::LiveBlocks(), live);
}

TEST_F(Progress, IgnoresNull) {
  zeb_.progress.AddRef(nullptr);
  zeb_.progress.Release(nullptr);
  EXPECT_EQ(zeb_.progress.Update(nullptr, 1, 2), 0);
}

TEST_F(Progress, CountsNoEvents) {
  EXPECT_EQ(zeb_.EventsOf([&] {
    ZEBProgress* progress = NewClient();
    zeb_.progress.Update(progress, 1, 2);
    zeb_.progress.Release(progress);
  }),
            Events{});
}

TEST_F(Progress, AnswersNoWhenTheClientThrows) {
  ZEBProgress* progress = zeb_.progress.NewClientProgress(
      &client_,
      [](void* data, std::uint64_t done, std::uint64_t total) -> std::int32_t {
        Client::Update(data, done, total);
        if (done == 1) throw std::runtime_error("thrown by an update procedure");
        if (done == 2) throw 5;
        return 1;
      },
      &Client::Delete);
  EXPECT_NO_THROW(EXPECT_EQ(zeb_.progress.Update(progress, 1, 9), 0));
  EXPECT_NO_THROW(EXPECT_EQ(zeb_.progress.Update(progress, 2, 9), 0));
  EXPECT_EQ(zeb_.progress.Update(progress, 3, 9), 1);
  zeb_.progress.Release(progress);
  EXPECT_EQ(client_.deleted, 1);
}

void ThrowingDelete(void* data) {
  Client::Delete(data);
  throw std::runtime_error("thrown by a delete procedure");
}

TEST_F(Progress, LetsNothingThrownByTheDeleteProcedureOut) {
  const std::uint64_t live = Host::LiveBlocks();
  ZEBProgress* progress =
      zeb_.progress.NewClientProgress(&client_, &Client::Update, &ThrowingDelete);
  EXPECT_NO_THROW(zeb_.progress.Release(progress));
  EXPECT_EQ(client_.deleted, 1);
  EXPECT_EQ(Host::LiveBlocks(), live);
}

TEST_F(Progress, LetsNothingThrownByTheDeleteProcedureOutOfItsMaker) {
  EXPECT_NO_THROW(
      EXPECT_EQ(zeb_.progress.NewClientProgress(&client_, nullptr, &ThrowingDelete), nullptr));
  EXPECT_EQ(client_.deleted, 1);
  Host::FailAt(1, true);
  EXPECT_NO_THROW(EXPECT_EQ(
      zeb_.progress.NewClientProgress(&client_, &Client::Update, &ThrowingDelete), nullptr));
  EXPECT_TRUE(Host::StopFailing());
  EXPECT_EQ(client_.deleted, 2);
}

TEST_F(Progress, MayBeUsedByItsClientWhileItIsTold) {
  struct Nested {
    const ComponentLibrary& zeb;
    ZEBProgress* progress = nullptr;
    int deleted = 0;
  } nested{zeb_};
  nested.progress = zeb_.progress.NewClientProgress(
      &nested,
      [](void* data, std::uint64_t done, std::uint64_t total) -> std::int32_t {
        auto* self = static_cast<Nested*>(data);
        self->zeb.progress.AddRef(self->progress);
        const std::int32_t answer =
            done == 0 ? 1 : self->zeb.progress.Update(self->progress, done - 1, total);
        self->zeb.progress.Release(self->progress);
        return answer;
      },
      [](void* data) { ++static_cast<Nested*>(data)->deleted; });
  EXPECT_EQ(zeb_.progress.Update(nested.progress, 10, 10), 1);
  EXPECT_EQ(nested.deleted, 0);
  zeb_.progress.Release(nested.progress);
  EXPECT_EQ(nested.deleted, 1);
}

// ---- Memory that runs out

class FailingProgress : public Progress, public ::testing::WithParamInterface<bool> {
 protected:
  // `make()` runs with ever later allocations failing or, by the parameter, throwing.
  template <class Make>
  void Sweep(Make make, int deletionsOfAFailure) {
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      const std::uint64_t live = Host::LiveBlocks();
      client_.deleted = 0;
      Host::FailAt(nth, true, GetParam());
      ZEBProgress* progress = nullptr;
      EXPECT_NO_THROW(progress = make());
      failed = Host::StopFailing();
      EXPECT_EQ(progress == nullptr, failed);
      EXPECT_EQ(client_.deleted, failed ? deletionsOfAFailure : 0);
      EXPECT_TRUE(!failed || Host::LiveBlocks() == live);
      if (failed) progress = make();
      ASSERT_NE(progress, nullptr);
      zeb_.progress.Release(progress);
      EXPECT_EQ(Host::LiveBlocks(), live);
    }
    EXPECT_GT(nth, 1u) << "nothing was allocated";
  }
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingProgress, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "ByThrowing" : "ByNull");
});

TEST_P(FailingProgress, OfNobodyIsNull) { Sweep(zeb_.progress.NewNullProgress, 0); }

TEST_P(FailingProgress, OfAClientConsumesTheData) {
  Sweep([&] { return NewClient(); }, 1);
}

}  // namespace
}  // namespace contract
