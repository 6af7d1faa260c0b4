// The first interface of a digester, and how a digester is put together.
#include <memory>

#include "common/support/container.h"
#include "modules/digest/digest_module.h"
#include "modules/digest/digester_state.h"

namespace examples {
namespace {

DigesterState* stateIn(void* instance) {
  return static_cast<DigesterState*>(static_cast<HostingDigestState*>(instance));
}

void endState(void* instance) { delete stateIn(instance); }

std::unique_ptr<DigesterState> newState() {
  auto state = std::make_unique<DigesterState>();
  state->running = kAlgorithms.startWide();
  return state;
}

ZEBErrorObject* Update(ZEBContainer* digester, const void* bytes, uint64_t size) noexcept {
  return guardedDigest([&] {
    DigesterState* state = nullptr;
    ZEBErrorObject* const error = findState(digester, &state);
    if (error == nullptr) state->running->add(bytes, size);
    return error;
  });
}

ZEBErrorObject* Finish(ZEBContainer* digester, uint64_t* digest) noexcept {
  if (digest == nullptr) {
    return newDigestError(HOSTING_DIGEST_ERROR_NO_RESULT, "no place for the digest given");
  }
  return guardedDigest([&] {
    DigesterState* state = nullptr;
    ZEBErrorObject* const error = findState(digester, &state);
    if (error == nullptr) *digest = state->running->result();
    return error;
  });
}

constexpr HostingDigesterProcs procs{Update, Finish};
const ZEBProcTableEntry entries[] = {HOSTING_DIGESTER_PROCS(EXAMPLES_PUBLISH_ROW)};

}  // namespace

ZEBErrorObject* findState(ZEBContainer* digester, DigesterState** state) {
  void* instance = nullptr;
  ZEBErrorObject* const error = DigestModule::services().containers.NGetInstance(
      &instance, digester, DigestModule::state().state.get());
  if (error == nullptr) *state = stateIn(instance);
  return error;
}

ZEBErrorObject* makeDigester(ZEBContainer** digester) {
  const ZEBContainerProcs& containers = DigestModule::services().containers;
  const DigesterNames& names = DigestModule::state();
  std::unique_ptr<DigesterState> state = newState();

  ZEBContainer* made = nullptr;
  if (ZEBErrorObject* const error = containers.NewContainer(&made)) return error;
  Container container(containers, made);
  // The interface that is added later is asked first: it overrides the one before.
  for (const Atom* name : {&names.digester, &names.checkedDigester}) {
    if (ZEBErrorObject* const error = containers.RegisterInterface(made, name->get())) return error;
  }
  // The state is the container's from here on, also when this fails.
  HostingDigestState* const instance = state.release();
  if (ZEBErrorObject* const error =
          containers.RegisterInstance(made, instance, names.state.get(), endState)) {
    return error;
  }
  *digester = container.release();
  return nullptr;
}

Publication digesterPublication() { return {HOSTING_DIGESTER_INTERFACE, entries}; }

}  // namespace examples
