// A data sink whose bytes go into a stream.
#ifndef THUMBNAILS_HOST_STREAM_SINK_H
#define THUMBNAILS_HOST_STREAM_SINK_H

#include "common/support/stream.h"
#include "host/data_sink.h"

namespace examples {

// The services and the stream must outlive the sink. Throws RaisedError.
class StreamSink {
 public:
  StreamSink(const Services& services, const Stream& stream)
      : services_(services), stream_(stream), sink_(makeDataSink(services, [&](ZEBDataSink** out) {
          return services.filters.NewClientDataSink(out, this, write, nullptr);
        })) {}

  StreamSink(const StreamSink&) = delete;
  StreamSink& operator=(const StreamSink&) = delete;

  [[nodiscard]] ZEBDataSink* get() const noexcept { return sink_.get(); }

 private:
  static ZEBErrorObject* write(void* self, const void* data, uint64_t size) {
    const auto* const sink = static_cast<StreamSink*>(self);
    return sink->services_.simpleStreams.Write(sink->stream_.get(), data, size);
  }

  const Services& services_;
  const Stream& stream_;
  DataSink sink_;
};

}  // namespace examples

#endif
