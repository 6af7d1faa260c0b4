// Shared buffers: blocks of bytes with references.
//
// make, fill, release  a buffer of the given size is made, bytes are copied into it, it goes
// add + drop           one more reference to a live buffer, and away with it; two threads share one
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>

#include "library.h"
#include "rows.h"

#ifdef BENCH_HAS_GLIB
#include <glib.h>
#endif

namespace zeb::bench {

namespace {

constexpr size_t kLargest = 4096;
constexpr const char* kGBytes = "GBytes";

// What buffers are filled with.
const std::array<std::byte, kLargest>& source() {
  static const auto bytes = [] {
    std::array<std::byte, kLargest> made{};
    for (size_t i = 0; i < made.size(); ++i) made[i] = static_cast<std::byte>(i * 7);
    return made;
  }();
  return bytes;
}

// The bytes have been written and somebody may read them.
void use(const void* bytes) {
  benchmark::DoNotOptimize(bytes);
  benchmark::ClobberMemory();
}

bool isFilled(const void* bytes, size_t size) {
  return bytes && std::memcmp(bytes, source().data(), size) == 0;
}

class OurBuffers {
 public:
  OurBuffers() {
    check(ZEBFetchSharedBufferProcs(session_.getProcAddress(), &procs_),
          "shared-buffer procs are missing");
    live_ = filled(kLargest);
    checkLive();
  }

  ~OurBuffers() { procs_.Release(live_); }

  auto makeFillRelease(size_t size) {
    return [this, size = opaque(size)] {
      ZEBSharedBuffer* buffer = filled(size);
      use(procs_.GetBuffer(buffer));
      procs_.Release(buffer);
    };
  }

  auto addAndDrop() {
    return [procs = procs_, buffer = live_] {
      procs.AddRef(buffer);
      procs.Release(buffer);
    };
  }

 private:
  void checkLive() {
    check(isFilled(procs_.GetBuffer(live_), kLargest), "a buffer does not hold its bytes");
    check(procs_.GetSize(live_) == kLargest, "a buffer does not tell its size");
    addAndDrop()();
    check(isFilled(procs_.GetBuffer(live_), kLargest),
          "a buffer goes with a reference still there");
  }

  ZEBSharedBuffer* filled(size_t size) const {
    ZEBSharedBuffer* buffer = procs_.NewBuffer(size, nullptr, nullptr, nullptr, nullptr);
    std::memcpy(procs_.GetBuffer(buffer), source().data(), size);
    return buffer;
  }

  Session session_;
  ZEBSharedBufferProcs procs_;
  ZEBSharedBuffer* live_;
};

#ifdef BENCH_HAS_GLIB
class GByteBlocks {
 public:
  GByteBlocks() : live_(g_bytes_new(source().data(), kLargest)) {
    gsize size = 0;
    check(isFilled(g_bytes_get_data(live_, &size), kLargest) && size == kLargest,
          "GBytes do not hold their bytes");
  }
  ~GByteBlocks() { g_bytes_unref(live_); }
  GByteBlocks(const GByteBlocks&) = delete;
  GByteBlocks& operator=(const GByteBlocks&) = delete;

  static auto makeFillRelease(size_t size) {
    return [size = opaque(size)] {
      GBytes* bytes = g_bytes_new(source().data(), size);
      use(g_bytes_get_data(bytes, nullptr));
      g_bytes_unref(bytes);
    };
  }

  auto addAndDrop() {
    return [live = opaque(live_)] {
      g_bytes_ref(live);
      benchmark::ClobberMemory();
      g_bytes_unref(live);
    };
  }

 private:
  GBytes* live_;
};
#endif

using SharedBytes = std::shared_ptr<std::byte[]>;

class SharedArrays {
 public:
  SharedArrays() : live_(filled(kLargest)) {
    check(isFilled(live_.get(), kLargest), "a shared array does not hold its bytes");
  }

  static auto makeFillRelease(size_t size) {
    return [size = opaque(size)] {
      const SharedBytes bytes = filled(size);
      use(bytes.get());
    };
  }

  auto addAndDrop() {
    return [live = opaque(&live_)] {
      const SharedBytes copy = *live;
      benchmark::DoNotOptimize(&copy);
    };
  }

 private:
  static SharedBytes filled(size_t size) {
    SharedBytes bytes = std::make_shared_for_overwrite<std::byte[]>(size);
    std::memcpy(bytes.get(), source().data(), size);
    return bytes;
  }

  SharedBytes live_;
};

struct Contenders {
  OurBuffers ours;
#ifdef BENCH_HAS_GLIB
  GByteBlocks gBytes;
#endif
  SharedArrays arrays;
};

using SharedContenders = Shared<Contenders>;

SharedContenders contenders() {
  return SharedContenders([] { return std::make_unique<Contenders>(); });
}

Row makeRow(const std::string& name, size_t size) {
  const SharedContenders all = contenders();
  Row row{.area = "shared buffers", .name = name, .goal = Goal{1.0, {kGBytes}}};
  row.prepare = [all] { all.get(); };
  row.ours = measure("ours", [=](size_t) { return all.get().ours.makeFillRelease(size); });
#ifdef BENCH_HAS_GLIB
  row.peers.push_back(measure(kGBytes, [=](size_t) { return GByteBlocks::makeFillRelease(size); }));
#endif
  row.peers.push_back(measure("std::make_shared_for_overwrite",
                              [=](size_t) { return SharedArrays::makeFillRelease(size); }));
  return row;
}

Row shareRow(int threads) {
  const SharedContenders all = contenders();
  Row row{.area = "shared buffers",
          .name = "add + drop a reference",
          .threads = threads,
          .goal = Goal{1.0, {kGBytes}}};
  row.prepare = [all] { all.get(); };
  row.ours = measure("ours", [all](size_t) { return all.get().ours.addAndDrop(); });
#ifdef BENCH_HAS_GLIB
  row.peers.push_back(measure(kGBytes, [all](size_t) { return all.get().gBytes.addAndDrop(); }));
#endif
  row.peers.push_back(
      measure("std::shared_ptr", [all](size_t) { return all.get().arrays.addAndDrop(); }));
  return row;
}

}  // namespace

void addBufferRows(Rows& rows) {
  rows.push_back(makeRow("64 bytes: make, fill, release", 64));
  rows.push_back(makeRow("4096 bytes: make, fill, release", 4096));
  rows.push_back(shareRow(1));
  rows.push_back(shareRow(2));
}

}  // namespace zeb::bench
