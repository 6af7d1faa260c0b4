// Memory streams.
//
// write, growing  16 MiB are written into a new stream in steps of one size; the stream goes. A
// time
//                 is that of one step, with its share of making and freeing the stream.
// read            16 MiB that were written in the same steps are read back from the beginning.
// seek + read     to a random position of the 16 MiB, 64 bytes are read there.
// short-lived     a stream is made, 64 bytes are written four times, it is rewound, 256 bytes are
//                 read at once, it goes.
//
// Memory that the streams free stays with malloc once the largest of them has been freed, so that
// after the first round no side pays the system for fresh pages alone.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "rows.h"
#include "stream_host.h"

#ifdef BENCH_HAS_ABSL
#include <absl/strings/cord.h>
#endif
#ifdef BENCH_HAS_GIO
#include <gio/gio.h>
#endif
#ifdef BENCH_HAS_LIBCRYPTO
#include <openssl/bio.h>
#endif
#ifdef BENCH_HAS_SDL
#include <SDL_rwops.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* kArea = "memory streams";
constexpr size_t kSize = 16 << 20;
constexpr size_t kSeekRead = 64;
constexpr size_t kShortWrite = 64;
constexpr size_t kShortWrites = 4;

using SharedHost = Shared<StreamHost>;

// The 16 MiB that `step` writes, for peers that read given bytes.
std::string contents(size_t step) {
  std::string bytes;
  bytes.reserve(kSize);
  while (bytes.size() < kSize) bytes.append(streamSource().data(), step);
  return bytes;
}

// --- writers ----------------------------------------------------------------------------------

struct StringStreamWriter {
  static constexpr const char* name = "std::ostringstream";
  void write(const char* bytes, size_t count) {
    stream.write(bytes, static_cast<std::streamsize>(count));
  }
  std::string written() const { return stream.str(); }

  std::ostringstream stream;
};

// open_memstream, written to through stdio.
class MemstreamWriter {
 public:
  static constexpr const char* name = "open_memstream";
  MemstreamWriter() : file_(open_memstream(&bytes_, &size_)) {}
  ~MemstreamWriter() {
    fclose(file_);
    free(bytes_);
  }
  MemstreamWriter(const MemstreamWriter&) = delete;
  MemstreamWriter& operator=(const MemstreamWriter&) = delete;

  void write(const char* bytes, size_t count) {
    benchmark::DoNotOptimize(fwrite(bytes, 1, count, file_));
  }
  std::string written() {
    fflush(file_);
    return {bytes_, size_};
  }

 private:
  char* bytes_ = nullptr;
  size_t size_ = 0;
  FILE* file_;
};

#ifdef BENCH_HAS_ABSL
struct CordWriter {
  static constexpr const char* name = "absl::Cord";
  void write(const char* bytes, size_t count) { cord.Append(absl::string_view(bytes, count)); }
  std::string written() const { return std::string(cord); }

  absl::Cord cord;
};
#endif

#ifdef BENCH_HAS_GIO
class GioWriter {
 public:
  static constexpr const char* name = "GMemoryOutputStream";
  GioWriter() : stream_(g_memory_output_stream_new_resizable()) {}
  ~GioWriter() { g_object_unref(stream_); }
  GioWriter(const GioWriter&) = delete;
  GioWriter& operator=(const GioWriter&) = delete;

  void write(const char* bytes, size_t count) {
    benchmark::DoNotOptimize(g_output_stream_write(stream_, bytes, count, nullptr, nullptr));
  }
  std::string written() const {
    auto* memory = reinterpret_cast<GMemoryOutputStream*>(stream_);
    return {static_cast<char*>(g_memory_output_stream_get_data(memory)),
            g_memory_output_stream_get_data_size(memory)};
  }

 private:
  GOutputStream* stream_;
};
#endif

template <class Writer>
void checkWriter(size_t step) {
  Writer writer;
  writeAll(writer, kSize, step);
  check(writer.written() == contents(step),
        std::string(Writer::name) + " does not hold what was written");
}

template <class Writer>
Side writerSide(size_t step) {
  return measure(Writer::name, [step](size_t) {
    checkWriter<Writer>(step);
    return [step = opaque(step)] {
      Writer writer;
      writeAll(writer, kSize, step);
      benchmark::DoNotOptimize(&writer);
    };
  });
}

Row writeRow(const SharedHost& host, size_t step) {
  Row row{.area = kArea,
          .name = "write 16 MiB, growing, by " + stepName(step),
          .operations = static_cast<int>(kSize / step),
          .goal = Goal{1.0}};
  row.prepare = [host, step] {
    OurStream stream(host.get().procs(), host.get().newMemoryStream());
    writeAll(stream, kSize, step);
    checkHolds(stream, kSize, step, "a memory stream");
  };
  row.ours = measure("ours", [host, step](size_t) {
    return [&host = host.get(), step = opaque(step)] {
      OurStream stream(host.procs(), host.newMemoryStream());
      writeAll(stream, kSize, step);
    };
  });
  row.peers = {writerSide<StringStreamWriter>(step), writerSide<MemstreamWriter>(step)};
#ifdef BENCH_HAS_GIO
  row.peers.push_back(writerSide<GioWriter>(step));
#endif
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(writerSide<CordWriter>(step));
#endif
  return row;
}

// --- readers ----------------------------------------------------------------------------------

class StringStreamReader {
 public:
  static constexpr const char* name = "std::istringstream";
  explicit StringStreamReader(const std::string& bytes) : stream_(bytes) {}

  size_t read(char* bytes, size_t count) {
    stream_.read(bytes, static_cast<std::streamsize>(count));
    return static_cast<size_t>(stream_.gcount());
  }
  void seek(uint64_t position) { stream_.seekg(static_cast<std::streamoff>(position)); }

 private:
  std::istringstream stream_;
};

#ifdef BENCH_HAS_SDL
class SdlReader {
 public:
  static constexpr const char* name = "SDL_RWFromConstMem";
  explicit SdlReader(const std::string& bytes)
      : bytes_(bytes),
        stream_(SDL_RWFromConstMem(bytes_.data(), static_cast<int>(bytes_.size()))) {}
  ~SdlReader() { SDL_RWclose(stream_); }
  SdlReader(const SdlReader&) = delete;
  SdlReader& operator=(const SdlReader&) = delete;

  size_t read(char* bytes, size_t count) { return SDL_RWread(stream_, bytes, 1, count); }
  void seek(uint64_t position) { SDL_RWseek(stream_, static_cast<Sint64>(position), RW_SEEK_SET); }

 private:
  std::string bytes_;
  SDL_RWops* stream_;
};
#endif

#ifdef BENCH_HAS_LIBCRYPTO
class BioReader {
 public:
  static constexpr const char* name = "BIO_new_mem_buf";
  explicit BioReader(const std::string& bytes)
      : bytes_(bytes), bio_(BIO_new_mem_buf(bytes_.data(), static_cast<int>(bytes_.size()))) {}
  ~BioReader() { BIO_free(bio_); }
  BioReader(const BioReader&) = delete;
  BioReader& operator=(const BioReader&) = delete;

  size_t read(char* bytes, size_t count) {
    const int got = BIO_read(bio_, bytes, static_cast<int>(count));
    return got < 0 ? 0 : static_cast<size_t>(got);
  }
  void seek(uint64_t position) {
    benchmark::DoNotOptimize(BIO_ctrl(bio_, BIO_C_FILE_SEEK, static_cast<long>(position), nullptr));
  }

 private:
  std::string bytes_;
  BIO* bio_;
};
#endif

// A stream of ours that holds 16 MiB, written in steps.
std::unique_ptr<OurStream> filledStream(const StreamHost& host, size_t step) {
  auto stream = std::make_unique<OurStream>(host.procs(), host.newMemoryStream());
  writeAll(*stream, kSize, step);
  checkHolds(*stream, kSize, step, "a memory stream");
  return stream;
}

template <class Reader>
std::unique_ptr<Reader> filledReader(size_t step) {
  auto reader = std::make_unique<Reader>(contents(step));
  StreamTarget target;
  for (size_t at = 0; at < kSize; at += step) {
    check(reader->read(target.data(), step) == step &&
              std::equal(target.begin(), target.begin() + static_cast<ptrdiff_t>(step),
                         streamSource().begin()),
          std::string(Reader::name) + " does not give what it holds");
  }
  return reader;
}

// A side that reads, made of something that makes a filled stream.
template <class MakeStream>
Side readSide(const char* name, size_t step, MakeStream makeStream) {
  return measure(name, [=](size_t) {
    return [stream = makeStream(), target = std::make_unique<StreamTarget>(), step = opaque(step)] {
      stream->seek(0);
      readAll(*stream, *target, kSize, step);
    };
  });
}

template <class MakeStream>
Side seekSide(const char* name, MakeStream makeStream) {
  return measure(name, [=](size_t) {
    auto positions = std::make_shared<std::vector<uint64_t>>(randomPositions(kSize, kSeekRead));
    return [stream = makeStream(), target = std::make_unique<StreamTarget>(), positions,
            walk = Cycle(*positions)]() mutable {
      stream->seek(walk.next());
      benchmark::DoNotOptimize(stream->read(target->data(), kSeekRead));
      benchmark::ClobberMemory();
    };
  });
}

// `addSide` is called with each contender's name and with what makes its filled stream.
template <class AddSide>
void forEachReader(size_t step, AddSide addSide) {
  addSide(StringStreamReader::name, [step] { return filledReader<StringStreamReader>(step); });
#ifdef BENCH_HAS_SDL
  addSide(SdlReader::name, [step] { return filledReader<SdlReader>(step); });
#endif
#ifdef BENCH_HAS_LIBCRYPTO
  addSide(BioReader::name, [step] { return filledReader<BioReader>(step); });
#endif
}

Row readRow(const SharedHost& host, size_t step, double limit) {
  Row row{.area = kArea,
          .name = "read 16 MiB by " + stepName(step),
          .operations = static_cast<int>(kSize / step),
          .goal = Goal{limit}};
  row.ours = readSide("ours", step, [=] { return filledStream(host.get(), step); });
  forEachReader(step, [&](const char* name, auto makeStream) {
    row.peers.push_back(readSide(name, step, makeStream));
  });
  return row;
}

void checkSeek(const StreamHost& host) {
  const auto stream = filledStream(host, kLargestStep);
  const std::string expected = contents(kLargestStep);
  StreamTarget target;
  for (const uint64_t position : randomPositions(kSize, kSeekRead)) {
    stream->seek(position);
    check(stream->read(target.data(), kSeekRead) == kSeekRead &&
              std::memcmp(target.data(), expected.data() + position, kSeekRead) == 0,
          "a memory stream reads from another position");
  }
}

Row seekRow(const SharedHost& host) {
  Row row{.area = kArea, .name = "seek at random in 16 MiB, read 64 B", .goal = Goal{3.0}};
  row.prepare = [host] { checkSeek(host.get()); };
  row.ours = seekSide("ours", [=] { return filledStream(host.get(), kLargestStep); });
  forEachReader(kLargestStep, [&](const char* name, auto makeStream) {
    row.peers.push_back(seekSide(name, makeStream));
  });
  return row;
}

// --- short-lived streams ----------------------------------------------------------------------

constexpr size_t kShortSize = kShortWrite * kShortWrites;
using ShortTarget = std::array<char, kShortSize>;

struct ShortLived {
  const char* name;
  void (*run)(const StreamHost& host, ShortTarget& target);
};

void runOurs(const StreamHost& host, ShortTarget& target) {
  OurStream stream(host.procs(), host.newMemoryStream());
  writeAll(stream, kShortSize, kShortWrite);
  stream.seek(0);
  benchmark::DoNotOptimize(stream.read(target.data(), target.size()));
}

#ifdef BENCH_HAS_GIO
void runGio(const StreamHost&, ShortTarget& target) {
  GOutputStream* writer = g_memory_output_stream_new_resizable();
  for (size_t i = 0; i < kShortWrites; ++i)
    g_output_stream_write(writer, streamSource().data(), kShortWrite, nullptr, nullptr);
  g_output_stream_close(writer, nullptr, nullptr);
  GBytes* bytes =
      g_memory_output_stream_steal_as_bytes(reinterpret_cast<GMemoryOutputStream*>(writer));
  GInputStream* reader = g_memory_input_stream_new_from_bytes(bytes);
  g_input_stream_read(reader, target.data(), target.size(), nullptr, nullptr);
  g_object_unref(reader);
  g_bytes_unref(bytes);
  g_object_unref(writer);
}
#endif

#ifdef BENCH_HAS_ABSL
void runCord(const StreamHost&, ShortTarget& target) {
  CordWriter writer;
  writeAll(writer, kShortSize, kShortWrite);
  char* to = target.data();
  for (const absl::string_view chunk : writer.cord.Chunks()) {
    std::memcpy(to, chunk.data(), chunk.size());
    to += chunk.size();
  }
}
#endif

Side shortSide(const SharedHost& host, const ShortLived& contender) {
  return measure(contender.name, [=](size_t) {
    auto target = std::make_unique<ShortTarget>();
    contender.run(host.get(), *target);
    for (size_t at = 0; at < kShortSize; at += kShortWrite)
      check(std::memcmp(target->data() + at, streamSource().data(), kShortWrite) == 0,
            std::string(contender.name) + " does not give back what was written");
    return [&host = host.get(), run = opaque(contender.run), target = std::move(target)] {
      run(host, *target);
      benchmark::ClobberMemory();
    };
  });
}

// A goal speaks of one peer, and each of the two peers has its own.
[[maybe_unused]] Row shortRow(const SharedHost& host, double limit, const ShortLived& peer) {
  Row row{
      .area = kArea,
      .name = std::string("short-lived: 4 writes of 64 B, 1 read of 256 B; beside ") + peer.name,
      .goal = Goal{limit}};
  row.ours = shortSide(host, {"ours", runOurs});
  row.peers.push_back(shortSide(host, peer));
  return row;
}

}  // namespace

void addStreamRows(Rows& rows) {
  const SharedHost host([] { return std::make_unique<StreamHost>(); });
  constexpr size_t steps[] = {16, 256, 4096, kLargestStep};
  for (const size_t step : steps) rows.push_back(writeRow(host, step));
  for (const size_t step : steps) rows.push_back(readRow(host, step, step < 256 ? 1.5 : 1.0));
  rows.push_back(seekRow(host));
#ifdef BENCH_HAS_GIO
  rows.push_back(shortRow(host, 0.5, {"GIO", runGio}));
#endif
#ifdef BENCH_HAS_ABSL
  rows.push_back(shortRow(host, 2.0, {CordWriter::name, runCord}));
#endif
}

}  // namespace zeb::bench
