#include "common/host/progress_view.h"

#include <fmt/format.h>

#include <chrono>
#include <string>
#include <thread>

#include "common/host/output.h"

namespace examples {
namespace {

constexpr const char* kLabel = "progress";

// How many of `parts` equal parts of the work are done. Rounded down, so that all of them mean the
// end; none for an unknown total.
unsigned partsDone(unsigned parts, uint64_t done, uint64_t total) {
  if (total == 0) return 0;
  if (done >= total) return parts;
  return static_cast<unsigned>(static_cast<double>(done) / static_cast<double>(total) * parts);
}

unsigned percentOf(uint64_t done, uint64_t total) { return partsDone(100, done, total); }

class ProgressView : public ProgressListener {
 public:
  explicit ProgressView(std::optional<unsigned> cancelAt) : cancelAt_(cancelAt) {}

  bool report(uint64_t done, uint64_t total) override {
    show(done, total);
    return cancelAt_ && percentOf(done, total) >= *cancelAt_;
  }

 private:
  virtual void show(uint64_t done, uint64_t total) = 0;

  std::optional<unsigned> cancelAt_;
};

class LinesView : public ProgressView {
 public:
  LinesView(const char* unit, std::optional<unsigned> cancelAt)
      : ProgressView(cancelAt), unit_(unit) {}

 private:
  void show(uint64_t done, uint64_t total) override {
    const unsigned quarters = partsDone(4, done, total);
    if (quarters <= quartersShown_) return;
    quartersShown_ = quarters;
    printRow(kLabel, fmt::format("{:>3} %  {} of {} {}", percentOf(done, total), grouped(done),
                                 grouped(total), unit_));
  }

  const char* unit_;
  unsigned quartersShown_ = 0;
};

class BarView : public ProgressView {
 public:
  using ProgressView::ProgressView;
  ~BarView() override { clearDrawnRow(); }

 private:
  static constexpr unsigned kCells = 40;
  // Waited after each drawing, so that the eye can follow: a small text is done in no time.
  static constexpr std::chrono::milliseconds kForTheEye{20};

  void show(uint64_t done, uint64_t total) override {
    const unsigned cells = partsDone(kCells, done, total);
    if (cells == cellsDrawn_) return;
    cellsDrawn_ = cells;
    drawRow(kLabel, fmt::format("[{:.<{}}] {:>3} %", std::string(cells, '#'), kCells,
                                percentOf(done, total)));
    std::this_thread::sleep_for(kForTheEye);
  }

  std::optional<unsigned> cellsDrawn_;
};

}  // namespace

std::unique_ptr<ProgressListener> newProgressView(const char* unit,
                                                  std::optional<unsigned> cancelAt) {
  if (canRedraw()) return std::make_unique<BarView>(cancelAt);
  return std::make_unique<LinesView>(unit, cancelAt);
}

}  // namespace examples
