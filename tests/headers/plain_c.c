/* A host in plain C: the whole contract in one include, the library by linking. */
#include "zeb/zeb.h"

int main(void) { return ZEBGetVersion() == ZEB_VERSION ? 0 : 1; }
