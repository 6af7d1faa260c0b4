/*
 * Interface "ZEBStringInterface": atoms.
 *
 * An atom is an interned, immutable, reference-counted text. Equal texts are the same atom
 * process-wide, so atoms are compared as pointers. Texts are equal when strcmp says so: a UTF-16
 * text ends, for this purpose, at its first zero byte.
 */
#ifndef ZEB_ATOM_H
#define ZEB_ATOM_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_STRING_INTERFACE "ZEBStringInterface"

/*
 * The atom of a text, with one reference for the caller, who gives it back with DeleteStringAtom.
 * The text is copied; null counts as the empty text. A text that begins with the bytes FE FF is
 * kept with two more zero bytes, so that it also ends as a 16-bit text does. Returns null when
 * memory is short. [any-thread]
 */
typedef ZEBString *(*ZEBNewStringAtomProc)(const char *text);

/* Gives one reference back; null is ignored. [any-thread] */
typedef void (*ZEBDeleteStringAtomProc)(ZEBString *atom);

/*
 * The atom's text, valid as long as the caller holds a reference. Null for a null atom.
 * [any-thread]
 */
typedef const char *(*ZEBGetCStringProc)(ZEBString *atom);

/* Adds a reference; null is ignored. [any-thread] */
typedef void (*ZEBAddRefStringAtomProc)(ZEBString *atom);

#define ZEB_STRING_PROCS(X)                                      \
  X(NewStringAtom, NewStringAtom, ZEBNewStringAtomProc)          \
  X(DeleteStringAtom, DeleteStringAtom, ZEBDeleteStringAtomProc) \
  X(GetCString, GetCString, ZEBGetCStringProc)                   \
  X(AddRef, AddRef, ZEBAddRefStringAtomProc)

typedef struct ZEBStringProcs {
  ZEB_STRING_PROCS(ZEB_PROC_MEMBER)
} ZEBStringProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchStringProcs, ZEBStringProcs, ZEB_STRING_INTERFACE, ZEB_STRING_PROCS)

#ifdef __cplusplus
}
#endif

#endif
