/*
 * Interface "HostingDigestInterface": a digest of some bytes.
 *
 * Any module may publish it; which algorithms stand behind it is the publisher's choice and may
 * change when the publisher is replaced. The interface has grown twice: the method "Digest" exists
 * under two proc names, because a new signature is a new proc name and clients of either find
 * theirs; and "NewDigester" hands out a component for bytes that come in pieces.
 */
#ifndef HOSTING_DIGEST_H
#define HOSTING_DIGEST_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOSTING_DIGEST_INTERFACE "HostingDigestInterface"

/* component and ids of the errors that the procs below return. */
#define HOSTING_DIGEST_COMPONENT "HostingDigest"
#define HOSTING_DIGEST_ERROR_NO_RESULT 1         /* the place for the result was null */
#define HOSTING_DIGEST_ERROR_NO_BYTES 2          /* bytes was null, size was not 0 */
#define HOSTING_DIGEST_ERROR_UNKNOWN_ALGORITHM 3 /* nothing is published under this name */
#define HOSTING_DIGEST_ERROR_FAILED 4            /* anything else; the message says what */

/*
 * The first version: a 32-bit digest, by the publisher's own choice of algorithm. `bytes` may be
 * null only when `size` is 0. It has no way to tell of a failure. [any-thread]
 */
typedef uint32_t (*HostingDigestProc)(const void* bytes, uint64_t size);

/*
 * The second version: a digest of up to 64 bits by an algorithm that the caller may name.
 *
 * digest     receives the digest; untouched on failure. Must not be null.
 * algorithm  one of the publisher's algorithms; null means its widest.
 * bytes      `size` bytes; may be null only when `size` is 0.
 *
 * Returns null on success, else an error of component "HostingDigest" with one of the ids above;
 * the caller owns one reference. [any-thread] [calls-host]
 */
typedef ZEBErrorObject* (*HostingDigestProcV2)(uint64_t* digest, const char* algorithm,
                                               const void* bytes, uint64_t size);

/*
 * What the publisher calls itself, as "crc32 and xxh3". The text belongs to the publisher and goes
 * with it; whoever needs it longer makes an atom of it. [any-thread]
 */
typedef const char* (*HostingDigestGetNameProc)(void);

/*
 * Makes a digester (digester.h) by the publisher's widest algorithm, with one reference for the
 * caller, who gives it back before the publisher stops. *digester must not be null and is
 * untouched on failure.
 *
 * Returns null on success, else an error of which the caller owns one reference. [any-thread]
 * [calls-host]
 */
typedef ZEBErrorObject* (*HostingNewDigesterProc)(ZEBContainer** digester);

#define HOSTING_DIGEST_PROCS(X)                 \
  X(Digest, Digest, HostingDigestProcV2)        \
  X(DigestV1, Digest, HostingDigestProc)        \
  X(GetName, GetName, HostingDigestGetNameProc) \
  X(NewDigester, NewDigester, HostingNewDigesterProc)

typedef struct HostingDigestProcs {
  HOSTING_DIGEST_PROCS(ZEB_PROC_MEMBER)
} HostingDigestProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(HostingFetchDigestProcs, HostingDigestProcs, HOSTING_DIGEST_INTERFACE,
                 HOSTING_DIGEST_PROCS)

#ifdef __cplusplus
}
#endif

#endif
