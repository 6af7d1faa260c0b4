// Streams over any medium, and as std::iostream.
#ifndef ZEB_SDK_STREAM_HPP
#define ZEB_SDK_STREAM_HPP

#include <array>
#include <cstddef>
#include <ios>
#include <istream>
#include <span>
#include <streambuf>
#include <string>

#include "zeb/positionable_stream.h"
#include "zeb/rewindable_stream.h"
#include "zeb/sdk/shared_buffer.hpp"
#include "zeb/simple_stream.h"
#include "zeb/stream_factory.h"

namespace zeb::sdk {

// Where an offset counts from.
enum class Origin : uint32_t {
  beginning = ZEB_SEEK_FROM_BEGINNING,
  position = ZEB_SEEK_FROM_POSITION,
  end = ZEB_SEEK_FROM_END,
};

// A stream of any tier; an operation above the stream's tier fails with "Missing ZEB Method". One
// stream object is one thread's at a time.
class Stream : public Owner<detail::Counted<ZEBContainer, Containers>> {
 public:
  using Base = Owner<detail::Counted<ZEBContainer, Containers>>;

  Stream() noexcept = default;
  // Takes a reference over.
  explicit Stream(ZEBContainer* owned) noexcept : Base(adopt(owned)) {}

  [[nodiscard]] static Result<Stream> tryMemory() {
    return made(
        [](ZEBContainer** out) { return procs<StreamFactory>().NewPositionableMemoryStream(out); });
  }
  [[nodiscard]] static Result<Stream> tryFile(const char* path, const char* mode) {
    return made([&](ZEBContainer** out) {
      return procs<StreamFactory>().NewPositionableFileStream(out, path, mode);
    });
  }
  [[nodiscard]] static Result<Stream> tryFile(const std::string& path, const char* mode) {
    return tryFile(path.c_str(), mode);
  }
  [[nodiscard]] static Result<Stream> tryBuffer(const SharedBuffer& buffer) {
    return made([&](ZEBContainer** out) {
      return procs<StreamFactory>().NewPositionableBufferStream(out, buffer.get());
    });
  }
  // Grows as it is written. The forms without try throw Failure; both throw MissingInterface where
  // the library has no streams.
  [[nodiscard]] static Stream memory() { return tryMemory().value(); }
  // `mode` as for fopen.
  [[nodiscard]] static Stream file(const char* path, const char* mode) {
    return tryFile(path, mode).value();
  }
  [[nodiscard]] static Stream file(const std::string& path, const char* mode) {
    return file(path.c_str(), mode);
  }
  // Of fixed size, over the buffer's own bytes.
  [[nodiscard]] static Stream buffer(const SharedBuffer& buffer) {
    return tryBuffer(buffer).value();
  }

  [[nodiscard]] Stream share() const { return Stream(Base::share().handOver()); }

  // The number of bytes that were read; less than asked for only at the end.
  [[nodiscard]] Result<uint64_t> tryRead(std::span<std::byte> bytes) const {
    uint64_t count = 0;
    Error error(procs<SimpleStreams>().Read(get(), &count, bytes.data(), bytes.size()));
    if (error) return error;
    return count;
  }
  [[nodiscard]] uint64_t read(std::span<std::byte> bytes) const {
    uint64_t count = 0;
    check(procs<SimpleStreams>().Read(get(), &count, bytes.data(), bytes.size()));
    return count;
  }

  // All of the bytes, or an error.
  [[nodiscard]] Result<void> tryWrite(std::span<const std::byte> bytes) const {
    return Error(procs<SimpleStreams>().Write(get(), bytes.data(), bytes.size()));
  }
  void write(std::span<const std::byte> bytes) const {
    check(procs<SimpleStreams>().Write(get(), bytes.data(), bytes.size()));
  }

  // Goes back to the beginning.
  [[nodiscard]] Result<void> tryRewind() const {
    return Error(procs<RewindableStreams>().Rewind(get()));
  }
  void rewind() const { check(procs<RewindableStreams>().Rewind(get())); }

  // Moves to `offset` bytes from the origin. How far past the end it may go depends on the bytes
  // (positionable_stream.h).
  [[nodiscard]] Result<void> trySeek(int64_t offset, Origin origin = Origin::beginning) const {
    return Error(procs<PositionableStreams>().Seek(get(), offset, static_cast<uint32_t>(origin)));
  }
  void seek(int64_t offset, Origin origin = Origin::beginning) const {
    check(procs<PositionableStreams>().Seek(get(), offset, static_cast<uint32_t>(origin)));
  }

  // The position in bytes from the beginning.
  [[nodiscard]] Result<uint64_t> tryPosition() const {
    uint64_t position = 0;
    Error error(procs<PositionableStreams>().Mark(get(), &position));
    if (error) return error;
    return position;
  }
  [[nodiscard]] uint64_t position() const { return tryPosition().value(); }

  // Brings written bytes of a file to the system; nothing for other streams.
  [[nodiscard]] Result<void> tryFlush() const {
    return Error(procs<PositionableStreams>().Flush(get()));
  }
  void flush() const { check(procs<PositionableStreams>().Flush(get())); }

  // Another cursor over the same bytes, at their beginning. Memory and files can no longer be
  // written afterwards, through either.
  [[nodiscard]] Result<Stream> tryIndependent() const {
    return made([this](ZEBContainer** out) {
      return procs<PositionableStreams>().CreateIndependentlyPositionableStream(get(), out);
    });
  }
  [[nodiscard]] Stream independent() const { return tryIndependent().value(); }

 private:
  template <class Make>
  static Result<Stream> made(Make make) {
    ZEBContainer* stream = nullptr;
    Error error(make(&stream));
    if (error) return error;
    return Stream(stream);
  }
};

// A stream as a std::streambuf. It owns the stream, reads ahead, and keeps what is written until it
// is full, synchronised, sought in or destroyed. Where the medium has no position, reading and
// writing have nothing to do with each other.
//
// Iostreams see failures as failed operations, and lastError() tells what it was. A read that fails
// throws Failure, of which a std::istream makes its badbit: it is not the end. What cannot be
// written when the buffer is destroyed is lost, so flush before.
class StreamBuffer : public std::streambuf {
 public:
  // Takes the stream over, at its position.
  explicit StreamBuffer(Stream stream) noexcept : stream_(std::move(stream)) {}
  StreamBuffer(const StreamBuffer&) = delete;
  StreamBuffer& operator=(const StreamBuffer&) = delete;
  ~StreamBuffer() override {
    try {
      (void)writeOut();
    } catch (...) {  // the library has stopped
    }
  }

  // The stream; what was read ahead or not yet written out, it does not know of.
  [[nodiscard]] const Stream& stream() const noexcept { return stream_; }
  // Why the last operation that failed did so; none when all went well.
  [[nodiscard]] const Error& lastError() const noexcept { return lastError_; }

 protected:
  int_type underflow() override {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    if (!writeOut()) return traits_type::eof();
    Result<uint64_t> count = stream_.tryRead(std::as_writable_bytes(std::span(input_)));
    if (!count) {
      (void)fail(count);
      throw Failure(count.error().share());
    }
    setg(input_.data(), input_.data(), input_.data() + *count);
    return *count != 0 ? traits_type::to_int_type(*gptr()) : traits_type::eof();
  }

  int_type overflow(int_type character) override {
    if (!forgetReadAhead() || !writeOut()) return traits_type::eof();
    setp(output_.data(), output_.data() + output_.size());
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(0);
    *pptr() = traits_type::to_char_type(character);
    pbump(1);
    return character;
  }

  int sync() override { return forgetReadAhead() && writeOut() ? 0 : -1; }

  pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                   std::ios_base::openmode /*which*/) override {
    if (offset == 0 && direction == std::ios_base::cur) return tell();
    if (sync() != 0) return kFailed;
    const Origin origin = direction == std::ios_base::beg   ? Origin::beginning
                          : direction == std::ios_base::cur ? Origin::position
                                                            : Origin::end;
    Result<void> moved = stream_.trySeek(offset, origin);
    if (!moved) {
      (void)fail(moved);
      return kFailed;
    }
    return tell();
  }

  pos_type seekpos(pos_type position, std::ios_base::openmode which) override {
    return seekoff(off_type(position), std::ios_base::beg, which);
  }

 private:
  template <class T>
  int_type fail(const Result<T>& result) {
    lastError_ = result.error().share();
    return traits_type::eof();
  }

  // Where the reader or the writer stands, with what is read ahead or not yet written out.
  pos_type tell() {
    Result<uint64_t> position = stream_.tryPosition();
    if (!position) {
      (void)fail(position);
      return kFailed;
    }
    return static_cast<off_type>(*position) - (egptr() - gptr()) + (pptr() - pbase());
  }

  // What was read ahead and not used goes back, so that the stream stands where the reader does.
  // Where the medium has no position it stays, to be read.
  bool forgetReadAhead() {
    const off_type unused = egptr() - gptr();
    if (unused != 0) {
      Result<void> moved = stream_.trySeek(-unused, Origin::position);
      if (!moved) {
        if (!stream_.tryPosition()) return true;
        (void)fail(moved);
        return false;
      }
    }
    setg(nullptr, nullptr, nullptr);
    return true;
  }

  bool writeOut() {
    const std::span<const char> waiting(pbase(), pptr());
    setp(nullptr, nullptr);
    if (waiting.empty()) return true;
    Result<void> written = stream_.tryWrite(std::as_bytes(waiting));
    if (!written) (void)fail(written);
    return written.ok();
  }

  static constexpr off_type kFailed = -1;
  static constexpr std::size_t kBufferSize = 4096;
  Stream stream_;
  Error lastError_;
  std::array<char, kBufferSize> input_{};
  std::array<char, kBufferSize> output_{};
};

// A stream of the library as a std::iostream.
class IOStream : private StreamBuffer, public std::iostream {
 public:
  // Takes the stream over, at its position.
  explicit IOStream(Stream stream)
      : StreamBuffer(std::move(stream)), std::iostream(static_cast<StreamBuffer*>(this)) {}

  using StreamBuffer::lastError;
  using StreamBuffer::stream;
};

}  // namespace zeb::sdk

#endif
