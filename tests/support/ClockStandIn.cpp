#include "support/ClockStandIn.h"

#include <sys/syscall.h>
#include <unistd.h>

// These replace the system's functions in the whole test program. A sanitizer may call them before it is ready to check
// them, and the real clocks are asked by number, since looking the real functions up may allocate.
#define UNCHECKED __attribute__((no_sanitize("address", "thread", "undefined")))

namespace {
thread_local OrlixTest::tagClockStandIn* t_pStandIn = nullptr;
}

OrlixTest::tagClockStandIn::tagClockStandIn() { t_pStandIn = this; }

OrlixTest::tagClockStandIn::~tagClockStandIn() { t_pStandIn = nullptr; }

extern "C" {
UNCHECKED int clock_gettime(clockid_t clock, timespec* pNow) noexcept {
    if (t_pStandIn && clock == CLOCK_MONOTONIC) {
        t_pStandIn->strCalls += 'm';
        *pNow = t_pStandIn->monotonic;
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, pNow));
}

UNCHECKED int gettimeofday(timeval* pNow, void* pZone) noexcept {
    if (t_pStandIn) {
        t_pStandIn->strCalls += 'g';
        *pNow = t_pStandIn->aryOfDay[t_pStandIn->uiOfDay++ % 2];
        return 0;
    }
    return static_cast<int>(syscall(SYS_gettimeofday, pNow, pZone));
}

UNCHECKED time_t time(time_t* pNow) noexcept {
    time_t lNow;
    if (t_pStandIn) {
        t_pStandIn->strCalls += 't';
        lNow = t_pStandIn->arySeconds[t_pStandIn->uiSeconds++ % 2];
    } else {
        timespec now{};
        syscall(SYS_clock_gettime, CLOCK_REALTIME_COARSE, &now);
        lNow = now.tv_sec;
    }
    if (pNow)
        *pNow = lNow;
    return lNow;
}
}
