// What the tests of filters share: the procs of all versions, a client that keeps a diary, and
// makers that insist on success.
#ifndef ZEB_TESTS_CONTRACT_FILTER_LIBRARY_H
#define ZEB_TESTS_CONTRACT_FILTER_LIBRARY_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "contract/component_library.h"

namespace contract {

struct OlderFilterProcs {
  ZEB_FILTER_OLDER_PROCS(ZEB_PROC_MEMBER)
};
ZEB_DEFINE_FETCH(FetchOlderFilterProcs, OlderFilterProcs, ZEB_FILTER_INTERFACE,
                 ZEB_FILTER_OLDER_PROCS)

inline constexpr const char* kNotAFilter = "KST 0: not a ZEBFilterImpl";
inline constexpr const char* kLoop = "KST 0: illegal call to SetDataSink (would create loop)";

using Diary = std::vector<std::string>;

// A client of a sink or filter. It writes into a diary that its neighbours may share what it was
// called for, and then does what the test hung into it.
struct FilterClient {
  std::string name;
  Diary* diary;
  std::function<ZEBErrorObject*(const void*, std::uint64_t)> onWrite = nullptr;
  std::function<void()> onClose = nullptr;
  std::function<void()> onDestroy = nullptr;

  void Note(const std::string& what) const { diary->push_back(name + " " + what); }

  static FilterClient& Of(void* data) { return *static_cast<FilterClient*>(data); }

  static ZEBErrorObject* Write(void* data, const void* bytes, std::uint64_t size) {
    Of(data).Note("writes " + std::to_string(size));
    return Of(data).onWrite ? Of(data).onWrite(bytes, size) : nullptr;
  }
  static void Close(void* data) {
    Of(data).Note("closes");
    if (Of(data).onClose) Of(data).onClose();
  }
  static const char* PostScript(void* data) {
    Of(data).Note("is named");
    return Of(data).name.c_str();
  }
  static void Destroy(void* data) {
    Of(data).Note("ends");
    if (Of(data).onDestroy) Of(data).onDestroy();
  }
  static void Image(void* data, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    Of(data).Note("image " + std::to_string(a) + " " + std::to_string(b) + " " + std::to_string(c));
  }
  static void Compression(void* data, float value) {
    Of(data).Note("compression " + std::to_string(value));
  }
};

class FilterTest : public ComponentTest {
 protected:
  FilterTest() {
    if (ZEBFetchFilterProcs(zeb_.getProcAddress, &filter_) == 0 ||
        FetchOlderFilterProcs(zeb_.getProcAddress, &older_) == 0) {
      throw std::runtime_error("a started library lacks a proc of its filters");
    }
  }

  std::string Outcome(ZEBErrorObject* taken) const { return zeb_.Outcome(taken); }

  FilterClient Client(const std::string& name) { return {.name = name, .diary = &diary_}; }
  Diary TakeDiary() { return std::exchange(diary_, {}); }

  ZEBDataSink* NewNull() {
    ZEBDataSink* made = nullptr;
    EXPECT_EQ(Outcome(filter_.NewNullDataSink(&made)), kSuccess);
    return made;
  }
  ZEBDataSink* NewSink(FilterClient& client) {
    ZEBDataSink* made = nullptr;
    EXPECT_EQ(Outcome(filter_.NewClientDataSink(&made, &client, &FilterClient::Write,
                                                &FilterClient::Destroy)),
              kSuccess);
    return made;
  }
  ZEBDataSink* NewIdentity(ZEBDataSink* target) {
    ZEBDataSink* made = nullptr;
    EXPECT_EQ(Outcome(filter_.NewIdentityFilter(&made, target)), kSuccess);
    return made;
  }
  ZEBDataSink* NewFilter(ZEBDataSink* target, FilterClient& client) {
    ZEBDataSink* made = nullptr;
    EXPECT_EQ(Outcome(filter_.NewClientFilter(&made, target, &client, &FilterClient::Write,
                                              &FilterClient::Close, &FilterClient::PostScript,
                                              &FilterClient::Destroy)),
              kSuccess);
    return made;
  }
  ZEBDataSink* NewJPEG(ZEBDataSink* target, FilterClient& client) {
    ZEBDataSink* made = nullptr;
    EXPECT_EQ(Outcome(filter_.NewFilterJPEG(&made, target, &client, &FilterClient::Write,
                                            &FilterClient::Close, &FilterClient::PostScript,
                                            &FilterClient::Destroy, &FilterClient::Image,
                                            &FilterClient::Compression)),
              kSuccess);
    return made;
  }

  // A member of the test's own.
  ZEBDataSink* Owned(ZEBDataSink* member) {
    EXPECT_EQ(Outcome(filter_.AddRef(member)), kSuccess);
    return member;
  }

  ZEBFilterProcs filter_;
  OlderFilterProcs older_;
  Diary diary_;
};

}  // namespace contract

#endif
