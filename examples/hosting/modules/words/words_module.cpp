// Publishes the job interface.
#include "common/support/guard.h"
#include "common/support/module_base.h"
#include "common/support/shared_buffer.h"
#include "interfaces/job.h"
#include "modules/words/digest_binding.h"
#include "modules/words/piece_job.h"
#include "modules/words/word_job.h"

namespace examples {
namespace {

// Both jobs bind to the digest in one place.
struct Jobs {
  explicit Jobs(const Services& services)
      : digest(services), words(services, digest), pieces(services, digest) {}

  DigestBinding digest;
  WordJob words;
  PieceJob pieces;
};

class WordsModule : public ModuleBase<WordsModule, Jobs> {
 public:
  WordsModule();
};

ZEBErrorObject* newError(int32_t id, const char* message) {
  return WordsModule::services().errors.NewError(message, HOSTING_JOB_COMPONENT, id, nullptr,
                                                 nullptr);
}

ZEBErrorObject* noResult() {
  return newError(HOSTING_JOB_ERROR_NO_RESULT, "no place for the result given");
}

ZEBErrorObject* noText() { return newError(HOSTING_JOB_ERROR_NO_TEXT, "no text given"); }

template <class Body>
ZEBErrorObject* guardedJob(const Body& body) noexcept {
  return guarded(WordsModule::services().errors, HOSTING_JOB_COMPONENT, HOSTING_JOB_ERROR_FAILED,
                 body);
}

ZEBErrorObject* Run(HostingJobResult* result, const char* algorithm, const char* text,
                    uint64_t size) noexcept {
  if (result == nullptr) return noResult();
  if (text == nullptr && size != 0) return noText();
  return guardedJob([&] {
    return WordsModule::state().words.run(result, algorithm, {text, size});
  });
}

ZEBErrorObject* DigestInPieces(HostingPieceDigest* result, ZEBSharedBuffer* text,
                               ZEBProgress* progress) noexcept {
  if (result == nullptr) return noResult();
  if (text == nullptr) return noText();
  const std::string_view bytes = bytesOf(WordsModule::services().buffers, text);
  return guardedJob([&] { return WordsModule::state().pieces.run(result, bytes, progress); });
}

constexpr HostingJobProcs procs{Run, DigestInPieces};
const ZEBProcTableEntry entries[] = {HOSTING_JOB_PROCS(EXAMPLES_PUBLISH_ROW)};

WordsModule::WordsModule() : ModuleBase({{HOSTING_JOB_INTERFACE, entries}}) {}

}  // namespace
}  // namespace examples

ZEB_SDK_MODULE(examples::WordsModule);
