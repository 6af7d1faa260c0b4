// Streams whose bytes come from a client's callbacks.
//
// A stream owns its context and releases it once, at its end. A callback that is missing is
// "Missing ZEB Method" when it is called for; an error that a callback answers is raised as it is.
#ifndef ZEB_STREAMS_CLIENT_STREAM_H
#define ZEB_STREAMS_CLIENT_STREAM_H

#include "streams/stream_impl.h"
#include "zeb/stream_factory.h"

namespace zeb::streams {

struct ClientCallbacks {
  ZEBClientStreamRead read = nullptr;
  ZEBClientStreamWrite write = nullptr;
  ZEBClientStreamNewContext newRewindable = nullptr;
  ZEBClientStreamRewind rewind = nullptr;
  ZEBClientStreamNewContext newPositionable = nullptr;
  ZEBClientStreamMark mark = nullptr;
  ZEBClientStreamSeek seek = nullptr;
  ZEBClientStreamRelease release = nullptr;
};

// The context with its callbacks, which every tier holds.
class ClientGeneralStreamImpl {
 public:
  // Owns the context from here on.
  ClientGeneralStreamImpl(void* context, const ClientCallbacks& callbacks) noexcept
      : context_(context), callbacks_(callbacks) {}
  ClientGeneralStreamImpl(const ClientGeneralStreamImpl&) = delete;
  ClientGeneralStreamImpl& operator=(const ClientGeneralStreamImpl&) = delete;
  ~ClientGeneralStreamImpl();

  [[nodiscard]] uint64_t read(void* destination, uint64_t count) const;
  void write(const void* source, uint64_t count) const;
  // A stream over a new context.
  [[nodiscard]] ZEBContainer* newRewindable() const;
  void rewind() const;
  [[nodiscard]] ZEBContainer* newPositionable() const;
  [[nodiscard]] uint64_t mark() const;
  void seek(int64_t offset, uint32_t origin) const;

 private:
  void* const context_;
  const ClientCallbacks callbacks_;
};

class ClientSimpleStreamImpl final : public SimpleStreamImpl {
 public:
  ClientSimpleStreamImpl(void* context, const ClientCallbacks& callbacks) noexcept
      : client_(context, callbacks) {}

  uint64_t Read(void* destination, uint64_t count) override {
    return client_.read(destination, count);
  }
  void Write(const void* source, uint64_t count) override { client_.write(source, count); }

 private:
  const ClientGeneralStreamImpl client_;
};

class ClientRewindableStreamImpl final : public RewindableStreamImpl {
 public:
  ClientRewindableStreamImpl(void* context, const ClientCallbacks& callbacks) noexcept
      : client_(context, callbacks) {}

  uint64_t Read(void* destination, uint64_t count) override {
    return client_.read(destination, count);
  }
  void Write(const void* source, uint64_t count) override { client_.write(source, count); }
  ZEBContainer* CreateIndependentlyRewindableStream() override { return client_.newRewindable(); }
  void Rewind() override { client_.rewind(); }

 private:
  const ClientGeneralStreamImpl client_;
};

class ClientPositionableStreamImpl final : public PositionableStreamImpl {
 public:
  ClientPositionableStreamImpl(void* context, const ClientCallbacks& callbacks) noexcept
      : client_(context, callbacks) {}

  uint64_t Read(void* destination, uint64_t count) override {
    return client_.read(destination, count);
  }
  void Write(const void* source, uint64_t count) override { client_.write(source, count); }
  ZEBContainer* CreateIndependentlyRewindableStream() override { return client_.newRewindable(); }
  void Rewind() override { client_.rewind(); }
  ZEBContainer* CreateIndependentlyPositionableStream() override {
    return client_.newPositionable();
  }
  uint64_t Mark() override { return client_.mark(); }
  void Seek(int64_t offset, uint32_t origin) override { client_.seek(offset, origin); }

 private:
  const ClientGeneralStreamImpl client_;
};

// A new stream's container with one reference for the caller. The context is consumed in every
// case.
template <class Stream>
[[nodiscard]] ZEBContainer* makeClientStream(void* context, const ClientCallbacks& callbacks);

extern template ZEBContainer* makeClientStream<ClientSimpleStreamImpl>(void*,
                                                                       const ClientCallbacks&);
extern template ZEBContainer* makeClientStream<ClientRewindableStreamImpl>(void*,
                                                                           const ClientCallbacks&);
extern template ZEBContainer* makeClientStream<ClientPositionableStreamImpl>(
    void*, const ClientCallbacks&);

}  // namespace zeb::streams

#endif
