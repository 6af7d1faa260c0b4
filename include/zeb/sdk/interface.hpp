// What an interface is to a client: a name, a struct of procs, and the requests that fill it.
//
// The library's own interfaces are listed at the end. An author describes one of his own with the
// rows that its C header lists anyway:
//
//   #define GREETING_PROCS(X) X(Greeting, Greeting, GreetingProc)
//   ZEB_SDK_INTERFACE(Greeting, "GreetingInterface", GREETING_PROCS);
//
// which makes Greeting::Procs, a struct with the member `GreetingProc Greeting`.
#ifndef ZEB_SDK_INTERFACE_HPP
#define ZEB_SDK_INTERFACE_HPP

#include <array>
#include <concepts>
#include <cstddef>
#include <cstring>

#include "zeb/zeb.h"

// The struct that describes an interface; ZEB_SDK_INTERFACE is what to write.
#define ZEB_SDK_INTERFACE_FROM(Name, text, rows, ProcsType, guarded)                           \
  struct Name {                                                                                \
    /* The struct of procs. */                                                                 \
    using Procs = ProcsType;                                                                   \
    /* The interface's name. */                                                                \
    static constexpr const char* kName = text;                                                 \
    /* Whether bindings compare signatures. */                                                 \
    static constexpr bool kGuarded = guarded;                                                  \
    /* What fills the struct, in the order of its members. */                                  \
    static constexpr auto kRequests = std::to_array<ZEBProcRequest>({rows(ZEB_PROC_REQUEST)}); \
    /* Calls visit(request, proc) for each proc of the struct. */                              \
    template <class Visit>                                                                     \
    static void forEachProc(const Procs& procs, Visit visit) {                                 \
      rows(ZEB_SDK_VISIT_PROC)                                                                 \
    }                                                                                          \
    /* Calls visit.template operator()<Proc>(request) for each. */                             \
    template <class Visit>                                                                     \
    static void forEachType(Visit visit) {                                                     \
      rows(ZEB_SDK_VISIT_TYPE)                                                                 \
    }                                                                                          \
  }
// A row as a call of the visitor with the proc.
#define ZEB_SDK_VISIT_PROC(member, method, proc) \
  visit(ZEBProcRequest{#method, #proc}, procs.member);
// A row as a call of the visitor with the proc's type.
#define ZEB_SDK_VISIT_TYPE(member, method, proc) \
  visit.template operator()<proc>(ZEBProcRequest{#method, #proc});

// An author's own interface; its bindings compare signatures (signature.hpp).
#define ZEB_SDK_INTERFACE(Name, text, rows) \
  struct Name##Procs {                      \
    rows(ZEB_PROC_MEMBER)                   \
  };                                        \
  ZEB_SDK_INTERFACE_FROM(Name, text, rows, Name##Procs, true)

// An interface of the library, whose signatures never change under a name.
#define ZEB_SDK_OWN(Name, PREFIX, ProcsType) \
  ZEB_SDK_INTERFACE_FROM(Name, PREFIX##_INTERFACE, PREFIX##_PROCS, ProcsType, false)

// C++ over the C contract: owners, bindings, errors, and what a module has of its own.
namespace zeb::sdk {

// What ZEB_SDK_INTERFACE makes.
template <class T>
concept Interface = requires {
  typename T::Procs;
  { T::kName } -> std::convertible_to<const char*>;
  { T::kRequests.size() } -> std::convertible_to<std::size_t>;
};

// In the order in which they are registered. The interfaces of older_stream.h are not among them:
// they serve older programs alone.
ZEB_SDK_OWN(Frame, ZEB_FRAME, ZEBFrameProcs);
ZEB_SDK_OWN(Memory, ZEB_MEMORY, ZEBMemoryProcs);
ZEB_SDK_OWN(MemoryDebug, ZEB_MEMORY_DEBUG, ZEBMemoryDebugProcs);
ZEB_SDK_OWN(Errors, ZEB_ERROR, ZEBErrorProcs);
ZEB_SDK_OWN(Containers, ZEB_CONTAINER, ZEBContainerProcs);
ZEB_SDK_OWN(Strings, ZEB_STRING, ZEBStringProcs);
ZEB_SDK_OWN(SharedBuffers, ZEB_SHARED_BUFFER, ZEBSharedBufferProcs);
ZEB_SDK_OWN(Cache, ZEB_CACHE, ZEBCacheProcs);
ZEB_SDK_OWN(Progresses, ZEB_PROGRESS, ZEBProgressProcs);
ZEB_SDK_OWN(StreamFactory, ZEB_STREAM_FACTORY, ZEBStreamFactoryProcs);
ZEB_SDK_OWN(SimpleStreams, ZEB_SIMPLE_STREAM, ZEBSimpleStreamProcs);
ZEB_SDK_OWN(RewindableStreams, ZEB_REWINDABLE_STREAM, ZEBRewindableStreamProcs);
ZEB_SDK_OWN(PositionableStreams, ZEB_POSITIONABLE_STREAM, ZEBPositionableStreamProcs);
ZEB_SDK_OWN(Filters, ZEB_FILTER, ZEBFilterProcs);
ZEB_SDK_OWN(Events, ZEB_EVENT, ZEBEventProcs);
ZEB_SDK_OWN(Inspection, ZEB_INSPECT, ZEBInspectProcs);

}  // namespace zeb::sdk

#endif
