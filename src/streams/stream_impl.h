// The three tiers of streams. What stands behind a stream's container is one of these.
//
// A stream is used by one thread at a time. Failures are raised; what a client's callback throws
// passes through.
#ifndef ZEB_STREAMS_STREAM_IMPL_H
#define ZEB_STREAMS_STREAM_IMPL_H

#include <cstdint>

#include "base/live_objects.h"
#include "base/object_bases.h"
#include "zeb/types.h"

namespace zeb::streams {

// Of stream objects. A stream's container counts as a container besides.
extern constinit LiveTally liveStreamTally;

enum class Tier : uint8_t { simple, rewindable, positionable };

class SimpleStreamImpl : public ZEBBase {
 public:
  SimpleStreamImpl(const SimpleStreamImpl&) = delete;
  SimpleStreamImpl& operator=(const SimpleStreamImpl&) = delete;
  virtual ~SimpleStreamImpl() { liveStreamTally.ended(); }

  // The bytes read, at most `count`.
  virtual uint64_t Read(void* destination, uint64_t count) = 0;
  // Writes all of them.
  virtual void Write(const void* source, uint64_t count) = 0;

  [[nodiscard]] Tier tier() const noexcept { return tier_; }

 protected:
  explicit SimpleStreamImpl(Tier tier = Tier::simple) noexcept : tier_(tier) {
    liveStreamTally.made();
  }

 private:
  const Tier tier_;
};

class RewindableStreamImpl : public SimpleStreamImpl {
 public:
  // A new stream's container with one reference for the caller.
  virtual ZEBContainer* CreateIndependentlyRewindableStream() = 0;
  virtual void Rewind() = 0;

 protected:
  explicit RewindableStreamImpl(Tier tier = Tier::rewindable) noexcept : SimpleStreamImpl(tier) {}
};

class PositionableStreamImpl : public RewindableStreamImpl {
 public:
  virtual ZEBContainer* CreateIndependentlyPositionableStream() = 0;
  virtual uint64_t Mark() = 0;
  virtual void Seek(int64_t offset, uint32_t origin) = 0;
  virtual void Flush() {}
  // Seek calls this when it has moved the position, so that the medium follows.
  virtual void SyncPosition() {}

 protected:
  PositionableStreamImpl() noexcept : RewindableStreamImpl(Tier::positionable) {}
};

[[nodiscard]] inline LiveObjects liveStreams() noexcept { return {.live = liveStreamTally.live()}; }

}  // namespace zeb::streams

#endif
