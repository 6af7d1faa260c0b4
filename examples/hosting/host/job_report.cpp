#include "host/job_report.h"

#include <fmt/format.h>

#include "common/host/output.h"

namespace examples {

std::string digestText(uint64_t digest) { return fmt::format("{:016x}", digest); }

void printWords(const JobResult& result) {
  printRow("words", grouped(result.wordCount));
  printRow("distinct words", grouped(result.distinctWordCount));
  for (size_t i = 0; i < result.topWordCount; ++i) {
    const WordCount& top = result.topWords[i];
    printRow(i == 0 ? "most frequent" : "",
             fmt::format("{:>6}  {}", grouped(top.count), shortened(top.word.text())));
  }
}

void printComponent(const PieceDigest& result) {
  printRow("component", result.signature.text());
  printRow("methods",
           result.timesAsked == 1
               ? "found once, then kept"
               : fmt::format("found {} times: the change counter moved", result.timesAsked));
  printRow("state", fmt::format("bytes: {}, pieces: {}", grouped(result.byteCount),
                                grouped(result.pieceCount)));
}

void printComparison(const Findings& before, const Findings& after) {
  const auto row = [&](const char* label, const auto& textOf) {
    return std::vector<std::string>{label, textOf(before), textOf(after)};
  };
  using Run = const Findings&;
  printTable(
      {{""}, {"before", Align::right}, {"after", Align::right}},
      {row("digest by", [](Run run) { return run.words.digestName.text(); }),
       row("digest, version 1", [](Run run) { return fmt::format("{:08x}", run.words.digestV1); }),
       row("digest, version 2", [](Run run) { return digestText(run.words.digest); }),
       row("digest, in pieces",
           [](Run run) { return run.pieces ? digestText(run.pieces->digest) : "cancelled"; }),
       row("fetched at change counter", [](Run run) { return fmt::to_string(run.words.boundAt); }),
       row("times fetched", [](Run run) { return fmt::to_string(run.words.timesBound); }),
       row("words", [](Run run) { return grouped(run.words.wordCount); })});
}

}  // namespace examples
