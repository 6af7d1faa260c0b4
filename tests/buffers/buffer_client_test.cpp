#include "buffers/buffer_client.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/failure.h"
#include "buffers/shared_buffer.h"
#include "errors/client_error.h"
#include "errors/standard_errors.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"

namespace zeb::buffers {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using ZEB_T_MT::CZEBError;

// Counts how often it was deleted.
struct Data {
  int deleted = 0;

  static void del(void* data) { ++static_cast<Data*>(data)->deleted; }
};

// What an operation that has to fail throws, as "component id: message".
template <class Operation>
std::string thrownBy(Operation operation) {
  try {
    operation();
  } catch (const CZEBError& error) {
    const ZEBErrorObject& told = *error.error();
    return std::string(told.component.get()->text()) + " " + std::to_string(told.id) + ": " +
           told.message.get()->text();
  }
  return "nothing";
}

class BufferClientTest : public testing::Test {
 protected:
  void TearDown() override {
    library_.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
  }

  void release(ZEBSharedBuffer* buffer) { clientProcs().Release(buffer); }

  // Registers the procs in the library's place, the first `count` of them.
  static void replaceInterface(const ZEBSharedBufferProcs& procs, size_t count = kAllProcs) {
    constexpr ZEBProcRequest names[] = {ZEB_SHARED_BUFFER_PROCS(ZEB_PROC_REQUEST)};
    ZEBProc functions[kAllProcs];
    std::memcpy(functions, &procs, sizeof functions);
    registry::removeInterface(ZEB_SHARED_BUFFER_INTERFACE);
    for (size_t i = 0; i < count; ++i) {
      ASSERT_TRUE(registry::add(ZEB_SHARED_BUFFER_INTERFACE, names[i].methodName, names[i].procName,
                                functions[i]));
    }
  }
  static constexpr size_t kAllProcs = sizeof(ZEBSharedBufferProcs) / sizeof(ZEBProc);

  // Lets the interface make buffers this way.
  static void replaceNewBuffer(ZEBSharedBuffNewBufferV3Proc newBuffer) {
    ZEBSharedBufferProcs procs = clientProcs();
    procs.NewBuffer = newBuffer;
    replaceInterface(procs);
  }

  static ZEBSharedBuffer* noBuffer(uint64_t, void*, ZEBSharedBuffDelete, ZEBSharedBuffReleaseHook,
                                   void*) {
    return nullptr;
  }

  StartedLibrary library_;
  Data data_;
  Data context_;
};

TEST_F(BufferClientTest, MakesBuffersThroughTheInterface) {
  ZEBSharedBuffer* own = newClientBuffer(10, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(clientProcs().GetSize(own), 10u);
  std::memset(clientProcs().GetBuffer(own), 1, 10);
  ZEBSharedBuffer* clients = newClientBuffer(20, &data_, Data::del, nullptr, nullptr);
  EXPECT_EQ(clientProcs().GetBuffer(clients), &data_);
  release(own);
  EXPECT_EQ(data_.deleted, 0);
  release(clients);
  EXPECT_EQ(data_.deleted, 1);
}

TEST_F(BufferClientTest, HandsHookAndContextOn) {
  static int asked;
  asked = 0;
  ZEBSharedBuffer* buffer = newClientBuffer(
      20, &data_, Data::del,
      [](ZEBSharedBuffer*) -> int32_t {
        ++asked;
        return 0;
      },
      &context_);
  release(buffer);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(data_.deleted, 0);
  EXPECT_EQ(context_.deleted, 1);
}

TEST_F(BufferClientTest, FollowsAReplacementOfTheInterface) {
  release(newClientBuffer(10, nullptr, nullptr, nullptr, nullptr));
  static int made;
  made = 0;
  replaceNewBuffer([](uint64_t size, void* data, ZEBSharedBuffDelete del,
                      ZEBSharedBuffReleaseHook hook, void* context) {
    ++made;
    return make(size, data, del, hook, context);
  });
  release(newClientBuffer(10, nullptr, nullptr, nullptr, nullptr));
  release(newClientBuffer(10, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(made, 2);
}

TEST_F(BufferClientTest, RaisesOutOfMemoryAfterEndingTheData) {
  replaceNewBuffer(noBuffer);
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, &data_, Data::del, nullptr, nullptr); }),
            "KST 1: Out of Memory");
  EXPECT_EQ(data_.deleted, 1);
}

TEST_F(BufferClientTest, EndsTheDataByItsContext) {
  replaceNewBuffer(noBuffer);
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, &data_, Data::del, nullptr, &context_); }),
            "KST 1: Out of Memory");
  EXPECT_EQ(data_.deleted, 0);
  EXPECT_EQ(context_.deleted, 1);
}

TEST_F(BufferClientTest, EndsNothingThatIsNotThere) {
  replaceNewBuffer(noBuffer);
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, nullptr, nullptr, nullptr, nullptr); }),
            "KST 1: Out of Memory");
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, nullptr, Data::del, nullptr, &context_); }),
            "KST 1: Out of Memory");
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, &data_, nullptr, nullptr, &context_); }),
            "KST 1: Out of Memory");
  EXPECT_EQ(data_.deleted, 0);
  EXPECT_EQ(context_.deleted, 0);
}

TEST_F(BufferClientTest, RaisesTheStandardErrorWhenMemoryIsShort) {
  release(newClientBuffer(10, nullptr, nullptr, nullptr, nullptr));
  for (int64_t nth = 1; nth <= 2; ++nth) {
    CountingHost::failAllocation(nth);
    try {
      ZEBSharedBuffer* made = newClientBuffer(10, nullptr, nullptr, nullptr, nullptr);
      ADD_FAILURE() << "made " << made;
    } catch (const CZEBError& error) {
      EXPECT_EQ(error.error(), errors::standardKst(kst::kOutOfMemory));
    }
    EXPECT_FALSE(CountingHost::failureIsPending());
    CountingHost::stopFailing();
  }
  CountingHost::failAllocation(1);
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, &data_, Data::del, nullptr, nullptr); }),
            "KST 1: Out of Memory");
  CountingHost::stopFailing();
  EXPECT_EQ(data_.deleted, 1);
}

TEST_F(BufferClientTest, RaisesMissingInterfaceAndEndsTheData) {
  registry::removeInterface(ZEB_SHARED_BUFFER_INTERFACE);
  EXPECT_EQ(thrownBy([] { (void)clientProcs(); }), "ZEB 0: Missing Interface");
  EXPECT_EQ(thrownBy([&] { (void)newClientBuffer(10, &data_, Data::del, nullptr, nullptr); }),
            "ZEB 0: Missing Interface");
  EXPECT_EQ(data_.deleted, 1);
}

TEST_F(BufferClientTest, RaisesMissingInterfaceWhenAProcIsMissing) {
  const ZEBSharedBufferProcs procs = clientProcs();
  for (size_t count = 0; count < kAllProcs; ++count) {
    replaceInterface(procs, count);
    EXPECT_EQ(thrownBy([] { (void)clientProcs(); }), "ZEB 0: Missing Interface") << count;
  }
  replaceInterface(procs);
  release(newClientBuffer(10, nullptr, nullptr, nullptr, nullptr));
}

TEST_F(BufferClientTest, AsksTheRegistryAgainInTheNextRun) {
  replaceNewBuffer(noBuffer);
  EXPECT_EQ(clientProcs().NewBuffer, &noBuffer);
  library_.stop();
  const StartedLibrary again;
  EXPECT_NE(clientProcs().NewBuffer, &noBuffer);
  release(newClientBuffer(10, nullptr, nullptr, nullptr, nullptr));
}

}  // namespace
}  // namespace zeb::buffers
