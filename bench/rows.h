// The rows of every area, one source file each.
#ifndef ZEB_BENCH_ROWS_H
#define ZEB_BENCH_ROWS_H

#include "harness.h"

namespace zeb::bench {

void AddLookupRows(Rows& rows);
void AddAtomRows(Rows& rows);
void AddErrorRows(Rows& rows);
void AddMemoryRows(Rows& rows);
void AddPoolRows(Rows& rows);
void AddEventRows(Rows& rows);
void AddLifecycleRows(Rows& rows);

}  // namespace zeb::bench

#endif
