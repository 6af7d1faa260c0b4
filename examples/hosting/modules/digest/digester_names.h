// The names by which the digesters of this module are made and look up their own, as atoms: made
// once at start, for containers compare names as pointers.
#ifndef HOSTING_DIGEST_DIGESTER_NAMES_H
#define HOSTING_DIGEST_DIGESTER_NAMES_H

#include "common/support/atom.h"
#include "common/support/services.h"
#include "interfaces/digester.h"

namespace examples {

struct DigesterNames {
  // Throws std::bad_alloc.
  explicit DigesterNames(const Services& services)
      : digester(Atom::intern(services.strings, HOSTING_DIGESTER_INTERFACE)),
        checkedDigester(Atom::intern(services.strings, HOSTING_CHECKED_DIGESTER_INTERFACE)),
        state(Atom::intern(services.strings, HOSTING_DIGEST_STATE)),
        update(Atom::intern(services.strings, "Update")),
        updateProc(Atom::intern(services.strings, "HostingDigesterUpdateProc")) {}

  Atom digester;
  Atom checkedDigester;
  Atom state;
  Atom update;
  Atom updateProc;
};

}  // namespace examples

#endif
