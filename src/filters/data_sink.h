// Data sinks: consumers of bytes, the members of filter chains.
//
// A member starts with no reference and is destroyed when a reference that is given back was the
// last: when its count falls to exactly 0. A call that runs client procedures pins the members that
// it still needs. A pin is no reference: it delays a destruction that falls due meanwhile and
// causes none, so a member that nobody owns is after the call what it was before.
//
// Thread safety: none. A chain belongs to one thread at a time.
#ifndef ZEB_FILTERS_DATA_SINK_H
#define ZEB_FILTERS_DATA_SINK_H

#include <cstdint>

#include "base/live_objects.h"
#include "base/object_bases.h"
#include "zeb/filter.h"

// What a member is, asked more often than a virtual call would be worth.
enum class ZEBDataSinkKind : uint8_t { kNullSink, kSink, kFilter, kIdentityFilter, kFilterJPEG };

namespace zeb::filters {
extern constinit LiveTally liveSinkTally;
}

struct ZEBDataSink : ZEBBase {
  explicit ZEBDataSink(ZEBDataSinkKind sinkKind) noexcept : kind(sinkKind) {
    zeb::filters::liveSinkTally.made();
  }
  ZEBDataSink(const ZEBDataSink&) = delete;
  ZEBDataSink& operator=(const ZEBDataSink&) = delete;

  // May throw what a client's procedure throws. The member may be gone when it returns.
  virtual ZEBErrorObject* Write(const void* data, uint64_t size) = 0;
  virtual ~ZEBDataSink() { zeb::filters::liveSinkTally.ended(); }
  // Ends the client's data; calls afterwards no longer reach the client.
  virtual void endClient() noexcept {}

  [[nodiscard]] bool isFilter() const noexcept { return kind >= ZEBDataSinkKind::kFilter; }

  int64_t references = 0;
  uint32_t pins = 0;
  bool condemned = false;  // the last reference went while the member was pinned
  const ZEBDataSinkKind kind;
};

using ZEBDataSinkImpl = ZEBDataSink;

namespace zeb::filters {

// What a client gave to a member of its own.
class ClientPart {
 public:
  // Owns the data from here on.
  ClientPart(void* data, ZEBFilterClientWrite writeProc,
             ZEBFilterClientDestroy destroyProc) noexcept
      : data_(data),
        write_(writeProc != nullptr ? writeProc : missingWrite),
        destroy_(destroyProc) {}

  ZEBErrorObject* write(const void* data, uint64_t size) const { return write_(data_, data, size); }
  void end() noexcept;
  [[nodiscard]] void* data() const noexcept { return data_; }

 private:
  static ZEBErrorObject* missingWrite(void* clientData, const void* data, uint64_t size);

  void* data_;
  ZEBFilterClientWrite write_;  // never null: writing does not ask
  ZEBFilterClientDestroy destroy_;
};

class NullDataSink final : public ZEBDataSinkImpl {
 public:
  NullDataSink() noexcept : ZEBDataSinkImpl(ZEBDataSinkKind::kNullSink) {}
  ZEBErrorObject* Write(const void* /*data*/, uint64_t /*size*/) override { return nullptr; }
};

class ClientDataSink final : public ZEBDataSinkImpl {
 public:
  explicit ClientDataSink(const ClientPart& client) noexcept
      : ZEBDataSinkImpl(ZEBDataSinkKind::kSink), client_(client) {}
  ZEBErrorObject* Write(const void* data, uint64_t size) override {
    return client_.write(data, size);
  }
  void endClient() noexcept override { client_.end(); }

 private:
  ClientPart client_;
};

[[nodiscard]] inline LiveObjects liveSinks() noexcept { return {.live = liveSinkTally.live()}; }

// Null is ignored by both.
inline void addReference(ZEBDataSink* sink) noexcept {
  if (sink != nullptr) ++sink->references;
}
void release(ZEBDataSink* sink) noexcept;

// Keeps a member while client procedures run. `Member` is a data sink or a filter.
template <class Member>
class Pin {
 public:
  explicit Pin(Member& member) noexcept : member_(&member) { ++member_->pins; }
  Pin(const Pin&) = delete;
  Pin& operator=(const Pin&) = delete;
  ~Pin() { unpin(member_); }

  // The next member is pinned before the last one is let go and may take its chain with it.
  void moveTo(Member& next) noexcept {
    ++next.pins;
    Member* last = member_;
    member_ = &next;
    unpin(last);
  }

  Member& operator*() const noexcept { return *member_; }
  Member* operator->() const noexcept { return member_; }

 private:
  static void unpin(ZEBDataSink* member) noexcept;

  Member* member_;
};

// Destroys a member that nobody owns or pins, and what it owned alone.
void destroyChain(ZEBDataSink* member) noexcept;

template <class Member>
void Pin<Member>::unpin(ZEBDataSink* member) noexcept {
  if (--member->pins > 0) return;
  if (member->condemned && member->references == 0) destroyChain(member);
}

}  // namespace zeb::filters

#endif
