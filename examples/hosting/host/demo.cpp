#include "host/demo.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/host/allocation_table.h"
#include "common/host/counting_allocator.h"
#include "common/host/error_log.h"
#include "common/host/event_table.h"
#include "common/host/library.h"
#include "common/host/mapped_file.h"
#include "common/host/module_loader.h"
#include "common/host/output.h"
#include "common/host/progress_view.h"
#include "common/host/verdict.h"
#include "common/support/error.h"
#include "common/support/progress.h"
#include "common/support/shared_buffer.h"
#include "host/job_client.h"
#include "host/job_report.h"
#include "interfaces/digest.h"

namespace examples {
namespace {

// The change counter of a first start. A host that starts the library again passes what the last
// stop returned.
constexpr uint32_t kFirstChangeCount = 1;

class Demo {
 public:
  Demo(const Options& options, std::string text) : options_(options), fileText_(std::move(text)) {}

  ExitStatus run();

 private:
  void startLibrary();
  void loadModules();
  void runJob();
  void digestInPieces();
  void letCallsFail();
  void replaceModules();
  void runJobAgain();
  void showEventCounters();
  void stopAll();

  [[nodiscard]] const Services& zeb() const { return library_->services(); }
  void loadFolder(const std::filesystem::path& folder);
  void unloadReplacedModules();
  void shareText();
  void runJobInto(Findings* findings);
  void showAtomIdentity();
  void digestInPiecesInto(Findings* findings);
  [[nodiscard]] Error digestWithProgress(PieceDigest* result) const;
  void showDigestIdentity();
  void showThatNothingWasCopied(const PieceDigest& pieces);
  [[nodiscard]] Error digestToNowhere() const;

  const Options& options_;
  std::string fileText_;  // until it is shared
  Verdict verdict_;
  std::optional<Library> library_;
  std::optional<ModuleLoader> modules_;
  std::optional<JobClient> job_;
  // Declared last, so destroyed first: they hold objects of the library, which go before it stops.
  SharedBuffer text_;
  Findings before_;
  Findings after_;
};

ExitStatus Demo::run() {
  // Before anything starts: a missing folder should not be noticed half way.
  filesOf(options_.modules);
  filesOf(options_.replacement);

  printTitle(
      "Hosting with libzeb: one library, two modules, and one of them replaced while running");
  startLibrary();
  loadModules();
  runJob();
  digestInPieces();
  letCallsFail();
  replaceModules();
  runJobAgain();
  showEventCounters();
  stopAll();
  return verdict_.conclude();
}

void Demo::startLibrary() {
  printStep(
      "Start the library",
      {"The host is not linked with the library: it loads the file at run time. It hands over",
       "its own allocators, which count every block, and a procedure for error reports."});
  library_.emplace(options_.library, kFirstChangeCount, options_.unload);
  modules_.emplace(zeb().getProcAddress, options_.unload);
  job_.emplace(zeb());

  printRow("library", shortPath(options_.library));
  printRow("version",
           fmt::format("{}.{}", library_->version() >> 16, library_->version() & 0xFFFFU));
  printRow("change counter", fmt::to_string(zeb().frame.GetUnregisterCount()));
  printRow("memory",
           fmt::format("{} blocks, {} bytes so far", grouped(countsOfMemoryProcs().liveBlocks),
                       grouped(countsOfMemoryProcs().liveBytes)));
}

void Demo::loadModules() {
  printStep("Load the modules",
            {"Modules are linked with nothing. Each is given the library's look-up function and",
             "registers what it offers under names; all others find it by these names only."});
  loadFolder(options_.modules);
  if (!job_->isPublished()) {
    throw Failure(
        ExitStatus::badModules,
        fmt::format("no module in {} publishes " HOSTING_JOB_INTERFACE, options_.modules.string()));
  }
}

void Demo::loadFolder(const std::filesystem::path& folder) {
  printRow("from", shortPath(folder));
  for (const LoadOutcome& outcome : modules_->loadFolder(folder)) {
    if (outcome.problem.empty()) {
      printRow("started", outcome.file);
    } else {
      printRow("skipped", fmt::format("{}: {}", outcome.file, outcome.problem));
    }
  }
}

void Demo::runJob() {
  printStep(
      fmt::format("Run the job on {}", shortPath(options_.file)),
      {"The host finds the job by name. The job finds a digest by name, fetches all its procs",
       "at once, and turns every word into an atom: equal words are one pointer."});
  shareText();
  runJobInto(&before_);

  printRow("bytes", grouped(text_.bytes().size()));
  printWords(before_.words);
  showAtomIdentity();
}

// Everybody reads the file's bytes where they stand; the buffer keeps them alive.
void Demo::shareText() { text_ = SharedBuffer::keep(zeb().buffers, std::move(fileText_)); }

void Demo::runJobInto(Findings* findings) {
  const Error error = job_->run(&findings->words, nullptr, text_.bytes());
  if (error) throw Failure(ExitStatus::failed, fmt::format("the job failed: {}", told(error)));
}

void Demo::showAtomIdentity() {
  if (before_.words.topWordCount == 0) {
    printRow("same atom", "cannot be shown: the file has no words");
    return;
  }
  const Atom& word = before_.words.topWords[0].word;
  const std::string copy = word.text();
  const bool same = Atom::intern(zeb().strings, copy.c_str()) == word;
  printRow("same atom",
           fmt::format("{}: the host's own atom of \"{}\" is {} pointer as the job's",
                       same ? "yes" : "no", shortened(copy), same ? "the same" : "not the same"));
  verdict_.expect(same, "equal words gave different atoms");
}

void Demo::digestInPieces() {
  printStep(
      "Digest in pieces, by a component",
      {"The digest hands out a container with two interfaces and a state. The later interface",
       "overrides a method of the earlier and calls it. The job finds methods and state by name,",
       "reads the host's bytes where they stand, and reports to a progress object of the host."});
  digestInPiecesInto(&before_);
  if (!before_.pieces) return;

  printComponent(*before_.pieces);
  showDigestIdentity();
  showThatNothingWasCopied(*before_.pieces);
}

void Demo::digestInPiecesInto(Findings* findings) {
  PieceDigest pieces;
  const Error error = digestWithProgress(&pieces);
  if (JobClient::isCancellation(error)) {
    printRow("the job", told(error));
    verdict_.expect(options_.cancelAt.has_value(),
                    "the job was cancelled, though nobody asked for it");
    verdict_.expectReports({error.message()});
    return;
  }
  if (error) throw Failure(ExitStatus::failed, fmt::format("the job failed: {}", told(error)));

  verdict_.expect(!options_.cancelAt, "the job was not cancelled");
  verdict_.expect(pieces.digest == findings->words.digest,
                  "the digest in pieces is not that of the whole");
  verdict_.expect(pieces.byteCount == text_.bytes().size(),
                  "the component has not counted every byte");
  findings->pieces = std::move(pieces);
}

// The view of the progress goes when the job is done, and a bar with it.
Error Demo::digestWithProgress(PieceDigest* result) const {
  const Progress progress =
      Progress::to(zeb().progress, newProgressView("bytes", options_.cancelAt));
  return job_->digestInPieces(result, text_, progress);
}

void Demo::showDigestIdentity() {
  const bool same = before_.pieces->digest == before_.words.digest;
  printRow("same digest",
           fmt::format("{}: {}, and {} for the whole", same ? "yes" : "no",
                       digestText(before_.pieces->digest), digestText(before_.words.digest)));
}

void Demo::showThatNothingWasCopied(const PieceDigest& pieces) {
  const bool same = pieces.textAt == text_.bytes().data();
  printRow("same bytes", fmt::format("{}: the job read the text {} the host holds it",
                                     same ? "yes" : "no", same ? "where" : "elsewhere than"));
  verdict_.expect(same, "the text was copied on its way to the job");
}

void Demo::letCallsFail() {
  printStep(
      "Let calls fail",
      {"A proc that fails hands back an error object. The job passes on what the digest gave",
       "it; the host reads it and releases it. Each was reported to the host when it was made."});
  JobResult unused;
  const Error unknown = job_->run(&unused, "md5", text_.bytes());
  const Error nowhere = digestToNowhere();
  verdict_.expectReports({unknown.message(), nowhere.message()});

  std::vector<std::vector<std::string>> rows;
  const auto show = [&](const char* asked, const Error& error) {
    rows.push_back({asked, error.message(), error.component(), fmt::to_string(error.id())});
    verdict_.expect(static_cast<bool>(error),
                    fmt::format("a call that must fail did not: {}", asked));
  };
  show("a digest by md5", unknown);
  show("a digest to null", nowhere);
  printTable({{"asked for"}, {"message"}, {"component"}, {"id", Align::right}}, rows);

  const bool found =
      zeb().getProcAddress(HOSTING_DIGEST_INTERFACE, "Digest", "HostingDigestProcV9") != nullptr;
  printBlankLine();
  printRow("a later version", found
                                  ? "found, which must not be"
                                  : "not published: the look-up answers null, the caller decides");
  verdict_.expect(!found, "a proc was found that nobody published");
}

// Fetches one proc by its three names, where the job fetches the whole interface.
Error Demo::digestToNowhere() const {
  const auto digest = reinterpret_cast<HostingDigestProcV2>(
      zeb().getProcAddress(HOSTING_DIGEST_INTERFACE, "Digest", "HostingDigestProcV2"));
  if (digest == nullptr) {
    throw Failure(ExitStatus::badModules, "no module publishes " HOSTING_DIGEST_INTERFACE);
  }
  const std::string_view text = text_.bytes();
  return {zeb(), digest(nullptr, nullptr, text.data(), text.size())};
}

void Demo::replaceModules() {
  printStep(
      "Replace the digest",
      {"The host stops the module, which unregisters its interface: the change counter moves.",
       "Then it unloads the file. Until another module publishes the names, the job fails."});
  const uint32_t counterBefore = zeb().frame.GetUnregisterCount();
  unloadReplacedModules();
  const uint32_t counterNow = zeb().frame.GetUnregisterCount();
  printRow("change counter", fmt::format("{} before, {} now", counterBefore, counterNow));
  verdict_.expect(counterNow != counterBefore, "the change counter stood still");

  JobResult unused;
  const Error error = job_->run(&unused, nullptr, text_.bytes());
  printRow("the job now", error ? told(error) : "works, which must not be");
  verdict_.expect(static_cast<bool>(error), "the job worked without a digest");
  verdict_.expectReports({error.message()});

  printBlankLine();
  loadFolder(options_.replacement);
}

// A file of the replacement folder takes the place of the module with the same file name.
void Demo::unloadReplacedModules() {
  bool any = false;
  for (const std::filesystem::path& file : filesOf(options_.replacement)) {
    const Module* const module = modules_->find(file.filename().string());
    if (module == nullptr) continue;
    any = true;
    const std::string name = module->name();
    const std::filesystem::path path = module->path();
    modules_->unload(name);
    printRow("stopped", fmt::format("{}, {}", name, isMapped(path) ? "still mapped" : "unmapped"));
  }
  if (any) return;
  throw Failure(ExitStatus::badModules,
                fmt::format("nothing in {} has the file name of a running module",
                            options_.replacement.string()));
}

void Demo::runJobAgain() {
  printStep(
      "Run the job again",
      {"Nobody told the job. It compares the change counter with the value at which it fetched",
       "the digest's procs, sees that it has moved, and fetches them again."});
  runJobInto(&after_);
  digestInPiecesInto(&after_);

  printRow("the job now", fmt::format("works again, by {}", after_.words.digestName.text()));
  printBlankLine();
  printComparison(before_, after_);
  verdict_.expect(after_.words.boundAt != before_.words.boundAt,
                  "the job did not notice that the digest was replaced");
  verdict_.expect(after_.words.wordCount == before_.words.wordCount,
                  "the same file has another number of words now");
}

void Demo::showEventCounters() {
  printStep(
      "Look at the event counters",
      {"Library and modules count what they do in named counters; a snapshot copies them all.",
       "A larger criticality means more important; -1 is of interest only when asked for."});
  printEventTable(zeb().events);
}

void Demo::stopAll() {
  printStep(
      "Stop",
      {"The host gives back what it holds, the modules stop, then the library does. It reports",
       "atoms that anybody still holds, and the host's allocators know what was not freed."});
  before_ = {};
  after_ = {};
  text_ = {};
  modules_->unloadAll();
  const uint32_t changeCount = library_->stop();
  printRow("change counter", fmt::format("{}, to be passed to the next start", changeCount));

  const std::vector<std::string> reports = takeErrorLog();
  printRow("error reports", reports.empty() ? "none" : fmt::to_string(reports.size()));
  for (const std::string& report : reports)
    verdict_.expect(false, "the library reported: " + report);

  printBlankLine();
  printAllocationTable();
  verdict_.expectNothingLive("memory procs", countsOfMemoryProcs());
  verdict_.expectNothingLive("page pair", countsOfPagePair());
  verdict_.expect(countsOfMemoryProcs().allocations > 0,
                  "the library never used the host's memory procs");
}

}  // namespace

ExitStatus runDemo(const Options& options, std::string text) {
  return Demo(options, std::move(text)).run();
}

}  // namespace examples
