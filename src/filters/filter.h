// Filters: data sinks that write what they receive into a further data sink, their target.
#ifndef ZEB_FILTERS_FILTER_H
#define ZEB_FILTERS_FILTER_H

#include <utility>

#include "filters/data_sink.h"

class ZEBFilterImpl : public ZEBDataSinkImpl {
 public:
  // Takes a reference to the target, which may be null.
  ZEBFilterImpl(ZEBDataSinkKind filterKind, ZEBDataSink* target) noexcept
      : ZEBDataSinkImpl(filterKind), target_(target) {
    zeb::filters::addReference(target);
  }

  // Both may throw what a client's procedure throws.
  virtual void Close() {}
  virtual const char* GetPostScriptFilter() { return nullptr; }

  [[nodiscard]] ZEBDataSink* target() const noexcept { return target_; }

  // Takes over a reference to the new target, gives back that to the old one.
  void replaceTarget(ZEBDataSink* owned) noexcept {
    zeb::filters::release(std::exchange(target_, owned));
  }
  // The filter's reference, which becomes the caller's.
  [[nodiscard]] ZEBDataSink* takeTarget() noexcept { return std::exchange(target_, nullptr); }

 private:
  ZEBDataSink* target_;
};

namespace zeb::filters {

// The filter that a data sink is; null for a plain sink and for null.
inline ZEBFilterImpl* asFilter(ZEBDataSink* sink) noexcept {
  return sink != nullptr && sink->isFilter() ? static_cast<ZEBFilterImpl*>(sink) : nullptr;
}

// Writes into a data sink. What identity filters would only hand on goes past them in a loop, so
// that a long chain of them costs no stack.
inline ZEBErrorObject* write(ZEBDataSink* sink, const void* data, uint64_t size) {
  while (sink->kind == ZEBDataSinkKind::kIdentityFilter) {
    sink = static_cast<ZEBFilterImpl*>(sink)->target();
  }
  return sink->Write(data, size);
}

class IdentityFilter final : public ZEBFilterImpl {
 public:
  explicit IdentityFilter(ZEBDataSink& target) noexcept
      : ZEBFilterImpl(ZEBDataSinkKind::kIdentityFilter, &target) {}

  ZEBErrorObject* Write(const void* data, uint64_t size) override {
    return write(target(), data, size);
  }
  const char* GetPostScriptFilter() override { return ""; }
};

struct FilterProcedures {
  ZEBFilterClientClose close;            // may be null
  ZEBFilterClientPostScript postScript;  // may be null
};

class ClientFilter : public ZEBFilterImpl {
 public:
  ClientFilter(ZEBDataSink& target, const ClientPart& client,
               const FilterProcedures& procedures) noexcept
      : ClientFilter(ZEBDataSinkKind::kFilter, target, client, procedures) {}

  ZEBErrorObject* Write(const void* data, uint64_t size) override {
    return client_.write(data, size);
  }
  void endClient() noexcept override {
    procedures_ = {};
    client_.end();
  }
  void Close() override {
    if (procedures_.close != nullptr) procedures_.close(client_.data());
  }
  const char* GetPostScriptFilter() override {
    return procedures_.postScript != nullptr ? procedures_.postScript(client_.data()) : nullptr;
  }

 protected:
  ClientFilter(ZEBDataSinkKind filterKind, ZEBDataSink& target, const ClientPart& client,
               const FilterProcedures& procedures) noexcept
      : ZEBFilterImpl(filterKind, &target), client_(client), procedures_(procedures) {}

  [[nodiscard]] void* clientData() const noexcept { return client_.data(); }

 private:
  ClientPart client_;
  FilterProcedures procedures_;
};

struct JPEGProcedures {
  ZEBFilterClientImageParameters imageParameters;              // may be null
  ZEBFilterClientCompressionParameters compressionParameters;  // may be null
};

class FilterJPEG final : public ClientFilter {
 public:
  FilterJPEG(ZEBDataSink& target, const ClientPart& client, const FilterProcedures& procedures,
             const JPEGProcedures& jpegProcedures) noexcept
      : ClientFilter(ZEBDataSinkKind::kFilterJPEG, target, client, procedures),
        jpegProcedures_(jpegProcedures) {}

  void endClient() noexcept override {
    jpegProcedures_ = {};
    ClientFilter::endClient();
  }
  void SetImageParameters(uint32_t first, uint32_t second, uint32_t third) {
    if (jpegProcedures_.imageParameters == nullptr) return;
    jpegProcedures_.imageParameters(clientData(), first, second, third);
  }
  void SetCompressionParameters(float value) {
    if (jpegProcedures_.compressionParameters == nullptr) return;
    jpegProcedures_.compressionParameters(clientData(), value);
  }

 private:
  JPEGProcedures jpegProcedures_;
};

}  // namespace zeb::filters

#endif
