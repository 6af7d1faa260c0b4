// Clang's thread-safety attributes under short names; empty for compilers that lack them.
#ifndef ZEB_UTIL_THREAD_ANNOTATIONS_H
#define ZEB_UTIL_THREAD_ANNOTATIONS_H

#if defined(__clang__)
#define ZEB_ATTRIBUTE(x) __attribute__((x))
#else
#define ZEB_ATTRIBUTE(x)
#endif

#define ZEB_CAPABILITY(name) ZEB_ATTRIBUTE(capability(name))
#define ZEB_SCOPED_CAPABILITY ZEB_ATTRIBUTE(scoped_lockable)
#define ZEB_GUARDED_BY(lock) ZEB_ATTRIBUTE(guarded_by(lock))
#define ZEB_PT_GUARDED_BY(lock) ZEB_ATTRIBUTE(pt_guarded_by(lock))
#define ZEB_REQUIRES(...) ZEB_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZEB_ACQUIRE(...) ZEB_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZEB_TRY_ACQUIRE(...) ZEB_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define ZEB_RELEASE(...) ZEB_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ZEB_EXCLUDES(...) ZEB_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ZEB_NO_THREAD_SAFETY_ANALYSIS ZEB_ATTRIBUTE(no_thread_safety_analysis)

#endif
