#pragma once

// Under a sanitizer the process is stopped where the library goes on: the address sanitizer reports a read in front
// of a block of the system heap, and both it and the thread sanitizer end the process when memory runs out. Tests of
// just that are left out there.
#if defined(__SANITIZE_ADDRESS__)
#define ORLIX_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORLIX_TEST_ASAN 1
#endif
#endif

#if defined(__SANITIZE_THREAD__)
#define ORLIX_TEST_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORLIX_TEST_TSAN 1
#endif
#endif
