/* A module with a fault: it keeps an atom. */
#include "module.h"

int32_t MODULE_START(ZEBGetProcAddress getProcAddress) {
  ZEBStringProcs strings;
  if (!ZEBFetchStringProcs(getProcAddress, &strings)) return 0;
  return strings.NewStringAtom("never given back") != NULL;
}

void MODULE_STOP(void) {}
