/*
 * Interface "ZEBFilterInterface": data sinks and chains of filters.
 *
 * A data sink consumes the bytes that are written into it. A filter is a data sink that writes what
 * it makes of them into a further data sink, its target; filters one behind the other are a chain,
 * which ends in a plain data sink. A client filter is not given its target: one that writes on asks
 * for it with PeekTarget.
 *
 * References. A new member has none: it belongs to nobody until AddRef, a filter that takes it as
 * its target, or a chain state gives it one. Release destroys a member when its count falls to
 * exactly 0. So a maker who means to release a member adds a reference first, and one who hands it
 * to a filter has nothing more to do. A filter keeps one reference to its target.
 *
 * Client data. A maker that takes data together with its destroy procedure consumes the data in
 * every case: when the making fails, destroy is called once before the proc returns.
 *
 * Kinds. Every proc takes any data sink. One that needs a filter refuses a plain sink with the
 * error "not a ZEBFilterImpl", and so do the two JPEG procs refuse what is no JPEG filter. A null
 * where a member is needed is the standard error "Missing ZEB Method". Procs that do not answer
 * with an error then return null or 0 and do nothing.
 *
 * Threads. A chain belongs to one thread at a time, its counts are plain numbers; [one-owner] marks
 * that. Different chains may be used by different threads. A client procedure may use, change and
 * release the chain that it is called from.
 */
#ifndef ZEB_FILTER_H
#define ZEB_FILTER_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_FILTER_INTERFACE "ZEBFilterInterface"

/* ---- A client's procedures. Each gets the client data that was given with it. */

/*
 * Consumes `size` bytes, which stay the caller's. Null for success, else an error of which the
 * caller owns one reference. May be null when a member is made: every write into it then fails.
 */
typedef ZEBErrorObject *(*ZEBFilterClientWrite)(void *clientData, const void *data, uint64_t size);

/* Ends the client's data; called once. Null: nothing is called. */
typedef void (*ZEBFilterClientDestroy)(void *clientData);

/* Writes out what the filter still holds. Null: there is nothing to do. */
typedef void (*ZEBFilterClientClose)(void *clientData);

/* Names the filter's PostScript counterpart, in a text of the client's. Null: there is none. */
typedef const char *(*ZEBFilterClientPostScript)(void *clientData);

/* Takes the three values of SetImageParameters. Null: they are ignored. */
typedef void (*ZEBFilterClientImageParameters)(void *clientData, uint32_t first, uint32_t second,
                                               uint32_t third);

/* Takes the value of SetCompressionParameters. Null: it is ignored. */
typedef void (*ZEBFilterClientCompressionParameters)(void *clientData, float value);

/* ---- Making. *out is the new member, without a reference, or null after a failure. */

/* A sink that takes everything and keeps nothing. [any-thread] */
typedef ZEBErrorObject *(*ZEBFilterNewNullDataSinkV2Proc)(ZEBDataSink **out);

/* A sink whose bytes go to a client. [any-thread] [calls-host] */
typedef ZEBErrorObject *(*ZEBFilterNewClientDataSinkV2Proc)(ZEBDataSink **out, void *clientData,
                                                            ZEBFilterClientWrite write,
                                                            ZEBFilterClientDestroy destroy);

/* A filter that writes everything on unchanged. Takes a reference to the target. [one-owner] */
typedef ZEBErrorObject *(*ZEBFilterNewIdentityFilterV2Proc)(ZEBDataSink **out, ZEBDataSink *target);

/* A filter whose work is a client's. Takes a reference to the target. [one-owner] [calls-host] */
typedef ZEBErrorObject *(*ZEBFilterNewClientFilterV2Proc)(ZEBDataSink **out, ZEBDataSink *target,
                                                          void *clientData,
                                                          ZEBFilterClientWrite write,
                                                          ZEBFilterClientClose close,
                                                          ZEBFilterClientPostScript postScript,
                                                          ZEBFilterClientDestroy destroy);

/* A client filter that also passes image and compression parameters on to its client; it encodes
 * nothing itself. Takes a reference to the target. [one-owner] [calls-host] */
typedef ZEBErrorObject *(*ZEBFilterNewFilterJPEGV2Proc)(
    ZEBDataSink **out, ZEBDataSink *target, void *clientData, ZEBFilterClientWrite write,
    ZEBFilterClientClose close, ZEBFilterClientPostScript postScript,
    ZEBFilterClientDestroy destroy, ZEBFilterClientImageParameters imageParameters,
    ZEBFilterClientCompressionParameters compressionParameters);

/* ---- Using */

/* Adds a reference. [one-owner] */
typedef ZEBErrorObject *(*ZEBFilterAddRefV2Proc)(ZEBDataSink *sink);

/*
 * Gives a reference back. The last one ends the client's data and then gives the reference to the
 * target back, and so on along the chain. Null is ignored. [one-owner] [calls-host]
 */
typedef void (*ZEBFilterReleaseProc)(ZEBDataSink *sink);

/*
 * Writes `size` bytes into the sink; data and size reach the client's procedure unchanged, whatever
 * they are. What that procedure answers is the result. [one-owner] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBFilterWriteV2Proc)(ZEBDataSink *sink, const void *data, uint64_t size);

/* 1 for a filter, 0 for a plain sink and for null. [one-owner] */
typedef int32_t (*ZEBFilterIsFilterProc)(ZEBDataSink *sink);

/*
 * Closes the filter and then each further filter of its chain, in the order of the chain. The plain
 * sink at the end is not closed. A close procedure that throws stops no other. [one-owner]
 * [calls-host]
 */
typedef void (*ZEBFilterCloseProc)(ZEBDataSink *filter);

/*
 * The name of the filter's PostScript counterpart: the client's answer for a client filter, the
 * empty text for an identity filter, null when there is none. [one-owner] [calls-host]
 */
typedef const char *(*ZEBFilterGetPostScriptFilterProc)(ZEBDataSink *filter);

/*
 * Puts a data sink, which may be a chain of its own, at the end of the filter's chain: the last
 * filter of the chain releases its target and takes a reference to this one. Every filter of the
 * chain is closed on the way.
 *
 * Refused with "illegal call to SetDataSink (would create loop)" when the sink stands on the
 * filter's chain or its own chain leads there. A refused call changes nothing, except that the
 * filters before the one that was met are closed. A close procedure that throws ends the call with
 * an error, too. [one-owner] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBFilterSetDataSinkV2Proc)(ZEBDataSink *filter, ZEBDataSink *sink);

/* The filter's target, without a new reference; null when it has none. [one-owner] */
typedef ZEBDataSink *(*ZEBFilterPeekTargetProc)(ZEBDataSink *filter);

/* Passes three values on to the client of a JPEG filter. [one-owner] [calls-host] */
typedef void (*ZEBFilterJPEGSetImageParametersProc)(ZEBDataSink *filter, uint32_t first,
                                                    uint32_t second, uint32_t third);

/* Passes one value on to the client of a JPEG filter. [one-owner] [calls-host] */
typedef void (*ZEBFilterJPEGSetCompressionParametersProc)(ZEBDataSink *filter, float value);

/*
 * Remembers where the filter's chain ends: its last filter and that filter's target, with a
 * reference to each. *out is null after a failure. The caller gives the state to ResetChainState,
 * once. [one-owner]
 */
typedef ZEBErrorObject *(*ZEBFilterGetChainStateV2Proc)(ZEBChainState **out, ZEBDataSink *filter);

/*
 * Makes the remembered target the target of the remembered filter again, whatever it had meanwhile,
 * gives the state's references back and frees the state. A caller may ignore the result, which is
 * an error for null only. [one-owner] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBFilterResetChainStateProc)(ZEBChainState *state);

/* ---- Older versions ---- */

/* The same work as the newer version's; a failure is null or 0, and its reason is lost. */
typedef ZEBDataSink *(*ZEBFilterNewNullDataSinkProc)(void);
typedef ZEBDataSink *(*ZEBFilterNewClientDataSinkProc)(void *clientData, ZEBFilterClientWrite write,
                                                       ZEBFilterClientDestroy destroy);
typedef ZEBDataSink *(*ZEBFilterNewIdentityFilterProc)(ZEBDataSink *target);
typedef ZEBDataSink *(*ZEBFilterNewClientFilterProc)(ZEBDataSink *target, void *clientData,
                                                     ZEBFilterClientWrite write,
                                                     ZEBFilterClientClose close,
                                                     ZEBFilterClientPostScript postScript,
                                                     ZEBFilterClientDestroy destroy);
typedef ZEBDataSink *(*ZEBFilterNewFilterJPEGProc)(
    ZEBDataSink *target, void *clientData, ZEBFilterClientWrite write, ZEBFilterClientClose close,
    ZEBFilterClientPostScript postScript, ZEBFilterClientDestroy destroy,
    ZEBFilterClientImageParameters imageParameters,
    ZEBFilterClientCompressionParameters compressionParameters);
typedef ZEBChainState *(*ZEBFilterGetChainStateProc)(ZEBDataSink *filter);

/* Null is ignored. */
typedef void (*ZEBFilterAddRefProc)(ZEBDataSink *sink);

/* 1 on success, else 0; an error that a client's procedure answers is released. */
typedef int32_t (*ZEBFilterWriteProc)(ZEBDataSink *sink, const void *data, uint64_t size);
typedef int32_t (*ZEBFilterSetDataSinkProc)(ZEBDataSink *filter, ZEBDataSink *sink);

#define ZEB_FILTER_PROCS(X)                                                                        \
  X(NewNullDataSink, NewNullDataSink, ZEBFilterNewNullDataSinkV2Proc)                              \
  X(NewClientDataSink, NewClientDataSink, ZEBFilterNewClientDataSinkV2Proc)                        \
  X(NewIdentityFilter, NewIdentityFilter, ZEBFilterNewIdentityFilterV2Proc)                        \
  X(NewClientFilter, NewClientFilter, ZEBFilterNewClientFilterV2Proc)                              \
  X(NewFilterJPEG, NewFilterJPEG, ZEBFilterNewFilterJPEGV2Proc)                                    \
  X(AddRef, AddRef, ZEBFilterAddRefV2Proc)                                                         \
  X(Release, Release, ZEBFilterReleaseProc)                                                        \
  X(Write, Write, ZEBFilterWriteV2Proc)                                                            \
  X(IsFilter, IsFilter, ZEBFilterIsFilterProc)                                                     \
  X(Close, Close, ZEBFilterCloseProc)                                                              \
  X(GetPostScriptFilter, GetPostScriptFilter, ZEBFilterGetPostScriptFilterProc)                    \
  X(SetDataSink, SetDataSink, ZEBFilterSetDataSinkV2Proc)                                          \
  X(PeekTarget, PeekTarget, ZEBFilterPeekTargetProc)                                               \
  X(SetImageParameters, SetImageParameters, ZEBFilterJPEGSetImageParametersProc)                   \
  X(SetCompressionParameters, SetCompressionParameters, ZEBFilterJPEGSetCompressionParametersProc) \
  X(GetChainState, GetChainState, ZEBFilterGetChainStateV2Proc)                                    \
  X(ResetChainState, ResetChainState, ZEBFilterResetChainStateProc)

/* Older procs, kept for clients built against them. */
#define ZEB_FILTER_OLDER_PROCS(X)                                           \
  X(WriteV1, Write, ZEBFilterWriteProc)                                     \
  X(SetDataSinkV1, SetDataSink, ZEBFilterSetDataSinkProc)                   \
  X(NewNullDataSinkV1, NewNullDataSink, ZEBFilterNewNullDataSinkProc)       \
  X(NewClientDataSinkV1, NewClientDataSink, ZEBFilterNewClientDataSinkProc) \
  X(NewIdentityFilterV1, NewIdentityFilter, ZEBFilterNewIdentityFilterProc) \
  X(NewClientFilterV1, NewClientFilter, ZEBFilterNewClientFilterProc)       \
  X(NewFilterJPEGV1, NewFilterJPEG, ZEBFilterNewFilterJPEGProc)             \
  X(GetChainStateV1, GetChainState, ZEBFilterGetChainStateProc)             \
  X(AddRefV1, AddRef, ZEBFilterAddRefProc)

typedef struct ZEBFilterProcs {
  ZEB_FILTER_PROCS(ZEB_PROC_MEMBER)
} ZEBFilterProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchFilterProcs, ZEBFilterProcs, ZEB_FILTER_INTERFACE, ZEB_FILTER_PROCS)

#ifdef __cplusplus
}
#endif

#endif
