// Empty bases that say what kind of object a class is. None has virtual functions or state, and
// none is used to delete through.
#ifndef ZEB_BASE_OBJECT_BASES_H
#define ZEB_BASE_OBJECT_BASES_H

// The library's service objects.
class ZEBBase {};

// Objects that are not made with the library's own allocation; the library's internal error is one.
class ZEBBaseNoNew {};

// List elements that threads share.
class ZEBBasePMT {};

// Elements of the library's own intrusive lists.
class ZEBDLLEParent {};

#endif
