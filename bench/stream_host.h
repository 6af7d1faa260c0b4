// The library started, with the procs of streams, and what the rows about streams share: what is
// written, in which steps, and how answers are checked.
#ifndef ZEB_BENCH_STREAM_HOST_H
#define ZEB_BENCH_STREAM_HOST_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "harness.h"
#include "library.h"

namespace zeb::bench {

constexpr size_t kLargestStep = 64 * 1024;

// What is written, a step from its beginning each time.
const std::array<char, kLargestStep>& streamSource();

// Where bytes are read to.
using StreamTarget = std::array<char, kLargestStep>;

// "256 B", "64 KiB".
std::string stepName(size_t step);

// Positions at random, from which `length` bytes can be read out of `size`.
std::vector<uint64_t> randomPositions(size_t size, size_t length);

struct StreamProcs {
  ZEBStreamFactoryProcs factory;
  ZEBSimpleStreamProcs simple;
  ZEBPositionableStreamProcs positionable;
  ZEBContainerProcs containers;
  ZEBSharedBufferProcs buffers;
};

// One stream is live as long as the host: the pools that streams come from have pages, as they have
// wherever a stream or another component is in use.
class StreamHost {
 public:
  StreamHost();
  ~StreamHost() { procs_.containers.Release(live_); }
  StreamHost(const StreamHost&) = delete;
  StreamHost& operator=(const StreamHost&) = delete;

  const StreamProcs& procs() const { return procs_; }

  // Each ends the process when the library refuses.
  ZEBContainer* newMemoryStream() const;
  ZEBContainer* newBufferStream(size_t size) const;
  ZEBContainer* newFileStream(const std::string& path, const char* mode) const;

 private:
  Session session_;
  StreamProcs procs_;
  ZEBContainer* live_;
};

// A stream of ours as a client uses it. Releases it at its end.
class OurStream {
 public:
  OurStream(const StreamProcs& procs, ZEBContainer* stream) : procs_(procs), stream_(stream) {}
  ~OurStream() { procs_.containers.Release(stream_); }
  OurStream(const OurStream&) = delete;
  OurStream& operator=(const OurStream&) = delete;

  void write(const void* bytes, size_t count) {
    benchmark::DoNotOptimize(procs_.simple.Write(stream_, bytes, count));
  }

  size_t read(void* bytes, size_t count) {
    uint64_t got = 0;
    benchmark::DoNotOptimize(procs_.simple.Read(stream_, &got, bytes, count));
    return got;
  }

  void seek(uint64_t position) {
    benchmark::DoNotOptimize(procs_.positionable.Seek(stream_, static_cast<int64_t>(position), 0));
  }

  void finish() { benchmark::DoNotOptimize(procs_.positionable.Flush(stream_)); }

 private:
  const StreamProcs& procs_;
  ZEBContainer* stream_;
};

// --- what a side does with a stream ------------------------------------------------------------
//
// A stream is anything with some of write(bytes, count), read(bytes, count), seek(position) and
// finish(), which sees to it that what was written has left the stream's own buffers.

// Writes `size` bytes in steps.
template <class Stream>
void writeAll(Stream& stream, size_t size, size_t step) {
  for (size_t at = 0; at < size; at += step) stream.write(streamSource().data(), step);
}

// Reads `size` bytes in steps.
template <class Stream>
void readAll(Stream& stream, StreamTarget& target, size_t size, size_t step) {
  for (size_t at = 0; at < size; at += step)
    benchmark::DoNotOptimize(stream.read(target.data(), step));
}

// Ends the process unless the stream holds what `writeAll` writes, and nothing behind it.
template <class Stream>
void checkHolds(Stream& stream, size_t size, size_t step, const std::string& name) {
  StreamTarget target{};
  stream.seek(0);
  for (size_t at = 0; at < size; at += step) {
    check(stream.read(target.data(), step) == step, name + " does not hold all its bytes");
    check(std::equal(target.begin(), target.begin() + static_cast<ptrdiff_t>(step),
                     streamSource().begin()),
          name + " holds other bytes");
  }
  check(stream.read(target.data(), 1) == 0, name + " does not end");
}

}  // namespace zeb::bench

#endif
