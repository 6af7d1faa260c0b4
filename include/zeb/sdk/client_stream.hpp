// Streams over a medium of one's own: an object with read and write, and what else it can.
//
//   struct Medium {
//     uint64_t read(std::span<std::byte> bytes);        // fewer than asked for only at the end
//     void write(std::span<const std::byte> bytes);     // all of them
//     void rewind();                                    // rewindable
//     std::unique_ptr<Medium> independent();            //   and positionable: at the beginning
//     uint64_t position();                              // positionable
//     void seek(int64_t offset, Origin origin);
//   };
//
// The stream gets the highest tier that the medium's operations reach. What they throw becomes the
// error of the operation.
#ifndef ZEB_SDK_CLIENT_STREAM_HPP
#define ZEB_SDK_CLIENT_STREAM_HPP

#include <concepts>
#include <memory>

#include "zeb/sdk/stream.hpp"

namespace zeb::sdk {

template <class T>
concept SimpleMedium = requires(T& medium, std::span<std::byte> room,
                                std::span<const std::byte> bytes) {
  { medium.read(room) } -> std::convertible_to<uint64_t>;
  medium.write(bytes);
};

template <class T>
concept RewindableMedium = SimpleMedium<T> && requires(T& medium) {
  medium.rewind();
  { medium.independent() } -> std::convertible_to<std::unique_ptr<T>>;
};

template <class T>
concept PositionableMedium = RewindableMedium<T> &&
    requires(T& medium, int64_t offset, Origin origin) {
  { medium.position() } -> std::convertible_to<uint64_t>;
  medium.seek(offset, origin);
};

namespace detail {

template <class T>
struct MediumProcs {
  static T& of(void* context) noexcept { return *static_cast<T*>(context); }

  template <class Work>
  static ZEBErrorObject* guard(Work work) noexcept {
    try {
      work();
      return nullptr;
    } catch (...) {
      return currentExceptionAsError();
    }
  }

  static ZEBErrorObject* read(void* context, uint64_t* count, void* buffer, uint64_t size) {
    return guard([&] {
      const uint64_t answered = of(context).read(std::span(static_cast<std::byte*>(buffer), size));
      if (answered > size) throw std::length_error("a medium has read more than it was asked for");
      *count = answered;
    });
  }
  static ZEBErrorObject* write(void* context, const void* buffer, uint64_t size) {
    return guard(
        [&] { of(context).write(std::span(static_cast<const std::byte*>(buffer), size)); });
  }
  static ZEBErrorObject* rewind(void* context) {
    return guard([&] { of(context).rewind(); });
  }
  static ZEBErrorObject* independent(void* context, void** created) {
    return guard([&] {
      std::unique_ptr<T> medium = of(context).independent();
      if (medium == nullptr) throw std::logic_error("a medium has no independent one");
      *created = medium.release();
    });
  }
  static ZEBErrorObject* mark(void* context, uint64_t* position) {
    return guard([&] { *position = of(context).position(); });
  }
  static ZEBErrorObject* seek(void* context, int64_t offset, uint32_t origin) {
    return guard([&] { of(context).seek(offset, static_cast<Origin>(origin)); });
  }
  static void release(void* context) { delete static_cast<T*>(context); }
};

}  // namespace detail

// A stream over the medium, which it owns in every case, a failure included.
template <SimpleMedium T>
[[nodiscard]] Result<Stream> tryStreamOver(std::unique_ptr<T> medium) {
  using Procs = detail::MediumProcs<T>;
  const auto& factory = procs<StreamFactory>();
  ZEBContainer* stream = nullptr;
  ZEBErrorObject* answered = nullptr;
  if constexpr (PositionableMedium<T>) {
    answered = factory.NewClientPositionableStream(
        &stream, medium.release(), &Procs::read, &Procs::write, &Procs::independent, &Procs::rewind,
        &Procs::independent, &Procs::mark, &Procs::seek, &Procs::release);
  } else if constexpr (RewindableMedium<T>) {
    answered =
        factory.NewClientRewindableStream(&stream, medium.release(), &Procs::read, &Procs::write,
                                          &Procs::independent, &Procs::rewind, &Procs::release);
  } else {
    answered = factory.NewClientSimpleStream(&stream, medium.release(), &Procs::read, &Procs::write,
                                             &Procs::release);
  }
  if (answered != nullptr) return Error(answered);
  return Stream(stream);
}

template <SimpleMedium T>
[[nodiscard]] Stream streamOver(std::unique_ptr<T> medium) {
  return tryStreamOver(std::move(medium)).value();
}

}  // namespace zeb::sdk

#endif
