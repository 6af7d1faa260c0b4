// A host whose memory runs out under the makers of containers: every allocation of every operation
// fails once. The answer is the documented one, the client's data is destroyed once, nothing stays
// behind, and the same operation succeeds as soon as there is memory again.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/component_library.h"
#include "contract/failure.h"

namespace contract {
namespace {

class FailingContainers : public ComponentTest, public ::testing::WithParamInterface<Failure> {
 protected:
  // What an error-returning proc answers when an allocation has failed.
  static const char* Told(bool failed) {
    if (!failed) return kSuccess;
    return GetParam() == Failure::kByThrowing ? kUnknownError : kOutOfMemory;
  }

  // `operation()` runs with ever later allocations failing, and `check(answer, failed)` sees each
  // answer; after a failure the same operation must succeed. The check of a success takes back what
  // the operation made.
  template <class Operation, class Check>
  void Sweep(Operation operation, Check check) {
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      ForgetRecentAtoms(zeb_);
      const std::uint64_t live = Host::LiveBlocks();
      FailAt(GetParam(), nth);
      decltype(operation()) answer{};
      EXPECT_NO_THROW(answer = operation());
      failed = Host::StopFailing();
      check(answer, failed);
      ForgetRecentAtoms(zeb_);
      EXPECT_EQ(Host::LiveBlocks(), live);
      if (failed) check(operation(), false);
      ForgetRecentAtoms(zeb_);
      EXPECT_EQ(Host::LiveBlocks(), live);
    }
    EXPECT_GT(nth, 1u) << "the operation allocates nothing";
  }

  // A check of makers that return an error and take data.
  auto CheckOfMade() {
    return [this](ZEBErrorObject* error, bool failed) {
      EXPECT_EQ(zeb_.Outcome(error), Told(failed));
      ExpectMade(failed);
    };
  }

  // The container made_ in case of success, which is deleted, and the data consumed in either case.
  void ExpectMade(bool failed) {
    EXPECT_EQ(made_ == nullptr, failed);
    EXPECT_EQ(data_.destroyed.exchange(0), failed ? 1 : 0);
    if (failed) return;
    EXPECT_EQ(zeb_.InstanceOf(made_, "instance"), &data_);
    EXPECT_STREQ(zeb_.container.GetSignature(made_), "interface");
    zeb_.AddInstance(made_, "instance", nullptr, nullptr);
    zeb_.container.Release(made_);
    EXPECT_EQ(data_.destroyed.exchange(0), 1);
  }

  Data data_;
  ZEBContainer* made_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingContainers, kEveryFailure, NameOfFailure);

TEST_P(FailingContainers, MakeNoFullContainer) {
  ZEBString* instance = zeb_.Name("instance");
  ZEBString* interface = zeb_.Name("interface");
  Sweep(
      [&] {
        return zeb_.container.NewFullContainer(&made_, &data_, instance, &Data::Destroy, interface,
                                               nullptr, nullptr, 0);
      },
      CheckOfMade());
}

TEST_P(FailingContainers, MakeNoFullContainerForOlderClients) {
  ZEBString* instance = zeb_.Name("instance");
  ZEBString* interface = zeb_.Name("interface");
  const OlderContainerProcs& older = zeb_.olderContainer;
  Sweep(
      [&] { return older.NewFullContainerV2(&made_, &data_, instance, &Data::Destroy, interface); },
      CheckOfMade());
  for (const auto make : {older.NewFullContainerV3, older.NewFullContainerV4}) {
    Sweep([&] { return make(&made_, &data_, instance, &Data::Destroy, interface, nullptr); },
          CheckOfMade());
  }
  Sweep([&] { return older.NewFullContainerV1(&data_, instance, &Data::Destroy, interface); },
        [&](ZEBContainer* made, bool failed) {
          made_ = made;
          ExpectMade(failed);
        });
}

TEST_P(FailingContainers, MakeNoContainer) {
  Sweep([&] { return zeb_.container.NewContainer(&made_); },
        [&](ZEBErrorObject* error, bool failed) {
          EXPECT_EQ(zeb_.Outcome(error), Told(failed));
          EXPECT_EQ(made_ == nullptr, failed);
          zeb_.container.Release(made_);
        });
  Sweep([&] { return zeb_.olderContainer.NewContainerV1(); },
        [&](ZEBContainer* made, bool failed) {
          EXPECT_EQ(made == nullptr, failed);
          zeb_.container.Release(made);
        });
}

TEST_P(FailingContainers, MakeNoClone) {
  // So many that the clone's parts all need new pages.
  std::vector<ZEBContainer*> others;
  for (int i = 0; i < 14; ++i) others.push_back(zeb_.NewFull(nullptr, {.destroy = nullptr}));
  ZEBContainer* source = zeb_.NewFull(&data_);
  zeb_.AddInterface(source, "second");
  Data second;
  zeb_.AddInstance(source, "second", &second);
  Sweep([&] { return zeb_.container.CloneContainer(&made_, source); },
        [&](ZEBErrorObject* error, bool failed) {
          EXPECT_EQ(zeb_.Outcome(error), Told(failed));
          EXPECT_EQ(made_ == nullptr, failed);
          if (failed) return;
          EXPECT_EQ(zeb_.InstanceOf(made_, "second"), &second);
          EXPECT_EQ(zeb_.container.GetSignature(made_), zeb_.container.GetSignature(source));
          zeb_.container.Release(made_);
        });
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(source);
  EXPECT_EQ(data_.destroyed, 1) << "a failed clone kept a reference to its source";
  EXPECT_EQ(second.destroyed, 1);
  for (ZEBContainer* other : others) zeb_.container.Release(other);
}

// An interface that could not be added is not there, and can be added later.
TEST_P(FailingContainers, AddNoInterface) {
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("added", "method", "proc", FakeProc(16)), 1);
  ZEBString* added = zeb_.Name("added");
  const auto newContainer = [&] {
    made_ = zeb_.NewEmpty();
    zeb_.AddInterface(made_, "a first interface");
  };
  const auto check = [&](bool failed) {
    EXPECT_STREQ(zeb_.container.GetSignature(made_),
                 failed ? "a first interface" : "a first interface.added");
    EXPECT_EQ(zeb_.MethodOf(made_, "method", "proc"), failed ? nullptr : FakeProc(16));
    if (failed) return;
    zeb_.container.Release(made_);
    newContainer();
  };
  newContainer();
  Sweep([&] { return zeb_.container.RegisterInterface(made_, added); },
        [&](ZEBErrorObject* error, bool failed) {
          EXPECT_EQ(zeb_.Outcome(error), Told(failed));
          check(failed);
        });
  Sweep(
      [&] {
        zeb_.olderContainer.RegisterInterfaceV1(made_, added);
        return 0;
      },
      [&](int, bool failed) { check(failed); });
  zeb_.container.Release(made_);
}

TEST_P(FailingContainers, AddNoFirstInterface) {
  ZEBString* added = zeb_.Name("added");
  made_ = zeb_.NewEmpty();
  Sweep([&] { return zeb_.container.RegisterInterface(made_, added); },
        [&](ZEBErrorObject* error, bool failed) {
          EXPECT_EQ(zeb_.Outcome(error), Told(failed));
          EXPECT_STREQ(zeb_.container.GetSignature(made_), failed ? "" : "added");
          if (failed) return;
          zeb_.container.Release(made_);
          made_ = zeb_.NewEmpty();
        });
  zeb_.container.Release(made_);
}

TEST_P(FailingContainers, AddNoInstance) {
  ZEBString* name = zeb_.Name("instance");
  made_ = zeb_.NewEmpty();
  const auto check = [&](bool failed) {
    EXPECT_EQ(zeb_.InstanceOf(made_, "instance"), failed ? nullptr : &data_);
    EXPECT_EQ(zeb_.CacheOf(made_).instanceData, failed ? nullptr : &data_);
    EXPECT_EQ(data_.destroyed.exchange(0), failed ? 1 : 0);
    if (failed) return;
    zeb_.container.Release(made_);
    EXPECT_EQ(data_.destroyed.exchange(0), 1);
    made_ = zeb_.NewEmpty();
  };
  Sweep([&] { return zeb_.container.RegisterInstance(made_, &data_, name, &Data::Destroy); },
        [&](ZEBErrorObject* error, bool failed) {
          EXPECT_EQ(zeb_.Outcome(error), Told(failed));
          check(failed);
        });
  Sweep(
      [&] {
        zeb_.olderContainer.RegisterInstanceV1(made_, &data_, name, &Data::Destroy);
        return 0;
      },
      [&](int, bool failed) { check(failed); });
  zeb_.container.Release(made_);
}

TEST_P(FailingContainers, GiveTheVeryObjectOfTheStandardError) {
  Host::FailAt(1, true);
  ZEBErrorObject* error = zeb_.container.NewContainer(&made_);
  EXPECT_TRUE(Host::StopFailing());
  ZEBErrorObject* standard = zeb_.error.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(error, standard);
  zeb_.error.Release(error);
  zeb_.error.Release(standard);
}

// What allocates nothing, done while nothing can be allocated.
TEST_P(FailingContainers, AreStillFoundCountedAndReleased) {
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("interface", "method", "proc", FakeProc(16)), 1);
  ZEBString* method = zeb_.Name("method");
  ZEBString* proc = zeb_.Name("proc");
  ZEBString* missing = zeb_.Name("missing");
  ZEBString* instance = zeb_.Name("instance");
  ZEBContainer* full = zeb_.NewFull(&data_);
  ZEBContainer* grown = zeb_.NewFull(&data_);
  zeb_.AddInterface(grown, "second");
  ZEBProc found = nullptr;
  void* none = &none;

  Host::FailAt(1, true, GetParam() == Failure::kByThrowing);
  ZEBErrorObject* lookup = zeb_.container.GetMethod(&found, full, method, proc, 1);
  ZEBErrorObject* missed = zeb_.container.NGetInstance(&none, full, missing);
  void* data = zeb_.container.GetInstance(full, instance);
  ZEBErrorObject* repeated = zeb_.container.RegisterInterface(full, zeb_.Name("interface"));
  zeb_.container.AddRef(full);
  zeb_.container.Release(full);
  zeb_.container.Release(full);
  zeb_.container.Release(grown);
  EXPECT_FALSE(Host::StopFailing());

  EXPECT_EQ(zeb_.Outcome(lookup), kSuccess);
  EXPECT_EQ(found, FakeProc(16));
  EXPECT_EQ(zeb_.Outcome(missed), kMissingMethod);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(data, &data_);
  EXPECT_EQ(zeb_.Outcome(repeated), kSuccess);
  EXPECT_EQ(data_.destroyed, 2);
}

}  // namespace
}  // namespace contract
