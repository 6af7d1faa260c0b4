// What the atoms room publishes.
#ifndef ZEB_ATOMS_ATOM_SERVICE_H
#define ZEB_ATOMS_ATOM_SERVICE_H

#include "base/service_table.h"

namespace zeb {

ServiceTable atomService();

}  // namespace zeb

#endif
