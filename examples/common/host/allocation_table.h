// Shows what the host's allocators have counted.
#ifndef EXAMPLES_COMMON_HOST_ALLOCATION_TABLE_H
#define EXAMPLES_COMMON_HOST_ALLOCATION_TABLE_H

namespace examples {

void printAllocationTable();

}  // namespace examples

#endif
