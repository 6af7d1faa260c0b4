// Publishes the job interface.
#include "interfaces/job.h"
#include "module.h"
#include "modules/words/word_job.h"
#include "support/guard.h"
#include "support/module_instance.h"

namespace hosting {
namespace {

ModuleInstance<WordJob> instance;

ZEBErrorObject* newError(int32_t id, const char* message) {
  return instance.services().errors.NewError(message, HOSTING_JOB_COMPONENT, id, nullptr, nullptr);
}

ZEBErrorObject* Run(HostingJobResult* result, const char* algorithm, const char* text,
                    uint64_t size) noexcept {
  if (result == nullptr)
    return newError(HOSTING_JOB_ERROR_NO_RESULT, "no place for the result given");
  if (text == nullptr && size != 0) return newError(HOSTING_JOB_ERROR_NO_TEXT, "no text given");
  return guarded(instance.services().errors, HOSTING_JOB_COMPONENT, HOSTING_JOB_ERROR_FAILED, [&] {
    return instance.state().run(result, algorithm, {text, size});
  });
}

constexpr HostingJobProcs procs{Run};
const ZEBProcTableEntry entries[] = {HOSTING_JOB_PROCS(HOSTING_PUBLISH_ROW)};
const Publication publications[] = {{HOSTING_JOB_INTERFACE, entries}};

}  // namespace
}  // namespace hosting

int32_t HostingModuleStart(ZEBGetProcAddress getProcAddress) {
  return hosting::instance.start(getProcAddress, hosting::publications);
}

void HostingModuleStop() { hosting::instance.stop(); }
