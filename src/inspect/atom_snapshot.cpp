#include "inspect/atom_snapshot.h"

#include <algorithm>

#include "atoms/atom.h"
#include "inspect/names.h"

namespace zeb::inspect {

static_assert(sizeof(ZEBInspectedAtom) == 24);

namespace {

void copyAtom(RecordCopier<ZEBInspectedAtom>& copier, const ZEBString& atom,
              uint32_t references) noexcept {
  ZEBInspectedAtom* record = copier.add(atom.length + 1);
  if (record == nullptr) return;
  *record = {.text = copier.copy(atom.text(), atom.length),
             .length = atom.length,
             .references = references,
             .reserved = 0};
}

}  // namespace

Records<ZEBInspectedAtom> copyAtoms() {
  auto atoms = copyRecords<ZEBInspectedAtom>([](RecordCopier<ZEBInspectedAtom>& copier) {
    atoms::forEachLive(
        [&](const ZEBString& atom, uint32_t references) { copyAtom(copier, atom, references); });
  });
  std::sort(atoms.all().begin(), atoms.all().end(),
            [](const ZEBInspectedAtom& a, const ZEBInspectedAtom& b) {
              return compareNames(a.text, b.text) < 0;
            });
  return atoms;
}

}  // namespace zeb::inspect
