// Clients' streams for tests: contexts that note which of their callbacks was called with what, and
// answer as they are told.
#ifndef ZEB_TESTS_CONTRACT_STREAM_CLIENT_H
#define ZEB_TESTS_CONTRACT_STREAM_CLIENT_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "contract/stream_library.h"

namespace contract {

// What a context was called for, as "name(arguments)".
using Calls = std::vector<std::string>;

struct ClientContext {
  Calls calls;
  int released = 0;
  ZEBErrorObject* answer = nullptr;  // of the next call, which hands it over
  bool throws = false;
  std::uint64_t number = 0;        // bytes read or position, as the callback is
  ClientContext* other = nullptr;  // the context of the next independent stream

  ZEBErrorObject* Note(const std::string& call) {
    calls.push_back(call);
    if (throws) throw std::runtime_error("thrown by a client's callback");
    ZEBErrorObject* answered = answer;
    answer = nullptr;
    return answered;
  }

  static ClientContext& Of(void* context) { return *static_cast<ClientContext*>(context); }

  static ZEBErrorObject* Read(void* context, std::uint64_t* bytesRead, void* buffer,
                              std::uint64_t count) {
    *bytesRead = Of(context).number;
    if (count > 0) *static_cast<char*>(buffer) = 'r';
    return Of(context).Note("read(" + std::to_string(count) + ")");
  }
  static ZEBErrorObject* Write(void* context, const void* buffer, std::uint64_t count) {
    return Of(context).Note("write(" + std::string(static_cast<const char*>(buffer), count) + ")");
  }
  static ZEBErrorObject* NewRewindable(void* context, void** newContext) {
    *newContext = Of(context).other;
    return Of(context).Note("new rewindable()");
  }
  static ZEBErrorObject* Rewind(void* context) { return Of(context).Note("rewind()"); }
  static ZEBErrorObject* NewPositionable(void* context, void** newContext) {
    *newContext = Of(context).other;
    return Of(context).Note("new positionable()");
  }
  static ZEBErrorObject* Mark(void* context, std::uint64_t* position) {
    *position = Of(context).number;
    return Of(context).Note("mark()");
  }
  static ZEBErrorObject* Seek(void* context, std::int64_t offset, std::uint32_t origin) {
    return Of(context).Note("seek(" + std::to_string(offset) + ", " + std::to_string(origin) + ")");
  }
  static void Release(void* context) { ++Of(context).released; }
  static void ReleaseAndThrow(void* context) {
    ++Of(context).released;
    throw std::runtime_error("thrown by a client's release");
  }

  // ---- The callbacks of old clients.

  static std::uint64_t OldRead(void* context, void* buffer, std::uint64_t count) {
    if (count > 0) *static_cast<char*>(buffer) = 'r';
    (void)Of(context).Note("read(" + std::to_string(count) + ")");
    return Of(context).number;
  }
  static std::int32_t OldWrite(void* context, const void* buffer, std::uint64_t count) {
    (void)Write(context, buffer, count);
    return static_cast<std::int32_t>(Of(context).number);
  }
  static std::int32_t OldSeek(void* context, std::uint64_t position) {
    (void)Of(context).Note("seek(" + std::to_string(position) + ")");
    return static_cast<std::int32_t>(Of(context).number);
  }
  static ZEBErrorObject* SeekWithError(void* context, std::uint64_t position) {
    return Of(context).Note("seek(" + std::to_string(position) + ")");
  }
  static std::uint64_t Tell(void* context) {
    (void)Of(context).Note("tell()");
    return Of(context).number;
  }
};

class ClientStreamTest : public StreamTest {
 protected:
  void TearDown() override {
    // What an error of NewError says is told to the host; that is not what these tests are about.
    ReleaseStreams();
    Reports::Take();
    StreamTest::TearDown();
  }

  ZEBContainer* NewSimple() {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(
        zeb_.Outcome(procs_.factory.NewClientSimpleStream(
            &made, &context_, ClientContext::Read, ClientContext::Write, ClientContext::Release)),
        kSuccess);
    return Keep(made);
  }
  ZEBContainer* NewRewindable() {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.factory.NewClientRewindableStream(
                  &made, &context_, ClientContext::Read, ClientContext::Write,
                  ClientContext::NewRewindable, ClientContext::Rewind, ClientContext::Release)),
              kSuccess);
    return Keep(made);
  }
  ZEBContainer* NewPositionable() {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(
        zeb_.Outcome(procs_.factory.NewClientPositionableStream(
            &made, &context_, ClientContext::Read, ClientContext::Write,
            ClientContext::NewRewindable, ClientContext::Rewind, ClientContext::NewPositionable,
            ClientContext::Mark, ClientContext::Seek, ClientContext::Release)),
        kSuccess);
    return Keep(made);
  }

  ZEBErrorObject* NewError() {
    return zeb_.error.NewError("the client's own", "Client", 77, nullptr, nullptr);
  }
  static constexpr const char* kOwnError = "Client 77: the client's own";

  Calls TakeCalls() { return std::exchange(context_.calls, {}); }

  ClientContext context_;
  ClientContext other_;
  Data data_;  // outlives the containers that tests keep
};

}  // namespace contract

#endif
