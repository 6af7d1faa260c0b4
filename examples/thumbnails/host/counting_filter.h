// A filter that passes everything on as it is, and counts it.
#ifndef THUMBNAILS_HOST_COUNTING_FILTER_H
#define THUMBNAILS_HOST_COUNTING_FILTER_H

#include <cstdint>

#include "host/data_sink.h"

namespace examples {

class CountingFilter {
 public:
  // A filter in front of the target. The services must outlive this object, and this object the
  // filter. Throws RaisedError.
  CountingFilter(const Services& services, ZEBDataSink* target);

  CountingFilter(const CountingFilter&) = delete;
  CountingFilter& operator=(const CountingFilter&) = delete;

  [[nodiscard]] ZEBDataSink* get() const noexcept { return filter_.get(); }

  // What the target has taken so far.
  [[nodiscard]] uint64_t bytes() const noexcept { return bytes_; }
  [[nodiscard]] uint64_t writes() const noexcept { return writes_; }

 private:
  static ZEBErrorObject* write(void* self, const void* data, uint64_t size);

  const Services& services_;
  uint64_t bytes_ = 0;
  uint64_t writes_ = 0;
  DataSink filter_;
};

}  // namespace examples

#endif
