// Streams whose bytes are a client's: one operation that arrives at the client's procedure. The
// peer is a call of the same procedure through a pointer; what ours takes more is the price of a
// stream.
#include "rows.h"
#include "stream_host.h"

namespace zeb::bench {

namespace {

constexpr size_t kStep = 64;
constexpr double kMostNanosecondsMore = 12;

// A client that only counts.
struct Client {
  uint64_t read = 0;
  uint64_t written = 0;
  uint64_t position = 0;
};

ZEBErrorObject* readBytes(void* context, uint64_t* bytesRead, void*, uint64_t count) {
  static_cast<Client*>(context)->read += count;
  *bytesRead = count;
  return nullptr;
}

ZEBErrorObject* writeBytes(void* context, const void*, uint64_t count) {
  static_cast<Client*>(context)->written += count;
  return nullptr;
}

ZEBErrorObject* seekTo(void* context, int64_t offset, uint32_t) {
  static_cast<Client*>(context)->position = static_cast<uint64_t>(offset);
  return nullptr;
}

class ClientStream {
 public:
  ClientStream() {
    check(!host_.procs().factory.NewClientPositionableStream(&stream_, &client_, readBytes,
                                                             writeBytes, nullptr, nullptr, nullptr,
                                                             nullptr, seekTo, nullptr) &&
              stream_,
          "a client stream cannot be made");
    read(5);
    write(7);
    seek(9);
    check(client_.read == 5 && client_.written == 7 && client_.position == 9,
          "a client stream does not reach its client");
  }
  ~ClientStream() { host_.procs().containers.Release(stream_); }
  ClientStream(const ClientStream&) = delete;
  ClientStream& operator=(const ClientStream&) = delete;

  void read(size_t count) {
    uint64_t got = 0;
    benchmark::DoNotOptimize(host_.procs().simple.Read(stream_, &got, target_.data(), count));
    benchmark::DoNotOptimize(got);
  }
  void write(size_t count) {
    benchmark::DoNotOptimize(host_.procs().simple.Write(stream_, streamSource().data(), count));
  }
  void seek(size_t position) {
    benchmark::DoNotOptimize(
        host_.procs().positionable.Seek(stream_, static_cast<int64_t>(position), 0));
  }

 private:
  StreamHost host_;
  Client client_;
  StreamTarget target_;
  ZEBContainer* stream_ = nullptr;
};

// The same client without a stream.
class DirectClient {
 public:
  void read(size_t count) {
    uint64_t got = 0;
    benchmark::DoNotOptimize(read_(&client_, &got, target_.data(), count));
    benchmark::DoNotOptimize(got);
  }
  void write(size_t count) {
    benchmark::DoNotOptimize(write_(&client_, streamSource().data(), count));
  }
  void seek(size_t position) {
    benchmark::DoNotOptimize(seek_(&client_, static_cast<int64_t>(position), 0));
  }

 private:
  decltype(&readBytes) read_ = opaque(readBytes);
  decltype(&writeBytes) write_ = opaque(writeBytes);
  decltype(&seekTo) seek_ = opaque(seekTo);
  Client client_;
  StreamTarget target_;
};

using SharedStream = Shared<ClientStream>;

// `operate` does one operation with either of them.
template <class Operate>
Row row(const SharedStream& stream, const char* name, Operate operate) {
  Row row{.area = "client streams",
          .name = name,
          .goal = Goal{.limit = kMostNanosecondsMore, .kind = Goal::Kind::difference}};
  row.prepare = [=] { stream.get(); };
  row.ours = measure("ours", [=](size_t) { return [=, &ours = stream.get()] { operate(ours); }; });
  row.peers.push_back(measure("call through a function pointer", [=](size_t) {
    return [operate, client = std::make_unique<DirectClient>()] { operate(*client); };
  }));
  return row;
}

}  // namespace

void addClientStreamRows(Rows& rows) {
  const SharedStream stream([] { return std::make_unique<ClientStream>(); });
  rows.push_back(row(stream, "read", [](auto& client) { client.read(kStep); }));
  rows.push_back(row(stream, "write", [](auto& client) { client.write(kStep); }));
  rows.push_back(row(stream, "seek", [](auto& client) { client.seek(kStep); }));
}

}  // namespace zeb::bench
