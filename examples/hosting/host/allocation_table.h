// Shows what the host's allocators have counted.
#ifndef HOSTING_HOST_ALLOCATION_TABLE_H
#define HOSTING_HOST_ALLOCATION_TABLE_H

namespace hosting {

void printAllocationTable();

}  // namespace hosting

#endif
