// Interface "ZEBFilterInterface".
#include <array>

#include "base/unowned_data.h"
#include "errors/client_error.h"
#include "errors/error_boundary.h"
#include "filters/chain.h"
#include "filters/filter.h"
#include "filters/filter_service.h"
#include "memory/object_memory.h"

namespace zeb {

namespace {

using filters::ClientPart;

template <class T>
T& required(T* object) {
  if (object == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  return *object;
}

[[noreturn]] void refuseKind() { raiseNewKst(kst::kUnknown, "not a ZEBFilterImpl"); }

ZEBFilterImpl& requiredFilter(ZEBDataSink* sink) {
  ZEBFilterImpl* filter = filters::asFilter(&required(sink));
  if (filter == nullptr) refuseKind();
  return *filter;
}

filters::FilterJPEG& requiredJPEG(ZEBDataSink* sink) {
  if (required(sink).kind != ZEBDataSinkKind::kFilterJPEG) refuseKind();
  return *static_cast<filters::FilterJPEG*>(sink);
}

// The first versions answer with the result itself.
template <class Object, class Make>
Object* madeBy(Make make) {
  Object* object = nullptr;
  make(&object);
  return object;
}

namespace procs {

void NewNullDataSink(ZEBDataSink** out) {
  clearOut(out);
  *out = makeObject<filters::NullDataSink>();
}
ZEBDataSink* NewNullDataSinkV1() { return madeBy<ZEBDataSink>(NewNullDataSink); }

// In these makers the data ends unless a member takes it over.
void NewClientDataSink(ZEBDataSink** out, void* clientData, ZEBFilterClientWrite write,
                       ZEBFilterClientDestroy destroy) {
  UnownedData unowned(destroy, clientData);
  clearOut(out);
  *out = makeObject<filters::ClientDataSink>(ClientPart(clientData, write, destroy));
  unowned.handOver();
}
ZEBDataSink* NewClientDataSinkV1(void* clientData, ZEBFilterClientWrite write,
                                 ZEBFilterClientDestroy destroy) {
  return madeBy<ZEBDataSink>(
      [&](ZEBDataSink** out) { NewClientDataSink(out, clientData, write, destroy); });
}

void NewIdentityFilter(ZEBDataSink** out, ZEBDataSink* target) {
  clearOut(out);
  *out = makeObject<filters::IdentityFilter>(required(target));
}
ZEBDataSink* NewIdentityFilterV1(ZEBDataSink* target) {
  return madeBy<ZEBDataSink>([&](ZEBDataSink** out) { NewIdentityFilter(out, target); });
}

void NewClientFilter(ZEBDataSink** out, ZEBDataSink* target, void* clientData,
                     ZEBFilterClientWrite write, ZEBFilterClientClose close,
                     ZEBFilterClientPostScript postScript, ZEBFilterClientDestroy destroy) {
  UnownedData unowned(destroy, clientData);
  clearOut(out);
  *out = makeObject<filters::ClientFilter>(required(target), ClientPart(clientData, write, destroy),
                                           filters::FilterProcedures{close, postScript});
  unowned.handOver();
}
ZEBDataSink* NewClientFilterV1(ZEBDataSink* target, void* clientData, ZEBFilterClientWrite write,
                               ZEBFilterClientClose close, ZEBFilterClientPostScript postScript,
                               ZEBFilterClientDestroy destroy) {
  return madeBy<ZEBDataSink>([&](ZEBDataSink** out) {
    NewClientFilter(out, target, clientData, write, close, postScript, destroy);
  });
}

void NewFilterJPEG(ZEBDataSink** out, ZEBDataSink* target, void* clientData,
                   ZEBFilterClientWrite write, ZEBFilterClientClose close,
                   ZEBFilterClientPostScript postScript, ZEBFilterClientDestroy destroy,
                   ZEBFilterClientImageParameters imageParameters,
                   ZEBFilterClientCompressionParameters compressionParameters) {
  UnownedData unowned(destroy, clientData);
  clearOut(out);
  *out = makeObject<filters::FilterJPEG>(
      required(target), ClientPart(clientData, write, destroy),
      filters::FilterProcedures{close, postScript},
      filters::JPEGProcedures{imageParameters, compressionParameters});
  unowned.handOver();
}
ZEBDataSink* NewFilterJPEGV1(ZEBDataSink* target, void* clientData, ZEBFilterClientWrite write,
                             ZEBFilterClientClose close, ZEBFilterClientPostScript postScript,
                             ZEBFilterClientDestroy destroy,
                             ZEBFilterClientImageParameters imageParameters,
                             ZEBFilterClientCompressionParameters compressionParameters) {
  return madeBy<ZEBDataSink>([&](ZEBDataSink** out) {
    NewFilterJPEG(out, target, clientData, write, close, postScript, destroy, imageParameters,
                  compressionParameters);
  });
}

void AddRef(ZEBDataSink* sink) { filters::addReference(&required(sink)); }
void AddRefV1(ZEBDataSink* sink) noexcept { filters::addReference(sink); }
void Release(ZEBDataSink* sink) noexcept { filters::release(sink); }

ZEBErrorObject* Write(ZEBDataSink* sink, const void* data, uint64_t size) {
  return filters::write(&required(sink), data, size);
}
int32_t WriteV1(ZEBDataSink* sink, const void* data, uint64_t size) {
  ZEBErrorObject* error = Write(sink, data, size);
  if (error == nullptr) return 1;
  clientErrorProcs().Release(error);
  return 0;
}

int32_t IsFilter(ZEBDataSink* sink) noexcept { return filters::asFilter(sink) != nullptr ? 1 : 0; }
void Close(ZEBDataSink* filter) { filters::closeChain(requiredFilter(filter)); }
const char* GetPostScriptFilter(ZEBDataSink* filter) {
  return requiredFilter(filter).GetPostScriptFilter();
}

void SetDataSink(ZEBDataSink* filter, ZEBDataSink* sink) {
  ZEBFilterImpl& first = requiredFilter(filter);
  filters::append(first, required(sink));
}
int32_t SetDataSinkV1(ZEBDataSink* filter, ZEBDataSink* sink) {
  SetDataSink(filter, sink);
  return 1;
}

ZEBDataSink* PeekTarget(ZEBDataSink* filter) { return requiredFilter(filter).target(); }

void SetImageParameters(ZEBDataSink* filter, uint32_t first, uint32_t second, uint32_t third) {
  requiredJPEG(filter).SetImageParameters(first, second, third);
}
void SetCompressionParameters(ZEBDataSink* filter, float value) {
  requiredJPEG(filter).SetCompressionParameters(value);
}

void GetChainState(ZEBChainState** out, ZEBDataSink* filter) {
  clearOut(out);
  *out = filters::stateOf(requiredFilter(filter));
}
ZEBChainState* GetChainStateV1(ZEBDataSink* filter) {
  return madeBy<ZEBChainState>([&](ZEBChainState** out) { GetChainState(out, filter); });
}

void ResetChainState(ZEBChainState* state) { filters::reset(&required(state)); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, withBoundary<proc, &procs::member>()),
const std::array entries{ZEB_FILTER_PROCS(ZEB_ROW)};
const std::array olderEntries{ZEB_FILTER_OLDER_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable filterService() { return {ZEB_FILTER_INTERFACE, entries, olderEntries}; }

}  // namespace zeb
