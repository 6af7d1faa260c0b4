// The rows of every area, one source file each.
#ifndef ZEB_BENCH_ROWS_H
#define ZEB_BENCH_ROWS_H

#include "harness.h"

namespace zeb::bench {

void addLookupRows(Rows& rows);
void addAtomRows(Rows& rows);
void addErrorRows(Rows& rows);
void addMemoryRows(Rows& rows);
void addPoolRows(Rows& rows);
void addEventRows(Rows& rows);
void addContainerRows(Rows& rows);
void addContainerLookupRows(Rows& rows);
void addBufferRows(Rows& rows);
void addProgressRows(Rows& rows);
void addStreamRows(Rows& rows);
void addBufferStreamRows(Rows& rows);
void addFileStreamRows(Rows& rows);
void addClientStreamRows(Rows& rows);
void addCacheRows(Rows& rows);
void addCachePurgeRows(Rows& rows);
void addFilterRows(Rows& rows);
void addSnapshotRows(Rows& rows);
void addSdkRows(Rows& rows);
void addLifecycleRows(Rows& rows);

}  // namespace zeb::bench

#endif
