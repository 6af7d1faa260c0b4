// What the generated calls of the sweeps are made of: a running library, a sample of every kind of
// argument, and the judgement of what comes back.
//
// A call is prepared, made between arm() and disarm(), and judged; what it answered is given back,
// then the samples are, and last the client data is asked how often it was ended.
#ifndef ZEB_TESTS_DESCRIPTION_SWEEP_H
#define ZEB_TESTS_DESCRIPTION_SWEEP_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <ostream>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "contract/component_library.h"

namespace description {

// What a call is described to do.
enum class Expected {
  kDone,     // it succeeds
  kRefused,  // it answers the error of a missing argument
  kFailed,   // it fails in a way of its own
  kNothing,  // it answers null, 0 or nothing, and nothing is done
  kEither,   // it succeeds, or fails as it is described to
};

// Where a proc stores a result; it begins as something that no proc stores.
template <class T>
struct Out {
  static T stale() {
    T value;
    std::memset(static_cast<void*>(&value), 0x5C, sizeof(value));
    return value;
  }

  T value = stale();

  T* slot() { return &value; }
  void expectCleared() const { EXPECT_EQ(value, T()); }
  void expectUntouched() const { EXPECT_EQ(value, stale()); }
};

// What a proc may exchange.
template <class T>
struct InOut {
  explicit InOut(T given) : value(given) {}

  T value;

  T* slot() { return &value; }
};

// A client procedure that counts its calls. `Index` keeps those of one call apart.
template <class Procedure, int Index>
class Client;

template <class Result, class... Arguments, int Index>
class Client<Result (*)(Arguments...), Index> {
 public:
  using Procedure = Result (*)(Arguments...);

  Client() { calls_ = 0; }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  [[nodiscard]] Procedure procedure() const { return &called; }
  void expectCalls(int expected) const { EXPECT_EQ(calls_, expected); }

 private:
  static Result called(Arguments... arguments) {
    ++calls_;
    // A reference procedure says that the reference it is to drop was the last one.
    if constexpr (std::is_same_v<Procedure, ZEBContainerRefProc>) {
      return std::get<1>(std::tuple(arguments...)) == 0 ? 1 : 0;
    } else {
      return Result();
    }
  }

  static inline int calls_ = 0;
};

// The library of one call, over a host that keeps books.
class Sweep : public contract::ComponentLibrary {
 public:
  using Host = contract::HostMemory<0>;
  using Reports = contract::ErrorReports<0>;

  // Over the library's own memory procs, the pages being the host's.
  static contract::StartOptions HostOfPages() { return Host::WithPagePair(Reports::Told()); }
  // Over the host's four memory procs.
  static contract::StartOptions HostOfObjects() { return Host::WithObjectProcs(Reports::Told()); }

  // `failingAllocation` is the one of the call that fails, counted from 1; 0: none.
  explicit Sweep(const contract::StartOptions& host, std::uint64_t failingAllocation = 0);
  // Stops the library and expects that nothing was left behind.
  ~Sweep();

  [[nodiscard]] bool allocationFailed() const { return allocationFailed_; }

  template <class Proc>
  Proc find(const char* interfaceName, const char* methodName, const char* procName) const {
    const ZEBProc found = getProcAddress(interfaceName, methodName, procName);
    EXPECT_NE(found, nullptr) << interfaceName << "/" << methodName << "/" << procName;
    return reinterpret_cast<Proc>(found);
  }

  // Samples. One that is `given` is the callee's to give back, else giveSamplesBack does it.
  ZEBString* atom(bool given);
  ZEBErrorObject* error(bool given);
  ZEBContainer* container(bool given);
  ZEBSharedBuffer* sharedBuffer(bool given);
  ZEBProgress* progress(bool given);
  ZEBEventCounter* eventCounter(bool given);
  ZEBEventRecord* eventSnapshot(bool given);
  void* block(bool given);
  ZEBCacheID* cacheId(bool given);
  ZEBCacheID* pinnedCacheId(bool given);
  ZEBCacheSet* cacheSet(bool given);
  ZEBCachePurge* cachePurge(bool given);
  void* snapshot(bool given);
  ZEBContainer* stream(bool given);
  ZEBDataSink* dataSink(bool given);
  ZEBDataSink* filter(bool given);
  ZEBDataSink* jpegFilter(bool given);
  ZEBChainState* chainState(bool given);

  // A sample of what is no handle, for the parameter of this name.
  template <class T>
  T value(std::string_view name) {
    if constexpr (std::is_same_v<T, const char*>) {
      return text(name);
    } else if constexpr (std::is_same_v<T, void*> || std::is_same_v<T, const void*>) {
      return bytes_;
    } else if constexpr (std::is_pointer_v<T>) {
      static_assert(sizeof(std::remove_pointer_t<T>) <= sizeof(bytes_));
      return reinterpret_cast<T>(bytes_);
    } else {
      return static_cast<T>(name == "size" || name == "count" ? sizeof(bytes_) : 0);
    }
  }

  // From here on the allocation fails, if one is to.
  void arm();
  void disarm();

  // Each answers whether the call succeeded.
  bool judgeError(ZEBErrorObject* answer, Expected expected);
  bool judgeNothing(Expected expected);
  // For a proc that answers an error object as its result.
  bool judgeAlways(ZEBErrorObject* answer, Expected expected);
  // `zeroIsFailure`: null and 0 mean nothing else.
  template <class T>
  bool judgeValue(T answer, Expected expected, bool zeroIsFailure) {
    if (expected == Expected::kNothing || expected == Expected::kFailed) {
      EXPECT_EQ(answer, T());
      return false;
    }
    const bool done = !zeroIsFailure || answer != T();
    expectDone(done, expected);
    return done;
  }

  // Calls a proc whose answer is of no interest.
  template <class Proc, class Argument>
  void ignore(Proc proc, Argument argument) {
    if constexpr (std::is_same_v<std::invoke_result_t<Proc, Argument>, ZEBErrorObject*>) {
      ComponentLibrary::error.Release(proc(argument));
    } else {
      proc(argument);
    }
  }

  void giveSamplesBack();

 private:
  static const char* text(std::string_view name);
  void expectDone(bool done, Expected expected) const;

  // A new member of a chain has no reference: it is given the one that is given back.
  ZEBDataSink* referenced(ZEBDataSink* made, bool given);

  template <class Handle, class Release>
  Handle* kept(Handle* sample, bool given, Release release) {
    EXPECT_NE(sample, nullptr);
    if (!given) samples_.push_back([=] { release(sample); });
    return sample;
  }

  ZEBCacheProcs cache_;
  ZEBStreamFactoryProcs streams_;
  ZEBFilterProcs filters_;
  ZEBInspectProcs inspect_;
  alignas(16) char bytes_[64] = {};
  std::vector<std::function<void()>> samples_;
  std::uint64_t failingAllocation_;
  bool allocationFailed_ = false;
};

struct SweepCase {
  const char* name;
  void (*call)(Sweep& sweep);
};
inline void PrintTo(const SweepCase& sweepCase, std::ostream* out) { *out << sweepCase.name; }

// The generated calls: a null in each place where one can be, and each proc with all it needs.
std::span<const SweepCase> nullSweep();
std::span<const SweepCase> failureSweep();

}  // namespace description

#endif
