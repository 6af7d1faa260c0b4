// Streams over a buffer of fixed size, 16 MiB, that is written and read in steps of one size from
// its beginning. A time is that of one step.
#include "rows.h"
#include "stream_host.h"

#ifdef BENCH_HAS_SDL
#include <SDL_rwops.h>
#endif

namespace zeb::bench {

namespace {

constexpr size_t kSize = 16 << 20;

class OurBufferStream : public OurStream {
 public:
  explicit OurBufferStream(const StreamHost& host)
      : OurStream(host.procs(), host.newBufferStream(kSize)) {}
};

#ifdef BENCH_HAS_SDL
class SdlStream {
 public:
  explicit SdlStream(const StreamHost&)
      : bytes_(kSize), stream_(SDL_RWFromMem(bytes_.data(), static_cast<int>(kSize))) {}
  ~SdlStream() { SDL_RWclose(stream_); }
  SdlStream(const SdlStream&) = delete;
  SdlStream& operator=(const SdlStream&) = delete;

  void write(const char* bytes, size_t count) {
    benchmark::DoNotOptimize(SDL_RWwrite(stream_, bytes, 1, count));
  }
  size_t read(char* bytes, size_t count) { return SDL_RWread(stream_, bytes, 1, count); }
  void seek(uint64_t position) { SDL_RWseek(stream_, static_cast<Sint64>(position), RW_SEEK_SET); }

 private:
  std::vector<char> bytes_;
  SDL_RWops* stream_;
};
#endif

using SharedHost = Shared<StreamHost>;

enum class Direction { write, read };

// Every stream is written once before, so that all its pages are there.
template <class Stream>
Side side(const char* name, const SharedHost& host, Direction direction, size_t step) {
  return measure(name, [=](size_t) {
    auto stream = std::make_unique<Stream>(host.get());
    writeAll(*stream, kSize, step);
    checkHolds(*stream, kSize, step, name);
    return [stream = std::move(stream), target = std::make_unique<StreamTarget>(),
            isWrite = direction == Direction::write, step = opaque(step)] {
      stream->seek(0);
      if (isWrite) {
        writeAll(*stream, kSize, step);
      } else {
        readAll(*stream, *target, kSize, step);
      }
    };
  });
}

Row row(const SharedHost& host, Direction direction, size_t step) {
  Row row{.area = "buffer streams",
          .name = (direction == Direction::write ? "write 16 MiB by " : "read 16 MiB by ") +
                  stepName(step),
          .operations = static_cast<int>(kSize / step),
          .goal = Goal{step < 256 ? 1.5 : 1.0}};
  row.ours = side<OurBufferStream>("ours", host, direction, step);
#ifdef BENCH_HAS_SDL
  row.peers.push_back(side<SdlStream>("SDL_RWFromMem", host, direction, step));
#endif
  return row;
}

}  // namespace

void addBufferStreamRows(Rows& rows) {
  const SharedHost host([] { return std::make_unique<StreamHost>(); });
  for (const Direction direction : {Direction::write, Direction::read})
    for (const size_t step : {size_t{16}, size_t{256}, size_t{4096}, kLargestStep})
      rows.push_back(row(host, direction, step));
}

}  // namespace zeb::bench
