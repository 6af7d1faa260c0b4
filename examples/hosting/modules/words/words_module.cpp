// Publishes the job interface.
#include "common/module.h"
#include "common/support/guard.h"
#include "common/support/module_instance.h"
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

ModuleInstance<Jobs> instance;

ZEBErrorObject* newError(int32_t id, const char* message) {
  return instance.services().errors.NewError(message, HOSTING_JOB_COMPONENT, id, nullptr, nullptr);
}

ZEBErrorObject* noResult() {
  return newError(HOSTING_JOB_ERROR_NO_RESULT, "no place for the result given");
}

ZEBErrorObject* noText() { return newError(HOSTING_JOB_ERROR_NO_TEXT, "no text given"); }

template <class Body>
ZEBErrorObject* guardedJob(const Body& body) noexcept {
  return guarded(instance.services().errors, HOSTING_JOB_COMPONENT, HOSTING_JOB_ERROR_FAILED, body);
}

ZEBErrorObject* Run(HostingJobResult* result, const char* algorithm, const char* text,
                    uint64_t size) noexcept {
  if (result == nullptr) return noResult();
  if (text == nullptr && size != 0) return noText();
  return guardedJob([&] { return instance.state().words.run(result, algorithm, {text, size}); });
}

ZEBErrorObject* DigestInPieces(HostingPieceDigest* result, ZEBSharedBuffer* text,
                               ZEBProgress* progress) noexcept {
  if (result == nullptr) return noResult();
  if (text == nullptr) return noText();
  const std::string_view bytes = bytesOf(instance.services().buffers, text);
  return guardedJob([&] { return instance.state().pieces.run(result, bytes, progress); });
}

constexpr HostingJobProcs procs{Run, DigestInPieces};
const ZEBProcTableEntry entries[] = {HOSTING_JOB_PROCS(EXAMPLES_PUBLISH_ROW)};
const Publication publications[] = {{HOSTING_JOB_INTERFACE, entries}};

}  // namespace
}  // namespace examples

int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress) {
  return examples::instance.start(getProcAddress, examples::publications);
}

void ExampleModuleStop() { examples::instance.stop(); }
