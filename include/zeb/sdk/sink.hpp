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
//     const char* postScriptFilter() const noexcept;  // optional: the PostScript counterpart's
//     name
//   };
//
// and one that encodes pictures is told about them:
//
//     void imageParameters(uint32_t first, uint32_t second, uint32_t third) noexcept;
//     void compressionParameters(float value) noexcept;
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
  // What follows this filter.
  explicit Next(ZEBDataSink* filter) noexcept : filter_(filter) {}

  // Writes into it. Throws Failure.
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
    return working(std::move(filter), [&](ZEBDataSink** out, Working<Filter>* client) {
      return procs<Filters>().NewClientFilter(out, target.get(), client, &work<Filter>,
                                              &close<Filter>, postScriptOf<Filter>(),
                                              &end<Working<Filter>>);
    });
  }

  // The same, for a filter that takes image and compression parameters.
  template <class Filter>
  requires requires(Filter& filter) {
    filter.imageParameters(0U, 0U, 0U);
    filter.compressionParameters(0.0F);
  }
  [[nodiscard]] static Sink jpegFilter(const Sink& target, Filter filter) {
    return working(std::move(filter), [&](ZEBDataSink** out, Working<Filter>* client) {
      return procs<Filters>().NewFilterJPEG(
          out, target.get(), client, &work<Filter>, &close<Filter>, postScriptOf<Filter>(),
          &end<Working<Filter>>, &setImageParameters<Filter>, &setCompressionParameters<Filter>);
    });
  }

  [[nodiscard]] Sink share() const {
    Sink shared;
    *shared.out() = Base::share().handOver();
    return shared;
  }

  // Writes all of the bytes.
  void write(std::span<const std::byte> bytes) const {
    check(procs<Filters>().Write(get(), bytes.data(), bytes.size()));
  }

  // Closes this filter and the filters after it, in the order of the chain.
  void close() const { procs<Filters>().Close(get()); }

  // Puts a sink, or another chain, at the end of this filter's chain.
  void append(const Sink& sink) const { check(procs<Filters>().SetDataSink(get(), sink.get())); }

  // Whether it passes on what it gets.
  [[nodiscard]] bool isFilter() const { return procs<Filters>().IsFilter(get()) != 0; }

  // What the chain writes into next, with a reference of its own; none at the end of the chain.
  [[nodiscard]] Sink target() const { return Sink(procs<Filters>().PeekTarget(get())); }

  // The name of the filter's PostScript counterpart, the filter's own text; null when it has none.
  [[nodiscard]] const char* postScriptFilter() const {
    return procs<Filters>().GetPostScriptFilter(get());
  }

  // Told to a filter that jpegFilter has made; any other ignores them.
  void setImageParameters(uint32_t first, uint32_t second, uint32_t third) const {
    procs<Filters>().SetImageParameters(get(), first, second, third);
  }
  // The same with the compression parameter.
  void setCompressionParameters(float value) const {
    procs<Filters>().SetCompressionParameters(get(), value);
  }

 private:
  template <class Filter>
  struct Working {
    Filter filter;
    ZEBDataSink* self = nullptr;
  };

  // A new member belongs to nobody until its first reference.
  explicit Sink(ZEBDataSink* fresh) { *out() = Base::share(fresh).handOver(); }

  // A filter whose work the object does; `make(out, client)` makes it and consumes the client.
  template <class Filter, class Make>
  static Sink working(Filter filter, Make make) {
    auto kept = std::make_unique<Working<Filter>>(Working<Filter>{std::move(filter)});
    Working<Filter>* client = kept.get();
    ZEBDataSink* made = nullptr;
    check(make(&made, kept.release()));
    client->self = made;
    return Sink(made);
  }

  template <class Filter>
  static constexpr ZEBFilterClientPostScript postScriptOf() {
    if constexpr (requires(Filter & filter) { filter.postScriptFilter(); }) {
      return [](void* working) noexcept -> const char* {
        return static_cast<Working<Filter>*>(working)->filter.postScriptFilter();
      };
    } else {
      return nullptr;
    }
  }

  template <class Filter>
  static void setImageParameters(void* working, uint32_t first, uint32_t second,
                                 uint32_t third) noexcept {
    static_cast<Working<Filter>*>(working)->filter.imageParameters(first, second, third);
  }

  template <class Filter>
  static void setCompressionParameters(void* working, float value) noexcept {
    static_cast<Working<Filter>*>(working)->filter.compressionParameters(value);
  }

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

namespace detail {

struct ChainEnding {
  using Handle = ZEBChainState;
  // It fails for null only.
  static void release(Handle* state) noexcept {
    if (const auto* filters = tryProcs<Filters>()) Error(filters->ResetChainState(state)).reset();
  }
};

}  // namespace detail

// Where a chain of filters ends. When this object goes, or is reset, the chain ends there again,
// whatever was appended meanwhile. It holds references to the chain's last filter and to what
// follows it.
class ChainEnd : public SoleOwner<detail::ChainEnding> {
 public:
  // Remembers the end of the filter's chain. Throws Failure.
  explicit ChainEnd(const Sink& filter) {
    check(procs<Filters>().GetChainState(out(), filter.get()));
  }
};

}  // namespace zeb::sdk

#endif
