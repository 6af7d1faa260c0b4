// Streams over a file of 64 MiB that the system holds in memory.
//
// read, write      the file is read, or overwritten and flushed, in steps of one size. A time is
// that
//                  of one step with its share of a flush.
// open, read 64 B  it is opened, its first 64 bytes are read, it is closed
// seek + read      64 bytes are read at a random position
//
// The limit is against stdio as it opens a file by itself: ours has the same buffer. The others
// have one as large, except where a file is opened only for a moment: then each has its own.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "rows.h"
#include "stream_host.h"

#ifdef BENCH_HAS_GIO
#include <gio/gio.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* kArea = "file streams";
constexpr const char* kStdio = "stdio";
constexpr size_t kSize = 64 << 20;
constexpr size_t kFewBytes = 64;
constexpr size_t kBufferSize = 4096;  // stdio's, on the usual file systems

// A file for all rows, which goes with the last.
class File {
 public:
  File()
      : path_(std::filesystem::temp_directory_path() / ("zeb_bench_" + std::to_string(getpid()))) {
    std::ofstream file(path_, std::ios::binary);
    for (size_t at = 0; at < kSize; at += kLargestStep)
      file.write(streamSource().data(), kLargestStep);
    file.close();
    check(file.good(), "a file of 64 MiB cannot be written to " + path_);
  }
  ~File() { std::filesystem::remove(path_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

struct Scene {
  File file;
  StreamHost host;
};

using SharedScene = Shared<Scene>;

// --- streams over the file, open for reading and writing --------------------------------------

class OurFileStream : public OurStream {
 public:
  static constexpr const char* name = "ours";
  explicit OurFileStream(const Scene& scene)
      : OurStream(scene.host.procs(), scene.host.newFileStream(scene.file.path(), "rb+")) {}
};

class StdioStream {
 public:
  static constexpr const char* name = kStdio;
  explicit StdioStream(const Scene& scene) : file_(std::fopen(scene.file.path().c_str(), "rb+")) {
    check(file_, "stdio does not open the file");
  }
  ~StdioStream() { std::fclose(file_); }
  StdioStream(const StdioStream&) = delete;
  StdioStream& operator=(const StdioStream&) = delete;

  void write(const char* bytes, size_t count) {
    benchmark::DoNotOptimize(std::fwrite(bytes, 1, count, file_));
  }
  size_t read(char* bytes, size_t count) { return std::fread(bytes, 1, count, file_); }
  void seek(uint64_t position) { std::fseek(file_, static_cast<long>(position), SEEK_SET); }
  void finish() { std::fflush(file_); }

 private:
  std::FILE* file_;
};

class FstreamStream {
 public:
  static constexpr const char* name = "std::fstream";
  explicit FstreamStream(const Scene& scene) : buffer_(kBufferSize) {
    file_.rdbuf()->pubsetbuf(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    file_.open(scene.file.path(), std::ios::in | std::ios::out | std::ios::binary);
    check(file_.good(), "std::fstream does not open the file");
  }

  void write(const char* bytes, size_t count) {
    file_.write(bytes, static_cast<std::streamsize>(count));
  }
  size_t read(char* bytes, size_t count) {
    file_.read(bytes, static_cast<std::streamsize>(count));
    const auto got = static_cast<size_t>(file_.gcount());
    if (got < count) file_.clear();
    return got;
  }
  void seek(uint64_t position) { file_.seekg(static_cast<std::streamoff>(position)); }
  void finish() { file_.flush(); }

 private:
  std::vector<char> buffer_;
  std::fstream file_;
};

#ifdef BENCH_HAS_GIO
// GIO has one object for reading and another one for writing; each is made when it is needed.
class GioStream {
 public:
  static constexpr const char* name = "GIO, buffered";
  explicit GioStream(const Scene& scene) {
    GFile* file = g_file_new_for_path(scene.file.path().c_str());
    file_ = g_file_open_readwrite(file, nullptr, nullptr);
    g_object_unref(file);
    check(file_, "GIO does not open the file");
    auto* stream = reinterpret_cast<GIOStream*>(file_);
    input_ = g_buffered_input_stream_new_sized(g_io_stream_get_input_stream(stream), kBufferSize);
    output_ =
        g_buffered_output_stream_new_sized(g_io_stream_get_output_stream(stream), kBufferSize);
  }
  ~GioStream() {
    g_object_unref(output_);
    g_object_unref(input_);
    g_object_unref(file_);
  }
  GioStream(const GioStream&) = delete;
  GioStream& operator=(const GioStream&) = delete;

  void write(const char* bytes, size_t count) {
    gsize written = 0;
    benchmark::DoNotOptimize(
        g_output_stream_write_all(output_, bytes, count, &written, nullptr, nullptr));
  }
  size_t read(char* bytes, size_t count) {
    gsize got = 0;
    benchmark::DoNotOptimize(g_input_stream_read_all(input_, bytes, count, &got, nullptr, nullptr));
    return got;
  }
  void seek(uint64_t position) {
    g_seekable_seek(reinterpret_cast<GSeekable*>(input_), static_cast<goffset>(position),
                    G_SEEK_SET, nullptr, nullptr);
  }
  void finish() { g_output_stream_flush(output_, nullptr, nullptr); }

 private:
  GFileIOStream* file_;
  GInputStream* input_;
  GOutputStream* output_;
};
#endif

// Calls `add` with each peer's type.
template <class Add>
void forEachPeer(Add add) {
  add.template operator()<StdioStream>();
  add.template operator()<FstreamStream>();
#ifdef BENCH_HAS_GIO
  add.template operator()<GioStream>();
#endif
}

// --- read, write ------------------------------------------------------------------------------

template <class Stream>
Side readSide(const SharedScene& scene, size_t step) {
  return measure(Stream::name, [=](size_t) {
    auto stream = std::make_unique<Stream>(scene.get());
    checkHolds(*stream, kSize, kLargestStep, Stream::name);
    return [stream = std::move(stream), target = std::make_unique<StreamTarget>(),
            step = opaque(step)] {
      stream->seek(0);
      readAll(*stream, *target, kSize, step);
    };
  });
}

// Writes what the file holds: what is read stays the same whatever rows ran before.
template <class Stream>
void writeFile(Stream& stream, size_t step) {
  stream.seek(0);
  for (size_t at = 0; at < kSize; at += step)
    stream.write(streamSource().data() + at % kLargestStep, step);
  stream.finish();
}

template <class Stream>
Side writeSide(const SharedScene& scene, size_t step) {
  return measure(Stream::name, [=](size_t) {
    return [stream = std::make_unique<Stream>(scene.get()), step = opaque(step)] {
      writeFile(*stream, step);
    };
  });
}

// The file is emptied of its bytes and must have them again after a side wrote it.
template <class Stream>
void checkWrites(const Scene& scene) {
  const std::string& path = scene.file.path();
  std::filesystem::resize_file(path, 0);
  std::filesystem::resize_file(path, kSize);
  {
    Stream stream(scene);
    writeFile(stream, 256);
  }
  StdioStream reader(scene);
  checkHolds(reader, kSize, kLargestStep, Stream::name);
}

Row readRow(const SharedScene& scene, size_t step) {
  Row row{.area = kArea,
          .name = "read 64 MiB by " + stepName(step),
          .operations = static_cast<int>(kSize / step),
          .goal = Goal{1.1, {kStdio}}};
  row.ours = readSide<OurFileStream>(scene, step);
  forEachPeer([&]<class Peer>() { row.peers.push_back(readSide<Peer>(scene, step)); });
  return row;
}

Row writeRow(const SharedScene& scene, size_t step) {
  Row row{.area = kArea,
          .name = "write 64 MiB by " + stepName(step),
          .operations = static_cast<int>(kSize / step),
          .goal = Goal{1.1, {kStdio}}};
  row.prepare = [scene] {
    checkWrites<OurFileStream>(scene.get());
    forEachPeer([&]<class Peer>() { checkWrites<Peer>(scene.get()); });
  };
  row.ours = writeSide<OurFileStream>(scene, step);
  forEachPeer([&]<class Peer>() { row.peers.push_back(writeSide<Peer>(scene, step)); });
  return row;
}

// --- seek + read ------------------------------------------------------------------------------

template <class Stream>
Side seekSide(const SharedScene& scene) {
  return measure(Stream::name, [=](size_t) {
    auto positions = std::make_shared<std::vector<uint64_t>>(randomPositions(kSize, kFewBytes));
    auto stream = std::make_unique<Stream>(scene.get());
    StreamTarget target;
    for (const uint64_t position : *positions) {
      stream->seek(position);
      check(stream->read(target.data(), kFewBytes) == kFewBytes &&
                target[0] == streamSource()[position % kLargestStep],
            std::string(Stream::name) + " reads from another position");
    }
    return [stream = std::move(stream), target = std::make_unique<StreamTarget>(), positions,
            walk = Cycle(*positions)]() mutable {
      stream->seek(walk.next());
      benchmark::DoNotOptimize(stream->read(target->data(), kFewBytes));
      benchmark::ClobberMemory();
    };
  });
}

Row seekRow(const SharedScene& scene) {
  Row row{
      .area = kArea, .name = "seek at random in 64 MiB, read 64 B", .goal = Goal{1.1, {kStdio}}};
  row.ours = seekSide<OurFileStream>(scene);
  forEachPeer([&]<class Peer>() { row.peers.push_back(seekSide<Peer>(scene)); });
  return row;
}

// --- open, read, close ------------------------------------------------------------------------

using FewBytes = std::array<char, kFewBytes>;

size_t openOurs(const Scene& scene, FewBytes& bytes) {
  OurStream stream(scene.host.procs(), scene.host.newFileStream(scene.file.path(), "rb"));
  return stream.read(bytes.data(), bytes.size());
}

size_t openStdio(const Scene& scene, FewBytes& bytes) {
  std::FILE* file = std::fopen(scene.file.path().c_str(), "rb");
  const size_t got = std::fread(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
  return got;
}

size_t openFstream(const Scene& scene, FewBytes& bytes) {
  std::ifstream file(scene.file.path(), std::ios::binary);
  file.read(bytes.data(), kFewBytes);
  return static_cast<size_t>(file.gcount());
}

#ifdef BENCH_HAS_GIO
size_t openGio(const Scene& scene, FewBytes& bytes) {
  GFile* file = g_file_new_for_path(scene.file.path().c_str());
  GFileInputStream* stream = g_file_read(file, nullptr, nullptr);
  const gssize got = g_input_stream_read(reinterpret_cast<GInputStream*>(stream), bytes.data(),
                                         bytes.size(), nullptr, nullptr);
  g_object_unref(stream);
  g_object_unref(file);
  return static_cast<size_t>(got);
}
#endif

using Open = size_t (*)(const Scene& scene, FewBytes& bytes);

Side openSide(const SharedScene& scene, const char* name, Open open) {
  return measure(name, [=](size_t) {
    auto bytes = std::make_unique<FewBytes>();
    check(open(scene.get(), *bytes) == kFewBytes &&
              std::equal(bytes->begin(), bytes->end(), streamSource().begin()),
          std::string(name) + " does not read what the file begins with");
    return [&scene = scene.get(), open = opaque(open), bytes = std::move(bytes)] {
      benchmark::DoNotOptimize(open(scene, *bytes));
    };
  });
}

Row openRow(const SharedScene& scene) {
  Row row{.area = kArea, .name = "open, read 64 B, close", .goal = Goal{1.1, {kStdio}}};
  row.ours = openSide(scene, "ours", openOurs);
  row.peers = {openSide(scene, kStdio, openStdio), openSide(scene, "std::fstream", openFstream)};
#ifdef BENCH_HAS_GIO
  row.peers.push_back(openSide(scene, "GIO", openGio));
#endif
  return row;
}

}  // namespace

void addFileStreamRows(Rows& rows) {
  const SharedScene scene([] { return std::make_unique<Scene>(); });
  constexpr size_t steps[] = {256, 4096, kLargestStep};
  for (const size_t step : steps) rows.push_back(readRow(scene, step));
  for (const size_t step : steps) rows.push_back(writeRow(scene, step));
  rows.push_back(openRow(scene));
  rows.push_back(seekRow(scene));
}

}  // namespace zeb::bench
