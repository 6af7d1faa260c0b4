// Chains of filters.
//
// write through N     one write into a chain of identity filters that ends in a sink which keeps
//                     nothing. The bytes are handed on, nobody copies them.
// build, write, drop  a chain of four is made, written into once and taken down.
// client              one write that arrives at a client's procedure, against a call of that
//                     procedure through a pointer.
//
// The limit of a chain is one call through a pointer for each member, which is shown beside it.
#include <cstring>
#include <streambuf>

#include "library.h"
#include "rows.h"

#ifdef BENCH_HAS_BOOST
#include <boost/iostreams/categories.hpp>
#include <boost/iostreams/device/null.hpp>
#include <boost/iostreams/filtering_streambuf.hpp>
#include <boost/iostreams/operations.hpp>
#endif
#ifdef BENCH_HAS_CRYPTOPP
#include <crypto++/filters.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* kArea = "filters";
constexpr const char* kStreambufs = "std::streambuf";
constexpr size_t kLargest = 4096;

const std::array<char, kLargest>& source() {
  static const std::array<char, kLargest> bytes{};
  return bytes;
}

// Who writes and how often; kept by the ends of chains that are checked.
struct Arrived {
  uint64_t writes = 0;
  uint64_t bytes = 0;
};

// --- ours -------------------------------------------------------------------------------------

ZEBErrorObject* arrive(void* data, const void*, uint64_t size) {
  auto* arrived = static_cast<Arrived*>(data);
  ++arrived->writes;
  arrived->bytes += size;
  return nullptr;
}

class OurFilters {
 public:
  OurFilters() {
    check(ZEBFetchFilterProcs(session_.getProcAddress(), &procs_), "filter procs are missing");
  }

  const ZEBFilterProcs& procs() const { return procs_; }

  ZEBDataSink* nullSink() const {
    ZEBDataSink* sink = nullptr;
    check(!procs_.NewNullDataSink(&sink) && sink, "a null sink cannot be made");
    return sink;
  }

  ZEBDataSink* clientSink(Arrived& arrived) const {
    ZEBDataSink* sink = nullptr;
    check(!procs_.NewClientDataSink(&sink, &arrived, arrive, nullptr) && sink,
          "a client sink cannot be made");
    return sink;
  }

  ZEBDataSink* clientFilter(Arrived& arrived) const {
    ZEBDataSink* filter = nullptr;
    check(
        !procs_.NewClientFilter(&filter, nullSink(), &arrived, arrive, nullptr, nullptr, nullptr) &&
            filter,
        "a client filter cannot be made");
    return filter;
  }

  // Identity filters in front of a sink; the first has a reference, which the caller releases.
  ZEBDataSink* chain(size_t filters, ZEBDataSink* sink) const {
    for (size_t i = 0; i < filters; ++i) {
      ZEBDataSink* filter = nullptr;
      benchmark::DoNotOptimize(procs_.NewIdentityFilter(&filter, sink));
      sink = filter;
    }
    benchmark::DoNotOptimize(procs_.AddRef(sink));
    return sink;
  }

  void write(ZEBDataSink* sink, size_t size) const {
    benchmark::DoNotOptimize(procs_.Write(sink, source().data(), size));
  }

  void checkChain(size_t filters) const {
    Arrived arrived;
    ZEBDataSink* head = chain(filters, clientSink(arrived));
    write(head, 5);
    procs_.Release(head);
    check(arrived.writes == 1 && arrived.bytes == 5, "a chain does not pass a write on");
  }

 private:
  Session session_;
  ZEBFilterProcs procs_;
};

// A member that the caller holds, with the procs that it is used with.
class HeldSink {
 public:
  HeldSink(const OurFilters& filters, ZEBDataSink* sink) : procs_(filters.procs()), sink_(sink) {}
  ~HeldSink() { procs_.Release(sink_); }
  HeldSink(const HeldSink&) = delete;
  HeldSink& operator=(const HeldSink&) = delete;

  ZEBDataSink* get() const { return sink_; }

 private:
  const ZEBFilterProcs& procs_;
  ZEBDataSink* sink_;
};

auto writeIntoOurs(const OurFilters& filters, ZEBDataSink* head, size_t size) {
  return [write = filters.procs().Write, held = std::make_unique<HeldSink>(filters, head),
          size = opaque(size)] {
    benchmark::DoNotOptimize(write(held->get(), source().data(), size));
  };
}

// --- std::streambuf ---------------------------------------------------------------------------

class Discarding : public std::streambuf {
 protected:
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

class PassingOn : public std::streambuf {
 public:
  explicit PassingOn(std::unique_ptr<std::streambuf> target) : target_(std::move(target)) {}

 protected:
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    return target_->sputn(bytes, count);
  }

 private:
  std::unique_ptr<std::streambuf> target_;
};

std::unique_ptr<std::streambuf> streambufChain(size_t filters) {
  std::unique_ptr<std::streambuf> head = std::make_unique<Discarding>();
  for (size_t i = 0; i < filters; ++i) head = std::make_unique<PassingOn>(std::move(head));
  return head;
}

auto writeIntoStreambufs(size_t filters, size_t size) {
  return [head = streambufChain(filters), size = opaque(static_cast<std::streamsize>(size))] {
    benchmark::DoNotOptimize(opaque(head.get())->sputn(source().data(), size));
  };
}

// --- calls through pointers -------------------------------------------------------------------

struct Link {
  size_t (*write)(const Link* link, const char* bytes, size_t count);
  const Link* target;
};

size_t discard(const Link*, const char*, size_t count) { return count; }

size_t passOn(const Link* link, const char* bytes, size_t count) {
  return link->target->write(link->target, bytes, count);
}

auto writeIntoLinks(size_t filters, size_t size) {
  std::vector<Link> links(filters + 1, Link{passOn, nullptr});
  for (size_t i = 0; i < filters; ++i) links[i].target = &links[i + 1];
  links.back().write = discard;
  return [links = std::move(links), size = opaque(size)] {
    const Link* head = opaque(links.data());
    benchmark::DoNotOptimize(head->write(head, source().data(), size));
  };
}

// --- Boost.Iostreams --------------------------------------------------------------------------

#ifdef BENCH_HAS_BOOST
struct BoostIdentity {
  using char_type = char;
  struct category : boost::iostreams::output_filter_tag, boost::iostreams::multichar_tag {};

  template <class Sink>
  std::streamsize write(Sink& sink, const char* bytes, std::streamsize count) {
    return boost::iostreams::write(sink, bytes, count);
  }
};

// Keeps nothing and counts what comes.
struct BoostSink {
  using char_type = char;
  using category = boost::iostreams::sink_tag;

  std::streamsize write(const char*, std::streamsize count) {
    arrived->bytes += static_cast<uint64_t>(count);
    ++arrived->writes;
    return count;
  }

  Arrived* arrived;
};

// With its buffers of 4 KiB each. Without them it hands single characters on, and to empty them
// with each write costs more than any write here; so a small write goes no further than the first
// buffer.
using BoostChain = boost::iostreams::filtering_streambuf<boost::iostreams::output>;

template <class Sink>
void fillChain(BoostChain& chain, size_t filters, const Sink& sink) {
  for (size_t i = 0; i < filters; ++i) chain.push(BoostIdentity{});
  chain.push(sink);
}

void checkBoostChain(size_t filters) {
  Arrived arrived;
  {
    BoostChain chain;
    fillChain(chain, filters, BoostSink{&arrived});
    chain.sputn(source().data(), 5);
  }
  check(arrived.bytes == 5, "Boost.Iostreams does not pass bytes on");
}

auto writeIntoBoost(size_t filters, size_t size) {
  auto chain = std::make_unique<BoostChain>();
  fillChain(*chain, filters, boost::iostreams::null_sink{});
  return [chain = std::move(chain), size = opaque(static_cast<std::streamsize>(size))] {
    benchmark::DoNotOptimize(opaque(chain.get())->sputn(source().data(), size));
  };
}
#endif

// --- write through N --------------------------------------------------------------------------

using SharedFilters = Shared<OurFilters>;

Row chainRow(const SharedFilters& ours, size_t filters, size_t size) {
  Row row{.area = kArea,
          .name = "write " + std::string(size == 64 ? "64 B" : "4 KiB") + " through " +
                  std::to_string(filters) + (filters == 1 ? " filter" : " filters"),
          .goal = Goal{1.2, {kStreambufs}}};
  row.prepare = [=] {
    ours.get().checkChain(filters);
#ifdef BENCH_HAS_BOOST
    checkBoostChain(filters);
#endif
  };
  row.ours = measure("ours", [=](size_t) {
    return writeIntoOurs(ours.get(), ours.get().chain(filters, ours.get().nullSink()), size);
  });
  row.peers.push_back(
      measure(kStreambufs, [=](size_t) { return writeIntoStreambufs(filters, size); }));
#ifdef BENCH_HAS_BOOST
  row.peers.push_back(
      measure("Boost.Iostreams, buffered", [=](size_t) { return writeIntoBoost(filters, size); }));
#endif
  row.peers.push_back(
      measure("calls through pointers", [=](size_t) { return writeIntoLinks(filters, size); }));
  return row;
}

// --- build, write, drop -----------------------------------------------------------------------

constexpr size_t kBuilt = 4;
constexpr size_t kBuiltWrite = 64;

#ifdef BENCH_HAS_CRYPTOPP
class CryptoIdentity : public CryptoPP::Bufferless<CryptoPP::Filter> {
 public:
  explicit CryptoIdentity(CryptoPP::BufferedTransformation* target) { Detach(target); }

  size_t Put2(const CryptoPP::byte* bytes, size_t count, int messageEnd, bool blocking) override {
    return AttachedTransformation()->Put2(bytes, count, messageEnd, blocking);
  }
};

void buildCrypto() {
  CryptoPP::BufferedTransformation* head = new CryptoPP::BitBucket;
  for (size_t i = 0; i < kBuilt; ++i) head = new CryptoIdentity(head);
  head->Put(reinterpret_cast<const CryptoPP::byte*>(source().data()), kBuiltWrite);
  delete head;
}
#endif

Row buildRow(const SharedFilters& ours) {
  Row row{.area = kArea, .name = "build a chain of 4, write 64 B, take it down"};
  row.prepare = [=] { ours.get().checkChain(kBuilt); };
  row.ours = measure("ours", [=](size_t) {
    return [&filters = ours.get()] {
      ZEBDataSink* sink = nullptr;
      benchmark::DoNotOptimize(filters.procs().NewNullDataSink(&sink));
      ZEBDataSink* head = filters.chain(kBuilt, sink);
      filters.write(head, kBuiltWrite);
      filters.procs().Release(head);
    };
  });
  std::vector<std::string> against;
#ifdef BENCH_HAS_BOOST
  against.push_back("Boost.Iostreams");
  row.peers.push_back(measure(against.back(), [](size_t) {
    return [] {
      BoostChain chain;
      fillChain(chain, kBuilt, boost::iostreams::null_sink{});
      benchmark::DoNotOptimize(chain.sputn(source().data(), kBuiltWrite));
    };
  }));
#endif
#ifdef BENCH_HAS_CRYPTOPP
  against.push_back("Crypto++");
  row.peers.push_back(measure(against.back(), [](size_t) { return buildCrypto; }));
#endif
  row.peers.push_back(measure(kStreambufs, [](size_t) {
    return [] {
      const auto head = streambufChain(kBuilt);
      benchmark::DoNotOptimize(head->sputn(source().data(), kBuiltWrite));
    };
  }));
  if (!against.empty()) row.goal = Goal{1.0, against};
  return row;
}

// --- client -----------------------------------------------------------------------------------

using MakeClient = ZEBDataSink* (OurFilters::*)(Arrived& arrived) const;

// The calling of a client's procedure, with the data that it counts in.
auto writeDirectly(Arrived& arrived) {
  return [write = opaque(arrive), &arrived, size = opaque(size_t{64})] {
    benchmark::DoNotOptimize(write(&arrived, source().data(), size));
  };
}

ZEBDataSink* held(const OurFilters& filters, ZEBDataSink* sink) {
  check(!filters.procs().AddRef(sink), "a reference is refused");
  return sink;
}

Row clientRow(const SharedFilters& ours, const char* name, MakeClient makeClient) {
  constexpr double mostNanosecondsMore = 8;
  const auto arrived = std::make_shared<Arrived>();
  Row row{.area = kArea,
          .name = name,
          .goal = Goal{.limit = mostNanosecondsMore, .kind = Goal::Kind::difference}};
  row.prepare = [=] {
    writeIntoOurs(ours.get(), held(ours.get(), (ours.get().*makeClient)(*arrived)), 7)();
    check(arrived->writes == 1 && arrived->bytes == 7, "a client does not get what is written");
  };
  row.ours = measure("ours", [=](size_t) {
    return writeIntoOurs(ours.get(), held(ours.get(), (ours.get().*makeClient)(*arrived)), 64);
  });
  row.peers.push_back(
      measure("call through a function pointer", [=](size_t) { return writeDirectly(*arrived); }));
  return row;
}

}  // namespace

void addFilterRows(Rows& rows) {
  const SharedFilters ours([] { return std::make_unique<OurFilters>(); });
  for (const size_t size : {size_t{64}, kLargest})
    for (const size_t filters : {size_t{1}, size_t{4}, size_t{16}})
      rows.push_back(chainRow(ours, filters, size));
  rows.push_back(buildRow(ours));
  rows.push_back(clientRow(ours, "client filter: write 64 B", &OurFilters::clientFilter));
  rows.push_back(clientRow(ours, "client sink: write 64 B", &OurFilters::clientSink));
}

}  // namespace zeb::bench
