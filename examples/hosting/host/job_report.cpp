#include "host/job_report.h"

#include <fmt/format.h>

#include "host/output.h"

namespace hosting {

void printWords(const JobResult& result) {
  printRow("words", grouped(result.wordCount));
  printRow("distinct words", grouped(result.distinctWordCount));
  for (size_t i = 0; i < result.topWordCount; ++i) {
    const WordCount& top = result.topWords[i];
    printRow(i == 0 ? "most frequent" : "",
             fmt::format("{:>6}  {}", grouped(top.count), shortened(top.word.text())));
  }
}

void printComparison(const JobResult& before, const JobResult& after) {
  const auto row = [&](const char* label, const auto& textOf) {
    return std::vector<std::string>{label, textOf(before), textOf(after)};
  };
  using Result = const JobResult&;
  printTable({{""}, {"before", Align::right}, {"after", Align::right}},
             {row("digest by", [](Result result) { return result.digestName.text(); }),
              row("digest, version 1",
                  [](Result result) { return fmt::format("{:08x}", result.digestV1); }),
              row("digest, version 2",
                  [](Result result) { return fmt::format("{:016x}", result.digest); }),
              row("fetched at change counter",
                  [](Result result) { return fmt::to_string(result.boundAt); }),
              row("times fetched", [](Result result) { return fmt::to_string(result.timesBound); }),
              row("words", [](Result result) { return grouped(result.wordCount); })});
}

}  // namespace hosting
