// Data sinks and chains of filters.
//
//   const Sink end = Sink::to([&](std::span<const std::byte> bytes) { ... });
//   const Sink chain = Sink::filter(end, Rot13{});
//   chain.write(bytes);
//
// A filter's work is done by an object of yours:
//
//   struct Rot13 {
//     void write(std::span<const std::byte> bytes, const Next& next) { ... next.write(turned); }
//     void close(const Next& next);  // optional: writes out what is still held
//   };
//
// A chain is one thread's at a time.
#ifndef ZEB_SDK_SINK_HPP
#define ZEB_SDK_SINK_HPP

#include <concepts>
#include <cstddef>
#include <memory>
#include <span>

#include "zeb/sdk/error.hpp"

namespace zeb::sdk {

namespace detail {

struct SinkCounting {
  using Handle = ZEBDataSink;
  static void addReference(Handle* handle) { check(sdk::procs<Filters>().AddRef(handle)); }
  static void release(Handle* handle) noexcept {
    if (const auto* filters = tryProcs<Filters>()) filters->Release(handle);
  }
};

}  // namespace detail

// What follows a filter in its chain, while the filter works.
class Next {
 public:
  explicit Next(ZEBDataSink* filter) noexcept : filter_(filter) {}

  void write(std::span<const std::byte> bytes) const {
    const auto& filters = procs<Filters>();
    check(filters.Write(filters.PeekTarget(filter_), bytes.data(), bytes.size()));
  }

 private:
  ZEBDataSink* filter_;
};

// A data sink or a filter. Operations throw Failure.
class Sink : public Owner<detail::SinkCounting> {
 public:
  using Base = Owner<detail::SinkCounting>;

  Sink() noexcept = default;

  // Takes everything and keeps nothing.
  [[nodiscard]] static Sink null() {
    ZEBDataSink* sink = nullptr;
    check(procs<Filters>().NewNullDataSink(&sink));
    return Sink(sink);
  }

  // Hands every write to `consumer(bytes)`.
  template <class Consumer>
  requires std::invocable<Consumer&, std::span<const std::byte>>
  [[nodiscard]] static Sink to(Consumer consumer) {
    auto kept = std::make_unique<Consumer>(std::move(consumer));
    ZEBDataSink* sink = nullptr;
    // The consumer is the sink's in every case, a failure included.
    check(procs<Filters>().NewClientDataSink(&sink, kept.release(), &consume<Consumer>,
                                             &end<Consumer>));
    return Sink(sink);
  }

  // Passes everything on to the target unchanged.
  [[nodiscard]] static Sink identity(const Sink& target) {
    ZEBDataSink* filter = nullptr;
    check(procs<Filters>().NewIdentityFilter(&filter, target.get()));
    return Sink(filter);
  }

  // A filter before the target, whose work the object does.
  template <class Filter>
  [[nodiscard]] static Sink filter(const Sink& target, Filter filter) {
    using Working = Working<Filter>;
    auto kept = std::make_unique<Working>(Working{std::move(filter)});
    Working* working = kept.get();
    ZEBDataSink* made = nullptr;
    check(procs<Filters>().NewClientFilter(&made, target.get(), kept.release(), &work<Filter>,
                                           &close<Filter>, nullptr, &end<Working>));
    working->self = made;
    return Sink(made);
  }

  [[nodiscard]] Sink share() const {
    Sink shared;
    *shared.out() = Base::share().handOver();
    return shared;
  }

  void write(std::span<const std::byte> bytes) const {
    check(procs<Filters>().Write(get(), bytes.data(), bytes.size()));
  }

  // Closes this filter and the filters after it, in the order of the chain.
  void close() const { procs<Filters>().Close(get()); }

  // Puts a sink, or another chain, at the end of this filter's chain.
  void append(const Sink& sink) const { check(procs<Filters>().SetDataSink(get(), sink.get())); }

  [[nodiscard]] bool isFilter() const { return procs<Filters>().IsFilter(get()) != 0; }

 private:
  template <class Filter>
  struct Working {
    Filter filter;
    ZEBDataSink* self = nullptr;
  };

  // A new member belongs to nobody until its first reference.
  explicit Sink(ZEBDataSink* fresh) { *out() = Base::share(fresh).handOver(); }

  template <class Consumer>
  static ZEBErrorObject* consume(void* consumer, const void* data, uint64_t size) {
    try {
      (*static_cast<Consumer*>(consumer))(std::span(static_cast<const std::byte*>(data), size));
      return nullptr;
    } catch (...) {
      return currentExceptionAsError();
    }
  }

  template <class Filter>
  static ZEBErrorObject* work(void* working, const void* data, uint64_t size) {
    auto& self = *static_cast<Working<Filter>*>(working);
    try {
      self.filter.write(std::span(static_cast<const std::byte*>(data), size), Next(self.self));
      return nullptr;
    } catch (...) {
      return currentExceptionAsError();
    }
  }

  // A close that fails has no way to say so.
  template <class Filter>
  static void close(void* working) noexcept {
    if constexpr (requires(Filter & filter, const Next& next) { filter.close(next); }) {
      auto& self = *static_cast<Working<Filter>*>(working);
      try {
        self.filter.close(Next(self.self));
      } catch (...) {
      }
    }
  }

  template <class T>
  static void end(void* object) {
    delete static_cast<T*>(object);
  }
};

}  // namespace zeb::sdk

#endif
