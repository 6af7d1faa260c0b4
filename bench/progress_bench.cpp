// Telling a progress how far an operation has come: the proc passes the numbers on to the client's
// procedure. The peer is a call of the same procedure through a pointer; what ours takes more is
// the price of the service.
#include "library.h"
#include "rows.h"

namespace zeb::bench {

namespace {

constexpr uint64_t kTotal = uint64_t{1} << 40;

// A client that keeps the numbers and lets the operation go on.
struct Listener {
  uint64_t done = 0;
  uint64_t total = 0;
};

int32_t hear(void* data, uint64_t done, uint64_t total) {
  *static_cast<Listener*>(data) = {done, total};
  return done < total ? 0 : 1;
}

void leave(void* data) { *static_cast<Listener*>(data) = {}; }

// One step further with each call. `update` tells it to whoever `target` is.
template <class Update, class Target>
auto steps(Update update, Target* target) {
  return [update = opaque(update), target = opaque(target), done = uint64_t{0}]() mutable {
    benchmark::DoNotOptimize(update(target, ++done, kTotal));
  };
}

class OurProgress {
 public:
  OurProgress() {
    check(ZEBFetchProgressProcs(session_.getProcAddress(), &procs_), "progress procs are missing");
    progress_ = procs_.NewClientProgress(&listener_, hear, leave);
    check(progress_, "a progress cannot be made");
    check(procs_.Update(progress_, 3, 5) == 0 && listener_.done == 3 && listener_.total == 5,
          "a progress does not pass on what it is told");
    check(procs_.Update(progress_, 5, 5) == 1, "a progress does not pass the answer back");
  }

  ~OurProgress() { procs_.Release(progress_); }

  auto update() { return steps(procs_.Update, progress_); }

 private:
  Session session_;
  ZEBProgressProcs procs_;
  Listener listener_;
  ZEBProgress* progress_;
};

}  // namespace

void addProgressRows(Rows& rows) {
  constexpr double kMostNanosecondsMore = 3;
  const Shared<OurProgress> ours([] { return std::make_unique<OurProgress>(); });
  const auto listener = std::make_shared<Listener>();
  Row row{.area = "progress",
          .name = "update",
          .goal = Goal{.limit = kMostNanosecondsMore, .kind = Goal::Kind::difference}};
  row.prepare = [ours] { ours.get(); };
  row.ours = measure("ours", [ours](size_t) { return ours.get().update(); });
  row.peers.push_back(measure("call through a function pointer", [listener](size_t) {
    return steps(hear, static_cast<void*>(listener.get()));
  }));
  rows.push_back(std::move(row));
}

}  // namespace zeb::bench
