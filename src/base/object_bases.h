// Empty bases that say what kind of object a class is. None has state; those without "virtual" in
// their name have no virtual functions and are not used to delete through.
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

namespace ZEB_T_MT {

// What the library's client-side code makes.
class CZEBClientBase {};

// The same with virtual operations.
class CZEBVirtualClientBase : public CZEBClientBase {
 public:
  CZEBVirtualClientBase() = default;
  CZEBVirtualClientBase(const CZEBVirtualClientBase&) = delete;
  CZEBVirtualClientBase& operator=(const CZEBVirtualClientBase&) = delete;
  virtual ~CZEBVirtualClientBase() = default;
};

// The same, shared by threads.
class CZEBVirtualClientBasePMT : public CZEBVirtualClientBase {};

}  // namespace ZEB_T_MT

#endif
