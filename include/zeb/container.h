/*
 * Interface "ZEBContainerInterface": components that are put together at run time.
 *
 * A container is a reference-counted object with an ordered list of interface names, the latest
 * first, and a list of named instances. Its behaviour is found by asking for a method: the
 * container looks the method up in the registry under each of its interfaces in turn. Its state is
 * found by asking for an instance by name.
 *
 * A full container, made in one step, has exactly one interface and one instance. Full containers
 * are recycled: up to 32 of them wait, with their instance destroyed, to be made anew.
 *
 * All names are atoms (atom.h) and are compared by identity; a proc holds references of its own to
 * those that it keeps. A container is built by one thread before it is shared; references may be
 * added and dropped by any thread.
 *
 * Procs that return an error answer null on success, else an error of which the caller owns one
 * reference. They refuse null out arguments, null containers and null names with "Missing ZEB
 * Method" (component "ZEB", id 0) and clear the out argument before anything can fail.
 */
#ifndef ZEB_CONTAINER_H
#define ZEB_CONTAINER_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_CONTAINER_INTERFACE "ZEBContainerInterface"

/* The name of the instance by which a clone holds its source. */
#define ZEB_CONTAINER_CLONE_INSTANCE "ZEBContainerCloneInst"

/* Ends an instance: called once with its data. May be null: nothing is done. */
typedef void (*ZEBContainerDestroy)(void *instanceData);

/*
 * Asked when the last reference has gone. A result other than 0 means that the owner keeps the
 * container; DeleteUnownedContainer then ends it. One that throws keeps nothing.
 */
typedef int32_t (*ZEBContainerOwnerHook)(ZEBContainer *container, uint64_t interfaceCount,
                                         uint64_t instanceCount);

/*
 * Counts references in the container's stead: `add` is 1 to add one and 0 to drop one. A drop
 * answers other than 0 when the last reference went. The first reference is the creator's own: it
 * is not added through this procedure.
 */
typedef int64_t (*ZEBContainerRefProc)(uint64_t refContext, int32_t add);

/*
 * Makes a full container with one reference for the caller. The data belongs to the container in
 * every case: if making it fails, destroy is called before the proc returns. ownerHook and refProc
 * may be null. [any-thread] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBNewFullContainerV5Proc)(
    ZEBContainer **out, void *data, ZEBString *instanceName, ZEBContainerDestroy destroy,
    ZEBString *interfaceName, ZEBContainerOwnerHook ownerHook, ZEBContainerRefProc refProc,
    uint64_t refContext);

/* Makes an empty container with one reference for the caller. [any-thread] */
typedef ZEBErrorObject *(*ZEBNewContainerV2Proc)(ZEBContainer **out);

/*
 * Makes a container with the source's interfaces and instances, in their order, and one reference
 * for the caller. The copied instances are not destroyed with the clone: they stay the source's,
 * which the clone keeps alive through an instance of its own, "ZEBContainerCloneInst". [any-thread]
 */
typedef ZEBErrorObject *(*ZEBCloneContainerProc)(ZEBContainer **out, ZEBContainer *source);

/* Adds a reference. 1, or 0 for a null container. [any-thread] [calls-host] */
typedef int32_t (*ZEBAddRefContainerV2Proc)(ZEBContainer *container);

/*
 * Gives a reference back; with the last one the instances are destroyed, unless the owner hook
 * keeps the container. Null is ignored, and so is every container while the library is not
 * initialised. [any-thread] [calls-host]
 */
typedef void (*ZEBReleaseContainerProc)(ZEBContainer *container);

/*
 * Drops a reference and never deletes. The container, or the RefProc's answer as a pointer-sized
 * value; null for null. [any-thread] [calls-host]
 */
typedef void *(*ZEBDecrementWithoutDeleteProc)(ZEBContainer *container);

/*
 * Ends a container that its owner hook has kept: takes the hook off, adds a reference and releases
 * it. A container that is still referenced only loses its hook. Null is ignored. [any-thread]
 * [calls-host]
 */
typedef void (*ZEBDeleteUnownedContainerProc)(ZEBContainer *container);

/*
 * Adds an interface before all others; one that is there already is left where it is. [one-owner]
 */
typedef ZEBErrorObject *(*ZEBRegisterInterfaceV2Proc)(ZEBContainer *container,
                                                      ZEBString *interfaceName);

/*
 * Adds an instance before all others, also when the name is there already. The data belongs to the
 * container: if adding it fails, destroy is called before the proc returns. A null container is
 * ignored, with a null answer, and the data stays the caller's. [one-owner] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBRegisterInstanceV2Proc)(ZEBContainer *container, void *data,
                                                     ZEBString *instanceName,
                                                     ZEBContainerDestroy destroy);

/*
 * Looks a method up under the container's interfaces, the latest first. When it is missing under
 * all of them, *out is null and the answer is null too, or "Missing ZEB Method" if raiseIfMissing
 * is not 0. The function stays valid until its interface is unregistered. [any-thread]
 */
typedef ZEBErrorObject *(*ZEBGetMethodV3Proc)(ZEBProc *out, ZEBContainer *container,
                                              ZEBString *method, ZEBString *proc,
                                              int32_t raiseIfMissing);

/*
 * The same under the interfaces that follow the current one in the list: what the current interface
 * overrides. If the container does not have the current interface, the method is missing.
 * [any-thread]
 */
typedef ZEBErrorObject *(*ZEBGetParentMethodV2Proc)(ZEBProc *out, ZEBContainer *container,
                                                    ZEBString *currentInterface, ZEBString *method,
                                                    ZEBString *proc, int32_t raiseIfMissing);

/*
 * The data of the latest instance of that name, still the container's; null when there is none, and
 * for nulls. [any-thread]
 */
typedef void *(*ZEBGetInstanceProc)(ZEBContainer *container, ZEBString *instanceName);

/* The same, but a missing instance is "Missing ZEB Method". [any-thread] */
typedef ZEBErrorObject *(*ZEBNGetInstanceProc)(void **out, ZEBContainer *container,
                                               ZEBString *instanceName);

/*
 * The names of the container's interfaces joined by ".", the earlier ones first; the empty text
 * when it has none, null for a null container. Valid until an interface is added or the container
 * goes. [any-thread]
 */
typedef const char *(*ZEBGetSignatureProc)(ZEBContainer *container);

/* Always null: nobody is given the address of a reference count. [any-thread] */
typedef void *(*ZEBGetRefCountAddrProc)(ZEBContainer *container);

/*
 * The offset in bytes from a container's address to its three cached fields: the text of its first
 * instance's name, the text of its signature, and its first instance's data (ZEBContainerCache). A
 * client that finds the names it expects there (it compares the text pointers) may use the data
 * without calling GetInstance. -1 while the library has never been initialised. [any-thread]
 */
typedef int64_t (*ZEBGetOffsetToPrimaryInstProc)(void);

/* What stands at that offset. Read only. */
typedef struct ZEBContainerCache {
  const char *instanceName;  /* the text of the first instance's name */
  const char *interfaceName; /* the signature's text */
  void *instanceData;        /* the first instance's data */
} ZEBContainerCache;

/* Older procs, kept for clients built against them. Those without an error return null for it. */
typedef ZEBContainer *(*ZEBNewContainerProc)(void);
typedef ZEBContainer *(*ZEBNewFullContainerProc)(void *data, ZEBString *instanceName,
                                                 ZEBContainerDestroy destroy,
                                                 ZEBString *interfaceName);
typedef ZEBErrorObject *(*ZEBNewFullContainerV2Proc)(ZEBContainer **out, void *data,
                                                     ZEBString *instanceName,
                                                     ZEBContainerDestroy destroy,
                                                     ZEBString *interfaceName);
typedef ZEBErrorObject *(*ZEBNewFullContainerV3Proc)(ZEBContainer **out, void *data,
                                                     ZEBString *instanceName,
                                                     ZEBContainerDestroy destroy,
                                                     ZEBString *interfaceName,
                                                     ZEBContainerOwnerHook ownerHook);
typedef ZEBNewFullContainerV3Proc ZEBNewFullContainerV4Proc;
typedef void (*ZEBRegisterInterfaceProc)(ZEBContainer *container, ZEBString *interfaceName);
typedef void (*ZEBRegisterInstanceProc)(ZEBContainer *container, void *data,
                                        ZEBString *instanceName, ZEBContainerDestroy destroy);
typedef ZEBProc (*ZEBGetMethodProc)(ZEBContainer *container, ZEBString *method, ZEBString *proc);
typedef ZEBErrorObject *(*ZEBGetMethodV2Proc)(ZEBProc *out, ZEBContainer *container,
                                              ZEBString *method, ZEBString *proc);
typedef ZEBProc (*ZEBGetParentMethodProc)(ZEBContainer *container, ZEBString *currentInterface,
                                          ZEBString *method, ZEBString *proc);

#define ZEB_CONTAINER_PROCS(X)                                                     \
  X(NewFullContainer, NewFullContainer, ZEBNewFullContainerV5Proc)                 \
  X(NewContainer, NewContainer, ZEBNewContainerV2Proc)                             \
  X(CloneContainer, CloneContainer, ZEBCloneContainerProc)                         \
  X(AddRef, AddRef, ZEBAddRefContainerV2Proc)                                      \
  X(Release, Release, ZEBReleaseContainerProc)                                     \
  X(DecrementWithoutDelete, DecrementWithoutDelete, ZEBDecrementWithoutDeleteProc) \
  X(DeleteUnownedContainer, DeleteUnownedContainer, ZEBDeleteUnownedContainerProc) \
  X(RegisterInterface, RegisterInterface, ZEBRegisterInterfaceV2Proc)              \
  X(RegisterInstance, RegisterInstance, ZEBRegisterInstanceV2Proc)                 \
  X(GetMethod, GetMethod, ZEBGetMethodV3Proc)                                      \
  X(GetParentMethod, GetParentMethod, ZEBGetParentMethodV2Proc)                    \
  X(GetInstance, GetInstance, ZEBGetInstanceProc)                                  \
  X(NGetInstance, NGetInstance, ZEBNGetInstanceProc)                               \
  X(GetSignature, GetSignature, ZEBGetSignatureProc)                               \
  X(DebugGetRefCountAddr, DebugGetRefCountAddr, ZEBGetRefCountAddrProc)            \
  X(GetOffsetToPrimaryInstance, GetOffsetToPrimaryInstance, ZEBGetOffsetToPrimaryInstProc)

#define ZEB_CONTAINER_OLDER_PROCS(X)                                  \
  X(NewContainerV1, NewContainer, ZEBNewContainerProc)                \
  X(NewFullContainerV1, NewFullContainer, ZEBNewFullContainerProc)    \
  X(NewFullContainerV2, NewFullContainer, ZEBNewFullContainerV2Proc)  \
  X(NewFullContainerV3, NewFullContainer, ZEBNewFullContainerV3Proc)  \
  X(NewFullContainerV4, NewFullContainer, ZEBNewFullContainerV4Proc)  \
  X(RegisterInterfaceV1, RegisterInterface, ZEBRegisterInterfaceProc) \
  X(RegisterInstanceV1, RegisterInstance, ZEBRegisterInstanceProc)    \
  X(GetMethodV1, GetMethod, ZEBGetMethodProc)                         \
  X(GetMethodV2, GetMethod, ZEBGetMethodV2Proc)                       \
  X(GetParentMethodV1, GetParentMethod, ZEBGetParentMethodProc)

typedef struct ZEBContainerProcs {
  ZEB_CONTAINER_PROCS(ZEB_PROC_MEMBER)
} ZEBContainerProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchContainerProcs, ZEBContainerProcs, ZEB_CONTAINER_INTERFACE,
                 ZEB_CONTAINER_PROCS)

#ifdef __cplusplus
}
#endif

#endif
