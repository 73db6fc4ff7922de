#pragma once

// Tells the address sanitizer which bytes of a pool may be touched, so that it finds reads and writes behind a pool
// block or in a released one just as it does on the system heap. Without the sanitizer nothing is compiled.
#if defined(__SANITIZE_ADDRESS__)
#define ORLIX_POOL_GUARD 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORLIX_POOL_GUARD 1
#endif
#endif

#ifdef ORLIX_POOL_GUARD
#include <sanitizer/asan_interface.h>
#endif

namespace Orlix {

inline void guardBytes([[maybe_unused]] const void* pBytes, [[maybe_unused]] unsigned int uiSize) {
#ifdef ORLIX_POOL_GUARD
    __asan_poison_memory_region(pBytes, uiSize);
#endif
}

inline void openBytes([[maybe_unused]] const void* pBytes, [[maybe_unused]] unsigned int uiSize) {
#ifdef ORLIX_POOL_GUARD
    __asan_unpoison_memory_region(pBytes, uiSize);
#endif
}
} // namespace Orlix
