/* A module that puts procs of its own into the library's interfaces, and texts beside its procs. */
#include "module.h"

static ZEBFrameProcs frame;

static void Own(void) {}
static const char* Signature(void) { return "void(i32)"; }
static const char* NoSignature(void) { return NULL; }

#define OWN "TestInterface"

static int32_t publish(const char* interfaceName, const char* method, const char* proc) {
  return frame.RegisterProcAddress(interfaceName, method, proc, Own);
}

static int32_t publishText(const char* method, const char* text, const char* (*proc)(void)) {
  return frame.RegisterProcAddress(OWN, method, text, (ZEBProc)proc);
}

int32_t MODULE_START(ZEBGetProcAddress getProcAddress) {
  if (!ZEBFetchFrameProcs(getProcAddress, &frame)) return 0;
  frame.UnregisterInterface(ZEB_MEMORY_DEBUG_INTERFACE);
  frame.UnregisterInterface(ZEB_PROGRESS_INTERFACE);
  return publish(ZEB_PROGRESS_INTERFACE, "AddRef", "ZEBProgressAddRefProc") &&
         publish(ZEB_PROGRESS_INTERFACE, "AddRef", "TestProgressProc") &&
         publish(OWN, "Guarded", "TestGuardedProc") &&
         publishText("Guarded", "TestGuardedProc#signature", Signature) &&
         publish(OWN, "Silent", "TestSilentProc") &&
         publishText("Silent", "TestSilentProc#signature", NoSignature) &&
         publish(OWN, "Null", "TestNullProc") &&
         publishText("Null", "TestNullProc#signature", NULL) &&
         publishText("Lonely", "TestLonelyProc#signature", Signature) &&
         publishText("Lonely", "TestLonelyProc#signature#signature", Signature) &&
         publish("TestControls", "\xc2\x9b[2J", "\xe2\x80\xae") &&
         frame.RegisterProcAddress(ZEB_STRING_INTERFACE, "AddRef",
                                   "ZEBAddRefStringAtomProc#signature", (ZEBProc)Signature);
}

void MODULE_STOP(void) {
  frame.UnregisterInterface(ZEB_PROGRESS_INTERFACE);
  frame.UnregisterInterface(OWN);
  frame.UnregisterInterface("TestControls");
}
