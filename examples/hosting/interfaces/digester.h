/*
 * A digester: a component that digests bytes piece by piece.
 *
 * It is a container (zeb/container.h), which NewDigester of interface "HostingDigestInterface"
 * hands out. Whoever holds it knows names only: it asks the container for a method by the method
 * and proc names of HOSTING_DIGESTER_PROCS, and for the state by the name of its instance. It does
 * not ask under which interface a method is found: a publisher may add interfaces that override
 * methods of the earlier ones, as "HostingCheckedDigesterInterface" does.
 *
 * The functions and the state belong to the publisher. A digester is released before its publisher
 * stops, and its methods are asked for again when the change counter has moved. One thread at a
 * time uses it.
 */
#ifndef HOSTING_DIGESTER_H
#define HOSTING_DIGESTER_H

#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The first interface: digests what it is given, and neither checks nor counts. */
#define HOSTING_DIGESTER_INTERFACE "HostingDigesterInterface"

/*
 * Added after it: overrides Update with one that refuses a piece without bytes, calls the Update
 * that it overrides, and counts in the state what that has digested.
 */
#define HOSTING_CHECKED_DIGESTER_INTERFACE "HostingCheckedDigesterInterface"

/* The instance's name. Its data begins with this struct; what follows is the publisher's. */
#define HOSTING_DIGEST_STATE "HostingDigestState"

/* Read only. */
typedef struct HostingDigestState {
  uint64_t byteCount;  /* bytes digested so far */
  uint64_t pieceCount; /* pieces that they came in */
} HostingDigestState;

/*
 * Digests `size` more bytes and counts them in the state. `bytes` may be null only when `size` is
 * 0.
 *
 * Returns null on success, else an error of which the caller owns one reference; the digester is
 * then as it was. [calls-host]
 */
typedef ZEBErrorObject* (*HostingDigesterUpdateProc)(ZEBContainer* digester, const void* bytes,
                                                     uint64_t size);

/*
 * The digest of all bytes so far: what interface "HostingDigestInterface" gives for them in one
 * piece. More may be digested afterwards. *digest must not be null and is untouched on failure.
 *
 * Returns null on success, else an error of which the caller owns one reference. [calls-host]
 */
typedef ZEBErrorObject* (*HostingDigesterFinishProc)(ZEBContainer* digester, uint64_t* digest);

/* What can be asked of every digester, and what the first interface publishes. */
#define HOSTING_DIGESTER_PROCS(X)              \
  X(Update, Update, HostingDigesterUpdateProc) \
  X(Finish, Finish, HostingDigesterFinishProc)

typedef struct HostingDigesterProcs {
  HOSTING_DIGESTER_PROCS(ZEB_PROC_MEMBER)
} HostingDigesterProcs;

/* What the checked interface overrides. */
#define HOSTING_CHECKED_DIGESTER_PROCS(X) X(Update, Update, HostingDigesterUpdateProc)

typedef struct HostingCheckedDigesterProcs {
  HOSTING_CHECKED_DIGESTER_PROCS(ZEB_PROC_MEMBER)
} HostingCheckedDigesterProcs;

#ifdef __cplusplus
}
#endif

#endif
