// Whether this build runs under a sanitizer that watches every access.
#ifndef ZEB_TESTS_CONTRACT_SANITIZERS_H
#define ZEB_TESTS_CONTRACT_SANITIZERS_H

#if defined(__has_feature)
#define ZEB_HAS_FEATURE(feature) __has_feature(feature)
#else
#define ZEB_HAS_FEATURE(feature) 0
#endif

namespace contract {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__) || \
    ZEB_HAS_FEATURE(thread_sanitizer) || ZEB_HAS_FEATURE(address_sanitizer)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace contract

#endif
