// A member of a filter chain, held for as long as a C++ object lives.
#ifndef THUMBNAILS_HOST_DATA_SINK_H
#define THUMBNAILS_HOST_DATA_SINK_H

#include <utility>

#include "common/support/handle.h"
#include "common/support/raised_error.h"
#include "common/support/services.h"
#include "zeb/filter.h"

namespace examples {

using DataSink = Handle<ZEBDataSink, ZEBFilterProcs, &ZEBFilterProcs::Release>;

// A new member belongs to nobody. This makes one, by a function that is given the place for it, and
// adds the reference that the handle gives back. Throws RaisedError.
template <class Maker>
DataSink makeDataSink(const Services& services, const Maker& maker) {
  ZEBDataSink* made = nullptr;
  raiseIfFailed(services.errors, maker(&made));
  raiseIfFailed(services.errors, services.filters.AddRef(made));
  return {services.filters, made};
}

}  // namespace examples

#endif
