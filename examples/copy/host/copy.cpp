#include "host/copy.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "common/host/counting_allocator.h"
#include "common/host/error_log.h"
#include "common/host/library.h"
#include "common/host/module_loader.h"
#include "common/host/output.h"
#include "common/host/verdict.h"
#include "common/support/error.h"
#include "common/support/stream.h"
#include "host/digest.h"
#include "host/files.h"
#include "host/gzip_client.h"

namespace examples {
namespace {

constexpr uint32_t kFirstChangeCount = 1;

// Reads a stream to its end, hands each piece to `use`, and tells what it has read.
DigestedBytes readAll(const Stream& stream,
                      const std::function<void(std::span<const std::byte>)>& use) {
  std::array<std::byte, 65536> piece{};
  Digest digest;
  while (const size_t count = stream.read(piece)) {
    const std::span<const std::byte> bytes = std::span(piece).first(count);
    digest.add(bytes);
    use(bytes);
  }
  return digest.result();
}

// One of the two files, and the streams over it: the library's own, or the module's for one that is
// compressed. What happens to the stream does not depend on that.
class FileEnd {
 public:
  FileEnd(const Services& services, const GzipClient& gzip, const std::filesystem::path& path)
      : services_(services), gzip_(gzip), path_(path), compressed_(isCompressedName(path)) {}

  [[nodiscard]] Stream openToRead() const {
    return compressed_ ? gzip_.read(path_) : Stream::overFile(services_, path_.c_str(), "rb");
  }

  [[nodiscard]] Stream openToWrite() const {
    return compressed_ ? gzip_.write(path_) : Stream::overFile(services_, path_.c_str(), "wb");
  }

  // Brings everything that was written to the file.
  void finish(const Stream& written) const {
    compressed_ ? gzip_.finish(written) : written.flush();
  }

  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
  [[nodiscard]] uint64_t fileSize() const { return std::filesystem::file_size(path_); }
  [[nodiscard]] const char* streamKind() const {
    return compressed_ ? "client stream" : "file stream";
  }

 private:
  const Services& services_;
  const GzipClient& gzip_;
  const std::filesystem::path& path_;
  bool compressed_;
};

class Copy {
 public:
  Copy(const Services& services, const Options& options)
      : services_(services),
        gzip_(services),
        source_(services, gzip_, options.source),
        target_(services, gzip_, options.target) {}

  void run();

 private:
  Stream readIntoMemory();
  void writeFromMemory(const Stream& memory, UnfinishedTarget* unfinished);
  void readBack();
  void compare() const;
  void showRatio() const;

  const Services& services_;
  GzipClient gzip_;
  FileEnd source_;
  FileEnd target_;
  DigestedBytes sent_;
  DigestedBytes inMemory_;
  DigestedBytes received_;
};

// Does one step of the copy on a file. An error that comes out of it becomes a failure that names
// the file.
template <class Step>
auto onFile(const Services& services, const FileEnd& file, const char* what, const Step& step) {
  try {
    return step();
  } catch (RaisedError& raised) {
    const Error error(services, raised.release());
    throw Failure(ExitStatus::failed,
                  fmt::format("{}: cannot be {}: {}", file.path().string(), what, told(error)));
  }
}

void Copy::run() {
  UnfinishedTarget unfinished(target_.path());
  {
    const Stream memory = readIntoMemory();
    writeFromMemory(memory, &unfinished);
  }
  readBack();
  compare();
  unfinished.keep();
}

Stream Copy::readIntoMemory() {
  return onFile(services_, source_, "read", [&] {
    Stream memory = Stream::overMemory(services_);
    sent_ = readAll(source_.openToRead(), [&](auto bytes) { memory.write(bytes); });
    printRow("read", fmt::format("{}, {} bytes, {}", shortPath(source_.path()), grouped(sent_.size),
                                 source_.streamKind()));
    return memory;
  });
}

void Copy::writeFromMemory(const Stream& memory, UnfinishedTarget* unfinished) {
  onFile(services_, target_, "written", [&] {
    memory.seek(0);
    const Stream stream = target_.openToWrite();
    unfinished->begin();
    inMemory_ = readAll(memory, [&](auto bytes) { stream.write(bytes); });
    printRow("in between", fmt::format("{} bytes, memory stream", grouped(inMemory_.size)));
    target_.finish(stream);
  });
  printRow("written", fmt::format("{}, {} bytes, {}", shortPath(target_.path()),
                                  grouped(target_.fileSize()), target_.streamKind()));
}

void Copy::readBack() {
  onFile(services_, target_, "read back", [&] {
    const Stream memory = Stream::overMemory(services_);
    readAll(target_.openToRead(), [&](auto bytes) { memory.write(bytes); });
    memory.seek(0);
    received_ = readAll(memory, [](auto) {});
  });
  printRow("read back", fmt::format("{} bytes, {}", grouped(received_.size), target_.streamKind()));
}

void Copy::compare() const {
  printBlankLine();
  printTable({{"xxh3 of"}, {"digest"}, {"bytes", Align::right}},
             {{"the source", sent_.digest, grouped(sent_.size)},
              {"the memory", inMemory_.digest, grouped(inMemory_.size)},
              {"the target, read back", received_.digest, grouped(received_.size)}});
  printBlankLine();
  showRatio();
  const bool same = sent_ == inMemory_ && sent_ == received_;
  printRow("same bytes", same ? "yes" : "no");
  if (same) return;
  throw Failure(ExitStatus::failed,
                fmt::format("{}: does not hold what was written", target_.path().string()));
}

void Copy::showRatio() const {
  const uint64_t from = source_.fileSize();
  const uint64_t to = target_.fileSize();
  if (from == 0) return printRow("ratio", "none: the source is empty");
  printRow("ratio",
           fmt::format("{:.1f} % of {} bytes",
                       100.0 * static_cast<double>(to) / static_cast<double>(from), grouped(from)));
}

void loadModules(ModuleLoader& modules, const std::filesystem::path& folder) {
  for (const LoadOutcome& outcome : modules.loadFolder(folder)) {
    if (outcome.problem.empty()) {
      printRow("module", outcome.file);
    } else {
      printRow("skipped", fmt::format("{}: {}", outcome.file, outcome.problem));
    }
  }
}

ExitStatus copyWithLibrary(const Options& options) {
  Verdict verdict;
  Library library(options.library, kFirstChangeCount, options.unload);
  {
    ModuleLoader modules(library.services().getProcAddress, options.unload);
    loadModules(modules, options.modules);
    takeErrorLog();  // why a file is no module was told
    Copy(library.services(), options).run();
  }
  library.stop();
  verdict.expectReports({});
  verdict.expectNothingLive("memory procs", countsOfMemoryProcs());
  verdict.expectNothingLive("page pair", countsOfPagePair());
  return verdict.conclude();
}

}  // namespace

ExitStatus runCopy(const Options& options) {
  requireSource(options.source);
  requireTarget(options.source, options.target);
  try {
    return copyWithLibrary(options);
  } catch (const Failure& failure) {
    // A copy has worked or it has not: no caller wants to know whose fault it was.
    throw Failure(ExitStatus::failed, failure.what());
  }
}

}  // namespace examples
