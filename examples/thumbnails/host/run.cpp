#include "host/run.h"

#include <fmt/format.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "common/host/counting_allocator.h"
#include "common/host/error_log.h"
#include "common/host/library.h"
#include "common/host/module_loader.h"
#include "common/host/output.h"
#include "common/host/progress_view.h"
#include "common/host/verdict.h"
#include "common/support/progress.h"
#include "host/budget.h"
#include "host/event_report.h"
#include "host/folder.h"
#include "host/maker.h"
#include "host/pass_table.h"
#include "host/picture_modules.h"

namespace examples {
namespace {

constexpr uint32_t kFirstChangeCount = 1;

class Run {
 public:
  explicit Run(const Options& options)
      : options_(options),
        library_(options.library, kFirstChangeCount, options.unload, keepToBudget),
        modules_(library_.services().getProcAddress, options.unload) {}

  ExitStatus run();

 private:
  void start();
  void doFolder(const PictureModules& modules, ThumbnailMaker& maker,
                const std::filesystem::path& folder);
  Pass doPass(ThumbnailMaker& maker, const std::vector<std::filesystem::path>& pictures);
  void tellProblems(const std::vector<Problem>& problems);
  ExitStatus stop();

  [[nodiscard]] const Services& zeb() const { return library_.services(); }

  const Options& options_;
  Verdict verdict_;
  Library library_;
  ModuleLoader modules_;
  uint64_t skipped_ = 0;
};

ExitStatus Run::run() {
  start();
  {
    const EventReport report(zeb());
    const PictureModules modules(zeb());
    prepareOutput(options_.output, options_.folders);
    const Budget budget(zeb().cache, options_.budget);
    ThumbnailMaker maker(zeb(), modules, options_);
    for (const std::filesystem::path& folder : options_.folders) {
      const EventReport::Session session(report);
      doFolder(modules, maker, folder);
    }
    const Tallies tallies = maker.tallies();
    printStep("Stop", {"The cache gives back what it holds, the modules stop, then the library."});
    printRow("written", fmt::format("{} files in {}, {} bytes", grouped(tallies.filesWritten),
                                    shortPath(options_.output), grouped(tallies.bytesWritten)));
    printRow("event report", shortPath(report.path()));
  }
  return stop();
}

void Run::start() {
  printTitle("Thumbnails with libzeb: modules that decode, scale and encode, and a cache between");
  printStep("Start", {"The host has a budget for the library's cache, so it brings a purge request",
                      "of its own: it is asked whenever the cache has changed its size."});
  printRow("library", shortPath(options_.library));
  printRow("budget", fmt::format("{} bytes", grouped(options_.budget)));
  for (const LoadOutcome& outcome : modules_.loadFolder(options_.modules)) {
    if (outcome.problem.empty()) {
      printRow("started", outcome.file);
    } else {
      printRow("skipped", fmt::format("{}: {}", outcome.file, outcome.problem));
    }
  }
  takeErrorLog();  // why a file is no module was told
}

void Run::doFolder(const PictureModules& modules, ThumbnailMaker& maker,
                   const std::filesystem::path& folder) {
  printStep(fmt::format("Go through {}", shortPath(folder)),
            {"Each picture is decoded once and scaled once for each size; a pass over files that",
             "have not changed finds its thumbnails in the cache."});
  const std::vector<std::filesystem::path> pictures = picturesIn(folder, modules);
  printRow("pictures", grouped(pictures.size()));
  std::vector<Pass> passes;
  while (passes.size() < options_.passes) passes.push_back(doPass(maker, pictures));
  printBlankLine();
  printPassTable(passes);
}

Pass Run::doPass(ThumbnailMaker& maker, const std::vector<std::filesystem::path>& pictures) {
  using Clock = std::chrono::steady_clock;
  std::chrono::nanoseconds took{};  // without what the progress bar waits for the eye
  const Tallies before = maker.tallies();
  std::vector<Problem> problems;
  {
    // The view of the progress goes when the pass is done, and a bar with it.
    const Progress progress = Progress::to(zeb().progress, newProgressView("pictures"));
    uint64_t done = 0;
    zeb().progress.Update(progress.get(), done, pictures.size());
    for (const std::filesystem::path& picture : pictures) {
      const Clock::time_point start = Clock::now();
      maker.makeAll(picture, &problems);
      took += Clock::now() - start;
      zeb().progress.Update(progress.get(), ++done, pictures.size());
    }
  }
  tellProblems(problems);
  return {since(before, maker.tallies()), zeb().cache.CurrentCacheSize(), took};
}

void Run::tellProblems(const std::vector<Problem>& problems) {
  for (const Problem& problem : problems) {
    if (problem.pictureIsBad) {
      printRow("skipped", fmt::format("{}: {}", shortPath(problem.path), problem.reason));
      ++skipped_;
    } else {
      printRow("not written", problem.reason);
      verdict_.expect(false, "a thumbnail could not be written: " + problem.reason);
    }
  }
  if (!problems.empty()) takeErrorLog();  // each of them was reported when it was made
}

ExitStatus Run::stop() {
  modules_.unloadAll();
  library_.stop();
  verdict_.expectReports({});
  verdict_.expectNothingLive("memory procs", countsOfMemoryProcs());
  verdict_.expectNothingLive("page pair", countsOfPagePair());
  const ExitStatus status = verdict_.conclude();
  if (skipped_ == 0) return status;
  fmt::print("{} pictures were skipped.\n", grouped(skipped_));
  return status == ExitStatus::success ? ExitStatus::badInput : status;
}

}  // namespace

ExitStatus makeThumbnails(const Options& options) { return Run(options).run(); }

}  // namespace examples
