#pragma once

#include <cstdio>
#include <cstdlib>

/** A property that must hold for every input; where it does not, the fuzzer keeps the input and stops. */
#define FUZZ_CHECK(CONDITION)                                                                                          \
    ((CONDITION) ? static_cast<void>(0) : OrlixFuzz::failCheck(__FILE__, __LINE__, #CONDITION))

namespace OrlixFuzz {

[[noreturn]] inline void failCheck(const char* szFile, int iLine, const char* szCondition) {
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", szFile, iLine, szCondition);
    std::abort();
}
} // namespace OrlixFuzz
