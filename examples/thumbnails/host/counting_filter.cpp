#include "host/counting_filter.h"

namespace examples {

CountingFilter::CountingFilter(const Services& services, ZEBDataSink* target)
    : services_(services), filter_(makeDataSink(services, [&](ZEBDataSink** out) {
        return services.filters.NewClientFilter(out, target, this, write, nullptr, nullptr,
                                                nullptr);
      })) {}

// A client filter is not given its target: it asks for it.
ZEBErrorObject* CountingFilter::write(void* self, const void* data, uint64_t size) {
  auto* const filter = static_cast<CountingFilter*>(self);
  const ZEBFilterProcs& filters = filter->services_.filters;
  ZEBErrorObject* const error = filters.Write(filters.PeekTarget(filter->get()), data, size);
  if (error != nullptr) return error;
  filter->bytes_ += size;
  ++filter->writes_;
  return nullptr;
}

}  // namespace examples
