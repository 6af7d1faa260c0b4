/*
 * Interface "HostingJobInterface": the jobs that the host runs on a file.
 *
 * The host knows this interface and nothing of the module behind it.
 */
#ifndef HOSTING_JOB_H
#define HOSTING_JOB_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOSTING_JOB_INTERFACE "HostingJobInterface"
#define HOSTING_JOB_TOP_WORDS 5

/* component and ids of the errors that the job makes itself; it passes others on unchanged. */
#define HOSTING_JOB_COMPONENT "HostingWords"
#define HOSTING_JOB_ERROR_NO_RESULT 1 /* result was null */
#define HOSTING_JOB_ERROR_NO_TEXT 2   /* text was null; Run: with a size other than 0 */
#define HOSTING_JOB_ERROR_NO_DIGEST 3 /* no module publishes the digest interface now */
#define HOSTING_JOB_ERROR_FAILED 4    /* anything else; the message says what */
#define HOSTING_JOB_ERROR_CANCELLED 5 /* a progress report was answered with yes */

/* A word and how often it occurs. */
typedef struct HostingWordCount {
  ZEBString* word; /* one reference, for whoever holds the result */
  uint64_t count;
} HostingWordCount;

/*
 * What one run found. The atoms carry a reference each for the caller, who gives them back with
 * DeleteStringAtom. They stay valid when the modules that made them are long unloaded.
 */
typedef struct HostingJobResult {
  uint64_t wordCount;
  uint64_t distinctWordCount;
  HostingWordCount topWords[HOSTING_JOB_TOP_WORDS]; /* most frequent first, then by text */
  uint64_t topWordCount;                            /* how many of them are filled */
  ZEBString* digestName;                            /* what the digest's publisher calls itself */
  uint64_t digest;                                  /* by the second version */
  uint32_t digestV1;                                /* by the first version */
  uint32_t boundAt;    /* the change counter when the job last fetched the digest interface */
  uint32_t timesBound; /* how often it has fetched it since the job's module started */
  uint32_t reserved;   /* 0 */
} HostingJobResult;

/*
 * Counts the words of a text and has its bytes digested by both versions of the digest interface.
 * A word is a run of ASCII letters, digits and non-ASCII bytes; ASCII capitals count as small.
 *
 * result     filled on success, untouched on failure. Must not be null.
 * algorithm  handed on to the digest interface's second version; may be null.
 * text       `size` bytes, not necessarily zero-terminated; may be null only when `size` is 0.
 *
 * Returns null on success, else an error of which the caller owns one reference. One thread at a
 * time. [calls-host]
 */
typedef ZEBErrorObject* (*HostingJobRunProc)(HostingJobResult* result, const char* algorithm,
                                             const char* text, uint64_t size);

/* What digesting in pieces has given. The atom carries a reference for the caller. */
typedef struct HostingPieceDigest {
  uint64_t digest;      /* of the whole text */
  uint64_t byteCount;   /* what the component has counted */
  uint64_t pieceCount;  /* the same */
  ZEBString* signature; /* the names of the component's interfaces, the earliest first */
  const void* textAt;   /* where the job has read the text: to compare, not to follow */
  uint32_t timesAsked;  /* how often the job has asked the component for its methods */
  uint32_t reserved;    /* 0 */
} HostingPieceDigest;

/*
 * Has a text digested piece by piece, by a component of whoever publishes the digest interface
 * (digester.h). A piece is a fortieth of the text, at most 64 KiB.
 *
 * result    filled on success, untouched on failure. Must not be null.
 * text      its bytes are read where they stand, during the call only. Must not be null.
 * progress  told the bytes digested and all bytes, before the first piece and after each. The first
 *           yes cancels the job: the answer is an error then. May be null: nobody is told.
 *
 * Returns null on success, else an error of which the caller owns one reference. One thread at a
 * time. [calls-host]
 */
typedef ZEBErrorObject* (*HostingJobDigestInPiecesProc)(HostingPieceDigest* result,
                                                        ZEBSharedBuffer* text,
                                                        ZEBProgress* progress);

#define HOSTING_JOB_PROCS(X)     \
  X(Run, Run, HostingJobRunProc) \
  X(DigestInPieces, DigestInPieces, HostingJobDigestInPiecesProc)

typedef struct HostingJobProcs {
  HOSTING_JOB_PROCS(ZEB_PROC_MEMBER)
} HostingJobProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(HostingFetchJobProcs, HostingJobProcs, HOSTING_JOB_INTERFACE, HOSTING_JOB_PROCS)

#ifdef __cplusplus
}
#endif

#endif
