/* A module that refuses without a word. */
#include "zeb/sdk/module_entry.h"

int32_t ZEBModuleStart(ZEBGetProcAddress find) { return find == NULL; }

void ZEBModuleStop(void) {}
