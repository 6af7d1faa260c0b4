#include "modules/words/word_job.h"

#include <utility>

#include "common/support/atom.h"
#include "modules/words/word_table.h"

namespace examples {
namespace {

// Copies the table's findings into the result. Cannot fail, so a result is whole or untouched.
void report(HostingJobResult* result, const WordTable& words,
            const std::vector<const WordTable::Row*>& top, const ZEBStringProcs& strings) {
  result->wordCount = words.wordCount();
  result->distinctWordCount = words.distinctWordCount();
  result->topWordCount = top.size();
  for (size_t i = 0; i < top.size(); ++i) {
    ZEBString* const word = top[i]->word.get();
    strings.AddRef(word);  // the table gives its own reference back when it goes
    result->topWords[i] = {word, top[i]->count};
  }
}

}  // namespace

WordJob::WordJob(const Services& services, DigestBinding& digest)
    : services_(services),
      digest_(digest),
      wordsCounted_(services.events, "hosting words counted by the job", 10) {}

ZEBErrorObject* WordJob::run(HostingJobResult* result, const char* algorithm,
                             std::string_view text) {
  const HostingDigestProcs* const digest = digest_.current();
  if (digest == nullptr) return digest_.notPublished();

  HostingJobResult found{};
  if (ZEBErrorObject* const error = digestInto(&found, *digest, algorithm, text)) return error;

  // The publisher's name goes with the publisher; as an atom it outlives it.
  Atom name = Atom::intern(services_.strings, digest->GetName());
  WordTable words(services_.strings);
  words.addText(text);
  const auto top = words.top(HOSTING_JOB_TOP_WORDS);

  report(&found, words, top, services_.strings);
  found.digestName = name.release();
  wordsCounted_.signal(found.wordCount);
  *result = found;
  return nullptr;
}

ZEBErrorObject* WordJob::digestInto(HostingJobResult* result, const HostingDigestProcs& digest,
                                    const char* algorithm, std::string_view text) const {
  ZEBErrorObject* const error = digest.Digest(&result->digest, algorithm, text.data(), text.size());
  if (error != nullptr) return error;  // the digest's own words are better than any of ours
  result->digestV1 = digest.DigestV1(text.data(), text.size());
  result->boundAt = digest_.boundAt();
  result->timesBound = digest_.timesBound();
  return nullptr;
}

}  // namespace examples
