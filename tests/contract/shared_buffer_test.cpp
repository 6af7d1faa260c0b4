// Shared buffers: whose the bytes are, who deletes them and when, and what keeps a buffer alive.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "contract/component_library.h"
#include "contract/sanitizer_options.h"

namespace contract {
namespace {

class SharedBuffer : public ComponentTest {
 protected:
  ZEBSharedBuffer* New(std::uint64_t size, void* data = nullptr, ZEBSharedBuffDelete del = nullptr,
                       ZEBSharedBuffReleaseHook hook = nullptr, void* context = nullptr) {
    return zeb_.buffer.NewBuffer(size, data, del, hook, context);
  }
  void Release(ZEBSharedBuffer* buffer) { zeb_.buffer.Release(buffer); }

  std::array<unsigned char, 64> bytes_{};
  Data data_;
};

TEST_F(SharedBuffer, HasBytesOfItsOwn) {
  for (const std::uint64_t size : {std::uint64_t{1}, std::uint64_t{7}, std::uint64_t{1} << 20}) {
    ZEBSharedBuffer* buffer = New(size);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(zeb_.buffer.GetSize(buffer), size);
    auto* bytes = static_cast<unsigned char*>(zeb_.buffer.GetBuffer(buffer));
    ASSERT_NE(bytes, nullptr);
    std::memset(bytes, 0xAB, size);
    EXPECT_EQ(zeb_.buffer.GetBuffer(buffer), bytes);
    Release(buffer);
  }
}

TEST_F(SharedBuffer, MayHaveNoBytes) {
  ZEBSharedBuffer* buffer = New(0);
  ASSERT_NE(buffer, nullptr);
  EXPECT_EQ(zeb_.buffer.GetSize(buffer), 0u);
  Release(buffer);
}

TEST_F(SharedBuffer, TakesItsBytesFromTheHostAndGivesThemBack) {
  const std::uint64_t before = Host::LiveBlocks();
  ZEBSharedBuffer* buffer = New(100);
  EXPECT_EQ(Host::LiveBlocks(), before + 2);  // a page and the bytes
  EXPECT_EQ(Host::Size(zeb_.buffer.GetBuffer(buffer)), 100u);
  Release(buffer);
  EXPECT_EQ(Host::LiveBlocks(), before);
}

TEST_F(SharedBuffer, LeavesClientBytesWithoutADeleteProcedureAlone) {
  bytes_.fill(0x11);
  ZEBSharedBuffer* buffer = New(bytes_.size(), bytes_.data());
  EXPECT_EQ(zeb_.buffer.GetBuffer(buffer), bytes_.data());
  EXPECT_EQ(zeb_.buffer.GetSize(buffer), bytes_.size());
  Release(buffer);
  EXPECT_TRUE(std::all_of(bytes_.begin(), bytes_.end(), [](int byte) { return byte == 0x11; }));
}

TEST_F(SharedBuffer, DeletesClientBytesOnceWithTheLastReference) {
  ZEBSharedBuffer* buffer = New(sizeof(data_), &data_, &Data::Destroy);
  EXPECT_EQ(zeb_.buffer.GetBuffer(buffer), &data_);
  zeb_.buffer.AddRef(buffer);
  zeb_.buffer.AddRef(buffer);
  Release(buffer);
  Release(buffer);
  EXPECT_EQ(data_.destroyed, 0);
  Release(buffer);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(SharedBuffer, GivesTheDeleteProcedureItsContext) {
  ZEBSharedBuffer* buffer = New(bytes_.size(), bytes_.data(), &Data::Destroy, nullptr, &data_);
  EXPECT_EQ(zeb_.buffer.GetBuffer(buffer), bytes_.data());
  Release(buffer);
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(bytes_[0], 0);
}

TEST_F(SharedBuffer, IgnoresAContextWithoutADeleteProcedure) {
  Release(New(bytes_.size(), bytes_.data(), nullptr, nullptr, &data_));
  Release(New(bytes_.size(), nullptr, nullptr, nullptr, &data_));
  EXPECT_EQ(data_.destroyed, 0);
}

TEST_F(SharedBuffer, MayHaveClientBytesOfAnySize) {
  for (const std::uint64_t size : {std::uint64_t{0}, ~std::uint64_t{0}}) {
    ZEBSharedBuffer* buffer = New(size, &data_, &Data::Destroy);
    EXPECT_EQ(zeb_.buffer.GetSize(buffer), size);
    Release(buffer);
    EXPECT_EQ(data_.destroyed.exchange(0), 1);
  }
}

TEST_F(SharedBuffer, IsMadeByTheSecondVersionAsWell) {
  const auto make = zeb_.olderBuffer.NewBufferV2;
  const auto keepNot = [](ZEBSharedBuffer*) { return std::int32_t{0}; };
  ZEBSharedBuffer* buffer = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { buffer = make(sizeof(data_), &data_, &Data::Destroy, keepNot); }),
            (Events{{kNewBuffer, 1}, {kBufferPage, 1}}));
  EXPECT_EQ(zeb_.buffer.GetBuffer(buffer), &data_);
  Release(buffer);
  EXPECT_EQ(data_.destroyed, 1);
  buffer = make(10, nullptr, nullptr, nullptr);
  EXPECT_NE(zeb_.buffer.GetBuffer(buffer), nullptr);
  EXPECT_EQ(zeb_.buffer.GetSize(buffer), 10u);
  Release(buffer);
  EXPECT_EQ(make(10, nullptr, &Data::Destroy, nullptr), nullptr);
}

TEST_F(SharedBuffer, RefusesADeleteProcedureWithoutBytes) {
  ForgetRecentAtoms(zeb_);
  const std::uint64_t before = Host::LiveBlocks();
  EXPECT_EQ(New(10, nullptr, &Data::Destroy), nullptr);
  EXPECT_EQ(New(0, nullptr, &Data::Destroy), nullptr);
  EXPECT_EQ(New(10, nullptr, &Data::Destroy, nullptr, &data_), nullptr);
  EXPECT_EQ(data_.destroyed, 0);
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(Host::LiveBlocks(), before);
  const Events events = zeb_.EventsOf([&] { Release(New(10)); });
  EXPECT_EQ(events, (Events{{kNewBuffer, 1}, {kBufferPage, 1}})) << "a slot was kept";
}

TEST_F(SharedBuffer, CountsItsMaking) {
  std::vector<ZEBSharedBuffer*> made;
  for (int i = 1; i <= 17; ++i) {
    const Events events = zeb_.EventsOf([&] { made.push_back(New(1, bytes_.data())); });
    EXPECT_EQ(events,
              i % 8 == 1 ? (Events{{kNewBuffer, 1}, {kBufferPage, 1}}) : (Events{{kNewBuffer, 1}}))
        << i;
  }
  EXPECT_EQ(zeb_.EventsOf([&] {
    for (ZEBSharedBuffer* buffer : made) zeb_.buffer.AddRef(buffer);
    for (ZEBSharedBuffer* buffer : made) Release(buffer);
    for (ZEBSharedBuffer* buffer : made) Release(buffer);
  }),
            Events{});
}

TEST_F(SharedBuffer, CountsAMakingThatFails) {
  // It takes a slot before it looks at the data.
  EXPECT_EQ(zeb_.EventsOf([&] { New(10, nullptr, &Data::Destroy); }),
            (Events{{kNewBuffer, 1}, {kBufferPage, 1}}));
  ZEBSharedBuffer* other = New(1);
  EXPECT_EQ(zeb_.EventsOf([&] { New(10, nullptr, &Data::Destroy); }), (Events{{kNewBuffer, 1}}));
  Release(other);
}

TEST_F(SharedBuffer, ComesFromAPageOfKnownSize) {
  ZEBSharedBuffer* buffer = New(1, bytes_.data());
  EXPECT_EQ(Host::Size(reinterpret_cast<char*>(buffer) - kPageHeaderAndLink), 496u);
  Release(buffer);
}

TEST_F(SharedBuffer, GivesItsPageBackWithTheLastOfEight) {
  std::vector<ZEBSharedBuffer*> made;
  const std::uint64_t before = Host::LiveBlocks();
  for (int i = 0; i < 8; ++i) made.push_back(New(1, bytes_.data()));
  EXPECT_EQ(Host::LiveBlocks(), before + 1);
  made.push_back(New(1, bytes_.data()));
  EXPECT_EQ(Host::LiveBlocks(), before + 2);
  for (int i = 0; i < 7; ++i) Release(made[static_cast<std::size_t>(i)]);
  EXPECT_EQ(Host::LiveBlocks(), before + 2);
  Release(made[7]);
  EXPECT_EQ(Host::LiveBlocks(), before + 1);
  Release(made[8]);
  EXPECT_EQ(Host::LiveBlocks(), before);
}

TEST_F(SharedBuffer, UsesAPageThatWasFullBeforeOthers) {
  std::vector<ZEBSharedBuffer*> made;
  for (int i = 0; i < 17; ++i) made.push_back(New(1, bytes_.data()));
  for (const std::size_t which : {std::size_t{2}, std::size_t{11}}) {
    Release(made[which]);
    ZEBSharedBuffer* next = New(1, bytes_.data());
    EXPECT_EQ(next, made[which]);
  }
  for (ZEBSharedBuffer* buffer : made) Release(buffer);
}

TEST_F(SharedBuffer, IgnoresNull) {
  const Events events = zeb_.EventsOf([&] {
    zeb_.buffer.AddRef(nullptr);
    zeb_.buffer.Release(nullptr);
    zeb_.buffer.DeleteUnowned(nullptr);
    EXPECT_EQ(zeb_.buffer.GetBuffer(nullptr), nullptr);
    EXPECT_EQ(zeb_.buffer.GetSize(nullptr), 0u);
  });
  EXPECT_EQ(events, Events{});
}

// ---- Hooks

// A release hook that answers as it is told.
struct Keeper {
  static inline std::int32_t answer = 0;
  static inline int asked = 0;
  static inline ZEBSharedBuffer* buffer = nullptr;

  static void Reset(std::int32_t nextAnswer) {
    answer = nextAnswer;
    asked = 0;
  }
  static std::int32_t Hook(ZEBSharedBuffer* ended) {
    ++asked;
    buffer = ended;
    return answer;
  }
};

class HookedBuffer : public SharedBuffer {
 protected:
  ZEBSharedBuffer* NewHooked(std::int32_t answer) {
    Keeper::Reset(answer);
    return New(sizeof(data_), &data_, &Data::Destroy, &Keeper::Hook);
  }
};

TEST_F(HookedBuffer, AsksItsHookWhenTheLastReferenceHasGone) {
  ZEBSharedBuffer* buffer = NewHooked(0);
  zeb_.buffer.AddRef(buffer);
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 0);
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 1);
  EXPECT_EQ(Keeper::buffer, buffer);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(HookedBuffer, StaysWithAHookThatKeepsIt) {
  for (const std::int32_t answer : {1, -1, 0x100}) {
    ZEBSharedBuffer* buffer = NewHooked(answer);
    Release(buffer);
    EXPECT_EQ(Keeper::asked, 1);
    EXPECT_EQ(data_.destroyed, 0);
    EXPECT_EQ(zeb_.buffer.GetBuffer(buffer), &data_);
    EXPECT_EQ(zeb_.EventsOf([&] { zeb_.buffer.DeleteUnowned(buffer); }), Events{});
    EXPECT_EQ(Keeper::asked, 1);
    EXPECT_EQ(data_.destroyed.exchange(0), 1);
  }
}

TEST_F(HookedBuffer, MayHaveBytesOfItsOwn) {
  Keeper::Reset(1);
  ZEBSharedBuffer* buffer = New(50, nullptr, nullptr, &Keeper::Hook);
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 1);
  std::memset(zeb_.buffer.GetBuffer(buffer), 0x55, 50);
  zeb_.buffer.DeleteUnowned(buffer);
}

TEST_F(HookedBuffer, MayHaveClientBytesThatStayTheClients) {
  Keeper::Reset(1);
  ZEBSharedBuffer* buffer = New(bytes_.size(), bytes_.data(), nullptr, &Keeper::Hook);
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 1);
  zeb_.buffer.DeleteUnowned(buffer);
}

TEST_F(HookedBuffer, OnlyLosesItsHookWhileItIsReferenced) {
  ZEBSharedBuffer* buffer = NewHooked(1);
  zeb_.buffer.DeleteUnowned(buffer);
  EXPECT_EQ(data_.destroyed, 0);
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 0);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(HookedBuffer, AsksAgainEachTimeTheCountReachesZero) {
  ZEBSharedBuffer* buffer = NewHooked(1);
  for (int round = 1; round <= 3; ++round) {
    Release(buffer);
    EXPECT_EQ(Keeper::asked, round);
    zeb_.buffer.AddRef(buffer);
  }
  Keeper::answer = 0;
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 4);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(HookedBuffer, MayBeGivenOnInTheHook) {
  static const ComponentLibrary* zeb;
  zeb = &zeb_;
  ZEBSharedBuffer* buffer =
      New(sizeof(data_), &data_, &Data::Destroy, [](ZEBSharedBuffer* ended) -> std::int32_t {
        zeb->buffer.AddRef(ended);
        return 1;
      });
  Release(buffer);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.buffer.DeleteUnowned(buffer);
  EXPECT_EQ(data_.destroyed, 0);
  Release(buffer);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(HookedBuffer, KeepsTheHookOfTheSecondVersionToo) {
  Keeper::Reset(1);
  ZEBSharedBuffer* buffer =
      zeb_.olderBuffer.NewBufferV2(sizeof(data_), &data_, &Data::Destroy, &Keeper::Hook);
  Release(buffer);
  EXPECT_EQ(Keeper::asked, 1);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.buffer.DeleteUnowned(buffer);
  EXPECT_EQ(data_.destroyed, 1);
}

// ---- Client procedures that call back or throw

TEST_F(SharedBuffer, MayUseTheLibraryWhileItsBytesAreDeleted) {
  struct Nested {
    ComponentLibrary& zeb;
    ZEBSharedBuffer* made = nullptr;
  } nested{zeb_};
  Release(New(1, &nested, [](void* data) {
    auto* self = static_cast<Nested*>(data);
    for (int i = 0; i < 20; ++i) {
      self->zeb.buffer.Release(self->zeb.buffer.NewBuffer(10, nullptr, nullptr, nullptr, nullptr));
    }
    self->made = self->zeb.buffer.NewBuffer(10, nullptr, nullptr, nullptr, nullptr);
  }));
  ASSERT_NE(nested.made, nullptr);
  std::memset(zeb_.buffer.GetBuffer(nested.made), 1, 10);
  Release(nested.made);
}

TEST_F(SharedBuffer, LetsNothingThrownByTheDeleteProcedureOut) {
  const std::uint64_t before = Host::LiveBlocks();
  ZEBSharedBuffer* buffer = New(sizeof(data_), &data_, [](void* data) {
    Data::Destroy(data);
    throw std::runtime_error("thrown by a delete procedure");
  });
  EXPECT_NO_THROW(Release(buffer));
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(Host::LiveBlocks(), before);
}

TEST_F(SharedBuffer, LetsNothingThrownByTheDeleteProcedureOutOfDeleteUnowned) {
  const std::uint64_t before = Host::LiveBlocks();
  ZEBSharedBuffer* buffer = New(
      sizeof(data_), &data_,
      [](void* data) {
        Data::Destroy(data);
        throw 5;
      },
      [](ZEBSharedBuffer*) { return std::int32_t{1}; });
  Release(buffer);
  EXPECT_NO_THROW(zeb_.buffer.DeleteUnowned(buffer));
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(Host::LiveBlocks(), before);
}

TEST_F(SharedBuffer, IsNotKeptByAHookThatThrows) {
  const std::uint64_t before = Host::LiveBlocks();
  ZEBSharedBuffer* buffer =
      New(sizeof(data_), &data_, &Data::Destroy,
          [](ZEBSharedBuffer*) -> std::int32_t { throw std::runtime_error("thrown by a hook"); });
  EXPECT_NO_THROW(Release(buffer));
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(Host::LiveBlocks(), before);
}

// ---- Memory that runs out

class FailingSharedBuffer : public SharedBuffer, public ::testing::WithParamInterface<bool> {
 protected:
  // `make()` runs with ever later allocations failing or, by the parameter, throwing.
  template <class Make>
  void Sweep(Make make) {
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      const std::uint64_t live = Host::LiveBlocks();
      Host::FailAt(nth, true, GetParam());
      ZEBSharedBuffer* buffer = nullptr;
      EXPECT_NO_THROW(buffer = make());
      failed = Host::StopFailing();
      EXPECT_EQ(buffer == nullptr, failed);
      // The data stays with the caller of a maker that failed.
      EXPECT_EQ(data_.destroyed, 0);
      EXPECT_TRUE(!failed || Host::LiveBlocks() == live);
      if (failed) buffer = make();
      ASSERT_NE(buffer, nullptr);
      Release(buffer);
      data_.destroyed = 0;
      EXPECT_EQ(Host::LiveBlocks(), live);
    }
    EXPECT_GT(nth, 1u) << "nothing was allocated";
  }
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingSharedBuffer, ::testing::Bool(),
                         [](const auto& variant) {
                           return std::string(variant.param ? "ByThrowing" : "ByNull");
                         });

TEST_P(FailingSharedBuffer, HasNoBytesOfItsOwn) {
  Sweep([&] { return New(100); });
  Sweep([&] { return zeb_.olderBuffer.NewBufferV2(100, nullptr, nullptr, nullptr); });
}

TEST_P(FailingSharedBuffer, LeavesTheDataWithTheCaller) {
  Sweep([&] { return New(sizeof(data_), &data_, &Data::Destroy); });
  Sweep([&] { return New(sizeof(data_), bytes_.data(), &Data::Destroy, nullptr, &data_); });
  Sweep(
      [&] { return zeb_.olderBuffer.NewBufferV2(sizeof(data_), &data_, &Data::Destroy, nullptr); });
}

TEST_P(FailingSharedBuffer, IsRefusedWithoutMemoryForTheError) {
  ForgetRecentAtoms(zeb_);
  const std::uint64_t live = Host::LiveBlocks();
  for (std::uint64_t nth = 1; nth <= 8; ++nth) {
    Host::FailAt(nth, true, GetParam());
    ZEBSharedBuffer* buffer = nullptr;
    EXPECT_NO_THROW(buffer = New(10, nullptr, &Data::Destroy, nullptr, &data_));
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(data_.destroyed, 0);
    Host::StopFailing();
    ForgetRecentAtoms(zeb_);
    EXPECT_EQ(Host::LiveBlocks(), live);
  }
}

TEST_F(SharedBuffer, AnswersNullForASizeThatNoHostHas) {
  const std::uint64_t before = Host::LiveBlocks();
  for (const std::uint64_t size : {~std::uint64_t{0}, std::uint64_t{1} << 62}) {
    EXPECT_EQ(New(size), nullptr) << size;
  }
  EXPECT_EQ(Host::LiveBlocks(), before);
}

TEST(SharedBufferOfTheLibrary, AnswersNullForASizeThatCannotBe) {
  ComponentLibrary zeb;
  for (const std::uint64_t size :
       {~std::uint64_t{0}, ~std::uint64_t{0} - 7, ~std::uint64_t{0} - 64, std::uint64_t{1} << 63}) {
    EXPECT_EQ(zeb.buffer.NewBuffer(size, nullptr, nullptr, nullptr, nullptr), nullptr) << size;
  }
  ZEBSharedBuffer* buffer = zeb.buffer.NewBuffer(100, nullptr, nullptr, nullptr, nullptr);
  ASSERT_NE(buffer, nullptr);
  std::memset(zeb.buffer.GetBuffer(buffer), 1, 100);
  zeb.buffer.Release(buffer);
}

}  // namespace
}  // namespace contract
