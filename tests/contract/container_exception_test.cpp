// Client procedures of containers that throw: nothing comes out of the proc that called them, and
// what the proc had begun is brought to an end.

#include <gtest/gtest.h>

#include <stdexcept>

#include "contract/component_library.h"

namespace contract {
namespace {

void ThrowingDestroy(void* data) {
  Data::Destroy(data);
  throw std::runtime_error("thrown by a destroy procedure");
}

void ThrowingDestroyOfNoType(void* data) {
  Data::Destroy(data);
  throw 5;
}

class ThrowingDestroys : public ComponentTest {
 protected:
  Data data_;
  Data other_;
};

TEST_F(ThrowingDestroys, DoNotCrossTheReleaseOfAFullContainer) {
  ZEBContainer* full = zeb_.NewFull(&data_, {.destroy = &ThrowingDestroy});
  EXPECT_NO_THROW(zeb_.container.Release(full));
  EXPECT_EQ(data_.destroyed, 1);
  // Whatever became of the record, the next container is whole.
  ZEBContainer* next = zeb_.NewFull(&other_);
  EXPECT_EQ(zeb_.InstanceOf(next, "instance"), &other_);
  zeb_.container.AddRef(next);
  zeb_.container.Release(next);
  EXPECT_EQ(other_.destroyed, 0);
  zeb_.container.Release(next);
  EXPECT_EQ(other_.destroyed, 1);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ThrowingDestroys, DoNotStopTheDestructionOfOtherInstances) {
  Data between;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "first", &data_, &ThrowingDestroy);
  zeb_.AddInstance(made, "between", &between);
  zeb_.AddInstance(made, "last", &other_, &ThrowingDestroyOfNoType);
  EXPECT_NO_THROW(zeb_.container.Release(made));
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(between.destroyed, 1);
  EXPECT_EQ(other_.destroyed, 1);
}

TEST_F(ThrowingDestroys, DoNotCrossTheEndOfAnUnownedContainer) {
  const auto keep = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t { return 1; };
  ZEBContainer* kept = zeb_.NewFull(&data_, {.destroy = &ThrowingDestroy, .ownerHook = keep});
  zeb_.container.Release(kept);
  EXPECT_NO_THROW(zeb_.container.DeleteUnownedContainer(kept));
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ThrowingDestroys, DoNotCrossTheReleaseOfAClone) {
  ZEBContainer* source = zeb_.NewFull(&data_, {.destroy = &ThrowingDestroy});
  ZEBContainer* clone = zeb_.Clone(source);
  zeb_.container.Release(source);
  EXPECT_NO_THROW(zeb_.container.Release(clone));
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ThrowingDestroys, DoNotCrossARefusedMaker) {
  ZEBContainer* made = nullptr;
  ZEBErrorObject* error = nullptr;
  EXPECT_NO_THROW(error =
                      zeb_.container.NewFullContainer(&made, &data_, nullptr, &ThrowingDestroy,
                                                      zeb_.Name("interface"), nullptr, nullptr, 0));
  EXPECT_EQ(zeb_.Outcome(error), kMissingMethod);
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_NO_THROW(EXPECT_EQ(zeb_.olderContainer.NewFullContainerV1(
                                &data_, nullptr, &ThrowingDestroy, zeb_.Name("interface")),
                            nullptr));
  EXPECT_EQ(data_.destroyed, 2);
}

std::int32_t ThrowingHook(ZEBContainer*, std::uint64_t, std::uint64_t) {
  throw std::runtime_error("thrown by an owner's hook");
}

class ThrowingOwnerHook : public ComponentTest {};

TEST_F(ThrowingOwnerHook, DoesNotCrossTheReleaseAndKeepsNothing) {
  Data data;
  ZEBContainer* owned = zeb_.NewFull(&data, {.ownerHook = &ThrowingHook});
  EXPECT_NO_THROW(zeb_.container.Release(owned));
  EXPECT_EQ(data.destroyed, 1);
  // The container waits to be made anew, without its hook.
  ZEBContainer* next = zeb_.NewFull(&data);
  EXPECT_EQ(next, owned);
  zeb_.container.Release(next);
  EXPECT_EQ(data.destroyed, 2);
}

// A count that throws once, at the next addition or drop.
struct ThrowingCount {
  static inline bool throws = false;
  static inline int references = 1;

  static std::int64_t Count(std::uint64_t, std::int32_t add) {
    if (throws) {
      throws = false;
      throw std::runtime_error("thrown by a reference count");
    }
    references += add == 1 ? 1 : -1;
    return references == 0;
  }
};

class ThrowingRefProc : public ComponentTest {
 protected:
  ThrowingRefProc() : counted_(NewCounted()) { ThrowingCount::throws = true; }

  ZEBContainer* NewCounted() {
    ThrowingCount::throws = false;
    ThrowingCount::references = 1;
    return zeb_.NewFull(&data_, {.refProc = &ThrowingCount::Count});
  }

  void TearDown() override {
    EXPECT_FALSE(ThrowingCount::throws) << "nobody asked";
    EXPECT_EQ(data_.destroyed, 0);
    zeb_.container.Release(counted_);
    EXPECT_EQ(data_.destroyed, 1);
    ComponentTest::TearDown();
  }

  Data data_;
  ZEBContainer* counted_;
};

TEST_F(ThrowingRefProc, MakesAddRefAnswerNo) {
  EXPECT_NO_THROW(EXPECT_EQ(zeb_.container.AddRef(counted_), 0));
}

TEST_F(ThrowingRefProc, DoesNotCrossTheRelease) {
  EXPECT_NO_THROW(zeb_.container.Release(counted_));
}

TEST_F(ThrowingRefProc, MakesADropWithoutDeletingAnswerNull) {
  EXPECT_NO_THROW(EXPECT_EQ(zeb_.container.DecrementWithoutDelete(counted_), nullptr));
}

TEST_F(ThrowingRefProc, DoesNotCrossTheEndOfAnUnownedContainer) {
  EXPECT_NO_THROW(zeb_.container.DeleteUnownedContainer(counted_));
}

TEST_F(ThrowingRefProc, LetsAClonesMakingFail) {
  ZEBContainer* clone = counted_;
  ZEBErrorObject* error = nullptr;
  EXPECT_NO_THROW(error = zeb_.container.CloneContainer(&clone, counted_));
  EXPECT_EQ(zeb_.Outcome(error), kUnknownError);
  EXPECT_EQ(clone, nullptr);
}

}  // namespace
}  // namespace contract
